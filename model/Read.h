#pragma once

// What the library's own code reads of the parts: raw references where the public getters hand out shared pointers,
// because a reference count touched per evaluation costs more than the evaluation.

#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Segment.h"
#include "FCurveLib/Tangent.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// Names a curve without keeping it alive: null once the curve is gone. One link serves all segments of a curve, so a
// swap re-points them together.
struct CurveLink {
    FCurve* curve = nullptr;
};

// Null where the thing does not exist. A part that may be edited gives parts that may be edited; nothing here edits.
struct Read {
    // --- a segment's parts -------------------------------------------------------------------------------------------
    static const Keyframe* leftKey(const Segment& s) noexcept { return s.m_leftKey.get(); }
    static const Keyframe* rightKey(const Segment& s) noexcept { return s.m_rightKey.get(); }
    static Keyframe* leftKey(Segment& s) noexcept { return s.m_leftKey.get(); }
    static Keyframe* rightKey(Segment& s) noexcept { return s.m_rightKey.get(); }
    static bool hasBothKeys(const Segment& s) noexcept { return s.m_leftKey && s.m_rightKey; }
    static const Tangent* inTangent(const Segment& s) noexcept { return s.m_inTangent.get(); }
    static const Tangent* outTangent(const Segment& s) noexcept { return s.m_outTangent.get(); }
    static Tangent* inTangent(Segment& s) noexcept { return s.m_inTangent.get(); }
    static Tangent* outTangent(Segment& s) noexcept { return s.m_outTangent.get(); }
    static const Interpolator* interpolator(const Segment& s) noexcept { return s.m_interpolator.get(); }

    // --- around a key ------------------------------------------------------------------------------------------------
    static const Segment* leftSegment(const Keyframe& k) noexcept { return k.m_left; }
    static const Segment* rightSegment(const Keyframe& k) noexcept { return k.m_right.get(); }
    static Segment* leftSegment(Keyframe& k) noexcept { return k.m_left; }
    static Segment* rightSegment(Keyframe& k) noexcept { return k.m_right.get(); }
    static Keyframe* previousKey(Keyframe& k) noexcept { return k.m_left ? leftKey(*k.m_left) : nullptr; }
    static Keyframe* nextKey(Keyframe& k) noexcept { return k.m_right ? rightKey(*k.m_right) : nullptr; }

    // --- the owning curve --------------------------------------------------------------------------------------------
    static FCurve* curve(FCurve& c) noexcept { return &c; }
    static const FCurve* curve(const Segment& s) noexcept { return s.m_curve ? s.m_curve->curve : nullptr; }
    static FCurve* curve(Segment& s) noexcept { return s.m_curve ? s.m_curve->curve : nullptr; }
    static FCurve* curve(Keyframe& k) noexcept { return k.m_right ? curve(*k.m_right) : nullptr; }
    static FCurve* curve(Tangent& t) noexcept {
        const std::shared_ptr<Segment> segment = t.m_segment.lock();
        return segment ? curve(*segment) : nullptr;
    }

    // --- a curve's segments ------------------------------------------------------------------------------------------
    static const SegmentMap& segments(const FCurve& c) noexcept { return c.m_segments; }
    static const Segment& firstSegment(const FCurve& c) noexcept { return *c.m_segments.first(); }
    static const Segment& lastSegment(const FCurve& c) noexcept { return *c.m_segments.last(); }
    static const Segment& findSegment(const FCurve& c, double x) noexcept { return *c.m_segments.lookUp(x); }
    static Segment& findSegment(FCurve& c, double x) noexcept { return *c.m_segments.lookUp(x); }

    // --- positions ---------------------------------------------------------------------------------------------------
    // The iterator at a segment of the curve.
    static FCurve::iterator iteratorAt(FCurve& c, Segment& s) noexcept {
        return FCurve::iterator(SegmentMapIterator(&s, &c.m_segments));
    }
    static FCurve::const_iterator iteratorAt(const FCurve& c, const Segment& s) noexcept {
        return FCurve::const_iterator(SegmentMapIterator(const_cast<Segment*>(&s), &c.m_segments));
    }
    // Null at the end.
    static Segment* segmentAt(const FCurve::iterator& position) noexcept { return position.base().m_segment; }
    // The position of the curve in the container; its end if the curve is not there.
    static FCurveContainer::iterator find(FCurveContainer& container, const FCurve& curve) noexcept {
        return container.find(&curve);
    }
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
