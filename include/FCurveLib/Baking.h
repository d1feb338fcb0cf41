#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Vector2D.h"

#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \name Baking: replace a stretch of a curve by linear keys through its samples
///
///     before   ---o~~~~~~~~~~~~o~~~~~~~~~~~~o---
///     after    ---o~~~~x-x-x-x-x-x-x~~~~~~~~o---       x baked keys on whole multiples of step
///
/// The keys stand at the abscissae of SampleCurve, whose rules for steps hold: what gives fewer than two samples
/// changes nothing. Samples without a finite value are left out; the line passes over them. A sample within 1e-07
/// frames of a key at an end of the range counts as on that key, so that the rounding of a running sum leaves no pair
/// of keys.
///
/// What stays
/// ----------
/// Everything outside the range stays: parts that lie wholly outside are the same objects, with the same values,
/// handles, flags, interpolators and properties to the last bit, until a later edit nearby lets automatic tangents
/// follow their new neighbours. A segment that an end of the range cuts keeps its interpolator, tangent types, flags
/// and properties on the part outside:
///  - "bezier()", also where it runs on as a line outside the keys: the handles of the cut keep the shape, to about
///    1e-15 of the values;
///  - constant, constant_next, linear, numbers and formulas keep their values by themselves;
///  - kinds that read the curve's keys (spline, ease, match, cycle, mirror) read the baked ones from now on. To keep
///    the shape of such a segment, call InsertBezierKeyframe at the ends of the range first.
///
/// Where the curve jumps at a key at the start of the range (to the first value of a formula, say), the jump stays: the
/// key keeps its value for the segment on its left, and a "constant_next()" segment of 0.001 frames (half a step if
/// that is less) holds the sample's value up to a further key, from which the line goes on. Only there: where the curve
/// does not jump, or the segment on the left does not depend on the key's value, the line starts at the key itself.
///
/// Inside the range all parts are new ones, except keys that stand on the range's ends.
///
/// The edit is told once, as FCurve::notifyChanged, when it is complete. Time: the samples and the keys removed, each
/// times the logarithm of the curve's keys.
/// @{

/// Bakes [start, end], narrowed inwards to whole multiples of step: nothing where that leaves less than one step.
FCURVELIB_API void BakeCurve(FCurve& curve, double start, double end, double step);

/// Replaces all keys by samples of SampleCurveInterior, that is of the keyed range widened to whole multiples of step.
/// Nothing for a curve of less than two keys. The first key stays the same object; it moves to the first sample and
/// loses its properties. The leading and the trailing segment keep interpolator, properties and handles.
FCURVELIB_API void BakeInterior(FCurve& curve, double step);

/// Bakes the range from the first to the last of these samples and takes them for the curve's: for abscissae other than
/// the running sum. Samples whose x does not rise are left out, as those that are not finite; fewer than two change
/// nothing.
FCURVELIB_API void BakeSamples(FCurve& curve, std::vector<Vector2D<double>> samples);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
