#include "support/Invariants.h"
#include "tools/Outside.h"
#include "tools/RandomShape.h"

using namespace Test;

namespace {

// Inserts, and compares with what was said beforehand. Returns the new segment; end() where refused.
FCurve::iterator InsertAsForetold(FCurve& curve, double x) {
    const auto before = FCurve::createCopy(curve);
    const KeyframeInsertion preview = PreviewBezierKeyframe(curve, x);
    EXPECT_EQ(Difference(*before, curve), "");
    Recorder recorder;
    curve.subscribe(recorder);
    const auto added = InsertBezierKeyframe(curve, x);
    EXPECT_EQ(Fault(curve), "");
    if (preview.outcome == KeyframeInsertion::Refused) {
        EXPECT_EQ(added, curve.end());
        EXPECT_EQ(Difference(*before, curve), "");
        EXPECT_TRUE(recorder.heard.empty());
        return added;
    }
    EXPECT_EQ(recorder.heard, Heard{"curve"});
    EXPECT_EQ(curve.size(), before->size() + 1);
    EXPECT_EQ(added->getLeftKey()->getX(), x);
    const bool changes = preview.outcome == KeyframeInsertion::ChangesShape;
    const std::string change = Misfit(*before, curve);
    EXPECT_EQ(changes, !change.empty()) << SameCurve::expression(*before->findSegment(x)) << " " << change;
    EXPECT_TRUE(changes || preview.error <= 1e-4 * (1 + SizeOf(*before))) << preview.error;
    return added;
}

class InsertionInEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, InsertionInEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST_P(InsertionInEveryExhibit, KeepsTheShapeOrSaysBeforehand) {
    for (std::size_t i = 0; i < GetParam().make()->size(); ++i) {
        for (const double part : {0.1, 0.25, 0.5, 0.7713}) {
            const auto curve = GetParam().make();
            Decorate(*curve);
            const auto [from, to] = SpanOf(*std::next(curve->begin(), static_cast<int>(i)));
            SCOPED_TRACE(testing::Message() << "at " << from + part * (to - from));
            InsertAsForetold(*curve, from + part * (to - from));
        }
    }
}

// Whatever the tangents, what was there keeps its shape also when it is recomputed.
TEST(InsertBezierKeyframe, KeepsTheShapeWhateverTheTangents) {
    const std::vector<const char*> kinds = {"bezier()", "bezier()",   "bezier()",        "spline()",
                                            "ease()",   "easein()",   "linear()",        "match()",
                                            "match()",  "constant()", "constant_next()", "sin(x)"};
    const std::vector<const char*> repetitions = {"cycle()", "cycle_offset()", "mirror()", "x + cycle()"};
    for (unsigned seed = 0; seed < 240; ++seed) {
        RandomShape random(seed);
        const auto curve = random.make(kinds);
        const auto first = KeyAt(*curve, 0)->getX();
        const auto last = (--curve->end())->getLeftKey()->getX();
        if (seed % 3 == 0) { // both ends, one end, or none repeat the curve
            const auto repetition = [&] { return InterpolatorFactory::create(random.oneOf(repetitions)); };
            if (random.below(3) > 0) curve->begin()->setInterpolator(repetition());
            if (random.below(3) > 0) (--curve->end())->setInterpolator(repetition());
        }
        for (int i = 0; i < 3; ++i) {
            const double x = random.between(first - 1, last + 1);
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", at " << x);
            const auto added = InsertAsForetold(*curve, x);
            ASSERT_FALSE(HasFailure());
            if (added == curve->end() || SameCurve::expression(*added) != "bezier()") continue;
            EXPECT_TRUE(added->getLeftKey()->isTangentsUnified());

            // A move of the key too small to be seen recomputes the tangents around it: they must not leap.
            const auto moved = FCurve::createCopy(*curve);
            const auto key = moved->findSegment(x)->getLeftKey();
            key->setY(key->getY() + 1e-9);
            for (double at = first; at < last; at += (last - first) / 500) {
                if (std::abs(GetFirstDerivative(*curve, at)) > 1e3) continue;
                ASSERT_NEAR(curve->eval(at), moved->eval(at), 1e-5 * SizeOf(*curve));
            }
        }
    }
}

