#include "support/Ask.h"
#include "support/Basics.h"
#include "support/Museum.h"

namespace Test {
namespace {

// A host's own kind: y = x^3, every other operation the default. Remembers where it was asked.
class Cube : public Interpolator {
public:
    double eval(double x, const Segment&) const override {
        asked.push_back(x);
        return x * x * x;
    }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<Cube>(*this); }

    mutable std::vector<double> asked;
};

// A segment outside any curve; a key is left out where x is NaN.
Segment Between(double x0, double y0, double x1, double y1) {
    const auto key = [](double x, double y) { return std::isnan(x) ? nullptr : Keyframe::create(x, y); };
    return Segment(nullptr, key(x0, y0), nullptr, key(x1, y1));
}
constexpr double none = std::numeric_limits<double>::quiet_NaN();

TEST(Interpolator, DefaultDerivatives) {
    const Cube cube;
    const Segment open = Between(none, 0, none, 0);
    for (const double x : {-100.0, -1.0, 0.0, 0.01, 1.0, 50.0}) {
        EXPECT_NEAR(cube.getFirstDerivative(x, open), 3 * x * x, 1e-9 * std::max(1.0, x * x));
        EXPECT_NEAR(cube.getSecondDerivative(x, open), 6 * x, 1e-2 * std::max(1.0, std::abs(x)));
    }
    EXPECT_FALSE(cube.usesTangents());

    // The stencil never leaves the segment: at a key it ends there.
    const Segment closed = Between(1, 0, 2, 0);
    for (const double x : {1.0, 1.0 + 1e-6, 2.0 - 1e-6, 2.0}) {
        cube.asked.clear();
        EXPECT_NEAR(cube.getFirstDerivative(x, closed), 3 * x * x, 1e-4);
        EXPECT_NEAR(cube.getSecondDerivative(x, closed), 6 * x, 1e-2);
        for (const double asked : cube.asked) EXPECT_TRUE(asked >= 1.0 && asked <= 2.0) << asked;
    }

    // No room for a stencil.
    const Segment narrow = Between(1, 0, 1 + 1e-9, 0);
    EXPECT_EQ(cube.getFirstDerivative(1, narrow), 0.0);
    EXPECT_EQ(cube.getSecondDerivative(1, narrow), 0.0);
}

TEST(Interpolator, DefaultPolylines) {
    const Cube cube;
    const Segment segment = Between(0, 0, 4, 64);
    const struct {
        int count;
        Points points;
    } rows[] = {
        {0, {}},
        {-5, {}},
        {1, {{1, 1}}},
        {2, {{1, 1}, {3, 27}}},
        {5, {{1, 1}, {1.5, 3.375}, {2, 8}, {2.5, 15.625}, {3, 27}}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(PolylineOf(&Interpolator::computePolyline, cube, segment, 1, 3, row.count), row.points);
    const Points first = PolylineOf(&Interpolator::firstDerivPolyline, cube, segment, 1, 3, 3);
    const Points second = PolylineOf(&Interpolator::secondDerivPolyline, cube, segment, 1, 3, 3);
    ASSERT_EQ(first.size() + second.size(), 6u);
    EXPECT_NEAR(first[1].y, 12, 1e-8);
    EXPECT_NEAR(second[1].y, 12, 1e-3);
}

TEST(Interpolator, DefaultExtentsStepByTenths) {
    const Cube cube;
    const Segment segment = Between(0, 0, 4, 64);
    const auto asked = [&](double x0, double x1) {
        cube.asked.clear();
        const Extents extents = ExtentsOf(cube, segment, x0, x1);
        EXPECT_TRUE(std::isnan(extents.low) || extents.low <= extents.high);
        return cube.asked;
    };
    EXPECT_EQ(asked(1, 1.05), (std::vector<double>{1, 1.05, 1}));
    EXPECT_EQ(asked(1, 1.15), (std::vector<double>{1, 1.15, 1, 1.1}));
    EXPECT_EQ(asked(1, 1).size(), 3u);
    EXPECT_EQ(asked(2, 1), (std::vector<double>{2, 1}));
    EXPECT_EQ(asked(0, 100).size(), 2u + 1001u); // the accumulated steps end just before 100

    // Where a step cannot move x, or never arrives, the ends are all there is.
    for (const double x : {1e17, 1e300, kInfinity, none})
        for (const auto& [x0, x1] : {std::pair(0.0, x), {-x, 0.0}, {-x, x}, {x, x}})
            EXPECT_EQ(asked(x0, x1).size(), 2u) << x;

    const Extents extents = ExtentsOf(cube, segment, -2, 3);
    EXPECT_EQ(extents.low, -8.0);
    EXPECT_EQ(extents.high, 27.0);
}

TEST(Interpolator, ExpressionIsACopyAndNeverNull) {
    Cube cube;
    EXPECT_STREQ(cube.getExpression(), "");
    char text[] = "cube()";
    cube.setExpression(text);
    text[0] = 'X';
    EXPECT_STREQ(cube.getExpression(), "cube()");
    EXPECT_STREQ(cube.clone()->getExpression(), "cube()");
    cube.setExpression(cube.getExpression() + 2);
    EXPECT_STREQ(cube.getExpression(), "be()");
    cube.setExpression(nullptr);
    EXPECT_STREQ(cube.getExpression(), "");
}

// --- the kinds in closed form ----------------------------------------------------------------------------------------

TEST(StraightKinds, Values) {
    struct Row {
        double x0, y0, x1, y1; // the keys
        double x;
        double constant, next, linear, slope;
    };
    const Row rows[] = {
        {0, 1, 10, 5, 5, 1, 5, 3, 0.4},    {0, 1, 10, 5, 10, 1, 5, 5, 0.4}, {0, 1, 10, 5, 20, 1, 5, 9, 0.4},
        {0, 1, 10, 5, -10, 1, 5, -3, 0.4}, {none, 0, 10, 5, 3, 5, 5, 5, 0}, {0, 1, none, 0, 3, 1, 1, 1, 0},
        {none, 0, none, 0, 3, 0, 0, 0, 0},
    };
    for (const Row& row : rows) {
        const Segment segment = Between(row.x0, row.y0, row.x1, row.y1);
        const auto check = [&](Interpolator& kind, double y, double slope) {
            SCOPED_TRACE(testing::Message() << kind.getExpression() << " at " << row.x);
            EXPECT_EQ(kind.eval(row.x, segment), y);
            EXPECT_EQ(kind.getFirstDerivative(row.x, segment), slope);
            EXPECT_EQ(kind.getSecondDerivative(row.x, segment), 0.0);
            EXPECT_FALSE(kind.usesTangents());

            const double y2 = kind.eval(2, segment);
            const double y8 = kind.eval(8, segment);
            const Extents extents = ExtentsOf(kind, segment, 2, 8);
            EXPECT_EQ(extents.low, std::min(y2, y8));
            EXPECT_EQ(extents.high, std::max(y2, y8));
            for (const int count : {-1, 0, 1, 50}) {
                const auto polyline = [&](FillPolyline fill) { return PolylineOf(fill, kind, segment, 2, 8, count); };
                EXPECT_EQ(polyline(&Interpolator::computePolyline), (Points{{2, y2}, {8, y8}}));
                EXPECT_EQ(polyline(&Interpolator::firstDerivPolyline), (Points{{2, slope}, {8, slope}}));
                EXPECT_EQ(polyline(&Interpolator::secondDerivPolyline), (Points{{2, 0}, {8, 0}}));
            }
        };
        check(*Constant::create(), row.constant, 0);
        check(*ConstantNext::create(), row.next, 0);
        check(*Linear::create(), row.linear, row.slope);
        EXPECT_EQ(Constant::evaluate(row.x, segment), row.constant);
        EXPECT_EQ(ConstantNext::evaluate(row.x, segment), row.next);
        EXPECT_EQ(Linear::evaluate(row.x, segment), row.linear);
        check(*UnknownExpression::create("?"), 0, 0);
    }

    EXPECT_FALSE(std::isfinite(Linear::evaluate(2, Between(1, 0, 1, 5))));
}

TEST(NumberInterp, IsTheNumberEverywhere) {
    const Segment segment = Between(0, 1, 10, 5);
    const auto number = NumberInterp::create(-0.1);
    EXPECT_STREQ(number->getExpression(), "-0.1");
    EXPECT_EQ(number->eval(1e9, segment), -0.1);
    const Extents extents = ExtentsOf(*number, segment, 0, 1e12); // at once
    EXPECT_TRUE(extents.low == -0.1 && extents.high == -0.1);
    for (const double value : {1.0 / 3.0, 5e-324, 1.7976931348623157e308, -0.0}) {
        const auto again = InterpolatorFactory::create(NumberInterp::create(value)->getExpression());
        EXPECT_EQ(again->eval(0, segment), value);
        EXPECT_EQ(std::signbit(again->eval(0, segment)), std::signbit(value));
    }
}

// --- Bezier segments that lack a key ---------------------------------------------------------------------------------

TEST(Bezier, ExtendsAlongTheTangentOfTheOnlyKey) {
    const struct {
        Vector2D<double> in, out;
        double leftSlope, rightSlope;
    } rows[] = {
        {{-1, -2}, {1, 3}, 2, 3},
        {{0, 0}, {0, 0}, 0, 0},
        {{0, -2}, {0, 3}, 2000, 3000}, // no length in x: as if of 0.001
        {{-1e-5, 1}, {1e-5, 1}, -1000, 1000},
    };
    for (const auto& row : rows) {
        const auto curve = MakeCurve({{4, 10, row.in, row.out}}, "bezier()");
        const auto check = [](const Segment& segment, double slope, double x0, double x1) {
            const Interpolator& bezier = *segment.getInterpolator();
            const double y0 = 10 + slope * (x0 - 4);
            const double y1 = 10 + slope * (x1 - 4);
            EXPECT_DOUBLE_EQ(bezier.eval(x0, segment), y0);
            EXPECT_DOUBLE_EQ(bezier.eval(4, segment), 10);
            EXPECT_DOUBLE_EQ(bezier.getFirstDerivative(x0, segment), slope);
            EXPECT_EQ(bezier.getSecondDerivative(x0, segment), 0);
            const Extents extents = ExtentsOf(bezier, segment, x0, x1);
            EXPECT_DOUBLE_EQ(extents.low, std::min(y0, y1));
            EXPECT_DOUBLE_EQ(extents.high, std::max(y0, y1));
            for (const auto fill : {&Interpolator::computePolyline, &Interpolator::firstDerivPolyline})
                EXPECT_EQ(PolylineOf(fill, bezier, segment, x0, x1, 30).size(), 2u); // as EveryExhibit checks them
            EXPECT_EQ(PolylineOf(&Interpolator::secondDerivPolyline, bezier, segment, x0, x1, 30),
                      (Points{{x0, 0}, {x1, 0}}));
        };
        check(*curve->begin(), row.leftSlope, -3, 2);
        check(*++curve->begin(), row.rightSlope, 6, 20);
    }
    EXPECT_TRUE(Bezier::create()->usesTangents());
    EXPECT_EQ(Bezier::create()->eval(5, Between(none, 0, none, 0)), 0.0);
    EXPECT_EQ(Bezier::create()->eval(5, Between(none, 0, 2, 3)), 3.0); // a segment made by hand has no tangents
    EXPECT_DOUBLE_EQ(Bezier::create()->eval(1, Between(0, 0, 2, 3)), 1.5);
}

TEST(Bezier, ReadsKeysAndHandles) {
    const auto curve = MakeCurve({{0, 0}, {3, 3}});
    const Segment& segment = *++curve->begin();
    // Flat handles of a third of the width: y = 9 t^2 - 6 t^3 with t = x / 3.
    for (const double t : {0.0, 0.125, 0.5, 0.75, 1.0}) {
        EXPECT_NEAR(curve->eval(3 * t), 9 * t * t - 6 * t * t * t, 1e-15);
        EXPECT_NEAR(segment.getInterpolator()->getFirstDerivative(3 * t, segment), 6 * t - 6 * t * t, 1e-14);
        EXPECT_NEAR(segment.getInterpolator()->getSecondDerivative(3 * t, segment), 2 - 4 * t, 1e-14);
    }
    const auto check = [](FCurve& of, const Points& expected) {
        const Segment& part = *++of.begin();
        Points p(4, {9, 9});
        static_cast<const BezierInterpBase&>(*part.getInterpolator())
            .getBezierArgs(part, p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y);
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_DOUBLE_EQ(p[i].x, expected[i].x) << i;
            EXPECT_DOUBLE_EQ(p[i].y, expected[i].y) << i;
        }
    };
    check(*curve, {{0, 0}, {1, 0}, {2, 3}, {3, 3}});
    const auto folded = MakeCurve({{0, 0, {}, {{6, 2}}}, {3, 3, {{-9, -1.5}}, {}}});
    check(*folded, {{0, 0}, {3, 1}, {0, 2.5}, {3, 3}}); // held to the far keys, each along its own direction
    EXPECT_EQ((++folded->begin())->getOutTangent()->get(), Vector2D<double>(6, 2));
}

} // namespace
} // namespace Test
