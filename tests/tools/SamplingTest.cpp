#include "support/Basics.h"
#include "support/Museum.h"
#include "support/Recorder.h"
#include "support/SameCurve.h"

using namespace Test;

namespace {

Points PointsAt(const std::vector<double>& xs, const FCurve& curve) {
    Points points;
    for (const double x : xs) points.push_back({x, curve.eval(x)});
    return points;
}

const Points kRubbish = {{7.0, 7.0}, {8.0, 8.0}};

TEST(Sampling, EndsAtOnceWhereNothingCanBeSampled) {
    const struct {
        double start, end, step;
        std::size_t samples;
    } kRows[] = {{3, 3, 1, 1},
                 {3, 2, 1, 0},
                 {0, 1, 0, 0},
                 {0, 1, -0.1, 0},
                 {3, 3, 0, 0},
                 {0, 1, kNaN, 0},
                 {kNaN, 1, 0.1, 0},
                 {0, kNaN, 0.1, 0},
                 {0, 1, kInfinity, 1},
                 {0, kInfinity, 1, 0},
                 {-kInfinity, 0, 1, 0},
                 {0, 1, 1e-320, 0},
                 {0, 2147483647.0, 1, 0},
                 {0x1p53 - 10, 0x1p53 + 10, 1, 0},
                 {0x1p53 - 10, 0x1p53 - 1, 1, 10}, // stalls at 2^53
                 {-1e308, 1e308, 1e308, 3},
                 {-1e308, 1e308, 1e290, 0}}; // a difference that overflows
    for (const auto& row : kRows) {
        Points points = kRubbish;
        SampleCurve(*FCurve::create(), row.start, row.end, row.step, points);
        EXPECT_EQ(points.size(), row.samples) << row.start << " to " << row.end << " by " << row.step;
    }
}

TEST(Sampling, ContinuesTheChordOutsideTheRange) {
    const auto curve = CurveThrough({{0, 0}, {2, 8}, {4, 2}, {10, 2}});
    const auto chord = [](double x) { return Vector2D<double>(x, (x - 1.0) * (-2.0 / 3.0) + 4.0); };
    Points expected = PointsAt({1, 1.5, 2, 2.5, 3, 3.5, 4}, *curve);
    expected.insert(expected.begin(), {chord(0), chord(0.5)});
    expected.insert(expected.end(), {chord(4.5), chord(5)});
    Points points = kRubbish;
    SampleCurveExtrapolated(*curve, 1.0, 4.0, 0.5, 1.0, points);
    EXPECT_EQ(points, expected);

    SampleCurveExtrapolated(*curve, 1.0, 1.0, 0.5, 0.5, points); // no chord
    ASSERT_EQ(points.size(), 3U);
    EXPECT_TRUE(std::isnan(points[0].y) && points[1].y == 4.0 && std::isnan(points[2].y));
    SampleCurveExtrapolated(*curve, 1.0, 4.0, 0.5, kNaN, points);
    EXPECT_TRUE(points.empty());
}

TEST(Sampling, WidensTheInteriorToTheGrid) {
    Points points = kRubbish;
    SampleCurveInterior(*FCurve::create(), 1.0, points);
    EXPECT_TRUE(points.empty());
    for (const double step : {1.0, 0.0, kNaN}) {
        SampleCurveInterior(*CurveThrough({{0.3, 5}}), step, points);
        EXPECT_EQ(points, (Points{{0.3, 5.0}})) << step;
    }
    const auto two = CurveThrough({{-2.5, 5}, {2.2, 1}});
    SampleCurveInterior(*two, 1.0, points);
    EXPECT_EQ(points, PointsAt({-3, -2, -1, 0, 1, 2, 3}, *two));
    SampleCurveInterior(*two, 100.0, points);
    EXPECT_EQ(points, PointsAt({-100, 0, 100}, *two));
    for (const double step : {0.0, -1.0, kNaN, kInfinity, 1e-300}) {
        points = kRubbish;
        SampleCurveInterior(*two, step, points);
        EXPECT_TRUE(points.empty()) << step;
    }
}

// Constant while it sees the curve that it belongs to.
class SeesItsCurve : public Interpolator {
public:
    SeesItsCurve() { setExpression("sees its curve"); }
    double eval(double, const Segment& segment) const override { return segment.getOwningCurve() ? 1.0 : 0.0; }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<SeesItsCurve>(); }
};

TEST(Sampling, CompilesForManySamplesWhatIsTheLibrarysOwn) {
    Points points;
    std::size_t compiledValues = 0;
    for (const Exhibit& exhibit : Museum()) {
        const auto curve = exhibit.make();
        const CompiledCurve compiled(*curve);
        SampleCurve(*curve, -20.0, 40.0, 1.0 / 32.0, points);
        ASSERT_EQ(points.size(), 1921U);
        for (const auto& [x, y] : points) {
            const bool isModels = SameBits(y, curve->eval(x));
            ASSERT_TRUE(isModels || SameBits(y, compiled.eval(x))) << exhibit.name << " at " << x;
            compiledValues += isModels ? 0 : 1;
        }
    }
    EXPECT_GT(compiledValues, 0U);

    const auto curve = CurveThrough({{0, 0}, {10, 5}});
    std::next(curve->begin())->setInterpolator(std::make_shared<SeesItsCurve>());
    SampleCurve(*curve, 0.5, 9.5, 0.001, points);
    EXPECT_TRUE(std::all_of(points.begin(), points.end(), [](const auto& point) { return point.y == 1.0; }));
}

} // namespace
