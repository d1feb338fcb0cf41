#include "HostInterpolator.h"
#include "Lock.h"
#include "NameScope.h"

#include "FCurveLib/DefaultFallbackParser.h"
#include "FCurveLib/InterpMaker.h"
#include "FCurveLib/InterpolatorFactory.h"
#include "FCurveLib/NumberInterp.h"
#include "FCurveLib/UnknownExpression.h"

#include <algorithm>
#include <cstring>
#include <list>
#include <stdexcept>

namespace FCurvePython {

namespace {

// The names that Python brought into the language of formulas: name -> callable. Never destroyed, as the factory may
// ask after the interpreter's end; emptied before that.
py::dict& Names() {
    static auto* const names = new py::dict();
    return *names;
}

thread_local NameScope* innermost = nullptr;
thread_local int makersDepth = 0;
constexpr int kMaxMakersDepth = 64;

// The name that a probe asks for; whether the parser asked for it.
struct Probe {
    const char* name;
    bool isAsked = false;
};
thread_local Probe* probing = nullptr;

InterpolatorPtr FromResult(const py::object& made) {
    if (made.is_none()) return nullptr;
    // One that the callable holds on to keeps its expression: the factory gives the result the text it was made from.
    if (py::isinstance<Interpolator>(made)) return py::cast<InterpolatorPtr>(made)->clone();
    if (PyCallable_Check(made.ptr())) return std::make_shared<HostInterpolator>(made, true);
    return ToInterpolator(made)->clone();
}

bool IsSerious(const py::error_already_set& raised) {
    return raised.matches(PyExc_MemoryError) || !raised.matches(PyExc_Exception);
}

} // namespace

// Asks the names of Python. Empty for others.
class NameMaker final : public InterpMaker {
public:
    std::shared_ptr<Interpolator> makeName(const char* name) override { return make(name, {}); }
    std::shared_ptr<Interpolator> makeFunction(const char* name,
                                               const std::list<InterpMaker::Argument>& arguments) override {
        return make(name, arguments);
    }

private:
    [[noreturn]] static void fail() { throw std::runtime_error("A name failed"); } // the text fails

    static InterpolatorPtr make(const char* name, const std::list<InterpMaker::Argument>& arguments) {
        if (!Py_IsInitialized()) return nullptr;
        const Locked lock;
        if (probing) {
            probing->isAsked = probing->isAsked || std::strcmp(probing->name, name) == 0;
            return nullptr;
        }
        const py::str key = ToPython(name);
        if (!Names().contains(key)) return nullptr;
        NameScope* const scope = innermost;
        if (scope) {
            ++scope->m_calls;
            if (scope->m_replays && scope->m_calls != scope->m_failed) return NumberInterp::create(0.0);
            if (scope->m_replays && scope->m_raised) fail();
            if (scope->m_replays) return nullptr;
        }
        try {
            InterpolatorPtr made = call(Names()[key], arguments);
            if (!made && scope) scope->m_failed = scope->m_calls;
            return made;
        } catch (const py::error_already_set& raised) {
            if (scope) {
                scope->m_failed = scope->m_calls;
                scope->m_name = name;
                if (!scope->m_raised || !IsSerious(*scope->m_raised)) scope->m_raised.emplace(raised);
            }
            fail();
        }
    }

