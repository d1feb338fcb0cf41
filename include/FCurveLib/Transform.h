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
    /// (or got the other one of its pair, below). Empty: the curve is the exact image of the old one.
    std::vector<std::string> kept;
};

/// \name Transformation: scale, move and mirror a whole curve
///
/// Every point (x, y) of the curve maps to (scale.x * x + offset.x, scale.y * y + offset.y), between the keys and
/// outside them. Name, properties (the selection's among them) and flags are carried along; observers stay. All keys,
/// segments and tangents are new objects, the old ones leave the curve. The observers are told once, as
/// FCurve::notifyChanged.
///
/// A negative scale.x reverses time: then in and out tangents change places, and so do the segments that lie before and
/// after the keys.
///
/// The images of the interpolators:
///  - bezier, linear, spline, ease, match, cycle, cycle_offset, mirror: the same kind; tangents keep their type, their
///    handles are scaled.
///  - constant and constant_next, easein and easeout, matchin and matchout: under reversal between two keys, the other
///    one of the pair. cycle, cycle_offset and mirror, which hold their left key's value there, become constant_next.
///  - A match whose two ends both look across the joint of an open cycle takes the value at the left one, so under
///    reversal it has no image, unless the joint closes: it stays a match, and is reported.
///  - A number: the scaled number.
///  - A formula: the text, rewritten: "sin(x)" moved by 5 frames and doubled is "2*(sin((x-5)))". Transforming again
///    rewrites the numbers, so texts do not grow. cycle(), cycle_offset() and mirror() inside a formula are scaled back
///    where they stand.
///  - None: a number if the value 0 moves.
///  - A text that nobody understood: kept, so that it survives in files; its value stays 0. Reported if the value 0
///    moves.
///  - A host's own kind: kept, if it has the right values over the transformed keys (compared at 16 points); else its
///    text rewritten, if that has them; else kept and reported.
///
/// Reversing time changes which segment owns a key's own x: that is always the one that starts there. So exactly at a
/// key where the curve jumps, the image has the value from the other side of the jump.
///
/// Results are exact up to the rounding of the new numbers. Flipping twice gives back the same bits wherever 2c - x and
/// 2c - y are exact, texts of formulas included. A curve without keys keeps its kind, unless that is a number or
/// formula.
///
/// Refused, silently and before anything changes: a scale.x within 1e-07 of zero, which would collapse time; numbers
/// that are not finite; and a transformation after which keys or handles would not be finite, or keys not apart from
/// each other.
/// scale.y may be zero. Linear in the number of keys.
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
