#include "support/Basics.h"
#include "support/Museum.h"

namespace Test {
namespace {

TEST(EvalInInterior, HoldsXBetweenTheKeys) {
    // The end segments would give 1000 x.
    const auto curve = MakeCurve(
        {{1, 5, {}, {}, "linear()"}, {2, 7, {}, {}, "constant_next()"}, {4, -3, {}, {}, "1000 * x"}}, "1000 * x");
    struct Row {
        double x, y;
    };
    const Row rows[] = {{-kInfinity, 5}, {0, 5}, {1, 5}, {1.5, 6}, {2, -3}, {3, -3}, {4, -3}, {5, -3}, {kInfinity, -3}};
    for (const Row& row : rows) EXPECT_EQ(EvalInInterior(row.x, *curve), row.y) << row.x;
    EXPECT_EQ(curve->eval(4), 4000.0);
    // At the last key the segment before it answers, with whatever it makes of that x.
    (*--(--curve->end())).setInterpolator(InterpolatorFactory::create("x + 10"));
    EXPECT_EQ(EvalInInterior(4, *curve), 14.0);
    EXPECT_EQ(EvalInInterior(99, *curve), 14.0);
    EXPECT_TRUE(std::isnan(EvalInInterior(kNaN, *curve)));
    (*--(--curve->end())).setInterpolator(nullptr);
    EXPECT_EQ(EvalInInterior(4, *curve), 0.0);
}

TEST(EvalInInterior, FewKeys) {
    const auto one = MakeCurve({{1, 5, {}, {}, "1000 * x"}}, "1000 * x");
    const auto empty = MakeCurve({}, "10 * x");
    for (const double x : {-3.0, 1.0, 7.0}) {
        EXPECT_EQ(EvalInInterior(x, *one), 5.0);
        EXPECT_EQ(EvalInInterior(x, *empty), 10 * x);
    }
    EXPECT_EQ(EvalInInterior(3, *FCurve::create()), 0.0);
    const auto cycles = MakeCurve({{0, 0}, {1, 4}, {3, -1, {}, {}, "cycle()"}}, "cycle()");
    EXPECT_TRUE(std::isnan(EvalInInterior(kNaN, *cycles))) << "NaN reaches no cycle";
}

TEST(Derivatives, SidesAtAKey) {
    const auto curve =
        MakeCurve({{0, 0, {}, {}, "linear()"}, {2, 4, {}, {}, "constant()"}, {3, 0, {}, {}, "x * x * x"}});
    struct Row {
        double x, plain, left, secondPlain, secondLeft;
    };
    const Row rows[] = {
        {-1, 0, 0, 0, 0},       {0, 2, 0, 0, 0},        {1, 2, 2, 0, 0},   {2, 0, 2, 0, 0},     {2 + 5e-8, 0, 2, 0, 0},
        {2 - 5e-8, 2, 2, 0, 0}, {2 + 5e-7, 0, 0, 0, 0}, {3, 27, 0, 18, 0}, {4, 48, 48, 24, 24},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.x);
        EXPECT_NEAR(GetFirstDerivative(*curve, row.x), row.plain, 1e-9);
        EXPECT_NEAR(GetFirstDerivativeRight(*curve, row.x), row.plain, 1e-9);
        EXPECT_NEAR(GetFirstDerivativeLeft(*curve, row.x), row.left, 1e-9);
        EXPECT_NEAR(GetSecondDerivative(*curve, row.x), row.secondPlain, 1e-6);
        EXPECT_NEAR(GetSecondDerivativeRight(*curve, row.x), row.secondPlain, 1e-6);
        EXPECT_NEAR(GetSecondDerivativeLeft(*curve, row.x), row.secondLeft, 1e-6);
    }
    for (Segment& segment : *curve) segment.setInterpolator(nullptr);
    for (const double x : {-1.0, 0.0, 2.0, 5.0}) {
        EXPECT_EQ(GetFirstDerivative(*curve, x), 0.0);
        EXPECT_EQ(GetFirstDerivativeLeft(*curve, x), 0.0);
        EXPECT_EQ(GetSecondDerivativeLeft(*curve, x), 0.0);
    }
}

} // namespace
} // namespace Test