    static InterpolatorPtr call(const py::object& maker, const std::list<InterpMaker::Argument>& arguments) {
        const struct Deeper {
            Deeper() { ++makersDepth; }
            ~Deeper() { --makersDepth; }
        } deeper;
        if (makersDepth > kMaxMakersDepth) {
            PyErr_SetString(PyExc_RecursionError, "Names stand for each other without end");
            throw py::error_already_set();
        }
        py::tuple values(arguments.size());
        std::size_t i = 0;
        for (const InterpMaker::Argument& argument : arguments)
            values[i++] = argument.number       ? py::object(py::float_(*argument.number))
                          : argument.expression ? py::cast(argument.expression)
                                                : py::object(ToPython(argument.text));
        PyObject* result = nullptr;
        TakeLock([&] { result = PyObject_CallObject(maker.ptr(), values.ptr()); });
        if (!result) throw py::error_already_set();
        const auto made = py::reinterpret_steal<py::object>(result);
        try {
            return FromResult(made);
        } catch (const py::builtin_exception& wrong) {
            PyErr_Format(PyExc_TypeError, "It returned %R: %s", made.ptr(), wrong.what());
            throw py::error_already_set();
        }
    }
};

namespace {

// The parser that knows the names; lives for ever, as the factory is given it.
DefaultFallbackParser& Parser() {
    static auto* const parser = [] {
        auto* const made = new DefaultFallbackParser();
        made->addMaker(std::make_shared<NameMaker>());
        return made;
    }();
    return *parser;
}

bool IsKind(const std::string& name) {
    const auto isIt = [&](const auto& kind) { return kind.first == name + "()"; };
    return std::any_of(InterpolatorFactory::begin(), InterpolatorFactory::end(), isIt);
}

// Whether the language leaves the name to others.
bool IsFree(const Text& name) {
    Probe probe{name.c_str()};
    probing = &probe;
    try {
        Parser().parseOrThrow(name.c_str());
    } catch (const DefaultFallbackParser::ParseError&) { // NOLINT(bugprone-empty-catch): nobody answered the probe
    }
    probing = nullptr;
    return probe.isAsked && !IsKind(name.bytes);
}

void Register(const Text& name, const py::function& maker) {
    if (!IsFree(name))
        throw py::value_error("\"" + name.bytes
                              + "\" can be no name of yours: expected letters, digits and _, and none "
                              + "of the names that formulas have already");
    Names()[ToPython(name.bytes)] = maker;
    InterpolatorFactory::setParserFallback(&Parser());
}

} // namespace

NameScope::NameScope() noexcept : m_outer(innermost) {
    innermost = this;
}

NameScope::~NameScope() {
    innermost = m_outer;
}

void NameScope::finish() const {
    if (m_raised && IsSerious(*m_raised)) throw py::error_already_set(*m_raised);
}

InterpolatorPtr ReadText(const std::string& text) {
    if (IsKind(text)) return InterpolatorFactory::create((text + "()").c_str());
    NameScope scope;
    InterpolatorPtr made = InterpolatorFactory::create(text.c_str());
    if (!dynamic_cast<const UnknownExpression*>(made.get())) return made;
    scope.finish();
    if (scope.m_raised && scope.m_raised->matches(PyExc_RecursionError)) throw py::error_already_set(*scope.m_raised);
    scope.m_replays = true;
    scope.m_calls = 0;
    try {
        Parser().parseOrThrow(text.c_str());
    } catch (const DefaultFallbackParser::ParseError& error) {
        if (!scope.m_raised) RaiseHandled(nullptr);
        const py::object raised = scope.m_raised->value(); // by what is registered, which says more than the parser
        const py::object formulaError =
            CallPython(ErrorClass("FormulaError"),
                       py::str("What was registered as \"{}\" failed: {}: {}")
                           .format(ToPython(scope.m_name), raised.get_type().attr("__name__"), raised),
                       error.getPosition(), ToPython("ParseError"));
        formulaError.attr("__cause__") = raised;
        PyErr_SetObject(py::type::of(formulaError).ptr(), formulaError.ptr());
        throw py::error_already_set();
    }
    throw py::value_error("\"" + text + "\" is not an expression");
}

py::handle HostFunction(const Interpolator* interpolator) {
    const auto* const host = dynamic_cast<const HostInterpolator*>(interpolator);
    return host ? host->function() : nullptr;
}

InterpolatorPtr ToInterpolator(py::handle source) {
    if (py::isinstance<Interpolator>(source)) return py::cast<InterpolatorPtr>(source);
    if (PyUnicode_Check(source.ptr())) return ReadText(ToText(source).bytes);
    if (PyCallable_Check(source.ptr()))
        return std::make_shared<HostInterpolator>(py::reinterpret_borrow<py::object>(source));
    if (PyNumber_Check(source.ptr()) && !PyComplex_Check(source.ptr()))
        return NumberInterp::create(Finite(ToNumber(source), "The interpolator"));
    throw py::type_error("Expected an interpolator, an expression, a number or a callable, found "
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
        "Interpolator(source): an expression ('bezier()', 'sin(x/10)'), a kind's name ('bezier'), a number, or a "
        "callable\n"
        "(x, segment) with the attributes expression (by default its name and parentheses), derivative,\n"
        "second_derivative and uses_tangents, all optional.")
        .def(py::init([](py::handle source) { return ToInterpolator(source); }), py::arg("source"))
        .def_property_readonly(
            "expression", [](const Interpolator& self) { return ToPython(self.getExpression()); },
            "The text by which files store it.")
        .def_property_readonly(
            "function",
            [](const Interpolator& self) {
                const py::handle function = HostFunction(&self);
                return function ? py::reinterpret_borrow<py::object>(function) : py::none();
            },
            "The callable that it was made from; None for the library's kinds, and for those that a text names.")
        .def_property_readonly("uses_tangents", &Interpolator::usesTangents,
                               "Whether the shape depends on the segment's tangents.")
        .def(
            "__call__",
            [](const Interpolator& self, double x, const Segment& segment) { return self.eval(x, segment); },
            py::arg("x"), py::arg("segment"), "The value at x (in frames) over the segment.")
        .def("__eq__",
             [](const Interpolator& self, py::handle other) -> py::object {
                 const py::str expression = ToPython(self.getExpression());
                 if (py::isinstance<Interpolator>(other)) {
                     const auto& second = py::cast<const Interpolator&>(other);
                     return py::bool_(expression.equal(ToPython(second.getExpression()))
                                      && HostFunction(&self).is(HostFunction(&second)));
                 }
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
            const py::object function = self.attr("function");
            return py::make_tuple(py::type::of(self),
                                  py::make_tuple(function.is_none() ? self.attr("expression") : function));
        });

    module.def("_register", &Register, py::arg("name"), py::arg("maker"));
    module.def(
        "_unregister", [](const Text& name) { Names().attr("pop")(ToPython(name.bytes), py::none()); },
        py::arg("name"));
    module.def("_forget_names", [] { Names().clear(); });
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
