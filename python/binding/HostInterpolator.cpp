#include "HostInterpolator.h"

#include "Edits.h"
#include "Lock.h"

namespace FCurvePython {

std::shared_ptr<PyObject> Share(py::object object) {
    return {object.release().ptr(), [](PyObject* held) {
                if (!Py_IsInitialized()) return;
                const Locked lock;
                TakeLock([held] { Py_DECREF(held); });
            }};
}

namespace {

std::shared_ptr<PyObject> Attribute(const py::object& object, const char* name) {
    py::object attribute = py::getattr(object, name, py::none());
    return attribute.is_none() ? nullptr : Share(std::move(attribute));
}

std::string ExpressionOf(const py::object& function) {
    const py::object expression = py::getattr(function, "expression", py::none());
    if (!expression.is_none()) return ToText(expression).bytes;
    const py::object name = py::getattr(function, "__name__", py::none());
    return (name.is_none() ? std::string(Py_TYPE(function.ptr())->tp_name) : ToText(name).bytes) + "()";
}

// The segment as Python may keep it: itself where it is shared, else a copy.
SegmentPtr ToKeep(const Segment& segment) {
    SegmentPtr shared = const_cast<Segment&>(segment).getShared();
    return shared ? shared : std::make_shared<Segment>(segment);
}

double Call(PyObject* function, double x, const Segment& segment) {
    const Locked lock;
    const Evaluating evaluating;
    const auto kept = py::reinterpret_borrow<py::object>(function);
    return ToNumber(CallPython(kept, x, ToKeep(segment)));
}

} // namespace

HostInterpolator::HostInterpolator(const py::object& function, bool isNamed)
    : m_function(Share(function)), m_first(Attribute(function, "derivative")),
      m_second(Attribute(function, "second_derivative")),
      m_usesTangents(py::cast<bool>(py::getattr(function, "uses_tangents", py::bool_(false)))), m_isNamed(isNamed) {
    setExpression(ExpressionOf(function).c_str());
}

std::atomic<std::size_t>& HostInterpolator::Alive::count() noexcept {
    static std::atomic<std::size_t> count{0};
    return count;
}

int HostInterpolator::visit(visitproc visitor, void* argument) const {
    for (const auto* held : {&m_function, &m_first, &m_second}) {
        if (held->use_count() != 1) continue; // none, or clones have it, too
        const int result = visitor(held->get(), argument);
        if (result != 0) return result;
    }
    return 0;
}

double HostInterpolator::eval(double x, const Segment& segment) const {
    return Call(m_function.get(), x, segment);
}

std::shared_ptr<Interpolator> HostInterpolator::clone() {
    return std::shared_ptr<Interpolator>(new HostInterpolator(*this));
}

double HostInterpolator::getFirstDerivative(double x, const Segment& segment) const {
    return m_first ? Call(m_first.get(), x, segment) : Interpolator::getFirstDerivative(x, segment);
}

double HostInterpolator::getSecondDerivative(double x, const Segment& segment) const {
    return m_second ? Call(m_second.get(), x, segment) : Interpolator::getSecondDerivative(x, segment);
}

} // namespace FCurvePython
