#include "support/Invariants.h"
#include "tools/Outside.h"
#include "tools/RandomShape.h"

using namespace Test;

namespace {

TEST(FindKey, TakesTheNearestWithinTheTolerance) {
    const auto curve = CurveThrough({{0, 0}, {10, 1}, {11, 2}});
    const struct {
        double x, tolerance;
        int key; // -1: none
    } rows[] = {{0, 0, 0},      {1e-12, 0, -1},      {-0.5, 0.5, 0},       {-0.51, 0.5, -1},
                {10.4, 1, 1},   {10.5, 1, 1},        {10.6, 1, 2},         {5, 4.99, -1},
                {5, 5, 0},      {1e9, kInfinity, 2}, {-1e9, kInfinity, 0}, {kNaN, 1, -1},
                {10, kNaN, -1}, {10, -1, -1}};
    for (const auto& row : rows)
        EXPECT_EQ(FindKey(*curve, row.x, row.tolerance), row.key < 0 ? nullptr : KeyAt(*curve, row.key)) << row.x;
    EXPECT_EQ(FindKey(*FCurve::create(), 0, 1), nullptr);
}

// --- SetKey ----------------------------------------------------------------------------------------------------------

class SetKeyInEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, SetKeyInEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

// The same key as InsertBezierKeyframe's where the value is the curve's, and told of part by part.
TEST_P(SetKeyInEveryExhibit, KeepsTheShapeBetweenKeys) {
    for (const double part : {0.0, 0.1, 0.5, 0.77}) {
        for (std::size_t i = 1; i + 1 < GetParam().make()->size(); ++i) {
            const auto curve = GetParam().make();
            Decorate(*curve);
            const auto expected = FCurve::createCopy(*curve);
            const auto [from, to] = SpanOf(*std::next(curve->begin(), static_cast<int>(i)));
            const double x = from + part * (to - from);
            if (PreviewBezierKeyframe(*curve, x).outcome == KeyframeInsertion::Refused) continue;
            const auto inserted = InsertBezierKeyframe(*expected, x);
            Recorder recorder;
            curve->subscribe(recorder);
            const KeySetting result = SetKey(*curve, x, inserted->getLeftKey()->getY());
            EXPECT_EQ(result.outcome, KeySetting::Added);
            EXPECT_EQ(result.key->getX(), x);
            EXPECT_EQ(Difference(*expected, *curve), "") << "at " << x;
            EXPECT_EQ(Fault(*curve), "");
            EXPECT_EQ(recorder.heard.at(0), "added " + std::to_string(i));
            EXPECT_THAT(recorder.heard, testing::Not(testing::Contains("curve"))) << "nothing of it goes untold";
        }
    }
}

TEST_P(SetKeyInEveryExhibit, PassesThroughThePointWhateverTheSettings) {
    const EditSettings settings[] = {EditSettings::shapeKeeping(), EditSettings::flat(),    EditSettings::linear(),
                                     EditSettings::spline(),       EditSettings::clamped(), EditSettings::plateau(),
                                     EditSettings::stepped()};
    for (const EditSettings& chosen : settings) {
        const auto curve = GetParam().make();
        const auto before = Keys(*curve).size();
        const std::string leading = SameCurve::expression(*curve->begin());
        const std::string trailing = SameCurve::expression(*--curve->end());
        const std::vector<double> keys = KeysOf(*curve);
        const double first = keys.empty() ? 0.0 : keys.front(), last = keys.empty() ? 0.0 : keys.back();
        std::size_t added = 0;
        for (const double x : {first - 7.5, last + 11.25, 0.3 * first + 0.7 * last, last + 30, first}) {
            const KeySetting result = SetKey(*curve, x, 3.5, chosen);
            added += result.outcome == KeySetting::Added ? 1 : 0;
            ASSERT_NE(result.outcome, KeySetting::Refused);
            ASSERT_LT(std::abs(result.key->getX() - x), 0.001);
            EXPECT_EQ(result.key->getY(), 3.5);
            EXPECT_EQ(SetKey(*curve, x, 3.5, chosen).outcome, KeySetting::Unchanged);
        }
        EXPECT_EQ(Keys(*curve).size(), before + added);
        EXPECT_EQ(SameCurve::expression(*curve->begin()), leading);
        EXPECT_EQ(SameCurve::expression(*--curve->end()), trailing);
        EXPECT_EQ(Fault(*curve), "");
    }
}

TEST(SetKey, RefusesWhatIsNotFinite) {
    const auto curve = CurveThrough({{0, 0}, {10, 1}});
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        EXPECT_EQ(SetKey(*curve, bad, 0).outcome, KeySetting::Refused);
        EXPECT_EQ(SetKey(*curve, 0, bad).outcome, KeySetting::Refused);
    }
    EXPECT_EQ(KeysOf(*curve), (std::vector<double>{0, 10}));
}

// Presets shape the new key; automatic neighbours follow it as if it had been there all along.
TEST(SetKey, PresetsMakeTheCurveThatTheirTypesMake) {
    const std::pair<EditSettings, std::uint8_t> presets[] = {{EditSettings::flat(), Tangent::Flat},
                                                             {EditSettings::linear(), Tangent::Linear},
                                                             {EditSettings::spline(), Tangent::Smooth},
                                                             {EditSettings::plateau(), Tangent::Plateau}};
    for (const auto& [settings, type] : presets) {
        const Points points{{0, 0}, {4, 7}, {9, 3}, {12, 5}, {13, -4}};
        const auto curve = FCurve::create();
        for (const std::size_t i : {2U, 0U, 4U, 3U, 1U}) SetKey(*curve, points[i].x, points[i].y, settings);
        const auto expected = CurveThrough(points, Bezier::create());
        expected->begin()->setInterpolator(Constant::create());
        (--expected->end())->setInterpolator(Constant::create());
        for (const KeyView key : Keys(*expected)) {
            key.getKeyframe().setTangentsUnified(true);
            for (Tangent* tangent : {&key.getInTangent(), &key.getOutTangent()}) tangent->setType(type);
        }
        EXPECT_TRUE(Equal(*expected, *curve, 1e-6)) << int(type) << Difference(*expected, *curve);
    }
    const auto steps = FCurve::create();
    for (const double x : {0.0, 10.0, 5.0}) SetKey(*steps, x, x, EditSettings::stepped());
    EXPECT_EQ(steps->eval(4.9), 0.0);
    EXPECT_EQ(steps->eval(9.9), 5.0);
    EXPECT_FALSE(KeyAt(*steps, 1)->isTangentsUnified()) << "a step has no slope to share";
}

// An observer that takes out what has just come in.
TEST(SetKey, MayBeUndoneFromInside) {
    struct Vandal : FCurveObserver {
        void segmentAdded(FCurve& curve, Segment& segment) override {
            curve.removeSegment(curve.findSegment(segment.getLeftKey()->getX()));
        }
    } vandal;
    for (const double x : {5.0, 20.0}) {
        const auto curve = CurveThrough({{0, 0}, {10, 1}}, Bezier::create());
        curve->subscribe(vandal);
        SetKey(*curve, x, 7);
        EXPECT_EQ(KeysOf(*curve), (std::vector<double>{0, 10}));
        EXPECT_EQ(Fault(*curve), "");
    }
}

} // namespace
