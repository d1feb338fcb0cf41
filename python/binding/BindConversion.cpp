#include "Binding.h"

#include "FCurveInterchange/FCurveInterchange.h"

#include <optional>
#include <tuple>

namespace FCurvePython {

namespace {

using Interchange::Conversion;
using Interchange::ConversionOptions;
using Interchange::ConversionReport;
using Interchange::Loss;

// A Conversion between enter and exit, which nest, as the functions do that use it.
struct ConversionScope {
    ConversionReport* report;
    ConversionOptions options;
    std::optional<Conversion> conversion;
};

py::str DescribeReport(const ConversionReport& report) {
    std::string text;
    for (const Loss& loss : report.losses()) {
        if (!text.empty()) text += '\n';
        if (!loss.curve.empty()) text += loss.curve + ": ";
        text += Interchange::Describe(loss);
    }
    return ToPython(text);
}

} // namespace

void BindConversion(py::module_& module) {
    Interchange::RegisterFormats();

    py::class_<Loss>(module, "Loss", py::is_final(),
                     "One thing that a conversion lost or changed, at one place or at several. str() tells it.")
        .def_property_readonly(
            "curve", [](const Loss& self) { return ToPython(self.curve); }, "Its name; '' for the whole document.")
        .def_property_readonly(
            "what", [](const Loss& self) { return ToPython(Interchange::ToText(self.what)); },
            "'kind', 'tangents', 'ends', 'formulas', 'flags', 'properties', 'names', 'precision', 'time', 'curves' or\n"
            "'units'.")
        .def_property_readonly(
            "remedy", [](const Loss& self) { return ToPython(Interchange::ToText(self.remedy)); },
            "'dropped', 'replaced', 'split', 'fitted', 'sampled', 'shortened', 'moved', 'renamed' or 'rounded'.")
        .def_property_readonly(
            "detail", [](const Loss& self) { return ToPython(self.detail); }, "A few words for people.")
        .def_readonly("count", &Loss::count, "At how many places.")
        .def_property_readonly(
            "places",
            [](const Loss& self) {
                py::list places;
                for (const double place : self.places) places.append(place);
                return places;
            },
            "Their frames, the first 16.")
        .def_readonly("difference", &Loss::difference, "The largest difference in value, in the curve's unit.")
        .def_readonly("at", &Loss::at, "The frame where it is.")
        .def("__eq__",
             [](const Loss& self, py::handle other) -> py::object {
                 if (!py::isinstance<Loss>(other)) return py::reinterpret_borrow<py::object>(Py_NotImplemented);
                 const auto& second = py::cast<const Loss&>(other);
                 const auto parts = [](const Loss& of) {
                     return std::tie(of.curve, of.what, of.remedy, of.detail, of.count, of.places, of.difference,
                                     of.at);
                 };
                 return py::bool_(parts(self) == parts(second));
             })
        .def("__hash__", [](const Loss& self) { return py::hash(ToPython(self.curve + self.detail)); })
        .def("__str__", [](const Loss& self) { return ToPython(Interchange::Describe(self)); })
        .def("__repr__", [](const Loss& self) {
            return py::str("<Loss {!r} {}>").format(ToPython(self.curve), ToPython(Interchange::Describe(self)));
        });

    py::class_<ConversionReport>(
        module, "Report", py::is_final(),
        "What a conversion lost: a sequence of Loss, false where nothing was. str() has a line\n"
        "for each.")
        .def(py::init<>())
        .def("__len__", [](const ConversionReport& self) { return self.losses().size(); })
        .def("__getitem__", [](const ConversionReport& self,
                               py::ssize_t index) { return self.losses()[Place(index, self.losses().size())]; })
        .def("__getitem__",
             [](const ConversionReport& self, const py::slice& of) {
                 py::list all;
                 for (const Loss& loss : self.losses()) all.append(loss);
                 return py::object(all[of]);
             })
        .def(
            "difference", [](const ConversionReport& self, const Text& curve) { return self.difference(curve.bytes); },
            py::arg("curve"), "The largest difference in value of the curve of that name; 0 where it has none.")
        .def(
            "to_json", [](const ConversionReport& self) { return ToPython(Interchange::ToJson(self)); },
            "The report as a JSON text.")
        .def("__str__", &DescribeReport)
        .def("__repr__", [](const ConversionReport& self) {
            return py::str("<Report of {} losses>").format(self.losses().size());
        });

    py::class_<ConversionScope>(module, "_Conversion")
        .def(py::init([](ConversionReport& report, double frameRate, double tolerance, const py::dict& settings) {
                 auto scope = std::make_unique<ConversionScope>();
                 scope->report = &report;
                 scope->options.frameRate = frameRate;
                 scope->options.tolerance = tolerance;
                 for (const auto item : settings)
                     scope->options.settings[ToText(item.first).bytes] = ToText(item.second).bytes;
                 if (const std::string fault = Interchange::FaultOfSettings(scope->options); !fault.empty())
                     throw py::value_error(fault);
                 return scope;
             }),
             py::keep_alive<1, 2>(), py::arg("report"), py::arg("frame_rate"), py::arg("tolerance"),
             py::arg("settings"))
        .def("__enter__", [](ConversionScope& self) { self.conversion.emplace(*self.report, self.options); })
        .def("__exit__", [](ConversionScope& self, const py::args& /*error*/) { self.conversion.reset(); });
}

} // namespace FCurvePython
