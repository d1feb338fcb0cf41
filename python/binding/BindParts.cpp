#include "Binding.h"

#include "FCurveLib/DisplayProperties.h"
#include "FCurveLib/IndexLookup.h"

#include <cstring>
#include <iterator>

namespace FCurvePython {

namespace {

constexpr const char* kTangentTypes[] = {"fixed", "flat", "linear", "smooth", "smooth_continued", "clamped", "plateau"};

py::str DescribeVector(const Vector2D<double>& vector) {
    return "(" + NumberText(vector.x) + ", " + NumberText(vector.y) + ")";
}

KeyPtr PreviousKey(Keyframe& key) {
    const SegmentPtr segment = key.getLeftSegment();
    return segment ? segment->getLeftKey() : nullptr;
}

KeyPtr NextKey(Keyframe& key) {
    const SegmentPtr segment = key.getRightSegment();
    return segment ? segment->getRightKey() : nullptr;
}

py::object IndexOf(Keyframe& key) {
    const CurvePtr curve = key.getOwningCurve();
    if (!curve) return py::none();
    return py::int_(GetKeyframeIndex(*curve, key));
}

SegmentPtr RightSegment(Keyframe& key) {
    SegmentPtr segment = key.getRightSegment();
    if (!segment) throw py::value_error("The key is in no curve");
    return segment;
}

void BindKey(py::class_<Keyframe, KeyPtr>& key) {
    // Position
    key.def_property(
           "x", &Keyframe::getX, Editing([](Keyframe& self, double x) { self.setX(Finite(x, "x")); }),
           "Its place in frames. In a curve it keeps 0.001 frames from its neighbours, and takes breakdown keys along.")
        .def_property("y", &Keyframe::getY, Editing([](Keyframe& self, double y) { self.setY(Finite(y, "y")); }),
                      "The curve's value at the key.")
        .def_property(
            "position", [](const Keyframe& self) { return ToPython(self.get()); },
            Editing([](Keyframe& self, py::handle pair) { self.set(ToVector(pair, "position")); }),
            "(x, y), set in one edit.");
    // Flags
    key.def_property("breakdown", &Keyframe::isBreakdown, Editing(&Keyframe::setBreakdown),
                     "Whether it moves in proportion with the keys around it.")
        .def_property("unified", &Keyframe::isTangentsUnified, Editing(&Keyframe::setTangentsUnified),
                      "Whether its tangents lie on one straight line through it.")
        .def_property(
            "locked", [](const Keyframe& self) { return *self.getProperty("fc_lock") != '\0'; },
            Editing([](Keyframe& self, bool locked) { SetLocked(self, locked); }),
            "Whether editors and tools keep it.");
    // Relations
    key.def_property_readonly(
           "in_tangent", [](Keyframe& self) { return self.getInTangent(); }, "None outside a curve.")
        .def_property_readonly(
            "out_tangent", [](Keyframe& self) { return self.getOutTangent(); }, "None outside a curve.")
        .def_property_readonly(
            "left_segment", [](Keyframe& self) { return self.getLeftSegment(); }, "None outside a curve.")
        .def_property_readonly(
            "right_segment", [](Keyframe& self) { return self.getRightSegment(); }, "None outside a curve.")
        .def_property(
            "interpolator", [](Keyframe& self) { return RightSegment(self)->getInterpolator(); },
            Editing([](Keyframe& self, py::handle interpolator) {
                RightSegment(self)->setInterpolator(ToInterpolator(interpolator));
            }),
            "The interpolator of the segment that starts here.")
        .def_property_readonly("previous", &PreviousKey, "The key before it, or None.")
        .def_property_readonly("next", &NextKey, "The key after it, or None.")
        .def_property_readonly("index", &IndexOf, "Its place in curve.keys; None outside a curve.")
        .def_property_readonly(
            "curve", [](Keyframe& self) { return self.getOwningCurve(); },
            "Its curve, which it does not keep alive; None once it was removed.");
    key.def("__repr__",
            [](Keyframe& self) { return py::str("<Key {} {}>").format(IndexOf(self), DescribeVector(self.get())); });
    DefineProperties(key);
}

void BindTangent(py::class_<Tangent, TangentPtr>& tangent) {
    tangent
        .def_property(
            "x", &Tangent::getX, Editing([](Tangent& self, double x) { self.setX(Finite(x, "x")); }),
            "The handle's offset from its key, in frames: 0 or less for an in tangent, 0 or more for an out tangent.")
        .def_property("y", &Tangent::getY, Editing([](Tangent& self, double y) { self.setY(Finite(y, "y")); }),
                      "The handle's offset from its key, in the curve's unit.")
        .def_property(
            "handle", [](const Tangent& self) { return ToPython(self.get()); },
            Editing([](Tangent& self, py::handle pair) { self.set(ToVector(pair, "handle")); }),
            "(x, y), an offset from the key. An unweighted handle is held to a third of its segment in x.")
        .def_property("angle", &Tangent::getAngle,
                      Editing([](Tangent& self, double angle) { self.setAngle(Finite(angle, "angle")); }),
                      "In radians; both tangents on one straight line through a key have the same.")
        .def_property("weight", &Tangent::getWeight,
                      Editing([](Tangent& self, double weight) { self.setWeight(Finite(weight, "weight")); }),
                      "The handle's length.")
        .def_property(
            "type",
            [](const Tangent& self) {
                return py::str(self.getType() < std::size(kTangentTypes) ? kTangentTypes[self.getType()] : "unknown");
            },
            Editing([](Tangent& self, const Text& type) { self.setType(TangentType(type)); }),
            "'fixed', 'flat', 'linear', 'smooth', 'smooth_continued', 'clamped' or 'plateau'. All but 'fixed' compute\n"
            "the handle anew whenever a key nearby changes.")
        .def_property("weighted", &Tangent::isWeighted, Editing(&Tangent::setWeighted),
                      "Whether the handle may have any length.")
        .def_property("weight_locked", &Tangent::isWeightLocked, Editing(&Tangent::setWeightLocked),
                      "Whether a weighted handle keeps its length.")
        .def_property_readonly("is_in", &Tangent::isInTangent, "Whether it stands at the right end of its segment.")
        .def_property_readonly(
            "key", [](Tangent& self) { return self.getOwningKeyframe(); }, "Its key, or None.")
        .def_property_readonly(
            "segment", [](Tangent& self) { return self.getOwningSegment(); }, "Its segment, or None.")
        .def_property_readonly(
            "opposite", [](Tangent& self) { return self.getOppositeTangent(); },
            "The other tangent at the same key, or None.")
        .def_property_readonly(
            "curve", [](Tangent& self) { return self.getOwningCurve(); }, "Its curve, or None.")
        .def("__repr__", [](const Tangent& self) {
            return py::str("<Tangent {} {} {}>")
                .format(self.isInTangent() ? "in" : "out", DescribeVector(self.get()), kTangentTypes[self.getType()]);
        });
    DefineProperties(tangent);
}

void BindSegment(py::class_<Segment, SegmentPtr>& segment) {
    segment
        .def_property("interpolator", &Segment::getInterpolator, Editing([](Segment& self, py::handle interpolator) {
                          self.setInterpolator(ToInterpolator(interpolator));
                      }),
                      "How the curve runs here; set it to an Interpolator, an expression, a number, or a callable.")
        .def_property_readonly(
            "left_key", [](Segment& self) { return self.getLeftKey(); }, "None for the leading segment.")
        .def_property_readonly(
            "right_key", [](Segment& self) { return self.getRightKey(); }, "None for the trailing segment.")
        .def_property_readonly(
            "out_tangent", [](Segment& self) { return self.getOutTangent(); }, "The handle at the left key.")
        .def_property_readonly(
            "in_tangent", [](Segment& self) { return self.getInTangent(); }, "The handle at the right key.")
        .def_property_readonly(
            "curve", [](Segment& self) { return self.getOwningCurve(); }, "Its curve, or None.")
        .def("__repr__", [](Segment& self) {
            const KeyPtr left = self.getLeftKey();
            const KeyPtr right = self.getRightKey();
            const InterpolatorPtr interpolator = self.getInterpolator();
            return py::str("<Segment {} {}..{}>")
                .format(ToPython(interpolator ? interpolator->getExpression() : "0"),
                        left ? NumberText(left->getX()) : "", right ? NumberText(right->getX()) : "");
        });
    DefineProperties(segment);
}

} // namespace

std::uint8_t TangentType(const Text& name) {
    for (std::size_t i = 0; i < std::size(kTangentTypes); ++i)
        if (name.bytes == kTangentTypes[i]) return static_cast<std::uint8_t>(i);
    std::string names;
    for (const char* const known : kTangentTypes) names += std::string(names.empty() ? "" : ", ") + known;
    throw py::value_error("Expected one of " + names + ", found " + name.bytes);
}

void BindParts(py::module_& module) {
    py::class_<Keyframe, KeyPtr> key(module, "Key", py::is_final(),
                                     "A keyframe: a point (x, y) that its curve passes through. Made by\n"
                                     "Curve.add_key. Two keys are equal when they are the same one.");
    py::class_<Segment, SegmentPtr> segment(module, "Segment", py::is_final(),
                                            "The span between two neighbouring keys, or before the first or after the\n"
                                            "last one.");
    py::class_<Tangent, TangentPtr> tangent(module, "Tangent", py::is_final(),
                                            "The handle at one end of a segment, as an offset from its key.");
    BindKey(key);
    BindTangent(tangent);
    BindSegment(segment);
}

} // namespace FCurvePython
