#pragma once

#include "FCurveLib/Vector2D.h"

#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// The polyline of a straight line: exact corner points instead of samples.
inline void TwoPoints(std::vector<Vector2D<double>>& points, double x0, double y0, double x1, double y1) {
    points.clear();
    points.emplace_back(x0, y0);
    points.emplace_back(x1, y1);
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
