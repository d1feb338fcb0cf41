#include "HostInterpolator.h"
#include "Lock.h"

#include "FCurveLib/DefaultFallbackParser.h"
#include "FCurveLib/InterpMaker.h"
#include "FCurveLib/InterpolatorFactory.h"
#include "FCurveLib/NumberInterp.h"
#include "FCurveLib/UnknownExpression.h"

#include <list>
#include <optional>
#include <stdexcept>

namespace FCurvePython {

namespace {

// The names that Python brought into the language of formulas: name -> callable. Never destroyed, as the factory may
// ask after the interpreter's end; emptied before that.
py::dict& Names() {
    static auto* const names = new py::dict();
    return *names;
}

// Why the last text failed in a callable of a name; empty where none did.
std::optional<py::error_already_set>& NameError() {
    static auto* const error = new std::optional<py::error_already_set>();
    return *error;
}

InterpolatorPtr FromResult(const py::object& made) {
    if (made.is_none()) return nullptr;
    // One that the callable holds on to keeps its expression: the factory gives the result the text it was made from.
    if (py::isinstance<Interpolator>(made)) return py::cast<InterpolatorPtr>(made)->clone();
    if (PyCallable_Check(made.ptr())) return std::make_shared<HostInterpolator>(made, true);
    return ToInterpolator(made)->clone();
}

// Asks the names of Python. Empty for others.
class NameMaker final : public InterpMaker {
public:
    std::shared_ptr<Interpolator> makeName(const char* name) override { return make(name, {}); }
    std::shared_ptr<Interpolator> makeFunction(const char* name,
                                               const std::list<InterpMaker::Argument>& arguments) override {
        return make(name, arguments);
    }

private:
    static InterpolatorPtr make(const char* name, const std::list<InterpMaker::Argument>& arguments) {
        if (!Py_IsInitialized()) return nullptr;
        const Locked lock;
        const py::str key = ToPython(name);
        if (!Names().contains(key)) return nullptr;
        try {
            py::list values;
            for (const InterpMaker::Argument& argument : arguments) {
                if (argument.number)
                    values.append(*argument.number);
                else if (argument.expression)
                    values.append(py::cast(argument.expression));
                else
                    values.append(ToPython(argument.text));
            }
            return FromResult(Names()[key](*py::tuple(values)));
        } catch (py::error_already_set& error) {
            NameError().emplace(error);
            throw std::runtime_error("A name failed"); // the text fails
        }
    }
};

// The parser that knows the names; lives for ever, as the factory is given it.
DefaultFallbackParser& Parser() {
    static auto* const parser = [] {
        auto* const made = new DefaultFallbackParser();
        made->addMaker(std::make_shared<NameMaker>());
        return made;
    }();
    return *parser;
}

void Register(const Text& name, const py::function& maker) {
    Names()[ToPython(name.bytes)] = maker;
    InterpolatorFactory::setParserFallback(&Parser());
}

[[noreturn]] void RaiseFormulaError(const std::string& text) {
    try {
        Parser().parseOrThrow(text.c_str());
    } catch (const DefaultFallbackParser::ParseError&) {
        if (!NameError()) RaiseHandled(nullptr);
        try {
            RaiseHandled(nullptr);
        } catch (py::error_already_set& error) { // because of what the callable raised
            const py::object raised = error.value();
            raised.attr("__cause__") = NameError()->value();
            NameError().reset();
            error.restore();
            throw py::error_already_set();
        }
    }
    throw py::value_error("\"" + text + "\" is not an expression");
}

InterpolatorPtr FromText(const std::string& text) {
    for (auto kind = InterpolatorFactory::begin(); kind != InterpolatorFactory::end(); ++kind)
        if (kind->first == text + "()") return kind->second;
    NameError().reset();
    InterpolatorPtr made = InterpolatorFactory::create(text.c_str());
    if (dynamic_cast<const UnknownExpression*>(made.get())) RaiseFormulaError(text);
    return made;
}

} // namespace

py::handle HostFunction(const Interpolator* interpolator) {
    const auto* const host = dynamic_cast<const HostInterpolator*>(interpolator);
    return host ? host->function() : nullptr;
}

InterpolatorPtr ToInterpolator(py::handle source) {
    if (py::isinstance<Interpolator>(source)) return py::cast<InterpolatorPtr>(source);
    if (PyUnicode_Check(source.ptr())) return FromText(ToText(source).bytes);
    if (PyFloat_Check(source.ptr()) || PyIndex_Check(source.ptr()))
        return NumberInterp::create(Finite(ToNumber(source), "The interpolator"));
    if (PyCallable_Check(source.ptr()))
        return std::make_shared<HostInterpolator>(py::reinterpret_borrow<py::object>(source));
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
    module.def("_forget_names", [] {
        Names().clear();
        NameError().reset();
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
