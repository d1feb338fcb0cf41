#pragma once

// Where the control points of the Bezier kinds come from, with all their digits: getBezierArgs gives absolute points,
// which lose a handle's digits far from 0. Preconditions: the interpolator is of the kind, the segment has both keys.

#include "interp/BezierMath.h"

#include "FCurveLib/Forward.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

BezierArgs HandleArgs(const Interpolator& bezier, const Segment& segment);
BezierArgs ThirdsArgs(const Interpolator& thirds, const Segment& segment);
// What getBezierArgs says, of any BezierInterpBase.
BezierArgs StatedArgs(const Interpolator& interpolator, const Segment& segment);

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
