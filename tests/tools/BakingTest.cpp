#include "support/Basics.h"
#include "support/Invariants.h"
#include "support/Museum.h"
#include "support/Recorder.h"
#include "support/SameCurve.h"
#include "tools/Outside.h"
#include "tools/RandomShape.h"

#include <sstream>

using namespace Test;

namespace {

struct Range {
    double start;
    double end;
    double step;
};

/// Ranges inside one segment, between keys, over all keys and outside them.
std::vector<Range> RangesOf(const FCurve& curve) {
    const std::vector<double> keys = KeysOf(curve);
    const double first = keys.empty() ? 0.0 : keys.front();
    const double last = keys.empty() ? 0.0 : keys.back();
    std::vector<Range> ranges = {{first - 5, first - 1, 1},
                                 {last + 1.3, last + 4.7, 0.5},
                                 {first - 3, last + 3, (last - first + 6) / 40},
                                 {first - 2, first + 1.5, 0.25}};
    for (std::size_t i = 0; i + 1 < keys.size() && i < 4; ++i) {
        const double width = keys[i + 1] - keys[i];
        ranges.push_back({keys[i] + 0.31 * width, keys[i] + 0.77 * width, 0.09 * width});
        ranges.push_back({keys[i], keys[i + 1], width / 8});
        ranges.push_back({keys[i], keys.back(), (keys.back() - keys[i]) / 16});
        ranges.push_back({keys[i] + 0.4 * width, keys.back() + 0.5 * width, 0.3 * width});
    }
    return ranges;
}

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
        EXPECT_EQ(outside.difference(1e-12 * size), "");

        // Keys at the ends may stand in for samples beside them by up to 1e-7, so values there may differ by the slope.
        const double tolerance = (1e-12 + 1e-6 * (range.step < 1 ? 1 / range.step : 1)) * size;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            // What repeats the keyed range after the last sample begins with the first one.
            if (i + 1 == samples.size() && ReadsOtherKeys(*curve->findSegment(samples[i].x))) continue;
            const double slack = i == 0 || i + 1 == samples.size() ? tolerance : 1e-12 * size;
            EXPECT_NEAR(curve->eval(samples[i].x), samples[i].y, slack) << samples[i].x;
        }
        for (std::size_t i = 1; i + 1 < samples.size(); ++i) {
            const Segment& segment = *curve->findSegment(0.5 * (samples[i].x + samples[i + 1].x));
            EXPECT_EQ(segment.getLeftKey()->get(), samples[i]);
            EXPECT_STREQ(segment.getInterpolator()->getExpression(), "linear()");
            EXPECT_EQ(segment.sizeProperties(), 0U);
        }

        // On its own grid, baking again changes no value.
        const auto once = FCurve::createCopy(*curve);
        BakeCurve(*curve, range.start, range.end, range.step);
        EXPECT_EQ(KeysOf(*curve), KeysOf(*once));
        for (const auto& sample : ExpectedSamples(*once, range)) {
            if (ReadsOtherKeys(*curve->findSegment(sample.x))) continue;
            EXPECT_EQ(curve->eval(sample.x), sample.y) << sample.x;
        }
    }
}

TEST_P(BakingOfEveryExhibit, InteriorBecomesItsSamples) {
    const auto curve = GetParam().make();
    Decorate(*curve);
    const std::vector<double> keys = KeysOf(*curve);
    if (keys.size() < 2) {
        const auto before = FCurve::createCopy(*curve);
        BakeInterior(*curve, 1.0);
        EXPECT_EQ(Difference(*before, *curve), "");
        return;
    }
    const double step = (keys.back() - keys.front()) / 20.7;
    const auto before = FCurve::createCopy(*curve);
    const auto firstKey = KeyAt(*curve, 0);
    Points samples;
    SampleCurveInterior(*before, step, samples);

    Recorder recorder;
    curve->subscribe(recorder);
    BakeInterior(*curve, step);
    EXPECT_EQ(recorder.take(), Heard{"curve"});
    EXPECT_EQ(Fault(*curve), "");
    EXPECT_EQ(KeyAt(*curve, 0), firstKey);
    ASSERT_EQ(curve->size(), samples.size() + 1);
    auto it = curve->begin();
    for (std::size_t i = 0; i < samples.size(); ++i, ++it) {
        const auto key = it->getRightKey();
        EXPECT_EQ(key->get(), samples[i]);
        EXPECT_EQ(key->sizeProperties(), 0U);
        if (i > 0) {
            EXPECT_STREQ(it->getInterpolator()->getExpression(), "linear()");
        }
    }
    const Segment& trailing = *--before->end();
    EXPECT_EQ(it->getInterpolator(), trailing.getInterpolator());
    EXPECT_EQ(curve->begin()->getInterpolator(), before->begin()->getInterpolator());
    EXPECT_EQ(SameCurve::tangent(*it->getOutTangent(), *trailing.getOutTangent()), "");
    EXPECT_EQ(SameCurve::tangent(*curve->begin()->getInTangent(), *before->begin()->getInTangent()), "");
    EXPECT_EQ(SameCurve::properties(*it, trailing), "");
    EXPECT_EQ(SameCurve::properties(*curve->begin(), *before->begin()), "");
    EXPECT_STREQ(curve->getName(), before->getName());
}

