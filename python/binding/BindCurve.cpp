#include "Binding.h"

#include "FCurveLib/Extents.h"
#include "FCurveLib/IndexLookup.h"
#include "FCurveLib/InsertBezierKeyframe.h"
#include "FCurveLib/InterpolatorFactory.h"
#include "FCurveLib/Rectangle.h"

#include <cmath>
#include <cstring>
#include <vector>

namespace FCurvePython {

namespace {

// Adds a key and the interpolator of the segment between it and a neighbour; what runs before the first and after the
// last key stays what it was. An empty interpolator stands for the one that runs there, between keys, else bezier().
KeyPtr AddKey(FCurve& curve, double x, double y, InterpolatorPtr interpolator) {
    Segment& cut = *curve.findSegment(x);
    const KeyPtr left = cut.getLeftKey();
    const KeyPtr right = cut.getRightKey();
    if (left && left->getX() == x) throw py::value_error("There is a key at " + NumberText(x) + " already");
    if (!interpolator) {
        if (left && right)
            interpolator = cut.getInterpolator();
        else
            interpolator = InterpolatorFactory::create("bezier()");
    }
    const bool atEnd = !right;
    const SegmentPtr before = cut.getShared();
    const auto position = curve.insertSegment(*Keyframe::create(x, y), atEnd ? cut.getInterpolator() : interpolator);
    KeyPtr key = position->getLeftKey();
    if (atEnd && left) before->setInterpolator(interpolator);
    return key;
}

void SetHandle(Tangent& tangent, const Vector2D<double>& handle) {
    tangent.setType(Tangent::Fixed);
    tangent.setWeighted(true);
    tangent.set(handle);
}

CurvePtr MakeCurve(const Text& name, const py::iterable& keys, py::handle interpolator) {
    CurvePtr curve = FCurve::create();
    curve->setName(name.c_str());
    const InterpolatorPtr between = ToInterpolator(interpolator);
    for (const auto key : ToList(keys)) {
        const Vector2D<double> position = ToVector(key, "a key");
        AddKey(*curve, position.x, position.y, between);
    }
    return curve;
}

// (leading, trailing) from one of both, or a pair.
void SetExtend(FCurve& curve, py::handle value) {
    InterpolatorPtr leading;
    InterpolatorPtr trailing;
    if (py::isinstance<py::tuple>(value) || py::isinstance<py::list>(value)) {
        if (py::len(value) != 2) throw py::value_error("Expected two interpolators: before and after the keys");
        const auto pair = py::reinterpret_borrow<py::sequence>(value);
        leading = ToInterpolator(pair[0]);
        trailing = ToInterpolator(pair[1]);
    } else {
        leading = trailing = ToInterpolator(value);
    }
    const SegmentPtr first = FirstSegment(curve).getShared();
    const SegmentPtr last = LastSegment(curve).getShared();
    if (first == last && std::strcmp(leading->getExpression(), trailing->getExpression()) != 0)
        throw py::value_error("A curve without keys has one segment: expected one interpolator for it");
    first->setInterpolator(leading);
    last->setInterpolator(trailing);
}

py::object RangeOf(FCurve& curve) {
    const KeyPtr first = FirstSegment(curve).getRightKey();
    const KeyPtr last = LastSegment(curve).getLeftKey();
    if (!first || !last) return py::none();
    return py::make_tuple(first->getX(), last->getX());
}

py::object Extents(const FCurve& curve) {
    Rectangle<double> box;
    if (!GetInteriorExtents(curve, box)) return py::none();
    return py::make_tuple(box.x, box.y, box.width, box.height);
}

KeyPtr InsertKey(FCurve& curve, double x) {
    const auto position = InsertBezierKeyframe(curve, Finite(x, "x"));
    if (position == curve.end()) throw py::value_error("No key can stand at " + NumberText(x));
    return position->getLeftKey();
}

py::tuple PreviewKey(const FCurve& curve, double x) {
    constexpr const char* outcomes[] = {"refused", "keeps shape", "keeps expression", "changes shape"};
    const KeyframeInsertion preview = PreviewBezierKeyframe(curve, x);
    return py::make_tuple(outcomes[preview.outcome], preview.error);
}

KeyPtr KeyAt(FCurve& curve, double x, double tolerance) {
    Segment& segment = *curve.findSegment(x);
    for (const KeyPtr& key : {segment.getLeftKey(), segment.getRightKey()})
        if (key && std::abs(key->getX() - x) <= tolerance) return key;
    return nullptr;
}

void BindEditing(CurveClass& curve) {
    curve.def(
        "add_key",
        Editing([](FCurve& self, double x, double y, py::object interpolator, py::object in, py::object out,
                   py::object type, bool breakdown, bool unified) {
            Finite(x, "x");
            Finite(y, "y");
            // All arguments are looked at before the curve changes.
            const InterpolatorPtr between = interpolator.is_none() ? nullptr : ToInterpolator(interpolator);
            const Vector2D<double> inHandle = in.is_none() ? Vector2D<double>() : ToVector(in, "in_");
            const Vector2D<double> outHandle = out.is_none() ? Vector2D<double>() : ToVector(out, "out");
            if (inHandle.x > 0.0) throw py::value_error("in_ points across its key");
            if (outHandle.x < 0.0) throw py::value_error("out points across its key");
            const std::uint8_t both = type.is_none() ? std::uint8_t{0} : TangentType(ToText(type));

            KeyPtr key = AddKey(self, x, y, between);
            if (breakdown) key->setBreakdown(true);
            const TangentPtr inTangent = key->getInTangent(); // none, where an observer has removed the key
            const TangentPtr outTangent = key->getOutTangent();
            if (inTangent && !type.is_none()) inTangent->setType(both);
            if (outTangent && !type.is_none()) outTangent->setType(both);
            if (inTangent && !in.is_none()) SetHandle(*inTangent, inHandle);
            if (outTangent && !out.is_none()) SetHandle(*outTangent, outHandle);
            if (unified) key->setTangentsUnified(true);
            return key;
        }),
        py::arg("x"), py::arg("y"), py::kw_only(), py::arg("interpolator") = py::none(), py::arg("in_") = py::none(),
        py::arg("out") = py::none(), py::arg("type") = py::none(), py::arg("breakdown") = false,
        py::arg("unified") = false,
        "Adds a key at x (in frames) with the value y, and returns it.\n\n"
        "interpolator: of the segment between it and the next key (the one before, for a new last key); by default\n"
        "the one that ran there, 'bezier()' beyond the keys. What runs before the first and after the last key stays.\n"
        "in_, out: handles as offsets (x, y) from the key; they make the tangent fixed and weighted.\n"
        "type: of both tangents otherwise; new ones are 'fixed' and flat.\n"
        "ValueError where a key stands at that x already.");
    curve
        .def("insert_key", Editing(&InsertKey), py::arg("x"),
             "Adds a key on the curve at x and keeps its shape, and returns it. ValueError where none can stand.")
        .def("preview_key", &PreviewKey, py::arg("x"),
             "What insert_key would do: ('keeps shape', 'keeps expression', 'changes shape' or 'refused', and the\n"
             "greatest change of the curve's value).")
        .def("remove_key", Editing([](FCurve& self, Keyframe& key) { RemoveKey(self, key); }), py::arg("key"),
             "Removes the key and the segment that starts at it. ValueError for a key of another curve.")
        .def("clear", Editing(&FCurve::clear), "Removes all keys; name and properties stay.")
        .def("assign", Editing([](FCurve& self, const FCurve& other) { self = other; }), py::arg("other"),
             "Becomes a copy of another curve; observers stay.");
}

void BindIdentity(CurveClass& curve) {
    curve
        .def(
            "copy", [](const FCurve& self) { return FCurve::createCopy(self); },
            "A copy with keys, segments and tangents of its own, without observers.")
        .def("__copy__", [](const FCurve& self) { return FCurve::createCopy(self); })
        .def(
            "__deepcopy__", [](const FCurve& self, py::handle /*memo*/) { return FCurve::createCopy(self); },
            py::arg("memo"))
        .def("__eq__",
             [](const FCurve& self, py::handle other) -> py::object {
                 if (!py::isinstance<FCurve>(other)) return py::reinterpret_borrow<py::object>(Py_NotImplemented);
                 return py::bool_(Equal(self, py::cast<const FCurve&>(other)));
             })
        .def("__reduce__",
             [](FCurve& self) {
                 return py::make_tuple(py::module_::import("fcurvelib._state").attr("curve_from_state"),
                                       py::make_tuple(CurveState(self)));
             })
        .def("__repr__", [](FCurve& self) {
            const py::object name = ToPython(self.getName());
            const KeyPtr first = FirstSegment(self).getRightKey();
            const KeyPtr last = LastSegment(self).getLeftKey();
            if (!first || !last) return py::str("<Curve {!r}, no keys>").format(name);
            if (first == last) return py::str("<Curve {!r}, 1 key at {}>").format(name, NumberText(first->getX()));
            return py::str("<Curve {!r}, {} keys from {} to {}>")
                .format(name, self.size() - 1, NumberText(first->getX()), NumberText(last->getX()));
        });
    curve.attr("__hash__") = py::none(); // equal by content, which changes
}

} // namespace

void BindCurve(CurveClass& curve) {
    curve.def(py::init(&MakeCurve), py::arg("name") = Text(), py::arg("keys") = py::tuple(),
              py::arg("interpolator") = "bezier()");
    curve
        .def_property(
            "name", [](const FCurve& self) { return ToPython(self.getName()); },
            Editing([](FCurve& self, const Text& name) { self.setName(name.c_str()); }),
            "What a container finds the curve by; need not be unique there.")
        .def_property(
            "extend",
            [](FCurve& self) {
                return py::make_tuple(ShortExpression(FirstSegment(self)), ShortExpression(LastSegment(self)));
            },
            Editing(&SetExtend),
            "How the curve runs before its first and after its last key: a pair of expressions. Set it to a pair, or "
            "to\n"
            "one for both (the only choice without keys): 'constant', 'linear', 'cycle', 'cycle_offset', 'mirror', a "
            "number, a formula.")
        .def_property_readonly("range", &RangeOf, "(x of the first key, x of the last key); None without keys.")
        .def_property_readonly("extents", &Extents,
                               "The box around the keyed range: (x, y, width, height); None without keys.")
        .def("key_at", &KeyAt, py::arg("x"), py::arg("tolerance") = 1e-7,
             "The key within tolerance (in frames) of x, or None.")
        .def(
            "segment_at", [](FCurve& self, double x) { return self.findSegment(x)->getShared(); }, py::arg("x"),
            "The segment that holds x: at a key, the one that starts there.");
    DefineProperties(curve);
    BindEditing(curve);
    BindIdentity(curve);
}

} // namespace FCurvePython
