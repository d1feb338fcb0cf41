#include "draw/Simplify.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

double DistanceToStretch(const Pixel& p, const Pixel& a, const Pixel& b) {
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double square = dx * dx + dy * dy;
    const double t = square > 0.0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / square, 0.0, 1.0) : 0.0;
    return std::hypot(p.x - (a.x + t * dx), p.y - (a.y + t * dy));
}

} // namespace

// The Douglas-Peucker method. Stretches are cut into pieces of at most kPiece points first, which bounds its worst
// case.
std::vector<Pixel> Simplify(const std::vector<Pixel>& points, double tolerance) {
    constexpr std::size_t kPiece = 1024;
    if (points.size() < 3) return points;
    std::vector<bool> kept(points.size(), false);
    std::vector<std::pair<std::size_t, std::size_t>> stretches;
    for (std::size_t begin = 0; begin + 1 < points.size(); begin += kPiece) {
        const std::size_t end = std::min(begin + kPiece, points.size() - 1);
        kept[begin] = kept[end] = true;
        stretches.emplace_back(begin, end);
    }
    while (!stretches.empty()) {
        const auto [begin, end] = stretches.back();
        stretches.pop_back();
        double farthest = tolerance;
        std::size_t split = begin;
        for (std::size_t i = begin + 1; i < end; ++i) {
            const double distance = DistanceToStretch(points[i], points[begin], points[end]);
            if (distance > farthest) {
                farthest = distance;
                split = i;
            }
        }
        if (split == begin) continue;
        kept[split] = true;
        stretches.emplace_back(begin, split);
        stretches.emplace_back(split, end);
    }
    std::vector<Pixel> result;
    for (std::size_t i = 0; i < points.size(); ++i)
        if (kept[i]) result.push_back(points[i]);
    return result;
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
