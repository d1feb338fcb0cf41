#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Tangent.h"

#include <cstdint>
#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// What a new key is to be: the host keeps one, for what the animator chose, and hands it to SetKey.
struct FCURVELIB_API EditSettings {
    /// Between keys, the curve keeps its shape up to the new key's value, as InsertBezierKeyframe does: the new key's
    /// tangents and its neighbours' follow the curve as it was, as fixed ones where no other type gives that handle.
    /// The types below then count beyond the first and the last key alone.
    bool keepShape = true;
    std::uint8_t inType = Tangent::Fixed; ///< Tangent::Type; others count as Fixed
    std::uint8_t outType = Tangent::Fixed;
    bool unified = true; ///< whether a new key's tangents lie on one line, for Bezier-shaped segments
    /// Of the segment that starts at the new key; empty: that of the segment which is cut.
    std::shared_ptr<Interpolator> interpolator;

    /// \name What animators know
    /// Those of a tangent type make bezier() segments; automatic tangents beside the new key follow it, fixed ones keep
    /// their part of the shape. Stepped holds the new key's value until the next key.
    /// @{
    static EditSettings shapeKeeping() { return {}; }
    static EditSettings flat() { return ofType(Tangent::Flat); }
    static EditSettings linear() { return ofType(Tangent::Linear); }
    static EditSettings spline() { return ofType(Tangent::Smooth); }
    static EditSettings clamped() { return ofType(Tangent::Clamped); }
    static EditSettings plateau() { return ofType(Tangent::Plateau); }
    static EditSettings stepped();
    static EditSettings ofType(std::uint8_t type);
    /// @}
};

/// What SetKey did.
struct KeySetting {
    enum Outcome : std::uint32_t {
        Refused = 0,   ///< x or y is not finite
        Unchanged = 1, ///< the key at x has this value already
        Moved = 2,     ///< the key at x has got this value
        Added = 3      ///< there is a new key
    };
    Outcome outcome = Refused;
    std::shared_ptr<Keyframe> key; ///< the key at x; empty where refused
};

/// Makes the curve pass through (x, y): where a key stands nearer than Keyframe::getMinSeparation(), it gets the value
/// y and stays at its own x; elsewhere a key is added, as the settings say.
///
/// Beyond the first or the last key the curve goes on from the new key as it did from the old one: repetitions and
/// holds stay at the ends. The new segment between the two is made as the settings say, else like the segment between
/// keys that is next to it, or bezier() where there is none.
///
/// Edits by the public setters, so that the observers hear of each part. Logarithmic in the number of keys; linear
/// where one of the three segments on either side repeats the curve.
FCURVELIB_API KeySetting SetKey(FCurve& curve, double x, double y, const EditSettings& settings = {});

} // namespace v19
} // namespace VEM_FN::FCurveLib
