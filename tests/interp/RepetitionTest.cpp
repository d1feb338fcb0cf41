// Cycle, CycleOffset and Mirror, and the same as parts of formulas.

#include "support/Ask.h"
#include "support/Basics.h"
#include "support/Museum.h"
#include "support/Random.h"

namespace Test {
namespace {

// Keys (first, y0), ..., each kind linear but for the last one's, before and after them the given kind.
std::shared_ptr<FCurve> Lines(const std::vector<Vector2D<double>>& points, const char* ends) {
    std::vector<Key> keys;
    for (const auto& point : points) keys.push_back({point.x, point.y, {}, {}, "linear()"});
    keys.back().interpolator = ends;
    return MakeCurve(keys, ends);
}

TEST(Repetition, WithoutAnythingToRepeatIsConstant) {
    for (const char* kind : {"cycle()", "cycle_offset()", "mirror()"}) {
        EXPECT_EQ(MakeCurve({}, kind)->eval(3), 0.0);
        const auto single = MakeCurve({{2, 5, {}, {}, kind}}, kind);
        for (const double x : {-7.0, 2.0, 7.0}) EXPECT_EQ(single->eval(x), 5.0);
        const auto empty = Lines({{0, 0}, {1, 1}}, kind);
        std::next(empty->begin())->setInterpolator(nullptr);
        EXPECT_EQ(GetFirstDerivative(*empty, 5.5), 0.0);
    }
}

TEST(Repetition, IsPartOfFormulasWithAndWithoutParentheses) {
    const struct {
        const char* text;
        double x, y;
    } rows[] = {
        {"cycle() + 2*x", 5, 11}, {"mirror * cycle_offset", 4.5, 0.75}, {"cycle + 1", 4.5, 1.5}, {" cycle", 5, 1}};
    for (const auto& row : rows) EXPECT_EQ(Lines({{2, 0}, {3, 1}, {4, 0.5}}, row.text)->eval(row.x), row.y) << row.text;
}

// A curve with jumps, corners and bends, of which every place has another value.
std::shared_ptr<FCurve> Rough(const char* kind, double first = -1.3) {
    return MakeCurve({{first, 2, {}, {}, "linear()"},
                      {first + 2, -1, {}, {}, "bezier()"},
                      {first + 2.7, 4, {}, {}, "constant_next()"},
                      {first + 5.1, 3, {}, {}, "sin(x)+x"},
                      {first + 7.3, 8, {}, {}, kind}},
                     kind);
}

TEST(Repetition, AgreesWithTheKeyedPartCountedOutInLongDoubles) {
    Random random(5);
    const auto plain = Rough("constant()");
    for (const double reach : {30.0, 1e4, 1e7})
        for (int i = 0; i < 2000; ++i) {
            const double x = random.between(-reach, reach);
            const double first = -1.3;
            const double last = first + 7.3;
            if (x >= first && x <= last) continue;
            const long double span = last - first;
            const long double n = std::floor((static_cast<long double>(x) - first) / span);
            const long double phase = (static_cast<long double>(x) - first) - n * span;
            const bool odd = std::fmod(n, 2.0L) != 0.0L;
            const double ulps = 4 * std::numeric_limits<double>::epsilon() * std::abs(x);
            // The keyed part around the place, as far as x can tell where it is.
            const auto expect = [&](double value, double at, double lift) {
                double low = kInfinity;
                double high = -kInfinity;
                for (const double u : {at - ulps, at, at + ulps}) {
                    low = std::min(low, EvalInInterior(u, *plain));
                    high = std::max(high, EvalInInterior(u, *plain));
                }
                const double slack = 1e-12 + 4e-16 * std::abs(lift);
                EXPECT_GE(value, low + lift - slack) << x;
                EXPECT_LE(value, high + lift + slack) << x;
            };
            const auto forwards = static_cast<double>(first + phase);
            expect(Rough("cycle()")->eval(x), forwards, 0.0);
            const double rise = EvalInInterior(last, *plain) - EvalInInterior(first, *plain);
            expect(Rough("cycle_offset()")->eval(x), forwards, static_cast<double>(n) * rise);
            expect(Rough("mirror()")->eval(x), odd ? static_cast<double>(last - phase) : forwards, 0.0);
        }
}

TEST(Repetition, IsExactAtBoundariesAndFarAway) {
    // A saw from 0 to 3 over 3 frames: the value of a cycle is the phase.
    const auto saw = Lines({{2, 0}, {3, 1}, {5, 3}}, "cycle()");
    for (const double n : {1.0, -1.0, 1e6, -1e6, 1e12, 0x1p48})
        for (const double phase : {0.0, 0.25, 1.0, 2.5}) EXPECT_EQ(saw->eval(2 + n * 3 + phase), phase) << n;
    EXPECT_EQ(saw->eval(std::nextafter(8.0, 0.0)), std::nextafter(8.0, 0.0) - 5);
    EXPECT_EQ(saw->eval(std::nextafter(2.0, -1.0)), 3.0);

    for (const char* kind : {"cycle()", "cycle_offset()", "mirror()", "cycle() - mirror()"})
        for (const double x :
             {1e300, -1e300, std::numeric_limits<double>::max(), -std::numeric_limits<double>::max()}) {
            const auto curve = Lines({{0.1, 0}, {0.2, 0.7}, {0.4, 0.3}}, kind);
            EXPECT_TRUE(std::isfinite(curve->eval(x))) << kind << " at " << x;
            EXPECT_TRUE(std::isfinite(GetFirstDerivative(*curve, x))) << kind;
        }
    for (const char* kind : {"cycle()", "cycle_offset()", "mirror()"})
        for (const double x : {kInfinity, -kInfinity, std::nan("")})
            EXPECT_TRUE(std::isnan(Rough(kind)->eval(x)) && std::isnan(GetFirstDerivative(*Rough(kind), x))) << kind;

    // Keys at the ends of the doubles.
    const double most = std::numeric_limits<double>::max();
    for (const char* kind : {"cycle()", "cycle_offset()", "mirror()"}) {
        const auto curve = Lines({{-most / 4, 0}, {0, 1}, {most / 4, 0.5}}, kind);
        EXPECT_TRUE(std::isfinite(curve->eval(most)) && std::isfinite(curve->eval(-most))) << kind;
    }
}

TEST(Repetition, ExtentsHoldWhatDenseSamplingFinds) {
    Random random(11);
    for (const char* kind : {"cycle()", "cycle_offset()", "mirror()"}) {
        const auto curve = Rough(kind);
        const auto extents = [&](const Segment& segment, double x0, double x1) {
            return BoundsOf(*segment.getInterpolator(), segment, x0, x1);
        };
        const Segment& last = *std::prev(curve->end());
        for (int i = 0; i < 150; ++i) {
            const bool trailing = i % 2 == 0;
            const double length = random.between(0, i % 3 == 0 ? 3 : 40);
            const double from = random.between(0, 40);
            const double x0 = trailing ? 6 + from : -1.3 - from - length;
            const double x1 = x0 + length;
            SCOPED_TRACE(testing::Message() << kind << " " << x0 << " " << x1);
            const Segment& segment = trailing ? last : *curve->begin();
            Bounds sampled{kInfinity, -kInfinity};
            for (int s = 0; s <= 4000; ++s) {
                const double y = EvalSegment(std::min(x0 + (x1 - x0) * s / 4000, x1), segment);
                sampled.low = std::min(sampled.low, y);
                sampled.high = std::max(sampled.high, y);
            }
            const auto [low, high] = i % 5 ? extents(segment, x0, x1) : extents(segment, x1, x0);
            // A jump's far side belongs to the extents even where no sample meets it.
            const double step = (x1 - x0) / 4000;
            EXPECT_LE(low, sampled.low + 1e-12);
            EXPECT_GE(low, sampled.low - 20 * step - 1e-9);
            EXPECT_GE(high, sampled.high - 1e-12);
            EXPECT_LE(high, sampled.high + 20 * step + 1e-9);
        }
        // A range of 1e15 periods is no more work than one.
        const double high = extents(last, 10, 1e16).high;
        if (kind == std::string("cycle_offset()"))
            EXPECT_NEAR(high, curve->eval(1e16), 20);
        else
            EXPECT_EQ(high, extents(last, 10, 30).high);
    }
}

} // namespace
} // namespace Test
