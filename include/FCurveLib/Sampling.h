#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Vector2D.h"

#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \name Sampling: a curve as evenly spaced points (x in frames, y)
///
/// Every function empties the caller's vector first, then fills it with ascending x. The values are FCurve::eval's; of
/// 256 samples and more they may be CompiledCurve's, which are the same to 1e-12 of the curve's range.
///
/// The abscissae are a running sum, not start + i * step, so the rounding of the sum decides whether a sample falls
/// exactly on the end: from 0 to 1 by 0.1 gives 11 samples, the last at 0.9999999999999999.
///
/// No samples, at once, come from a step that is zero, negative or NaN, or too small to move x everywhere in the range
/// (no more than half the distance between neighbouring doubles there); from start > end and from NaN; and from a range
/// that would give more than 2^31 - 1 samples. An infinite step gives the first sample only.
///
/// Linear in the number of samples; memory is allocated once, for that number. Any number of threads may sample a curve
/// that nobody edits.
/// @{

/// From start up to and including end.
FCURVELIB_API void SampleCurve(const FCurve& curve, double start, double end, double step,
                               std::vector<Vector2D<double>>& out);

/// From start - margin up to end + margin. Outside [start, end] the curve's own values are not read: y continues the
/// straight line through its values at start and at end. With start equal to end there is no such line, and y is NaN
/// outside.
FCURVELIB_API void SampleCurveExtrapolated(const FCurve& curve, double start, double end, double step, double margin,
                                           std::vector<Vector2D<double>>& out);

/// From the first key to the last, on the grid of whole multiples of step: starts at the multiple at or before the
/// first key and runs to the one at or after the last. One sample, at the key, for a curve of one key; none without
/// keys.
FCURVELIB_API void SampleCurveInterior(const FCurve& curve, double step, std::vector<Vector2D<double>>& out);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
