#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/Forward.h"

#include <cstdint>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// What InsertBezierKeyframe would do at some x, and how much the curve would change by it.
struct KeyframeInsertion {
    enum Outcome : std::uint32_t {
        /// No key can stand there: x, the curve's value at x, or a handle that the key needs is not finite, or a key is
        /// nearer than Keyframe::getMinSeparation().
        Refused = 0,
        /// The segment is cut in two that have its shape: Bezier-shaped, linear and constant kinds, numbers.
        KeepsShape = 1,
        /// Both sides get the same expression, and a comparison finds the same shape: formulas in x, say.
        KeepsExpression = 2,
        /// The curve changes its shape: the segment, because it reads the keys (cycle() and the like outside them; a
        /// match between two neighbours that end beside its keys; a host's own kind, perhaps), or another part that
        /// reads what the key changes: the repetition at the other end, when the key lies beyond the keyed range; a
        /// match at the first or the last key, which looks across the joint of a repetition.
        ChangesShape = 3
    };
    Outcome outcome = Refused;
    /// The greatest change of the curve's value, in the curve's unit, found at 1 000 places around x and at as many of
    /// each other part that may change; 0 where refused. Besides rounding it shows where no better can be had: near an
    /// x at which the curve is vertical.
    double error = 0.0;
};

/// \name Insert a key and keep the curve's shape
///
///     o---                        o--                 --o
///          ~~~~~            =>       ~~ --o-- ~~
///                ---o                                        the handles of the cut are those of the same curve
///
/// The two halves of a segment:
///  - bezier: bezier, with the handles of de Casteljau's cut.
///  - spline, ease, match and their variants: bezier, likewise: these kinds cannot draw a part of themselves. A match
///    that ends beside its key, because its neighbour does, stays a match at that end; one that does so at both ends
///    changes its shape.
///  - linear, constant, constant_next: the same kind.
///  - Anything else: the same interpolator on both sides.
///
/// The segment before the first key and the one after the last can be cut as well.
///
/// The new key has unified tangents where its segment was Bezier-shaped. A tangent keeps its type if that type still
/// gives the handle which keeps the shape, else it becomes Fixed; it becomes weighted if the handle has not the length
/// of an unweighted one. That goes for the segment's own tangents and for those of the keys next to it. A neighbouring
/// spline segment, whose shape depends on the next key but one, becomes bezier too. Everything else keeps its identity
/// and its bits.
/// @{

/// What an insertion would do; tries it on a copy. Time: that of 2 000 evaluations, 8 000 for a curve that repeats
/// itself beyond its keys; and where the segment or such a repetition may read more than the keys nearby, that of a
/// copy of the curve.
FCURVELIB_API KeyframeInsertion PreviewBezierKeyframe(const FCurve& curve, double x);

/// Adds a key at x, with the curve's value there, and returns the position of the segment that starts at it; end()
/// where that is refused, and then nothing has changed. The observers are told once, as FCurve::notifyChanged.
/// Logarithmic in the number of keys.
FCURVELIB_API FCurve::iterator InsertBezierKeyframe(FCurve& curve, double x);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
