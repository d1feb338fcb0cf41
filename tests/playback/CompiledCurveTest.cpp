#include "playback/Lanes.h" // internal: chooses the lanes
#include "support/Allocations.h"
#include "support/Basics.h"
#include "support/BezierOracle.h"
#include "support/Museum.h"
#include "support/Random.h"
#include "support/SameCurve.h"

#include <random>

namespace Test {
namespace {

double RangeOf(const std::vector<double>& values) {
    double low = kInfinity;
    double high = -kInfinity;
    for (const double y : values)
        if (std::isfinite(y)) {
            low = std::min(low, y);
            high = std::max(high, y);
        }
    return std::max(0.0, high - low);
}

// --- of every curve --------------------------------------------------------------------------------------------------

class EveryCompiled : public testing::TestWithParam<Exhibit> {
protected:
    // Within the segments, at their keys, and far away.
    std::vector<double> looks() const {
        std::vector<double> xs{-1e9, -12345.678, -100.0, -7.3, 500.0, 86401.0, 1e7 + 1.0, 1e9};
        for (const Segment& segment : static_cast<const FCurve&>(*curve)) {
            const Span span = SpanOf(segment);
            for (int i = 0; i <= 200; ++i) xs.push_back(span.x0 + (span.x1 - span.x0) * i / 200.0);
            for (const double off : {1.1e-7, 1e-6, 1e-4}) {
                xs.push_back(span.x0 + off);
                xs.push_back(span.x1 - off);
            }
        }
        return xs;
    }

    using Function = std::function<double(double)>;
    static double expectSame(const Function& expected, const Function& found, const std::vector<double>& xs,
                             double valueRange = 0.0) {
        std::vector<double> ys(xs.size());
        std::transform(xs.begin(), xs.end(), ys.begin(), expected);
        const double range = std::max(valueRange, RangeOf(ys));
        for (std::size_t i = 0; i < xs.size(); ++i) {
            // What a few units in the last place of x do is in nobody's hands.
            const double ulps = 4e-16 * std::max(std::abs(xs[i]), 1.0);
            const double blur = std::abs(expected(xs[i] + ulps) - ys[i]) + std::abs(expected(xs[i] - ulps) - ys[i]);
            EXPECT_NEAR(found(xs[i]), ys[i], 1e-12 * std::max(range, std::abs(ys[i])) + blur) << "at " << xs[i];
        }
        return range;
    }

