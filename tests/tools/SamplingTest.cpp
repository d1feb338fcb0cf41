#include "support/Basics.h"
#include "support/Recorder.h"

#include <cstdint>
#include <cstring>

using namespace Test;

namespace {

Points Abscissae(const std::vector<double>& xs, const FCurve& curve) {
    Points points;
    for (const double x : xs) points.push_back({x, curve.eval(x)});
    return points;
}

const Points kRubbish = {{7.0, 7.0}, {8.0, 8.0}};

TEST(Sampling, AccumulatesTheAbscissae) {
    const auto curve = CurveThrough({{0, 0}, {1, 10}});
    Points points = kRubbish;
    SampleCurve(*curve, 0.0, 1.0, 0.1, points);
    ASSERT_EQ(points.size(), 11U);
    EXPECT_EQ(points[8].x, 0.7999999999999999);
    EXPECT_EQ(points[10].x, 0.9999999999999999);
    for (const auto& point : points) EXPECT_EQ(point.y, curve->eval(point.x));
}

TEST(Sampling, GivesTheValuesOfEvalAcrossSegmentsAndBeyondTheKeys) {
    const auto curve = CurveThrough({{-2, 1}, {0.3, 5}, {0.4, -1}, {7, 2}});
    curve->findSegment(0.35)->setInterpolator(nullptr);
    curve->findSegment(1.0)->setInterpolator(InterpolatorFactory::create("sin(x)"));
    Points points;
    SampleCurve(*curve, -4.0, 9.0, 0.05, points);
    ASSERT_GT(points.size(), 200U);
    for (const auto& point : points) EXPECT_EQ(point.y, curve->eval(point.x)) << point.x;
}

TEST(Sampling, EndsAtOnceWhereNothingCanBeSampled) {
    const struct {
        double start, end, step;
        std::size_t samples;
        const char* why;
    } kRows[] = {
        {3, 3, 1, 1, "one point"},
        {3, 2, 1, 0, "start above end"},
        {0, 1, 0, 0, "no step"},
        {0, 1, -0.1, 0, "backwards"},
        {3, 3, 0, 0, "no step, one point"},
        {0, 1, kNaN, 0, "NaN step"},
        {kNaN, 1, 0.1, 0, "NaN start"},
        {0, kNaN, 0.1, 0, "NaN end"},
        {0, 1, kInfinity, 1, "an infinite step"},
        {0, kInfinity, 1, 0, "never ends"},
        {-kInfinity, 0, 1, 0, "never begins"},
        {1e16, 1e16 + 100, 1, 0, "a step that moves nothing"},
        {0x1p53 - 10, 0x1p53 + 10, 1, 0, "a step that moves nothing from 2^53 on"},
        {0x1p53 - 10, 0x1p53 - 1, 1, 10, "just below 2^53"},
        {1e300, 1e300, 1e280, 0, "lost in 1e300"},
        {0, 1, 1e-320, 0, "a denormal step"},
        {0, 2147483647.0, 1, 0, "2^31 samples"},
        {0, 1e300, 1e-3, 0, "far more samples"},
        {-1e308, 1e308, 1e308, 3, "a difference that overflows"},
        {-1e308, 1e308, 1e290, 0, "too many over a difference that overflows"},
    };
    const auto curve = FCurve::create();
    for (const auto& row : kRows) {
        Points points = kRubbish;
        SampleCurve(*curve, row.start, row.end, row.step, points);
        EXPECT_EQ(points.size(), row.samples) << row.why;
        if (row.samples > 0) {
            EXPECT_EQ(points.front().x, row.start) << row.why;
        }
    }
}

TEST(Sampling, ContinuesTheChordOutsideTheRange) {
    const auto curve = CurveThrough({{0, 0}, {2, 8}, {4, 2}, {10, 2}});
    Points points = kRubbish;
    SampleCurveExtrapolated(*curve, 1.0, 4.0, 0.5, 1.0, points);
    const auto chord = [](double x) { return (x - 1.0) * (-2.0 / 3.0) + 4.0; };
    ASSERT_EQ(points.size(), 11U);
    EXPECT_EQ(points[0], Vector2D<double>(0.0, chord(0.0)));
    EXPECT_EQ(points[1], Vector2D<double>(0.5, chord(0.5)));
    for (std::size_t i = 2; i < 9; ++i) EXPECT_EQ(points[i].y, curve->eval(points[i].x));
    EXPECT_EQ(points[9], Vector2D<double>(4.5, chord(4.5)));
    EXPECT_EQ(points[10], Vector2D<double>(5.0, chord(5.0)));

    SampleCurveExtrapolated(*curve, 1.0, 1.0, 0.5, 0.5, points);
    ASSERT_EQ(points.size(), 3U);
    EXPECT_TRUE(std::isnan(points[0].y));
    EXPECT_EQ(points[1], Vector2D<double>(1.0, 4.0));
    EXPECT_TRUE(std::isnan(points[2].y));

    for (const double step : {0.0, -1.0, kNaN}) {
        points = kRubbish;
        SampleCurveExtrapolated(*curve, 1.0, 4.0, step, 1.0, points);
        EXPECT_TRUE(points.empty()) << step;
    }
    SampleCurveExtrapolated(*curve, 1.0, 4.0, 0.5, kNaN, points);
    EXPECT_TRUE(points.empty());
}

TEST(Sampling, WidensTheInteriorToTheGrid) {
    Points points = kRubbish;
    SampleCurveInterior(*FCurve::create(), 1.0, points);
    EXPECT_TRUE(points.empty());

    const auto one = CurveThrough({{0.3, 5}});
    for (const double step : {1.0, 0.0, kNaN}) {
        SampleCurveInterior(*one, step, points);
        EXPECT_EQ(points, (Points{{0.3, 5.0}})) << step;
    }

    const auto two = CurveThrough({{0.3, 5}, {2.2, 1}});
    SampleCurveInterior(*two, 1.0, points);
    EXPECT_EQ(points, Abscissae({0, 1, 2, 3}, *two));
    SampleCurveInterior(*two, 100.0, points);
    EXPECT_EQ(points, Abscissae({0, 100}, *two));
    for (const double step : {0.0, -1.0, kNaN, kInfinity, 1e-300}) {
        points = kRubbish;
        SampleCurveInterior(*two, step, points);
        EXPECT_TRUE(points.empty()) << step;
    }

    const auto negative = CurveThrough({{-2.5, 5}, {-0.5, 1}});
    SampleCurveInterior(*negative, 1.0, points);
    EXPECT_EQ(points, Abscissae({-3, -2, -1, 0}, *negative));
}

} // namespace
