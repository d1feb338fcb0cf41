#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <memory>

/// \file
/// Evaluation of whole curves and of single segments. x in frames. A segment without interpolator gives 0. Nothing here
/// allocates, locks or writes: any number of threads may evaluate a curve that nobody edits.

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \name Values
/// @{

/// The value at x as the segment's interpolator computes it, also outside the segment's span.
FCURVELIB_API double EvalSegment(double x, const Segment& segment);

/// The curve's value with x held between the first and the last key. At and after the last key it is the last key's
/// value as the segment before it computes it, before the first key that of the first key: the leading and the trailing
/// segment (cycles, formulas) are never asked.
///
/// A curve of one key gives that key's y, an empty curve the value of its one segment at x. NaN is not held: with two
/// keys or more the first interior segment is asked for it.
FCURVELIB_API double EvalInInterior(double x, const FCurve& curve);
/// @}

/// \name Derivatives with respect to x
/// At a key the plain derivative is that of the segment which starts there, so the right-hand one. The left-hand one is
/// that of the segment which ends there; a place counts as at a key within GetEpsilon() to the key's right.
/// @{
FCURVELIB_API double GetFirstDerivative(const FCurve& curve, double x);
FCURVELIB_API double GetFirstDerivativeLeft(const FCurve& curve, double x);
FCURVELIB_API double GetFirstDerivativeRight(const FCurve& curve, double x);
FCURVELIB_API double GetSecondDerivative(const FCurve& curve, double x);
FCURVELIB_API double GetSecondDerivativeLeft(const FCurve& curve, double x);
FCURVELIB_API double GetSecondDerivativeRight(const FCurve& curve, double x);
/// @}

/// \name Tangents
/// The other tangent at the same key; empty for a tangent that stands at none.
/// @{
FCURVELIB_API std::shared_ptr<Tangent> GetOpposingTangent(Tangent& tangent);
FCURVELIB_API std::shared_ptr<const Tangent> GetOpposingTangent(const Tangent& tangent);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
