#pragma once

// What the library's own code writes into the parts: nothing is recomputed, limited or notified, unless said.

#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

struct Raw {
    // --- fields: to rebuild a stored or copied curve to the last bit -------------------------------------------------
    static void setHandle(Tangent& t, double x, double y) noexcept { t.m_handle = {x, y}; }
    static void setType(Tangent& t, std::uint8_t type) noexcept { t.m_type = type; }
    static void setWeighted(Tangent& t, bool weighted) noexcept { t.m_weighted = weighted; }
    static void setWeightLocked(Tangent& t, bool locked) noexcept { t.m_weightLocked = locked; }
    static void copyTangent(Tangent& to, const Tangent& from);
    static void setUnified(Keyframe& k, bool unified) noexcept { k.m_unified = unified; }
    static void setInterpolator(Segment& s, std::shared_ptr<Interpolator> i) noexcept {
        s.m_interpolator = std::move(i);
    }
    static void setTangents(Segment& s, std::shared_ptr<Tangent> in, std::shared_ptr<Tangent> out) noexcept {
        s.m_inTangent = std::move(in);
        s.m_outTangent = std::move(out);
    }
    static PropertyMap& properties(PropertyCarrier& part) noexcept { return part.m_properties; }

    // --- a curve's chain ---------------------------------------------------------------------------------------------
    // Stores the position of a key in a curve and keeps the curve's index true. Precondition: the order of keys stays.
    static void moveKey(Keyframe& k, const Vector2D<double>& position) noexcept;
    // Appends a key after the last one, with the flags and properties of the given key. Returns the new segment; null,
    // and nothing happens, if x is not above the last key's.
    static Segment* appendKey(FCurve& c, const Keyframe& key, std::shared_ptr<Interpolator> interpolator);
    // A segment with tangents that names the curve but is not yet in its chain, and with a copy of the key, if one is
    // given, as its left key.
    static std::shared_ptr<Segment> makeSegment(FCurve& c, const Keyframe* key,
                                                std::shared_ptr<Interpolator> interpolator);
    static void exchangeInTangents(Segment& a, Segment& b) noexcept;
    static void detach(Segment& s) noexcept;
    // Takes every segment of a chain out of it, for whoever still holds parts of it.
    static void release(std::shared_ptr<Segment> leading) noexcept;

    // The link for segments that are made by hand for the curve.
    static std::shared_ptr<CurveLink> identity(FCurve& c);
    static ObserverSet<FCurveObserver>& observers(FCurve& c) noexcept { return c.m_observers; }
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
