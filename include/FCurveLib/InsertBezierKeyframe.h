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
/// Both halves of a Bezier-shaped segment become bezier, with the handles of de Casteljau's cut; all other kinds stand
/// on both sides. The segment before the first key and the one after the last can be cut as well. The new key has
/// unified tangents where its segment was Bezier-shaped. Tangents that would give another handle become Fixed, and
/// weighted where they have to; a neighbouring spline becomes bezier too. Everything else keeps its identity and its
/// bits. docs/editing.md has the kinds that cannot keep their shape.
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
