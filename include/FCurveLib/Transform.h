#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Vector2D.h"

#include <cstdint>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// What FlipCurve mirrors. Any other value mirrors nothing: the curve is rebuilt as it is.
enum FlipType : std::int32_t {
    FLIP_X = 0, ///< in time
    FLIP_Y = 1, ///< in value
    FLIP_XY = 2 ///< in both
};

/// What a transformation did.
struct TransformResult {
    /// False: it was refused, and the curve and its parts are untouched.
    bool transformed = false;
    /// The expressions, each once, of segments whose interpolator has no image; those segments kept the interpolator
    /// (or, reversed, got the other one of its pair). Empty: the curve is the exact image of the old one.
    std::vector<std::string> kept;
};

/// \name Transformation: scale, move and mirror a whole curve
///
/// Every point (x, y) of the curve maps to (scale.x * x + offset.x, scale.y * y + offset.y), between the keys and
/// outside them, exact up to the rounding of the new numbers; a negative scale.x reverses time. Name, properties and
/// flags are carried along. All keys, segments and tangents are new objects; observers stay, and are told once, as
/// FCurve::notifyChanged. docs/resampling.md says what becomes of each kind of interpolator, and where a reversed curve
/// has another value at a key where it jumps.
///
/// Refused, silently and before anything changes: a scale.x within 1e-07 of zero, which would collapse time; numbers
/// that are not finite; and a transformation after which keys or handles would not be finite, or keys not apart from
/// each other. scale.y may be zero. Linear in the number of keys.
/// @{

FCURVELIB_API TransformResult TransformCurve(FCurve& curve, const Vector2D<double>& scale,
                                             const Vector2D<double>& offset);

/// Mirrors x about cx, y about cy or both: x becomes 2cx - x.
FCURVELIB_API TransformResult FlipCurve(FCurve& curve, FlipType type, double cx, double cy);

/// Mirrors about the centre of GetInteriorExtents; about (0, 0) without keys.
FCURVELIB_API TransformResult FlipCurveAboutCentroid(FCurve& curve, FlipType type);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
