#include "interp/BezierSampling.h"

#include <algorithm>
#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

void Private::SampleBezier(const BezierArgs& p, double x0, double x1, int count, std::vector<Vector2D<double>>& points,
                           BezierFunction function) {
    points.clear();
    if (count < 1) return;
    points.reserve(static_cast<std::size_t>(count));
    const BezierPlace from = SolveBezier(x0, p);
    points.emplace_back(x0, function(from, p));
    if (count == 1) return;

    const BezierPlace to = SolveBezier(x1, p);
    const double lowest = std::min(x0, x1);
    const double highest = std::max(x0, x1);
    for (int i = 1; i < count - 1; ++i) {
        const double part = static_cast<double>(i) / (count - 1);
        BezierPlace at{from.t + part * (to.t - from.t), from.u + part * (to.u - from.u)};
        const double x = std::clamp(BezierX(at, p), lowest, highest);
        if (IsAtLeftKey(x, p) || IsAtRightKey(x, p)) at = SolveBezier(x, p);
        points.emplace_back(x, function(at, p));
    }
    points.emplace_back(x1, function(to, p));
}

void Private::BezierRangeExtents(const BezierArgs& p, double x0, double x1, double& minY, double& maxY) noexcept {
    BezierExtents(SolveBezier(x0, p), SolveBezier(x1, p), p, minY, maxY);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
