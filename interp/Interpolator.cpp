#include "FCurveLib/Interpolator.h"

#include "FCurveLib/Tolerance.h"
#include "model/Read.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

namespace {

// The points at which a numeric derivative at x looks: lo and hi at equal distances h from mid.
struct Stencil {
    double lo;
    double mid;
    double hi;
    double h;

    Stencil(double x, const Segment& segment) noexcept {
        // The cube root of the machine epsilon balances truncation, h^2, against rounding, epsilon / h.
        constexpr double stepFactor = 6.055454452393343e-06;
        h = stepFactor * std::max(std::abs(x), 0.1);
        lo = x - h;
        hi = x + h;
        if (const Keyframe* left = Read::leftKey(segment); left && left->getX() > lo) lo = left->getX();
        if (const Keyframe* right = Read::rightKey(segment); right && right->getX() < hi) hi = right->getX();
        h = (hi - lo) / 2.0;
        mid = lo + h;
    }
};

template<class Function>
void FillPolyline(double x0, double x1, int count, std::vector<Vector2D<double>>& points, const Function& function) {
    points.clear();
    if (count < 1) return;
    points.reserve(static_cast<std::size_t>(count));
    points.emplace_back(x0, function(x0));
    for (int i = 1; i < count; ++i) {
        const double x = i * (x1 - x0) / (count - 1) + x0;
        points.emplace_back(x, function(x));
    }
}

} // namespace

Interpolator::Interpolator() = default;
Interpolator::Interpolator(const Interpolator& other) : m_expression(other.m_expression) {}
Interpolator::~Interpolator() = default;

bool Interpolator::usesTangents() const {
    return false;
}

void Interpolator::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    double low = eval(x0, segment);
    double high = low;
    const auto fold = [&](double y) {
        if (y < low)
            low = y;
        else if (y > high)
            high = y;
    };
    fold(eval(x1, segment));

    constexpr double step = 0.1;
    const auto moves = [](double x) { return std::isfinite(x) && x + step > x; };
    if (moves(x0) && moves(x1))
        for (double x = x0; x <= x1; x += step) fold(eval(x, segment)); // deliberate: accumulated, as the contract says
    minY = low;
    maxY = high;
}

void Interpolator::computePolyline(const Segment& segment, double x0, double x1, int count,
                                   std::vector<Vector2D<double>>& points) const {
    FillPolyline(x0, x1, count, points, [&](double x) { return eval(x, segment); });
}

double Interpolator::getFirstDerivative(double x, const Segment& segment) const {
    const Stencil at(x, segment);
    if (NearZero(at.h)) return 0.0;
    return (eval(at.hi, segment) - eval(at.lo, segment)) / (2.0 * at.h);
}

void Interpolator::firstDerivPolyline(const Segment& segment, double x0, double x1, int count,
                                      std::vector<Vector2D<double>>& points) const {
    FillPolyline(x0, x1, count, points, [&](double x) { return getFirstDerivative(x, segment); });
}

double Interpolator::getSecondDerivative(double x, const Segment& segment) const {
    const Stencil at(x, segment);
    if (NearZero(at.h)) return 0.0;
    return (eval(at.lo, segment) - 2.0 * eval(at.mid, segment) + eval(at.hi, segment)) / (at.h * at.h);
}

void Interpolator::secondDerivPolyline(const Segment& segment, double x0, double x1, int count,
                                       std::vector<Vector2D<double>>& points) const {
    FillPolyline(x0, x1, count, points, [&](double x) { return getSecondDerivative(x, segment); });
}

void Interpolator::setExpression(const char* expression) {
    if (!m_isShared) m_expression = expression ? expression : "";
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
