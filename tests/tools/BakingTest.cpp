#include "support/Invariants.h"
#include "tools/Outside.h"

using namespace Test;

namespace {

// The samples that become keys, computed on their own from the contract.
Points ExpectedSamples(const FCurve& curve, const Range& range) {
    Points samples;
    const double end = std::floor(range.end / range.step) * range.step;
    for (double x = std::ceil(range.start / range.step) * range.step; x <= end; x += range.step)
        if (std::isfinite(curve.eval(x))) samples.push_back({x, curve.eval(x)});
    return samples;
}

class BakingOfEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, BakingOfEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST_P(BakingOfEveryExhibit, DrawsThePolylineAndLeavesTheRestAlone) {
    for (const Range& range : RangesOf(*GetParam().make())) {
        SCOPED_TRACE(testing::Message() << range.start << " to " << range.end << " by " << range.step);
        const auto curve = GetParam().make();
        Decorate(*curve);
        const Points samples = ExpectedSamples(*curve, range);
        if (samples.size() < 2) continue;
        double size = SizeOf(*curve);
        for (const auto& sample : samples) size = std::max(size, std::abs(sample.y));

        const Outside outside(*curve, samples.front().x, samples.back().x);
        Recorder recorder;
        curve->subscribe(recorder);
        BakeCurve(*curve, range.start, range.end, range.step);
        EXPECT_EQ(recorder.take(), Heard{"curve"});
        EXPECT_EQ(Fault(*curve), "");
        EXPECT_EQ(outside.changedPart(), "");
        EXPECT_EQ(outside.changedValue(1e-12 * size), "");

        // Keys at the ends may stand in for samples beside them by up to 1e-7, so values there may differ by the slope.
        const double tolerance = (1e-12 + 1e-6 * (range.step < 1 ? 1 / range.step : 1)) * size;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            // What repeats the keyed range after the last sample starts with the first one.
            if (i + 1 == samples.size() && ReadsOtherParts(*curve->findSegment(samples[i].x))) continue;
            const double slack = i == 0 || i + 1 == samples.size() ? tolerance : 1e-12 * size;
            EXPECT_NEAR(curve->eval(samples[i].x), samples[i].y, slack) << samples[i].x;
        }
        for (std::size_t i = 1; i + 1 < samples.size(); ++i) {
            const Segment& segment = *curve->findSegment(0.5 * (samples[i].x + samples[i + 1].x));
            EXPECT_EQ(segment.getLeftKey()->get(), samples[i]);
            EXPECT_EQ(SameCurve::expression(segment), "linear()");
            EXPECT_EQ(segment.sizeProperties(), 0U);
        }

        // On its own grid, baking again changes no value.
        const auto once = FCurve::createCopy(*curve);
        BakeCurve(*curve, range.start, range.end, range.step);
        EXPECT_EQ(KeysOf(*curve), KeysOf(*once));
        if (!ReadsOtherParts(*curve->findSegment(samples.back().x))) {
            EXPECT_EQ(PointsOf(*curve), PointsOf(*once));
        }
    }
}

TEST_P(BakingOfEveryExhibit, InteriorBecomesItsSamples) {
    const auto curve = GetParam().make();
    Decorate(*curve);
    const auto before = FCurve::createCopy(*curve);
    const std::vector<double> keys = KeysOf(*curve);
    if (keys.size() < 2) {
        BakeInterior(*curve, 1.0);
        EXPECT_EQ(Difference(*before, *curve), "");
        return;
    }
    const double step = (keys.back() - keys.front()) / 20.7;
    const auto firstKey = KeyAt(*curve, 0);
    Points samples;
    SampleCurveInterior(*before, step, samples);

    Recorder recorder;
    curve->subscribe(recorder);
    BakeInterior(*curve, step);
    EXPECT_EQ(recorder.take(), Heard{"curve"});
    EXPECT_EQ(Fault(*curve), "");
    EXPECT_EQ(KeyAt(*curve, 0), firstKey);
    EXPECT_EQ(PointsOf(*curve), samples);
    for (auto it = std::next(curve->begin()); it->getRightKey(); ++it) {
        EXPECT_EQ(SameCurve::expression(*it), "linear()");
        EXPECT_EQ(it->sizeProperties() + it->getLeftKey()->sizeProperties(), 0U);
    }
    const Segment &leading = *before->begin(), &trailing = *--before->end();
    EXPECT_EQ((--curve->end())->getInterpolator(), trailing.getInterpolator());
    EXPECT_EQ(curve->begin()->getInterpolator(), leading.getInterpolator());
    EXPECT_EQ(SameCurve::tangent(*(--curve->end())->getOutTangent(), *trailing.getOutTangent()), "");
    EXPECT_EQ(SameCurve::tangent(*curve->begin()->getInTangent(), *leading.getInTangent()), "");
    EXPECT_EQ(SameCurve::properties(*--curve->end(), trailing), "");
    EXPECT_EQ(SameCurve::properties(*curve->begin(), leading), "");
}

