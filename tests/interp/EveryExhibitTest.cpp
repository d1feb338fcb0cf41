// What holds of every curve in the museum, whatever its shape.

#include "support/Allocations.h"
#include "support/Ask.h"
#include "support/Basics.h"
#include "support/Museum.h"

#include "interp/Kinds.h" // internal: the row of each kind

#include <thread>

namespace Test {
namespace {

class EveryExhibit : public testing::TestWithParam<Exhibit> {
protected:
    // Calls function(segment, interpolator, span) for each segment that has an interpolator.
    template<class Function>
    void forEachSegment(const Function& function) const {
        int number = 0;
        for (const Segment& segment : static_cast<const FCurve&>(*curve)) {
            SCOPED_TRACE("segment " + std::to_string(number++));
            if (const auto interpolator = segment.getInterpolator()) function(segment, *interpolator, SpanOf(segment));
            if (HasFatalFailure()) return;
        }
    }

    double allowedError() const { return GetParam().tolerance * magnitude; }

    std::shared_ptr<FCurve> curve = GetParam().make();
    double magnitude = [this] {
        double largest = 0.0;
        for (const Segment& segment : static_cast<const FCurve&>(*curve)) {
            const auto fold = [&](double y) { largest = std::max(largest, std::abs(y)); };
            if (const auto key = segment.getLeftKey()) fold(key->getY());
            fold(segment.getOutTangent()->getY());
            fold(segment.getInTangent()->getY());
        }
        return largest;
    }();
};

// How much the curve changes within a few units in the last place of x: what no point on it can be expected to beat.
double Blur(double x, const Segment& segment) {
    const double ulps = 4.0 * std::numeric_limits<double>::epsilon() * std::abs(x);
    return std::abs(EvalSegment(x + ulps, segment) - EvalSegment(x - ulps, segment));
}

// Whether the kind's own extents and derivatives on the segment are exact.
bool IsExact(const Segment& segment) {
    const auto& kind = Private::KindOf(segment);
    const bool open = !segment.getLeftKey() || !segment.getRightKey();
    return kind.hasClosedExtents() && !(open && kind.repeats());
}

TEST_P(EveryExhibit, IsFiniteEverywhere) {
    for (const double x : {-1e9, -12345.678, -1.0, 0.0, 0.3, 0.0005, 1.0, 2.9999999, 3.0, 500.0, 86401.0, 1e7 + 1, 1e9})
        EXPECT_TRUE(std::isfinite(curve->eval(x)) && std::isfinite(GetFirstDerivative(*curve, x))
                    && std::isfinite(GetFirstDerivativeLeft(*curve, x))
                    && std::isfinite(GetSecondDerivative(*curve, x)))
            << "at " << x;
}

TEST_P(EveryExhibit, PolylineLiesOnCurve) {
    forEachSegment([&](const Segment& segment, const Interpolator& interpolator, const Span& span) {
        for (const double cut : {0.0, 0.3}) {
            const double x0 = span.x0 + cut * (span.x1 - span.x0);
            const auto points = PolylineOf(&Interpolator::computePolyline, interpolator, segment, x0, span.x1, 101);
            ASSERT_TRUE(points.size() == 101 || points.size() == 2);
            EXPECT_EQ(points.front().x, x0);
            EXPECT_NEAR(points.back().x, span.x1, 1e-15 * std::abs(span.x1));
            double lastX = x0;
            for (const auto& point : points) {
                ASSERT_GE(point.x, lastX);
                lastX = point.x;
                ASSERT_NEAR(point.y, interpolator.eval(point.x, segment), allowedError() + Blur(point.x, segment))
                    << "at " << point.x;
            }
        }
    });
}

TEST_P(EveryExhibit, DerivativePolylinesAreTheDerivatives) {
    forEachSegment([&](const Segment& segment, const Interpolator& interpolator, const Span& span) {
        const auto check = [&](FillPolyline fill, auto derivative) {
            const auto points = PolylineOf(fill, interpolator, segment, span.x0, span.x1, 40);
            ASSERT_TRUE(points.size() == 40 || points.size() == 2);
            for (const auto& point : points) {
                const double ulps = 1e-14 * std::max(std::abs(point.x), span.x1 - span.x0);
                const double at = (interpolator.*derivative)(point.x, segment);
                const double blur = std::max(std::abs((interpolator.*derivative)(point.x + ulps, segment) - at),
                                             std::abs((interpolator.*derivative)(point.x - ulps, segment) - at));
                ASSERT_NEAR(point.y, at, blur + 1e-9 * std::abs(at) + 1e-9 * magnitude) << "at " << point.x;
            }
        };
        check(&Interpolator::firstDerivPolyline, &Interpolator::getFirstDerivative);
        check(&Interpolator::secondDerivPolyline, &Interpolator::getSecondDerivative);
    });
}

TEST_P(EveryExhibit, ExtentsBracketDenseSamplingTightly) {
    forEachSegment([&](const Segment& segment, const Interpolator& interpolator, const Span& span) {
        const auto eval = [&](double x) { return interpolator.eval(x, segment); };
        for (const double cut : {0.0, 0.3, 0.6}) {
            const double x0 = span.x0 + cut * (span.x1 - span.x0);
            const auto [low, high] = BoundsOf(interpolator, segment, x0, span.x1);
            if (!IsExact(segment)) {
                ASSERT_LE(low, std::min(eval(x0), eval(span.x1)));
                ASSERT_GE(high, std::max(eval(x0), eval(span.x1)));
                continue;
            }
            const Bounds swapped = BoundsOf(interpolator, segment, span.x1, x0);
            EXPECT_TRUE(low == swapped.low && high == swapped.high);

            constexpr int samples = 2000;
            const double step = (span.x1 - x0) / samples;
            Vector2D<double> lowest{span.x1, eval(span.x1)}, highest = lowest;
            for (int i = 0; i < samples; ++i) {
                const Vector2D<double> point{x0 + i * step, eval(x0 + i * step)};
                ASSERT_LE(low, point.y) << "at " << point.x;
                ASSERT_GE(high, point.y) << "at " << point.x;
                if (point.y < lowest.y) lowest = point;
                if (point.y > highest.y) highest = point;
            }
            // The sampled extremes, sharpened by a ternary search next to them.
            const auto sharpen = [&](double x, double sign) {
                double from = std::max(x - step, x0);
                double to = std::min(x + step, span.x1);
                for (int i = 0; i < 100; ++i) {
                    const double a = from + (to - from) / 3.0;
                    const double b = to - (to - from) / 3.0;
                    const bool rises = sign * eval(a) < sign * eval(b);
                    (rises ? from : to) = rises ? a : b;
                }
                return eval(from + (to - from) / 2.0);
            };
            // Not compared strictly: so near each other, values may cross by their rounding.
            EXPECT_NEAR(low, std::min(lowest.y, sharpen(lowest.x, -1.0)), 1e-9 * (high - low));
            EXPECT_NEAR(high, std::max(highest.y, sharpen(highest.x, 1.0)), 1e-9 * (high - low));
        }
    });
}

TEST_P(EveryExhibit, DerivativesAgreeWithFiniteDifferences) {
    forEachSegment([&](const Segment& segment, const Interpolator& interpolator, const Span& span) {
        const double width = span.x1 - span.x0;
        const double h = 1e-5 * width;
        const double noise = 1e-15 * std::max(magnitude, 1e-300) + 4e-16 * std::abs(span.x1) / width * magnitude;
        for (int i = 1; i < 50; ++i) {
            const double x = span.x0 + (i + 0.37) / 51.0 * width;
            const double lo = x - h;
            const double hi = x + h;
            const double slope = interpolator.getFirstDerivative(x, segment);
            const double differences = (interpolator.eval(hi, segment) - interpolator.eval(lo, segment)) / (hi - lo);
            const double bend = interpolator.getSecondDerivative(x, segment);
            const double slopeDifferences =
                (interpolator.getFirstDerivative(hi, segment) - interpolator.getFirstDerivative(lo, segment))
                / (hi - lo);
            // What the differences lose: half the change of the next derivative across them, and rounding.
            const double change =
                std::abs(interpolator.getSecondDerivative(hi, segment) - interpolator.getSecondDerivative(lo, segment));
            const double tolerance = change * h + 1e-6 * std::abs(slope) + noise / h + 3e-7 * magnitude / width;
            // Where y changes by less than 1e-07 per unit of the curve's parameter, it counts as flat.
            const bool flat = slope == 0.0 && std::abs(differences) * width < 1e-6;
            EXPECT_TRUE(flat || std::abs(slope - differences) <= tolerance)
                << "at " << x << " slope " << slope << " differences " << differences << " tolerance " << tolerance;
            if (IsExact(segment) && !flat) {
                EXPECT_NEAR(bend, slopeDifferences, change + 1e-4 * std::abs(bend) + 1e-3 * magnitude / (width * width))
                    << "at " << x;
            }
        }
    });
}

// Everything that a const curve computes between its keys.
std::vector<double> MeasureAll(const FCurve& curve) {
    std::vector<double> numbers;
    for (const Segment& segment : curve) {
        const auto interpolator = segment.getInterpolator();
        if (!interpolator) continue;
        const Span span = SpanOf(segment);
        for (int i = 0; i <= 60; ++i) {
            const double x = span.x0 + i * (span.x1 - span.x0) / 60.0;
            for (const double y : {curve.eval(x), EvalInInterior(x, curve), GetFirstDerivative(curve, x),
                                   GetFirstDerivativeLeft(curve, x), GetSecondDerivative(curve, x)})
                numbers.push_back(y);
        }
        for (const FillPolyline fill :
             {&Interpolator::computePolyline, &Interpolator::firstDerivPolyline, &Interpolator::secondDerivPolyline})
            for (const auto& point : PolylineOf(fill, *interpolator, segment, span.x0, span.x1, 50))
                numbers.insert(numbers.end(), {point.x, point.y});
        const auto [low, high] = BoundsOf(*interpolator, segment, span.x0, span.x1);
        numbers.insert(numbers.end(), {low, high});
    }
    return numbers;
}

TEST_P(EveryExhibit, EightThreadsComputeTheSameBits) {
    const FCurve& shared = *curve;
    const std::vector<double> expected = MeasureAll(shared);
    std::vector<std::vector<double>> results(8);
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    for (auto& result : results)
        threads.emplace_back([&] {
            for (int i = 0; i < 3; ++i) result = MeasureAll(shared);
        });
    for (auto& thread : threads) thread.join();
    for (const auto& result : results) EXPECT_EQ(result, expected);
}

TEST_P(EveryExhibit, EvaluationAllocatesNothing) {
    EXPECT_EQ(allocationsOf([&] {
                  for (int i = -50; i < 50; ++i)
                      static_cast<void>(curve->eval(i * 0.77) + GetFirstDerivative(*curve, i * 0.77)
                                        + GetSecondDerivative(*curve, i * 0.77) + EvalInInterior(i * 0.77, *curve));
              }),
              0U);
}

INSTANTIATE_TEST_SUITE_P(Museum, EveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

} // namespace
} // namespace Test
