#include "NameScope.h"

#include "FCurveLib/FCurveFormatInterface.h"
#include "FCurveLib/ReadWrite.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace FCurvePython {

CurvePtr ToCurve(py::handle curve) {
    if (!py::isinstance<FCurve>(curve))
        throw py::type_error("Expected a Curve, found " + std::string(Py_TYPE(curve.ptr())->tp_name));
    return py::cast<CurvePtr>(curve);
}

Segment& FirstSegment(FCurve& curve) {
    return *curve.begin();
}

Segment& LastSegment(FCurve& curve) {
    return *std::prev(curve.end());
}

CurvePtr CurveOf(Keyframe& key) {
    CurvePtr curve = key.getOwningCurve();
    if (!curve) throw py::value_error("The key is in no curve");
    return curve;
}

void RemoveKey(FCurve& curve, Keyframe& key) {
    if (CurveOf(key).get() != &curve) throw py::value_error("The key is in another curve");
    const SegmentPtr segment = key.getRightSegment();
    auto position = curve.findSegment(key.getX());
    while (&*position != segment.get()) { // keys at one place, in a curve from elsewhere
        if (position == curve.begin()) throw py::value_error("The key is in another curve");
        --position;
    }
    curve.removeSegment(position);
}

namespace {

template<class Part>
bool SameProperties(const Part& a, const Part& b) {
    return a.sizeProperties() == b.sizeProperties()
           && std::equal(a.beginProperties(), a.endProperties(), b.beginProperties());
}

bool Same(const Tangent& a, const Tangent& b) {
    return a.get() == b.get() && a.getType() == b.getType() && a.isWeighted() == b.isWeighted()
           && a.isWeightLocked() == b.isWeightLocked() && SameProperties(a, b);
}

bool Same(const Keyframe& a, const Keyframe& b) {
    return a.get() == b.get() && a.isBreakdown() == b.isBreakdown() && a.isTangentsUnified() == b.isTangentsUnified()
           && SameProperties(a, b);
}

bool Same(const InterpolatorPtr& a, const InterpolatorPtr& b) {
    return a == b
           || (a && b && std::strcmp(a->getExpression(), b->getExpression()) == 0
               && HostFunction(a.get()).is(HostFunction(b.get())));
}

bool Same(const Segment& a, const Segment& b) {
    const auto left = a.getLeftKey();
    const auto otherLeft = b.getLeftKey();
    return Same(a.getInterpolator(), b.getInterpolator()) && SameProperties(a, b) && !left == !otherLeft
           && (!left || Same(*left, *otherLeft)) && Same(*a.getInTangent(), *b.getInTangent())
           && Same(*a.getOutTangent(), *b.getOutTangent());
}

} // namespace

bool Equal(const FCurve& a, const FCurve& b) {
    return a.size() == b.size() && std::strcmp(a.getName(), b.getName()) == 0 && SameProperties(a, b)
           && std::equal(a.begin(), a.end(), b.begin(), [](const Segment& x, const Segment& y) { return Same(x, y); });
}

bool Equal(const FCurveContainer& a, const FCurveContainer& b) {
    return a.size() == b.size() && SameProperties(a, b)
           && std::equal(a.begin(), a.end(), b.begin(), [](const FCurve& x, const FCurve& y) { return Equal(x, y); });
}

// --- pickling --------------------------------------------------------------------------------------------------------
//
// The curve in the format "binary", and beside it what files leave out: editor properties, and interpolators that are
// written in Python. Both as lists of (number of the segment, part, ...).

namespace {

enum Part : int { WholeCurve, OfSegment, OfKey, OfInTangent, OfOutTangent };

template<class Of>
void AddProperties(py::list& state, std::size_t number, Part part, const Of& of) {
    for (auto it = of.beginProperties(); it != of.endProperties(); ++it)
        if (it->first.compare(0, 3, "fc_") == 0)
            state.append(py::make_tuple(number, static_cast<int>(part), ToPython(it->first), ToPython(it->second)));
}

void SetProperty(Segment& segment, int part, const char* key, const char* value) {
    switch (part) {
    case OfSegment:
        segment.setProperty(key, value);
        break;
    case OfKey:
        if (const KeyPtr left = segment.getLeftKey()) left->setProperty(key, value);
        break;
    case OfInTangent:
        segment.getInTangent()->setProperty(key, value);
        break;
    case OfOutTangent:
        segment.getOutTangent()->setProperty(key, value);
        break;
    default:
        break;
    }
}

} // namespace

py::tuple CurveState(FCurve& curve) {
    std::string document;
    WriteFCurveToString(curve, "binary", document);
    py::list properties;
    py::list functions;
    AddProperties(properties, 0, WholeCurve, curve);
    std::size_t number = 0;
    for (Segment& segment : curve) {
        AddProperties(properties, number, OfSegment, segment);
        if (const KeyPtr left = segment.getLeftKey()) AddProperties(properties, number, OfKey, *left);
        AddProperties(properties, number, OfInTangent, *segment.getInTangent());
        AddProperties(properties, number, OfOutTangent, *segment.getOutTangent());
        if (HostFunction(segment.getInterpolator().get()))
            functions.append(py::make_tuple(number, py::cast(segment.getInterpolator())));
        ++number;
    }
    return py::make_tuple(py::bytes(document), properties, functions);
}

CurvePtr CurveFromState(const py::tuple& state) {
    if (state.size() != 3) throw py::value_error("Not the state of a curve");
    CurvePtr curve = FCurve::create();
    FCurve::Switch quiet(*curve);
    NameScope names;
    ReadFCurveFromString(py::cast<std::string>(state[0]), "binary", *curve);
    names.finish();
    std::size_t number = 0;
    auto position = curve->begin();
    const auto segmentOf = [&](std::size_t wanted) -> Segment& {
        if (wanted < number || wanted >= curve->size()) throw py::value_error("Not the state of a curve");
        for (; number < wanted; ++number) ++position;
        return *position;
    };
    for (const auto item : py::cast<py::list>(state[1])) {
        const auto [where, part, key, value] = py::cast<std::tuple<std::size_t, int, Text, Text>>(item);
        if (part == WholeCurve)
            curve->setProperty(key.c_str(), value.c_str());
        else
            SetProperty(segmentOf(where), part, key.c_str(), value.c_str());
    }
    number = 0;
    position = curve->begin();
    for (const auto item : py::cast<py::list>(state[2])) {
        const auto pair = py::cast<py::tuple>(item);
        segmentOf(py::cast<std::size_t>(pair[0])).setInterpolator(ToInterpolator(pair[1]));
    }
    return curve;
}

} // namespace FCurvePython
