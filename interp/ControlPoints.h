#pragma once

// Where the control points of the Bezier kinds come from, with all their digits: getBezierArgs gives absolute points,
// in which handles far from 0 lose theirs. Preconditions: the interpolator is of the kind, the segment has both keys.

#include "FCurveLib/Forward.h"
#include "interp/BezierMath.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

BezierArgs HandleArgs(const Interpolator& bezier, const Segment& segment);
BezierArgs SplineArgs(const Interpolator& spline, const Segment& segment);
BezierArgs EaseArgs(const Interpolator& ease, const Segment& segment);
BezierArgs EaseInArgs(const Interpolator& easeIn, const Segment& segment);
BezierArgs EaseOutArgs(const Interpolator& easeOut, const Segment& segment);
BezierArgs MatchArgs(const Interpolator& interpolator, const Segment& segment);
// What getBezierArgs says, of any BezierInterpBase.
BezierArgs StatedArgs(const Interpolator& interpolator, const Segment& segment);

// Those of any kind, by its row.
BezierArgs ArgsOf(const BezierInterpBase& interpolator, const Segment& segment);

// From key to key, with handles of a third of the segment; out and in are their heights.
BezierArgs ThirdsArgs(const Segment& segment, double out, double in) noexcept;

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
