#include "Binding.h"
#include "NameScope.h"

#include "FCurveLib/ClipText.h"
#include "FCurveLib/CopyKeys.h"
#include "FCurveLib/Diff.h"
#include "FCurveLib/KeyClip.h"
#include "FCurveLib/KeyGroup.h"
#include "FCurveLib/MoveKeys.h"
#include "FCurveLib/SetKey.h"

#include <cmath>
#include <iterator>
#include <vector>

namespace FCurvePython {

namespace {

// The place of the name among the names.
template<std::size_t size>
std::size_t Choose(const Text& name, const char* const (&names)[size]) {
    std::string known;
    for (std::size_t i = 0; i < size; ++i) {
        if (name.bytes == names[i]) return i;
        known += std::string(known.empty() ? "'" : ", '") + names[i] + "'";
    }
    throw py::value_error("Expected one of " + known + ", found '" + name.bytes + "'");
}

KeyPtr SetKeyAt(FCurve& curve, double x, double y, const Text& style, py::handle interpolator) {
    constexpr const char* styles[] = {"shape", "flat", "linear", "spline", "clamped", "plateau", "stepped"};
    EditSettings settings;
    switch (Choose(style, styles)) {
    case 1:
        settings = EditSettings::flat();
        break;
    case 2:
        settings = EditSettings::linear();
        break;
    case 3:
        settings = EditSettings::spline();
        break;
    case 4:
        settings = EditSettings::clamped();
        break;
    case 5:
        settings = EditSettings::plateau();
        break;
    case 6:
        settings = EditSettings::stepped();
        break;
    default:
        break;
    }
    if (!interpolator.is_none()) settings.interpolator = ToInterpolator(interpolator);
    return SetKey(curve, Finite(x, "x"), Finite(y, "y"), settings).key;
}

// Of a curve, or of keys.
KeyGroup ToGroup(py::handle source) {
    if (py::isinstance<FCurve>(source)) return KeyGroup(py::cast<FCurve&>(source));
    std::vector<KeyPtr> keys;
    for (const auto key : FCurvePython::ToList(source)) {
        if (!py::isinstance<Keyframe>(key))
            throw py::type_error("Expected keys, found " + std::string(Py_TYPE(key.ptr())->tp_name));
        keys.push_back(py::cast<KeyPtr>(key));
    }
    return KeyGroup(keys);
}

py::list ToList(const std::vector<KeyPtr>& keys) {
    py::list list;
    for (const KeyPtr& key : keys) list.append(key);
    return list;
}

py::list ToList(const std::vector<std::string>& texts) {
    py::list list;
    for (const std::string& text : texts) list.append(ToPython(text));
    return list;
}

MoveOptions ToOptions(const Text& others, double frameStep, double valueStep) {
    constexpr const char* names[] = {"stop", "cross", "ripple"};
    MoveOptions options;
    options.others = static_cast<MoveOptions::Others>(Choose(others, names));
    options.frameStep = frameStep;
    options.valueStep = valueStep;
    return options;
}

PasteReport Paste(const KeyClip& clip, py::handle target, py::handle frame, const Text& mode, const Text& match,
                  double gap) {
    constexpr const char* modes[] = {"insert", "replace", "ripple"};
    constexpr const char* matches[] = {"name", "order"};
    PasteOptions options;
    options.mode = static_cast<PasteOptions::Mode>(Choose(mode, modes));
    options.match = static_cast<PasteOptions::Match>(Choose(match, matches));
    if (!frame.is_none()) options.frame = Finite(ToNumber(frame), "frame");
    options.gap = Finite(gap, "gap");
    if (py::isinstance<FCurveContainer>(target)) return PasteKeys(clip, py::cast<FCurveContainer&>(target), options);
    std::vector<CurvePtr> curves;
    if (py::isinstance<FCurve>(target)) {
        curves.push_back(ToCurve(target));
        options.match = PasteOptions::ByOrder;
    } else {
        for (const auto curve : FCurvePython::ToList(target)) curves.push_back(ToCurve(curve));
    }
    return PasteKeys(clip, curves, options);
}

py::dict PartToPython(const PartDifference& difference) {
    constexpr const char* parts[] = {"curve", "key", "segment", "in_tangent", "out_tangent"};
    constexpr const char* whats[] = {"missing",      "added",  "name", "position",  "flags",
                                     "interpolator", "handle", "type", "properties"};
    const auto number = [](std::size_t place) {
        return place == PartDifference::none ? py::object(py::none()) : py::object(py::int_(place));
    };
    py::list what;
    for (std::size_t bit = 0; bit < std::size(whats); ++bit)
        if ((difference.what & (1U << bit)) != 0) what.append(whats[bit]);
    py::dict result;
    result["part"] = parts[difference.part];
    result["what"] = what;
    result["first"] = number(difference.first);
    result["second"] = number(difference.second);
    result["x"] = difference.x;
    return result;
}

} // namespace

void BindGroups(py::module_& module, CurveClass& curve) {
    curve.def(
        "set_key", Editing(&SetKeyAt), py::arg("x"), py::arg("y"), py::arg("style") = "shape",
        py::arg("interpolator") = py::none(),
        "Makes the curve pass through (x, y), and returns the key: the one that stands within 0.001 frames of x, or\n"
        "a new one. style: 'shape' keeps the curve's shape up to the new value; 'flat', 'linear', 'spline',\n"
        "'clamped' and 'plateau' are tangent types; 'stepped' holds the value until the next key.");
    curve.def(
        "diff",
        [](const FCurve& self, const FCurve& other, double tolerance, bool properties) {
            DiffOptions options;
            options.tolerance = tolerance;
            options.properties = properties;
            const CurveDifference found = Diff(self, other, options);
            py::list parts;
            for (const PartDifference& part : found.parts) parts.append(PartToPython(part));
            return py::make_tuple(parts, found.largest, found.x);
        },
        py::arg("other"), py::arg("tolerance") = 0.0, py::arg("properties") = true,
        "(parts, largest, x): the parts in which the curves differ, each a dict of part, what (a list of 'missing',\n"
        "'added', 'position' ...), first and second (numbers in the two curves) and x; the largest difference in "
        "value,\n"
        "and its frame.");

    py::class_<MoveReport>(module, "MoveReport", py::is_final(), "What became of keys that were moved.")
        .def_readonly("keys", &MoveReport::keys, "How many of the group are in their curves.")
        .def_readonly("others", &MoveReport::others, "How many keys moved along.")
        .def_readonly("passed", &MoveReport::passed, "How many passed others.")
        .def_readonly("is_limited", &MoveReport::isLimited, "Whether something held the group back.")
        .def_property_readonly(
            "offset", [](const MoveReport& self) { return ToPython(self.offset); },
            "(x, y): how far the first key is from where it stood.")
        .def_property_readonly(
            "factor", [](const MoveReport& self) { return ToPython(self.factor); },
            "(x, y): by which distances are scaled.");

    py::class_<KeyGroup>(
        module, "KeyGroup", py::is_final(),
        "Keys that move as one, counted from where they stand now.\n\n"
        "KeyGroup(keys): an iterable of keys, of one or several curves, or a Curve for all of its keys.")
        .def(py::init(&ToGroup), py::arg("keys"))
        .def("__len__", &KeyGroup::size)
        .def_property_readonly(
            "keys", [](const KeyGroup& self) { return ToList(self.getKeys()); }, "The keys, curve by curve and by x.")
        .def("move",
             Editing([](KeyGroup& self, py::handle offset, const Text& others, double frameStep, double valueStep) {
                 return MoveKeys(self, ToVector(offset, "offset"), ToOptions(others, frameStep, valueStep));
             }),
             py::arg("offset"), py::arg("others") = "stop", py::kw_only(), py::arg("frame_step") = 0.0,
             py::arg("value_step") = 0.0,
             "Moves the keys by (x, y) from where they stood when the group was made. others: keys in the way 'stop' "
             "it,\n"
             "it may 'cross' them, or they 'ripple' along. Steps are grids for the first key, 0 for none.")
        .def("scale",
             Editing([](KeyGroup& self, py::handle pivot, py::handle factor, const Text& others, double frameStep,
                        double valueStep) {
                 const Vector2D<double> by = ToVector(factor, "factor");
                 if (!(by.x > 0.0)) throw py::value_error("Expected a factor of time above 0");
                 return ScaleKeys(self, ToVector(pivot, "pivot"), by, ToOptions(others, frameStep, valueStep));
             }),
             py::arg("pivot"), py::arg("factor"), py::arg("others") = "stop", py::kw_only(),
             py::arg("frame_step") = 0.0, py::arg("value_step") = 0.0,
             "Scales distances from the pivot (x, y) by (x, y), as move.");

    py::class_<PasteReport>(module, "PasteReport", py::is_final(), "What became of keys that were pasted.")
        .def_property_readonly(
            "keys", [](const PasteReport& self) { return ToList(self.keys); }, "The new keys.")
        .def_readonly("curves", &PasteReport::curves, "How many curves got keys.")
        .def_readonly("removed", &PasteReport::removed, "How many keys went.")
        .def_readonly("shifted", &PasteReport::shifted, "How many keys moved on.")
        .def_property_readonly(
            "unmatched", [](const PasteReport& self) { return ToList(self.unmatched); },
            "Names of the clip's curves that found no place.")
        .def_property_readonly(
            "kept", [](const PasteReport& self) { return ToList(self.kept); },
            "Expressions that could not be moved in time.");

    py::class_<KeyClip>(module, "KeyClip", py::is_final(),
                        "Copied keys with all that is theirs. It never changes.\n\n"
                        "KeyClip(keys): an iterable of keys, a Curve, or the text of a clip.")
        .def(py::init([](py::handle source) {
                 if (!PyUnicode_Check(source.ptr())) return CopyKeys(ToGroup(source));
                 NameScope names;
                 KeyClip clip = ClipFromText(ToText(source).bytes);
                 names.finish();
                 return clip;
             }),
             py::arg("keys"))
        .def("__len__", &KeyClip::size)
        .def_property_readonly(
            "text", [](const KeyClip& self) { return ToPython(ClipToText(self)); },
            "The clip as a text, for a clipboard.")
        .def(
            "paste", Editing(&Paste), py::arg("target"), py::arg("frame") = py::none(), py::arg("mode") = "insert",
            py::arg("match") = "name", py::arg("gap") = 1.0,
            "Pastes into a Curve, a Container or several curves, with the first key at the frame (by default where it\n"
            "came from). mode: 'insert' between other keys, 'replace' those in between, or let them 'ripple' on.\n"
            "match: curves by 'name' or 'order'.");
}

} // namespace FCurvePython