    std::shared_ptr<FCurve> curve = GetParam().make();
    CompiledCurve compiled{*curve};
};

TEST_P(EveryCompiled, AgreesWithItsCurve) {
    const std::vector<double> xs = looks();
    const double range =
        expectSame([&](double x) { return curve->eval(x); }, [&](double x) { return compiled.eval(x); }, xs);
    expectSame([&](double x) { return GetFirstDerivative(*curve, x); },
               [&](double x) { return compiled.getFirstDerivative(x); }, xs, range);
    expectSame([&](double x) { return GetSecondDerivative(*curve, x); },
               [&](double x) { return compiled.getSecondDerivative(x); }, xs, range);
    for (const double x : {kNaN, kInfinity, -kInfinity}) EXPECT_TRUE(SameBits(compiled.eval(x), curve->eval(x)));
}

TEST_P(EveryCompiled, GivesTheSameBitsInEveryWay) {
    std::vector<double> xs = looks();
    for (const double x : {kNaN, kInfinity, -kInfinity}) xs.push_back(x);
    const auto check = [&](const char* way) {
        std::vector<double> ys(xs.size());
        compiled.eval(xs.data(), ys.data(), xs.size());
        std::vector<double> inPlace = xs;
        compiled.eval(inPlace.data(), inPlace.data(), inPlace.size());
        CompiledCurve::Cursor cursor;
        for (std::size_t i = 0; i < xs.size(); ++i) {
            const double expected = compiled.eval(xs[i]);
            for (const double found : {compiled.eval(xs[i], cursor), ys[i], inPlace[i]})
                ASSERT_TRUE(SameBits(found, expected)) << way << " at " << xs[i];
        }
    };
    const auto all = Private::AllLanes();
    for (const Private::LaneSet* lanes : all) {
        Private::UseLanes(*lanes);
        check(lanes->name);
        std::sort(xs.begin(), xs.end() - 3);
        check(lanes->name);
        std::shuffle(xs.begin(), xs.end(), std::mt19937(1));
    }

    std::vector<double> samples(600);
    compiled.sample(-11.0, 0.05, samples.size(), samples.data());
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_TRUE(SameBits(samples[i], compiled.eval(-11.0 + static_cast<double>(i) * 0.05)));
}

TEST_P(EveryCompiled, LeavesNothingBehindWhenMemoryRunsOut) {
    const auto compile = [&] { CompiledCurve again(*curve); };
    const auto allocations = static_cast<long>(allocationsOf(compile));
    const std::size_t held = heldNow();
    for (long others = 0; others < allocations; ++others) {
        EXPECT_TRUE(runsOutOfMemory(others, compile)) << others;
        ASSERT_EQ(heldNow(), held) << others;
    }
}

INSTANTIATE_TEST_SUITE_P(Museum, EveryCompiled, testing::ValuesIn(Museum()), ExhibitName());

// --- Bezier segments -------------------------------------------------------------------------------------------------

// As BezierMath.ValuesAgreeWithTheOracle, ten times as strict.
TEST(CompiledCurve, BezierSegmentsAgreeWithTheOracle) {
    Random random(3);
    ForEachHardSegment(random, [&](BezierArgs p) {
        const auto curve = MakeCurve(
            {{p.x0, p.y0, {}, Vector2D<double>(p.outX, p.outY)}, {p.x3, p.y3, Vector2D<double>(p.inX, p.inY), {}}});
        const auto segment = std::next(curve->begin()); // which may hold its handles otherwise
        p.outX = segment->getOutTangent()->getX();
        p.outY = segment->getOutTangent()->getY();
        p.inX = segment->getInTangent()->getX();
        p.inY = segment->getInTangent()->getY();
        const Oracle oracle(p);
        const CompiledCurve compiled(*curve);
        for (int i = 0; i < 60; ++i) {
            const double part = i % 3 == 0 ? i / 60.0 : std::pow(10.0, random.between(-12, 0));
            const double x = i % 2 == 0 ? p.x0 + (p.x3 - p.x0) * part : p.x3 - (p.x3 - p.x0) * part;
            if (x - p.x0 <= GetEpsilon() || p.x3 - x <= GetEpsilon()) continue;
            const double y = compiled.eval(x);
            Exact error = (std::abs(y - oracle.y(x)) - DBL_EPSILON * std::abs(Exact(y)) / 2) / oracle.range();
            if (error > Exact(1e-12)) error -= oracle.doubt(x) / oracle.range();
            ASSERT_LE(error, Exact(1e-12))
                << "x0 " << p.x0 << " to " << p.x3 << " handles " << p.outX << ' ' << p.inX << " at " << x;
        }
    });
}

TEST(CompiledCurve, ValuesBesideAKeyAreTheKeys) {
    for (const double handle : {0.0, 0.4, 1.0}) {
        const auto curve =
            MakeCurve({{2.0, 5.0, {}, Vector2D<double>(handle, 3.0)}, {3.0, 7.0, Vector2D<double>(-handle, 3.0), {}}});
        const CompiledCurve compiled(*curve);
        EXPECT_EQ(compiled.eval(2.0 + 0.9e-7), 5.0);
        EXPECT_EQ(compiled.eval(3.0 - 0.9e-7), 7.0);
    }
}

// --- look-ups --------------------------------------------------------------------------------------------------------

// However the keys are spaced, x finds its segment: each has a value of its own.
TEST(CompiledCurve, FindsEverySegmentHoweverUnevenTheKeys) {
    Random random(5);
    for (const int count : {1, 2, 3, 10, 500, 70000})
        for (const int unevenness : {0, 3, 40}) {
            const auto curve = FCurve::create();
            const auto constant = Constant::create();
            double x = random.between(-10, 10);
            for (int i = 0; i < count; ++i) {
                curve->insertSegment(*Keyframe::create(x, i), constant);
                x += std::ldexp(random.between(0.5, 1), random.below(unevenness + 1) - unevenness / 2);
            }
            const CompiledCurve compiled(*curve);
            ASSERT_EQ(compiled.getKeyCount(), static_cast<std::size_t>(count));
            CompiledCurve::Cursor cursor;
            for (auto segment = std::next(curve->begin()); segment != curve->end(); ++segment) {
                const double key = segment->getLeftKey()->getX();
                for (const double at : {key, std::nextafter(key, -1e300), key + random.between(0, 1)}) {
                    ASSERT_EQ(compiled.eval(at), curve->eval(at)) << at;
                    ASSERT_EQ(compiled.eval(at, cursor), curve->eval(at)) << at;
                }
            }
        }
}

TEST(CompiledCurve, TakesEightyBytesAKey) {
    const auto bezier = Bezier::create();
    for (const std::size_t count : {50U, 1000U, 100000U}) {
        const auto curve = FCurve::create();
        for (std::size_t i = 0; i < count; ++i)
            curve->insertSegment(*Keyframe::create(static_cast<double>(i), static_cast<double>(i % 7)), bezier);
        const std::size_t before = heldNow();
        const CompiledCurve compiled(*curve);
        EXPECT_LE(heldNow() - before, 80 * count) << count;
    }
}

// --- what it keeps ---------------------------------------------------------------------------------------------------

// A host's kind that reads whatever a segment has of its own, and its own state.
class Gains : public Interpolator {
public:
    explicit Gains(double perFrame) : gain(perFrame) {}
    double eval(double x, const Segment& segment) const override {
        if (segment.getOwningCurve()) throw std::logic_error("reaches the curve");
        double sum = gain * x + segment.getOutTangent()->getY() - segment.getInTangent()->getX();
        sum += std::atof(segment.getProperty("extra"));
        if (const auto left = segment.getLeftKey()) sum += left->getY() + std::atof(left->getProperty("extra"));
        if (const auto right = segment.getRightKey()) sum *= right->getX();
        return sum;
    }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<Gains>(*this); }
    double gain;
};

TEST(CompiledCurve, AsksAHostsInterpolatorWithACopyOfItsSegment) {
    const auto gains = std::make_shared<Gains>(2.0);
    auto curve = MakeCurve({{1, 5, Vector2D<double>(-0.5, 1), Vector2D<double>(0.25, 3)}, {2, 7}});
    for (Segment& segment : *curve) {
        segment.setInterpolator(gains);
        segment.setProperty("extra", "100");
    }
    curve->findSegment(1.0)->getLeftKey()->setProperty("extra", "1000");
    const CompiledCurve compiled(*curve);
    curve.reset();
    gains->gain = 99.0;
    EXPECT_DOUBLE_EQ(compiled.eval(0.5), (1.0 + 0.5 + 100.0) * 1.0);
    EXPECT_NEAR(compiled.eval(1.5), (3.0 + 3.0 + 1.0 / 3.0 + 100.0 + 5.0 + 1000.0) * 2.0, 1.0);
    EXPECT_NEAR(compiled.getFirstDerivative(1.5), 4.0, 1e-6);
}

} // namespace
} // namespace Test
