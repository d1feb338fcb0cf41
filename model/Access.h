#pragma once

// The library's own door to the parts: raw references where the public getters hand out shared pointers, because a
// reference count touched per evaluation costs more than the evaluation.

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

struct Access {
    // --- read: null where the thing does not exist -------------------------------------------------------------------
    static const Keyframe* leftKey(const Segment& s) noexcept { return s.m_leftKey.get(); }
    static const Keyframe* rightKey(const Segment& s) noexcept { return s.m_rightKey.get(); }
    static Keyframe* leftKey(Segment& s) noexcept { return s.m_leftKey.get(); }
    static Keyframe* rightKey(Segment& s) noexcept { return s.m_rightKey.get(); }
    static const Tangent* inTangent(const Segment& s) noexcept { return s.m_inTangent.get(); }
    static const Tangent* outTangent(const Segment& s) noexcept { return s.m_outTangent.get(); }
    static Tangent* inTangent(Segment& s) noexcept { return s.m_inTangent.get(); }
    static Tangent* outTangent(Segment& s) noexcept { return s.m_outTangent.get(); }
    static const Interpolator* interpolator(const Segment& s) noexcept { return s.m_interpolator.get(); }
    static const FCurve* curve(const Segment& s) noexcept { return s.m_curve ? s.m_curve->curve : nullptr; }
    static FCurve* curve(Segment& s) noexcept { return s.m_curve ? s.m_curve->curve : nullptr; }

    static const Segment* leftSegment(const Keyframe& k) noexcept { return k.m_left; }
    static const Segment* rightSegment(const Keyframe& k) noexcept { return k.m_right.get(); }
    static Segment* leftSegment(Keyframe& k) noexcept { return k.m_left; }
    static Segment* rightSegment(Keyframe& k) noexcept { return k.m_right.get(); }

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
    // The iterator at a segment of the curve.
    static FCurve::iterator iteratorAt(FCurve& c, Segment& s) noexcept {
        return FCurve::iterator(SegmentMapIterator(&s, &c.m_segments));
    }
    static FCurve::const_iterator iteratorAt(const FCurve& c, const Segment& s) noexcept {
        return FCurve::const_iterator(SegmentMapIterator(const_cast<Segment*>(&s), &c.m_segments));
    }
    // The position of the curve in the container; its end if the curve is not there.
    static FCurveContainer::iterator find(FCurveContainer& container, const FCurve& curve) noexcept {
        return container.find(&curve);
    }

    static ObserverSet<FCurveObserver>& observers(FCurve& c) noexcept { return c.m_observers; }
    // The link for segments that are made by hand for the curve.
    static std::shared_ptr<CurveLink> identity(FCurve& c);
    // Stores the position of a key in a curve and keeps the curve's index true. Precondition: the order of keys stays.
    static void moveKey(Keyframe& k, const Vector2D<double>& position) noexcept;

    static Segment* segmentAt(const FCurve::iterator& position) noexcept { return position.base().m_segment; }

    // --- make and break a curve's parts ------------------------------------------------------------------------------
    // A segment with tangents that names the curve but is not yet in its chain, and with a copy of the key, if one is
    // given, as its left key.
    static std::shared_ptr<Segment> makeSegment(FCurve& c, const Keyframe* key,
                                                std::shared_ptr<Interpolator> interpolator);
    static void exchangeInTangents(Segment& a, Segment& b) noexcept;
    static void copyTangent(Tangent& to, const Tangent& from);
    static void detach(Segment& s) noexcept;
    // Takes every segment of a chain out of it, for whoever still holds parts of it.
    static void release(std::shared_ptr<Segment> leading) noexcept;

    // --- rebuild a stored or copied curve to the last bit: nothing is recomputed, limited or notified ----------------
    // Appends a key behind the last one, with the flags and properties of the given key. Returns the new segment; null,
    // and nothing happens, if x is not above the last key's.
    static Segment* appendRaw(FCurve& c, const Keyframe& key, std::shared_ptr<Interpolator> interpolator);
    static void setHandleRaw(Tangent& t, double x, double y) noexcept { t.m_handle = {x, y}; }
    static void setTypeRaw(Tangent& t, std::uint8_t type) noexcept { t.m_type = type; }
    static void setWeightedRaw(Tangent& t, bool weighted) noexcept { t.m_weighted = weighted; }
    static void setWeightLockedRaw(Tangent& t, bool locked) noexcept { t.m_weightLocked = locked; }
    static void setUnifiedRaw(Keyframe& k, bool unified) noexcept { k.m_unified = unified; }
    static void setInterpolatorRaw(Segment& s, std::shared_ptr<Interpolator> i) noexcept {
        s.m_interpolator = std::move(i);
    }
    static void setTangentsRaw(Segment& s, std::shared_ptr<Tangent> in, std::shared_ptr<Tangent> out) noexcept {
        s.m_inTangent = std::move(in);
        s.m_outTangent = std::move(out);
    }
    static PropertyMap& properties(Keyframe& k) noexcept { return k.m_properties; }
    static PropertyMap& properties(Segment& s) noexcept { return s.m_properties; }
    static PropertyMap& properties(Tangent& t) noexcept { return t.m_properties; }
    static PropertyMap& properties(FCurve& c) noexcept { return c.m_properties; }
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
