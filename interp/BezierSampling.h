#pragma once

// What the Bezier kinds do with a segment's control points, beyond a single value.

#include "FCurveLib/Vector2D.h"
#include "interp/BezierMath.h"

#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

using BezierFunction = double (*)(const BezierPlace& at, const BezierArgs& p);

// Fills the vector with count points (x, function(x)) from x0 to x1, at equal distances in the curve's parameter.
void SampleBezier(const BezierArgs& p, double x0, double x1, int count, std::vector<Vector2D<double>>& points,
                  BezierFunction function);

// Lowest and highest value between x0 and x1, in either order.
void BezierRangeExtents(const BezierArgs& p, double x0, double x1, double& minY, double& maxY) noexcept;

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
