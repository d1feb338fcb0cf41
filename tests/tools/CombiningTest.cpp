#include "support/Basics.h"
#include "support/Invariants.h"
#include "support/Museum.h"
#include "support/Random.h"
#include "support/Recorder.h"

using namespace Test;

namespace {

using Formula = std::function<double(double x)>;

using Maker = std::function<std::shared_ptr<FCurve>()>;

Maker Through(const Points& points, const char* kind) {
    return [=] { return CurveThrough(points, InterpolatorFactory::create(kind)); };
}
Maker Curve(const std::vector<Key>& keys, const char* leading = "constant()") {
    return [=] { return MakeCurve(keys, leading); };
}

// Partners of the museum's curves: each kind of segment that combines in its own way.
const std::vector<std::pair<const char*, Maker>>& Partners() {
    static const std::vector<std::pair<const char*, Maker>> all = {
        {"none", [] { return FCurve::create(); }},
        {"level", Through({{3, 0.25}}, "constant()")},
        {"ramp", Through({{-2, 0}, {9, 1}}, "linear()")},
        {"steps", Through({{0, 0}, {2.5, 1}, {4, 0.5}, {7, 0}}, "constant()")},
        {"thirds", Through({{-1, 0.2}, {3, 1}, {8, 0}}, "bezier()")},
        {"line at its ends",
         Curve({{-1, 0, {{-1, 0.5}}, {{1, 0.5}}}, {6, 1, {{-2, 0}}, {{1, -0.25}}, "bezier()"}}, "bezier()")},
        {"weighted", Curve({{-1, 0, {}, {{5, 0}}}, {6, 1, {{-0.5, 0}}, {}}})},
        {"formula", Through({{0, 0}, {6, 1}}, "sin(x)")},
        {"cycle", Curve({{0, 0}, {2, 1, {}, {}, "cycle_offset()"}}, "cycle()")},
    };
    return all;
}

double SizeOf(const FCurve& curve) {
    double size = 1.0;
    for (const Segment& segment : curve) {
        if (segment.getLeftKey()) size = std::max(size, std::abs(segment.getLeftKey()->getY()));
        for (const auto& tangent : {segment.getInTangent(), segment.getOutTangent()})
            if (tangent) size = std::max(size, std::abs(tangent->getY()));
    }
    return size;
}

// The report is true: where it claims exactness only rounding is left, elsewhere the error that it says.
void Check(const CombineResult& result, const Formula& formula, double tolerance, double size) {
    const FCurve& curve = *result.curve;
    const CombineReport& report = result.report;
    ASSERT_EQ(Fault(*result.curve), "");
    ASSERT_EQ(report.exact, report.fitted.empty() && report.endsExact);
    if (report.withinTolerance) {
        ASSERT_LE(report.error, std::max(tolerance, 1e-8 * std::max(size, SizeOf(curve))));
    }
    if (report.fitted.empty()) {
        ASSERT_EQ(report.error, 0.0);
    }
    if (curve.size() == 1) {
        ASSERT_EQ(curve.eval(3.0), formula(3.0));
        return;
    }
    const double first = curve.begin()->getRightKey()->getX(), last = (--curve.end())->getLeftKey()->getX();
    const double rounding = 1e-9 * size;
    const auto check = [&](double x, double error) {
        const double expected = formula(x);
        if (std::isfinite(expected)) {
            ASSERT_NEAR(curve.eval(x), expected, error + rounding) << "at " << x;
        }
    };
    for (auto it = std::next(curve.begin()); it->getRightKey(); ++it) {
        const double from = it->getLeftKey()->getX(), to = it->getRightKey()->getX();
        const double middle = 0.5 * (from + to);
        const bool fitted = std::any_of(report.fitted.begin(), report.fitted.end(),
                                        [&](const auto& range) { return range.from <= middle && middle <= range.to; });
        constexpr int places = 23;
        for (int i = 0; i < places; ++i)
            check(from + (to - from) * (i + 0.41) / places, !fitted         ? 0.0
                                                            : report.proved ? report.error
                                                                            : 2.0 * report.error + tolerance);
        if (testing::Test::HasFatalFailure()) return;
    }
    if (!report.endsExact) return;
    for (const double beyond : {1e-3, 0.7, 11.0, 5000.0}) {
        check(first - beyond, 0.0);
        check(last + beyond, 0.0);
    }
}

class CombinationOfEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, CombinationOfEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST_P(CombinationOfEveryExhibit, IsWhatTheReportSays) {
    const auto a = GetParam().make();
    const double tolerance = 1e-3 * SizeOf(*a);
    for (const auto& [name, make] : Partners()) {
        SCOPED_TRACE(name);
        const auto b = make();
        const auto other = CurveThrough({{0, 5}, {4, -3}}, Linear::create());
        const double size = SizeOf(*a) * (1.0 + SizeOf(*b));
        Check(
            AddCurves(*a, *b, tolerance), [&](double x) { return a->eval(x) + b->eval(x); }, tolerance, size);
        Check(
            BlendCurves(*a, *other, *b, tolerance),
            [&](double x) { return a->eval(x) + (other->eval(x) - a->eval(x)) * b->eval(x); }, tolerance, 10 * size);
        Check(
            BlendCurves(*other, *b, *a, tolerance),
            [&](double x) { return other->eval(x) + (b->eval(x) - other->eval(x)) * a->eval(x); }, tolerance,
            10 * size);
        Check(
            RetimeCurve(*a, *b, tolerance), [&](double x) { return a->eval(b->eval(x)); }, tolerance, size);
        Check(
            RetimeCurve(*b, *a, tolerance), [&](double x) { return b->eval(a->eval(x)); }, tolerance, size);
    }
    Check(
        OffsetCurve(*a, {2.5, -7}, tolerance), [&](double x) { return a->eval(x - 2.5) - 7; }, tolerance, SizeOf(*a));
}

TEST(Combining, IsExactWhereTheResultIsOfTheSameKinds) {
    const auto weighted = MakeCurve({{0, 0, {}, {{4, 3}}}, {6, 1, {{-1, 2}}, {}}, {9, 5}});
    const auto eased = CurveThrough({{0, 2}, {6, 7}, {9, 1}}, Ease::create());
    const auto ramp = CurveThrough({{0, 0}, {9, 1}}, Linear::create());
    const auto backwards = CurveThrough({{-3, 9}, {6, 0}}, Linear::create());
    const auto steps = CurveThrough({{0, 3}, {4, 1}, {9, 2}}, Constant::create());
    const auto half = CurveThrough({{0, 0.5}}, Constant::create());
    const auto host = CurveThrough({{0, 0}, {9, 1}}, InterpolatorFactory::create("sin(x)"));
    const struct {
        const char* what;
        CombineResult result;
        bool exact;
        std::size_t keys; // 0: any
    } kRows[] = {
        {"weighted + line", AddCurves(*weighted, *ramp), true, 3},
        {"weighted + itself", AddCurves(*weighted, *weighted), true, 3},
        {"steps + level", AddCurves(*steps, *half), true, 3},
        {"thirds + line", AddCurves(*ramp, *ramp), true, 2},
        {"weighted + eased", AddCurves(*weighted, *eased), false, 0},
        {"weighted + steps", AddCurves(*weighted, *steps), false, 6}, // 0.001 frames before a jump
        {"half of each", BlendCurves(*weighted, *ramp, *half), true, 3},
        {"line to line by a line", BlendCurves(*ramp, *backwards, *ramp), true, 4},
        {"cubic by a line", BlendCurves(*weighted, *eased, *ramp), false, 0},
        {"by steps", BlendCurves(*ramp, *ramp, *steps), true, 3},
        {"weighted backwards", RetimeCurve(*weighted, *backwards), true, 3},
        {"steps backwards", RetimeCurve(*steps, *backwards), true, 3},
        {"line by weighted", RetimeCurve(*ramp, *weighted), true, 4},
        {"weighted by weighted", RetimeCurve(*weighted, *weighted), false, 0},
        {"formula moved", OffsetCurve(*host, {3, 1}), true, 2},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(row.result.report.exact, row.exact) << row.what;
        EXPECT_TRUE(row.result.report.proved) << row.what;
        if (row.keys > 0) {
            EXPECT_EQ(row.result.curve->size(), row.keys + 1) << row.what;
        }
    }
}

// A smooth curve needs few keys, and slopes at them that do not drift from one to the next.
TEST(Combining, FitsSmoothCurvesWithinTheTolerance) {
    Random random(7);
    const auto make = [&](double low, double high) {
        std::vector<Key> keys;
        for (const double x : {0.0, 7.0, 12.0, 20.0}) {
            const double slope = random.between(-0.1, 0.1) * (high - low);
            keys.push_back({x, random.between(low, high), Vector2D(-1.0, -slope), Vector2D(1.0, slope)});
        }
        return MakeCurve(keys);
    };
    std::size_t blended = 0, retimes = 0;
    for (int i = 0; i < 8; ++i) {
        const auto a = make(-5, 5), b = make(-5, 5), weight = make(0, 1), by = make(0, 20);
        for (const auto& [tolerance, most] : {std::pair(1e-2, 40U), {1e-5, 400U}}) {
            const CombineResult blend = BlendCurves(*a, *b, *weight, tolerance);
            EXPECT_TRUE(blend.report.withinTolerance) << blend.report.error;
            EXPECT_LE(blend.curve->size(), most);
            blended += blend.curve->size();
            const CombineResult retimed = RetimeCurve(*a, *by, tolerance);
            EXPECT_TRUE(retimed.report.withinTolerance) << retimed.report.error;
            EXPECT_LE(retimed.curve->size(), 3 * most);
            retimes += retimed.curve->size();
        }
    }
    EXPECT_LE(blended, kNumbersAreGccs ? 886U : 1200U);
    EXPECT_LE(retimes, kNumbersAreGccs ? 1123U : 1500U);
}

} // namespace
