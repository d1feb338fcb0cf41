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
/// changes nothing. Samples without a finite value are left out. Everything outside the range stays, to the last bit;
/// docs/resampling.md says what a segment keeps that an end of the range cuts, and where a jump at the start stays.
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