TEST(InsertBezierKeyframe, KeepsTangentTypesThatStillGiveTheShape) {
    // Linear tangents stay linear, flat ones flat; smooth ones are still right on a straight line, but not on a wave.
    const auto line = CurveThrough({{0, 0}, {3, 3}, {6, 6}, {9, 9}}, Bezier::create());
    const auto wave = CurveThrough({{0, 0}, {3, 3}, {6, 1}, {9, 7}}, Bezier::create());
    for (const std::uint8_t type : {Tangent::Fixed, Tangent::Flat, Tangent::Linear, Tangent::Smooth}) {
        for (const bool straight : {true, false}) {
            const auto curve = FCurve::createCopy(straight ? *line : *wave);
            for (Segment& segment : *curve)
                for (const auto& tangent : {segment.getInTangent(), segment.getOutTangent()}) tangent->setType(type);
            const bool stays = type != Tangent::Smooth || straight;
            InsertBezierKeyframe(*curve, 4.0);
            for (const auto& tangent : {KeyAt(*curve, 1)->getInTangent(), KeyAt(*curve, 1)->getOutTangent(),
                                        KeyAt(*curve, 3)->getInTangent(), KeyAt(*curve, 3)->getOutTangent()}) {
                EXPECT_EQ(tangent->getType(), stays ? type : std::uint8_t{Tangent::Fixed}) << int(type) << straight;
                EXPECT_FALSE(tangent->isWeighted());
            }
        }
    }
}

TEST(InsertBezierKeyframe, RefusesWhereNoKeyCanStand) {
    const auto curve = CurveThrough({{0, 0}, {1, 4}, {1.0015, 5}}, Bezier::create());
    (--curve->end())->setInterpolator(InterpolatorFactory::create("log(x-50)"));
    for (const double x : {0.0, 0.0009, -0.0009, 0.9995, 1.0, 1.001, 7.0, kNaN, kInfinity, -kInfinity}) {
        EXPECT_EQ(PreviewBezierKeyframe(*curve, x).outcome, KeyframeInsertion::Refused) << x;
        EXPECT_EQ(InsertAsForetold(*curve, x), curve->end()) << x;
    }
    EXPECT_NE(InsertAsForetold(*curve, 0.001), curve->end());
    EXPECT_NE(InsertAsForetold(*curve, 60.0), curve->end());

    const auto wide = CurveThrough({{-1.5e308, 0}, {1.5e308, 1}}, Bezier::create());
    EXPECT_EQ(InsertAsForetold(*wide, 0.0), wide->end()) << "handles beyond the doubles";
    const auto far = CurveThrough({{-std::numeric_limits<double>::max(), 0}});
    for (Segment& segment : *far) segment.setInterpolator(InterpolatorFactory::create("spline()"));
    EXPECT_EQ(InsertAsForetold(*far, 1e300), far->end()) << "a third of the way is none";
}

// A match between formulas need not pass through its keys.
TEST(InsertBezierKeyframe, AMatchBecomesCubicsWhereItMeetsItsKeys) {
    const struct {
        const char *before, *after, *left, *right;
        KeyframeInsertion::Outcome outcome;
    } kRows[] = {
        {"linear()", "linear()", "bezier()", "bezier()", KeyframeInsertion::KeepsShape},
        {"5", "linear()", "match()", "bezier()", KeyframeInsertion::KeepsShape},
        {"linear()", "7", "bezier()", "match()", KeyframeInsertion::KeepsShape},
        {"5", "7", "match()", "match()", KeyframeInsertion::ChangesShape},
    };
    for (const auto& row : kRows) {
        const auto curve = CurveThrough({{10, 0}, {11, 4}, {13, 1}, {15, 0}}, Linear::create());
        curve->findSegment(10)->setInterpolator(InterpolatorFactory::create(row.before));
        curve->findSegment(11)->setInterpolator(InterpolatorFactory::create("match()"));
        curve->findSegment(13)->setInterpolator(InterpolatorFactory::create(row.after));
        EXPECT_EQ(PreviewBezierKeyframe(*curve, 12).outcome, row.outcome) << row.before << ", " << row.after;
        InsertAsForetold(*curve, 12);
        EXPECT_STREQ(curve->findSegment(11)->getInterpolator()->getExpression(), row.left);
        EXPECT_STREQ(curve->findSegment(12)->getInterpolator()->getExpression(), row.right);
    }
}

