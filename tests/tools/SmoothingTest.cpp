#include "support/Invariants.h"
#include "tools/Outside.h"

#include <fstream>
#include <iomanip>
#include <sstream>

using namespace Test;

namespace {

constexpr SmoothFilter kFilters[] = {SMOOTH_BOX, SMOOTH_TRIANGLE, SMOOTH_GAUSSIAN, SMOOTH_SAVITZKY_GOLAY};

std::shared_ptr<FCurve> Noise(double first, int keys) {
    auto curve = FCurve::create();
    for (int i = 0; i < keys; ++i) AddKey(*curve, first + i, (i * 7919 % 101) / 10.0);
    return curve;
}

// The plain mean of the values around x; DoesWhatTheTableSays has the other weights.
template<class Value>
Vector2D<double> Mean(double x, double step, int width, const Value& value) {
    double sum = 0;
    for (int k = -width; k <= width; ++k) sum += value(x + k * step);
    return {x, sum / (2 * width + 1)};
}

void ExpectPoints(const FCurve& curve, const Points& expected) {
    const Points found = PointsOf(curve);
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i].x, expected[i].x);
        EXPECT_NEAR(found[i].y, expected[i].y, 1e-13) << found[i].x;
    }
}

TEST(Smoothing, PutsTheMeansInPlaceOfTheRangeAndNothingElse) {
    for (const int width : {0, 1, 4}) {
        SCOPED_TRACE(width);
        const auto before = Noise(3, 40); // up to frame 42
        const auto value = [&](double x) { return before->eval(x); };
        Points expected;
        for (int x = 3; x < 10; ++x) expected.push_back({double(x), value(x)});
        for (int x = 10; x < 24; ++x) expected.push_back(Mean(x, 1, width, value));
        expected.push_back(Mean(24.5, 1, width, value));
        for (int x = 25; x < 43; ++x) expected.push_back({double(x), value(x)});
        const auto curve = FCurve::createCopy(*before);
        SmoothCurve(*curve, 10, 24.5, 1, width, SMOOTH_BOX);
        ExpectPoints(*curve, expected);

        // The whole keyed range sees the chord beyond its ends.
        const auto continued = [&](double x) {
            return x >= 3 && x <= 42 ? value(x) : value(3) + (x - 3) * (value(42) - value(3)) / 39;
        };
        expected.clear();
        for (double x = 3; x + 1.75 <= 42; x += 1.75) expected.push_back(Mean(x, 1.75, width, continued));
        expected.push_back(Mean(42, 1.75, width, continued));
        const auto whole = FCurve::createCopy(*before);
        SmoothCurveInterior(*whole, 1.75, width, SMOOTH_BOX);
        ExpectPoints(*whole, expected);
        for (std::size_t i = 1; i < whole->size(); ++i)
            EXPECT_EQ(SameCurve::expression(*std::next(whole->begin(), i)), "linear()");
    }
}

TEST(Smoothing, RefusesWhatItCannotDo) {
    const auto curve = Noise(3, 20);
    const auto before = FCurve::createCopy(*curve);
    const struct {
        double start, end, step;
        int width, filter;
    } rows[] = {{10, 10, 1, 2, 0},  {12, 10, 1, 2, 0}, {kNaN, 10, 1, 2, 0},       {5, 5.5, 1, 2, 0}, {5, 10, 0, 2, 0},
                {5, 10, 100, 2, 0}, {5, 10, 1, -1, 0}, {5, 10, 1, 2147483647, 0}, {5, 10, 1, 2, 4}};
    for (const auto& row : rows) {
        const auto filter = static_cast<SmoothFilter>(row.filter);
        SmoothCurve(*curve, row.start, row.end, row.step, row.width, filter);
        if (row.start == 5 && row.end == 10) SmoothCurveInterior(*curve, row.step, row.width, filter);
    }
    EXPECT_EQ(Difference(*before, *curve), "");
    for (const auto& few : {FCurve::create(), CurveThrough({{1, 2}})}) {
        SmoothCurveInterior(*few, 1, 1, SMOOTH_BOX);
        EXPECT_LE(few->size(), 2U);
    }
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

TEST_P(SmoothingOfEveryExhibit, LeavesTheRestAloneAndMakesNoJumpAtTheEnd) {
    for (const Range& range : RangesOf(*GetParam().make())) {
        SCOPED_TRACE(testing::Message() << range.start << " to " << range.end << " by " << range.step);
        const auto curve = GetParam().make();
        Decorate(*curve);
        const Outside outside(*curve, range.start, range.end);
        Recorder recorder;
        curve->subscribe(recorder);
        SmoothCurve(*curve, range.start, range.end, range.step, 3, SMOOTH_GAUSSIAN);
        EXPECT_EQ(recorder.take(), Heard{"curve"});
        EXPECT_EQ(Fault(*curve), "");
        EXPECT_EQ(outside.changedPart(), "");

        const Segment& after = *curve->findSegment(range.end + 2e-7);
        const Segment& before = *after.getLeftKey()->getLeftSegment();
        const double x = after.getLeftKey()->getX();
        EXPECT_NEAR(x, range.end, 1e-7);
        EXPECT_NEAR(EvalSegment(x, before), EvalSegment(x, after), 1e-9 * (1 + std::abs(EvalSegment(x, after))));
        for (auto it = curve->findSegment(range.start + 2e-7); &*it != &after; ++it)
            EXPECT_EQ(SameCurve::expression(*it), "linear()");
    }
}

} // namespace
