#include "support/Basics.h"
#include "support/Invariants.h"
#include "support/Museum.h"
#include "support/Recorder.h"
#include "support/SameCurve.h"
#include "tools/Outside.h"

#include <fstream>
#include <iomanip>
#include <sstream>

using namespace Test;

namespace {

constexpr SmoothFilter kFilters[] = {SMOOTH_BOX, SMOOTH_TRIANGLE, SMOOTH_GAUSSIAN, SMOOTH_SAVITZKY_GOLAY};

// The weight of the sample k steps away, by the textbook.
double TextbookWeight(SmoothFilter filter, int k, int width) {
    const double n = width + 1;
    switch (filter) {
    case SMOOTH_BOX:
        return 1;
    case SMOOTH_TRIANGLE:
        return 1 - std::abs(k) / n;
    case SMOOTH_GAUSSIAN: {
        const double deviation = n / 2;
        return std::exp(-0.5 * (k / deviation) * (k / deviation));
    }
    case SMOOTH_SAVITZKY_GOLAY: {
        // Least squares of c0 + c2 k^2 over the window, solved for the value at 0.
        double n0 = 0, n2 = 0, n4 = 0;
        for (int i = -width; i <= width; ++i) {
            n0 += 1;
            n2 += i * i;
            n4 += static_cast<double>(i) * i * i * i;
        }
        return width == 0 ? 1 : (n4 - n2 * k * k) / (n0 * n4 - n2 * n2);
    }
    }
    return 0;
}

template<class Value>
double TextbookMean(SmoothFilter filter, int width, const Value& value) {
    double sum = 0, weights = 0;
    for (int k = -width; k <= width; ++k) {
        sum += TextbookWeight(filter, k, width) * value(k);
        weights += TextbookWeight(filter, k, width);
    }
    return sum / weights;
}

std::shared_ptr<FCurve> Noise(int keys) {
    auto curve = FCurve::create();
    for (int i = 0; i < keys; ++i) AddKey(*curve, i, (i * 7919 % 101) / 10.0);
    return curve;
}

TEST(Smoothing, IsTheWeightedMean) {
    for (const SmoothFilter filter : kFilters) {
        for (const int width : {0, 1, 2, 5}) {
            SCOPED_TRACE(testing::Message() << "filter " << filter << ", width " << width);
            const auto before = Noise(40);
            const auto curve = FCurve::createCopy(*before);
            SmoothCurve(*curve, 10, 25, 1, width, filter);
            EXPECT_EQ(Fault(*curve), "");
            for (int x = 10; x < 25; ++x) {
                const auto value = [&](int k) { return before->eval(x + k); };
                EXPECT_NEAR(curve->eval(x), TextbookMean(filter, width, value), 1e-13) << x;
            }
            EXPECT_EQ(curve->eval(25), before->eval(25));
            EXPECT_EQ(curve->eval(9.999), before->eval(9.999));
            EXPECT_EQ(curve->eval(25.001), before->eval(25.001));
            for (double x = 10.01; x < 24; x += 1)
                EXPECT_EQ(curve->findSegment(x)->getInterpolator()->getExpression(), std::string("linear()"));

            const auto whole = FCurve::createCopy(*before);
            SmoothCurveInterior(*whole, 1, width, filter);
            EXPECT_EQ(Fault(*whole), "");
            EXPECT_EQ(whole->size(), before->size());
            const double slope = (before->eval(39) - before->eval(0)) / 39;
            for (int x = 0; x < 40; ++x) {
                const auto value = [&](int k) {
                    return x + k < 0 || x + k > 39 ? before->eval(0) + slope * (x + k) : before->eval(x + k);
                };
                EXPECT_NEAR(whole->eval(x), TextbookMean(filter, width, value), 1e-12) << x;
            }
        }
    }
}

TEST(Smoothing, KeepsConstantAndStraightCurves) {
    for (const SmoothFilter filter : kFilters) {
        for (const double slope : {0.0, 1.0, -0.37, 1e6}) {
            for (const double step : {1.0, 0.1, 1.0 / 3.0}) {
                const auto curve = CurveThrough({{-100, 7.3 - 100 * slope}, {100, 7.3 + 100 * slope}});
                SmoothCurve(*curve, -30, 20, step, 4, filter);
                SmoothCurveInterior(*curve, step, 7, filter);
                EXPECT_EQ(Fault(*curve), "");
                const double size = 7.3 + 100 * std::abs(slope);
                for (double x = -99; x < 99; x += 0.7)
                    EXPECT_NEAR(curve->eval(x), 7.3 + slope * x, 1e-12 * size) << filter << " " << slope << " " << x;
                if (slope == 0.0) {
                    EXPECT_EQ(curve->eval(0.5), 7.3);
                }
            }
        }
    }
}

TEST(Smoothing, RefusesWhatItCannotDo) {
    const auto curve = Noise(20);
    const auto before = FCurve::createCopy(*curve);
    Recorder recorder;
    curve->subscribe(recorder);
    const struct {
        double start, end, step;
        int width;
        int filter = SMOOTH_BOX;
    } rows[] = {{10, 10, 1, 2},   {12, 10, 1, 2}, {kNaN, 10, 1, 2},       {5, 10, 0, 2},  {5, 10, -1, 2},
                {5, 10, kNaN, 2}, {5, 10, 1, -1}, {5, 10, 1, 2147483647}, {5, 5.5, 1, 2}, {5, 10, 1, 2, 4}};
    for (const auto& row : rows)
        SmoothCurve(*curve, row.start, row.end, row.step, row.width, static_cast<SmoothFilter>(row.filter));
    SmoothCurveInterior(*curve, 0, 2, SMOOTH_BOX);
    SmoothCurveInterior(*curve, 1, -2, SMOOTH_BOX);
    SmoothCurveInterior(*curve, 100, 2, SMOOTH_BOX);
    SmoothCurveInterior(*curve, 1, 2, static_cast<SmoothFilter>(77));
    EXPECT_EQ(Difference(*before, *curve), "");
    EXPECT_TRUE(recorder.heard.empty());

    const auto one = CurveThrough({{1, 2}});
    SmoothCurveInterior(*one, 1, 1, SMOOTH_BOX);
    SmoothCurveInterior(*FCurve::create(), 1, 1, SMOOTH_BOX);
    EXPECT_EQ(one->size(), 2U);
}

// The value at frame 0 of a curve through f at the whole frames, after smoothing.
template<class Value>
double SmoothedAtZero(SmoothFilter filter, int width, const Value& f) {
    auto curve = FCurve::create();
    for (int i = -60; i <= 60; ++i) AddKey(*curve, i, f(i));
    SmoothCurve(*curve, -20, 20, 1, width, filter);
    return curve->eval(0);
}

// The table in docs/smoothing.md: each of its numbers, measured.
TEST(Smoothing, DoesWhatTheTableSays) {
    const char* const kNames[] = {"`SMOOTH_BOX`", "`SMOOTH_TRIANGLE`", "`SMOOTH_GAUSSIAN`", "`SMOOTH_SAVITZKY_GOLAY`"};
    std::ifstream page(FCURVELIB_SOURCE_DIR "/docs/smoothing.md");
    ASSERT_TRUE(page);
    std::ostringstream expected, found;
    expected << std::fixed << std::setprecision(3);
    for (const SmoothFilter filter : kFilters) {
        for (const int width : {2, 5}) {
            const auto wave = [](double period) {
                return [period](int k) { return std::cos(2 * 3.14159265358979323846 * k / period); };
            };
            const auto bump = [](double deviation) {
                return [=](int k) { return std::exp(-0.5 * k * k / deviation / deviation); };
            };
            double power = 0; // of what one unit of noise contributes to each of its neighbours
            for (int at = -width; at <= width; ++at)
                power += std::pow(SmoothedAtZero(filter, width, [at](int k) { return k == at ? 1 : 0; }), 2);
            expected << "| " << kNames[filter] << " | " << width << " | " << std::sqrt(power) << " | "
                     << SmoothedAtZero(filter, width, bump(2)) << " | " << SmoothedAtZero(filter, width, bump(5))
                     << " | " << SmoothedAtZero(filter, width, [](int k) { return 0.01 * k * k; }) << " | "
                     << SmoothedAtZero(filter, width, wave(30)) << " | " << SmoothedAtZero(filter, width, wave(4))
                     << " |\n";
        }
    }
    for (std::string line; std::getline(page, line);)
        if (line.find("| `SMOOTH_") == 0) found << line << "\n";
    EXPECT_EQ(found.str(), expected.str());
}

class SmoothingOfEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, SmoothingOfEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST_P(SmoothingOfEveryExhibit, LeavesTheRestAlone) {
    const auto shape = GetParam().make();
    const double first = shape->size() > 1 ? KeyAt(*shape, 0)->getX() : 0.0;
    const double last = shape->size() > 1 ? (--shape->end())->getLeftKey()->getX() : 0.0;
    const double span = std::max(last - first, 1e-3);
    const struct {
        double start, end;
    } kRanges[] = {{first + 0.2 * span, first + 0.6 * span}, {first, last},
                   {first - 0.5 * span, first + 0.3 * span}, {last - 0.3 * span, last + 0.5 * span},
                   {last + 0.1 * span, last + 0.9 * span},   {first - 0.9 * span, first - 0.1 * span}};
    for (const auto& range : kRanges) {
        SCOPED_TRACE(testing::Message() << range.start << " to " << range.end);
        const auto curve = GetParam().make();
        Decorate(*curve);
        double size = SizeOf(*curve);
        for (double x = first - span; x < last + span; x += span / 50)
            if (std::isfinite(curve->eval(x))) size = std::max(size, std::abs(curve->eval(x)));
        const Outside outside(*curve, range.start, range.end);
        Recorder recorder;
        curve->subscribe(recorder);
        SmoothCurve(*curve, range.start, range.end, span / 32, 3, SMOOTH_GAUSSIAN);
        EXPECT_EQ(Fault(*curve), "");
        EXPECT_EQ(outside.difference(1e-12 * size), "");
        const bool changed = !recorder.heard.empty();
        EXPECT_EQ(recorder.take(), changed ? Heard{"curve"} : Heard());
    }
    const auto curve = GetParam().make();
    Decorate(*curve);
    const auto before = FCurve::createCopy(*curve);
    SmoothCurveInterior(*curve, span / 32, 3, SMOOTH_TRIANGLE);
    EXPECT_EQ(Fault(*curve), "");
    EXPECT_EQ(SameCurve::expression(*curve->begin()), SameCurve::expression(*before->begin()));
    EXPECT_EQ(SameCurve::expression(*--curve->end()), SameCurve::expression(*--before->end()));
    EXPECT_EQ(SameCurve::properties(*--curve->end(), *--before->end()), "");
}

} // namespace