TEST(InsertBezierKeyframe, OutsideTheKeysTheNewSpanIsFlatWithHandlesOfAThird) {
    for (const char* kind : {"bezier()", "spline()", "ease()"})
        for (const double x : {-3.0, 9.0}) {
            SCOPED_TRACE(testing::Message() << kind << " at " << x);
            const auto curve = CurveThrough({{0, 1}, {6, 2}}, Bezier::create());
            for (Segment* end : {&*curve->begin(), &*--curve->end()})
                end->setInterpolator(InterpolatorFactory::create(kind));
            InsertBezierKeyframe(*curve, x);
            const Segment& span = *curve->findSegment(x < 0.0 ? -1.0 : 7.0);
            EXPECT_STREQ(span.getInterpolator()->getExpression(), "bezier()");
            EXPECT_EQ(span.getOutTangent()->get(), Vector2D<double>(1, 0));
            EXPECT_EQ(span.getInTangent()->get(), Vector2D<double>(-1, 0));
        }
}

TEST(InsertBezierKeyframe, TellsWhatKeepsByKindAndWhatByComparison) {
    const struct {
        const char *kind, *ends;
        double x;
        KeyframeInsertion::Outcome outcome;
    } kRows[] = {
        {"bezier()", "bezier()", 11.5, KeyframeInsertion::KeepsShape},
        {"bezier()", "bezier()", 19, KeyframeInsertion::KeepsShape},
        {"spline()", "cycle()", 11.5, KeyframeInsertion::KeepsShape},
        {"match()", "linear()", 11.5, KeyframeInsertion::KeepsShape},
        {"easein()", "linear()", 11.5, KeyframeInsertion::KeepsShape},
        {"linear()", "linear()", 11.5, KeyframeInsertion::KeepsShape},
        {"constant()", "linear()", 11.5, KeyframeInsertion::KeepsShape},
        {"constant_next()", "linear()", 11.5, KeyframeInsertion::KeepsShape},
        {"cycle()", "linear()", 11.5, KeyframeInsertion::KeepsShape},
        {"linear()", "constant_next()", 7, KeyframeInsertion::KeepsShape},
        {"5", "5", 11.5, KeyframeInsertion::KeepsShape},
        {"sin(x)", "sin(x)", 19, KeyframeInsertion::KeepsExpression},
        {"cycle() * x", "0", 11.5, KeyframeInsertion::ChangesShape},
        {"linear()", "cycle()", 19, KeyframeInsertion::ChangesShape},
        {"linear()", "cycle() + x", 7.5, KeyframeInsertion::ChangesShape},
    };
    for (const auto& row : kRows) {
        const auto curve = CurveThrough({{10, 0}, {11, 4}, {13, 1}}, InterpolatorFactory::create(row.kind));
        for (Segment* end : {&*curve->begin(), &*--curve->end()})
            end->setInterpolator(InterpolatorFactory::create(row.ends));
        const KeyframeInsertion preview = PreviewBezierKeyframe(*curve, row.x);
        EXPECT_EQ(preview.outcome, row.outcome) << row.kind << " at " << row.x;
        EXPECT_EQ(preview.error > 0.1, row.outcome == KeyframeInsertion::ChangesShape) << preview.error;
        InsertAsForetold(*curve, row.x);
    }
    // A key beyond the keyed range lengthens what the other end repeats.
    const auto curve = CurveThrough({{10, 0}, {11, 4}, {13, 1}});
    curve->begin()->setInterpolator(InterpolatorFactory::create("mirror()"));
    EXPECT_GT(PreviewBezierKeyframe(*curve, 16).error, 0.5);
    EXPECT_EQ(PreviewBezierKeyframe(*curve, 16).outcome, KeyframeInsertion::ChangesShape);
}

} // namespace
