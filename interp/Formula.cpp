#include "interp/Formula.h"

#include "FCurveLib/Segment.h"
#include "interp/BezierMath.h"
#include "interp/ValueRange.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {

Jet Differentiate(const Formula& formula, double x, const Segment& segment) {
    return formula.run<Jet>(x, [&](const Interpolator& leaf) -> Jet {
        return {leaf.eval(x, segment), leaf.getFirstDerivative(x, segment), leaf.getSecondDerivative(x, segment)};
    });
}

// What extents see of a formula at one x.
struct Look {
    double x;
    double y;
    double slope;
};

// How far y moves from a to b beyond what the slopes let expect: most at a jump.
double SurpriseBetween(const Look& a, const Look& b) noexcept {
    return std::abs(b.y - a.y - (a.slope + b.slope) / 2.0 * (b.x - a.x));
}

} // namespace

Formula::Formula(FormulaProgram program, const std::string& expression)
    : m_program(std::move(program)),
      m_repeatsMore(
          std::count_if(leaves().begin(), leaves().end(), [](const auto& leaf) { return KindOf(*leaf).repeats(); })
          > 1) {
    setExpression(expression.c_str());
}

double Formula::eval(double x, const Segment& segment) const {
    return run<double>(x, [&](const Interpolator& leaf) { return leaf.eval(x, segment); });
}

std::shared_ptr<Interpolator> Formula::clone() {
    return std::shared_ptr<Interpolator>(new Formula(*this));
}

bool Formula::usesTangents() const {
    const auto& leaves = m_program.leaves();
    return std::any_of(leaves.begin(), leaves.end(), [](const auto& leaf) { return leaf->usesTangents(); });
}

double Formula::getFirstDerivative(double x, const Segment& segment) const {
    double slope = Differentiate(*this, x, segment).d1;
    if (std::isnan(slope)) slope = Interpolator::getFirstDerivative(x, segment);
    return std::isinf(slope) ? std::copysign(kVerticalSlope, slope) : slope;
}

double Formula::getSecondDerivative(double x, const Segment& segment) const {
    const double derivative = Differentiate(*this, x, segment).d2;
    return std::isnan(derivative) ? Interpolator::getSecondDerivative(x, segment) : derivative;
}

void Formula::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    ValueRange extents;
    extents.fold(eval(x0, segment));
    extents.fold(eval(x1, segment));

    const double begin = std::fmin(x0, x1);
    const double span = std::fmax(x0, x1) - begin;
    if (span > 0.0 && std::isfinite(span)) {
        constexpr double step = 0.1;
        constexpr double minLooks = 64.0;
        constexpr double maxLooks = 4096.0;
        constexpr int bitsToZero = 1100; // an edge at 0 has no nearest doubles before the smallest of all
        const int looks = static_cast<int>(std::clamp(std::ceil(span / step), minLooks, maxLooks));

        // Where the slope changes its sign, or y its height out of line with the slopes, or where y ends to be a
        // number, halve the way to the extremum, the jump or the edge of the domain down to the resolution of doubles.
        const auto lookAt = [&](double x) {
            const Jet jet = Differentiate(*this, x, segment);
            extents.fold(jet.v);
            return Look{x, jet.v, jet.d1};
        };
        Look left = lookAt(begin);
        for (int i = 1; i <= looks; ++i) {
            const Look right = lookAt(begin + span * i / looks);
            Look a = left;
            Look b = right;
            const bool turns = a.slope * b.slope < 0.0;
            const bool ends = std::isnan(a.y) != std::isnan(b.y);
            if (turns || ends || SurpriseBetween(a, b) > 0.25 * std::abs(b.y - a.y))
                for (int bit = 0; bit < (ends ? bitsToZero : 53); ++bit) {
                    const Look middle = lookAt(a.x + (b.x - a.x) / 2.0);
                    if (middle.x == a.x || middle.x == b.x) break;
                    const bool goLeft = ends    ? std::isnan(middle.y) == std::isnan(b.y)
                                        : turns ? a.slope * middle.slope < 0.0
                                                : SurpriseBetween(a, middle) > SurpriseBetween(middle, b);
                    (goLeft ? b : a) = middle;
                }
            left = right;
        }
    }
    minY = extents.low;
    maxY = extents.high;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
