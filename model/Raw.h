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
    // All but the side.
    static void copyTangent(Tangent& to, const Tangent& from);
    // Position, flags and properties.
    static void copyKey(Keyframe& to, const Keyframe& from);
    static void setUnified(Keyframe& k, bool unified) noexcept { k.m_box.setFlag(Keyframe::unifiedFlag, unified); }
    static void setInterpolator(Segment& s, std::shared_ptr<Interpolator> i) noexcept {
        s.m_interpolator = std::move(i);
    }
    // Of a segment made by hand.
    static void setTangents(Segment& s, std::shared_ptr<Tangent> in, std::shared_ptr<Tangent> out) {
        s.m_box.need().inTangent = std::move(in);
        s.m_box.need().outTangent = std::move(out);
    }
    static PropertyMap& properties(FCurve& c) noexcept { return c.m_properties; }
    static PropertyMap& properties(FCurveContainer& c) noexcept { return c.m_properties; }
    template<class Part>
    static auto& properties(Part& part) noexcept {
        return part.m_box;
    }

    // --- a curve's chain ---------------------------------------------------------------------------------------------
    // Stores the position of a key in a curve and keeps the curve's index true. Precondition: the order of keys stays.
    static void moveKey(Keyframe& k, const Vector2D<double>& position) noexcept;
    // Appends a key after the last one, with the flags and properties of the given key. Returns the new segment; null,
    // and nothing happens, if x is not above the last key's.
    static Segment* appendKey(FCurve& c, const Keyframe& key, std::shared_ptr<Interpolator> interpolator);
    // A block that names the curve but is not yet in its chain, with a copy of the key, if one is given.
    static std::shared_ptr<Block> makeBlock(FCurve& c, const Keyframe* key, std::shared_ptr<Interpolator> interpolator);
    // Takes every block of a chain out of it, for whoever still holds parts of it.
    static void release(std::shared_ptr<Block> leading) noexcept;

    // The link for segments that are made by hand for the curve.
    static const CurveReference& identity(FCurve& c);
    static ObserverSet<FCurveObserver>& observers(FCurve& c) noexcept { return c.m_observers; }
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