TEST(Baking, ChangesNothingWithoutTwoSamples) {
    const auto curve = CurveThrough({{0, 0}, {1, 4}, {3, 1}}, Bezier::create());
    const auto before = FCurve::createCopy(*curve);
    Recorder recorder;
    curve->subscribe(recorder);
    for (const Range& range : {Range{0.5, 0.9, 1}, Range{2, 1, 0.1}, Range{0, 3, 0}, Range{0, HUGE_VAL, 1}})
        BakeCurve(*curve, range.start, range.end, range.step);
    for (const double step : {0.0, -1.0, kNaN, HUGE_VAL, 1e-300}) BakeInterior(*curve, step);
    EXPECT_THAT(recorder.heard, IsEmpty());
    curve->findSegment(0.5)->setInterpolator(InterpolatorFactory::create("log(-1-abs(x))"));
    BakeCurve(*curve, 0.125, 0.875, 0.125);
    EXPECT_EQ(PointsOf(*before), PointsOf(*curve));
}

TEST(Baking, LeavesNoPairOfKeysWhereTheRunningSumMissesAKey) {
    const struct {
        std::vector<Vector2D<double>> keys;
        double start, end;
        int number; // of the key that the first or last sample misses
        std::size_t keysAfter;
    } rows[] = {
        {{{-1, 3}, {0, 0}, {1, 4}, {3, 1}}, 0, 1, 2, 13}, // the last sample is at 0.9999999999999999
        {{{0, 5}, {0.3, 1}, {2, 0}}, 0.3, 1, 1, 10},      // the first one is at 0.30000000000000004
    };
    for (const auto& row : rows) {
        const auto curve = CurveThrough(row.keys, Bezier::create());
        const auto key = KeyAt(*curve, row.number);
        const auto place = key->get();
        BakeCurve(*curve, row.start, row.end, 0.1);
        EXPECT_EQ(KeysOf(*curve).size(), row.keysAfter);
        EXPECT_EQ(curve->findSegment(place.x)->getLeftKey(), key);
        EXPECT_EQ(key->get(), place);
    }
}

TEST(Baking, AddsAKeyOnlyForAJumpThatTheKeyCannotMake) {
    const struct {
        const char *before, *after;
        Points keys; // of the baked curve, up to the second sample
    } rows[] = {
        {"linear()", "x*x", {{0, 5}, {10, 6}, {10.001, 100}, {11, 121}}},
        {"linear()", "6*cos(x-10)", {{0, 5}, {10, 6}, {11, 6 * std::cos(1.0)}}}, // no jump
        {"constant()", "x*x", {{0, 5}, {10, 100}, {11, 121}}},                   // jumps, whatever the key's value
        {"match()", "x*x", {{0, 5}, {10, 100}, {11, 121}}},                      // does not jump, beside its key
    };
    for (const auto& row : rows) {
        const auto curve = CurveThrough({{0, 5}, {10, 6}, {20, 7}}, InterpolatorFactory::create(row.before));
        curve->findSegment(15)->setInterpolator(InterpolatorFactory::create(row.after));
        const double ahead = curve->eval(9.999999);
        BakeCurve(*curve, 10, 18, 1);
        Points keys = PointsOf(*curve);
        keys.resize(row.keys.size());
        EXPECT_EQ(keys, row.keys) << row.before << row.after;
        EXPECT_NEAR(curve->eval(9.999999), ahead, 1e-4);
        for (const double x : {10.0, 10.0005}) EXPECT_NEAR(curve->eval(x), row.keys.rbegin()[1].y, 0.011);
    }
}

TEST(Baking, LeavesOutSamplesWithoutAValue) {
    const auto curve = CurveThrough({{-4, 0}, {4, 0}}, InterpolatorFactory::create("12/x"));
    BakeCurve(*curve, -3, 3, 1);
    EXPECT_EQ(KeysOf(*curve), (std::vector<double>{-4, -3, -2, -1, 1, 2, 3, 4}));
    EXPECT_EQ(curve->eval(0.0), 0.0);
}

} // namespace
