#include "Binding.h"

#include "FCurveLib/DefaultFallbackParser.h"
#include "FCurveLib/Evaluation.h"
#include "FCurveLib/InterpolatorFactory.h"
#include "FCurveLib/NumberInterp.h"
#include "FCurveLib/UnknownExpression.h"

#include <cmath>

namespace FCurvePython {

namespace {

InterpolatorPtr FromText(std::string text) {
    for (auto kind = InterpolatorFactory::begin(); kind != InterpolatorFactory::end(); ++kind)
        if (kind->first == text + "()") return kind->second;
    InterpolatorPtr made = InterpolatorFactory::create(text.c_str());
    if (dynamic_cast<const UnknownExpression*>(made.get())) {
        DefaultFallbackParser().parseOrThrow(text.c_str());
        throw py::value_error("\"" + text + "\" is not an expression");
    }
    return made;
}

} // namespace

py::handle HostFunction(const Interpolator* /*interpolator*/) {
    return {};
}

InterpolatorPtr ToInterpolator(py::handle source) {
    if (py::isinstance<Interpolator>(source)) return py::cast<InterpolatorPtr>(source);
    if (PyUnicode_Check(source.ptr())) return FromText(ToText(source).bytes);
    if (PyFloat_Check(source.ptr()) || PyIndex_Check(source.ptr()))
        return NumberInterp::create(Finite(ToNumber(source), "The interpolator"));
    throw py::type_error("Expected an interpolator, an expression or a number, found "
                         + std::string(Py_TYPE(source.ptr())->tp_name));
}

py::str ShortExpression(const Segment& segment) {
    const InterpolatorPtr interpolator = segment.getInterpolator();
    if (!interpolator) return {"0"};
    std::string text = interpolator->getExpression();
    const auto size = text.size();
    if (size > 2 && text.find('(') == size - 2 && text.back() == ')') text.resize(size - 2);
    return ToPython(text);
}

void BindInterpolators(py::module_& module) {
    py::class_<Interpolator, InterpolatorPtr>(
        module, "Interpolator", py::is_final(),
        "How a curve runs over one segment. Equal to another one, or a text, with the same expression.\n\n"
        "Interpolator(source): an expression ('bezier()', 'sin(x/10)'), a kind's name ('bezier'), or a number.")
        .def(py::init([](py::handle source) { return ToInterpolator(source); }), py::arg("source"))
        .def_property_readonly(
            "expression", [](const Interpolator& self) { return ToPython(self.getExpression()); },
            "The text by which files store it.")
        .def_property_readonly("uses_tangents", &Interpolator::usesTangents,
                               "Whether the shape depends on the segment's tangents.")
        .def(
            "__call__",
            [](const Interpolator& self, double x, const Segment& segment) { return self.eval(x, segment); },
            py::arg("x"), py::arg("segment"), "The value at x (in frames) over the segment.")
        .def("__eq__",
             [](const Interpolator& self, py::handle other) -> py::object {
                 const py::str expression = ToPython(self.getExpression());
                 if (py::isinstance<Interpolator>(other))
                     return py::bool_(expression.equal(ToPython(py::cast<const Interpolator&>(other).getExpression())));
                 if (PyUnicode_Check(other.ptr())) return py::bool_(expression.equal(other));
                 return py::reinterpret_borrow<py::object>(Py_NotImplemented);
             })
        .def("__hash__", [](const Interpolator& self) { return py::hash(ToPython(self.getExpression())); })
        .def("__str__", [](const Interpolator& self) { return ToPython(self.getExpression()); })
        .def("__repr__",
             [](const Interpolator& self) {
                 return py::str("Interpolator({!r})").format(ToPython(self.getExpression()));
             })
        .def("__reduce__", [](const py::object& self) {
            return py::make_tuple(py::type::of(self), py::make_tuple(self.attr("expression")));
        });

    module.def(
        "kinds",
        [] {
            py::list names;
            for (auto kind = InterpolatorFactory::begin(); kind != InterpolatorFactory::end(); ++kind)
                names.append(ToPython(kind->first));
            return names;
        },
        "The expressions of the built-in kinds.");
}

} // namespace FCurvePython