TEST(Baking, LeavesTheRestAloneWhateverTheTangents) {
    for (unsigned seed = 0; seed < 500; ++seed) {
        RandomShape random(seed);
        const auto curve = random.make({"bezier()", "bezier()", "linear()", "constant()", "constant_next()", "3*x"});
        Decorate(*curve);
        const std::vector<double> keys = KeysOf(*curve);
        const double step = random.between(0.05, 0.7);
        const double start = random.below(2) ? keys[0] + random.between(-3, 10) : keys[keys.size() / 2];
        const double end = random.below(2) ? start + random.between(0, 10) : keys.back();
        SCOPED_TRACE(testing::Message() << "seed " << seed << ": " << start << " to " << end << " by " << step);
        const Points samples = ExpectedSamples(*curve, {start, end, step});
        if (samples.size() < 2) continue;
        const Outside outside(*curve, samples.front().x, samples.back().x);
        const auto before = FCurve::createCopy(*curve);
        BakeCurve(*curve, start, end, step);
        ASSERT_EQ(Fault(*curve), "");
        ASSERT_EQ(outside.difference(1e-12 * SizeOf(*before)), "");
    }
}

TEST(Baking, ChangesNothingWithoutTwoSamples) {
    const auto curve = CurveThrough({{0, 0}, {1, 4}, {3, 1}}, Bezier::create());
    const auto before = FCurve::createCopy(*curve);
    Recorder recorder;
    curve->subscribe(recorder);
    for (const Range& range : {Range{0.5, 0.9, 1}, Range{2, 1, 0.1}, Range{0, 3, 0}, Range{0, 3, -1}, Range{0, 3, kNaN},
                               Range{kNaN, 3, 1}, Range{0, HUGE_VAL, 1}, Range{0, 3, 1e-300}, Range{0, 3, HUGE_VAL}})
        BakeCurve(*curve, range.start, range.end, range.step);
    for (const double step : {0.0, -1.0, kNaN, HUGE_VAL, 1e-300}) BakeInterior(*curve, step);
    EXPECT_EQ(Difference(*before, *curve), "");
    EXPECT_TRUE(recorder.heard.empty());
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

TEST(Baking, KeepsAJumpAtTheStart) {
    const auto curve = CurveThrough({{0, 5}, {10, 6}, {20, 7}});
    curve->findSegment(15)->setInterpolator(InterpolatorFactory::create("x*x"));
    BakeCurve(*curve, 10, 18, 1);
    EXPECT_EQ(curve->eval(9.5), 5.95);
    EXPECT_EQ(curve->eval(10.0), 100.0);
    EXPECT_EQ(curve->eval(10.0005), 100.0);
    EXPECT_EQ(curve->eval(11.0), 121.0);
    EXPECT_EQ(curve->eval(12.5), 156.5);
    EXPECT_EQ(curve->eval(18.5), 18.5 * 18.5);
    EXPECT_EQ(KeyAt(*curve, 1)->getY(), 6.0);

    // A segment that does not read its right key leaves that free to take the sample's value.
    const auto held = CurveThrough({{0, 5}, {10, 6}, {20, 7}}, Constant::create());
    held->findSegment(15)->setInterpolator(InterpolatorFactory::create("x*x"));
    BakeCurve(*held, 10, 18, 1);
    EXPECT_EQ(KeyAt(*held, 1)->get(), Vector2D<double>(10, 100));
    EXPECT_EQ(KeyAt(*held, 2)->get(), Vector2D<double>(11, 121));
    EXPECT_EQ(held->eval(9.5), 5.0);
}

TEST(Baking, LeavesOutSamplesWithoutAValue) {
    const auto curve = CurveThrough({{-4, 0}, {4, 0}});
    curve->findSegment(0)->setInterpolator(InterpolatorFactory::create("12/x"));
    BakeCurve(*curve, -3, 3, 1);
    EXPECT_EQ(Fault(*curve), "");
    EXPECT_EQ(KeysOf(*curve), (std::vector<double>{-4, -3, -2, -1, 1, 2, 3, 4}));
    EXPECT_EQ(curve->eval(0.0), 0.0);

    const auto nowhere = CurveThrough({{-4, 0}, {4, 0}});
    nowhere->findSegment(0)->setInterpolator(InterpolatorFactory::create("log(-1-abs(x))"));
    const auto before = FCurve::createCopy(*nowhere);
    BakeCurve(*nowhere, -3, 3, 1);
    EXPECT_EQ(Difference(*before, *nowhere), "");
}

TEST(Baking, IsSilentUnderASwitchAndTellsTheSwitch) {
    const auto curve = CurveThrough({{0, 0}, {5, 4}});
    Recorder recorder;
    curve->subscribe(recorder);
    {
        const FCurve::Switch quiet(*curve);
        BakeCurve(*curve, 0, 5, 1);
        EXPECT_TRUE(quiet.blockedNotification());
    }
    EXPECT_TRUE(recorder.heard.empty());
    EXPECT_EQ(curve->size(), 7U);
}

} // namespace
