#include "support/Basics.h"
#include "support/Invariants.h"
#include "support/Museum.h"
#include "support/Recorder.h"
#include "support/SameCurve.h"
#include "tools/Outside.h"
#include "tools/RandomShape.h"

using namespace Test;

namespace {

// The first place where the values differ by more than 1e-12 of their range, over and beyond the keys; empty if none.
std::string ChangeOf(const FCurve& before, const FCurve& after) {
    const double first = before.size() > 1 ? before.begin()->getRightKey()->getX() : -1.0;
    const double last = before.size() > 1 ? (--before.end())->getLeftKey()->getX() : 1.0;
    const double margin = 0.3 * (last - first) + 1.0;
    constexpr int places = 10000;
    double low = HUGE_VAL, high = -HUGE_VAL, worst = 0.0, where = 0.0;
    for (int i = 0; i < places; ++i) {
        const double x = first - margin + (last - first + 2 * margin) * i / places;
        const double y = before.eval(x);
        if (!std::isfinite(y)) continue;
        low = std::min(low, y);
        high = std::max(high, y);
        // Where the curve is vertical, the last bit of x or of a handle moves the value by its cube root.
        if (std::abs(GetFirstDerivative(before, x)) == 9999999.0) continue;
        const double change = std::abs(after.eval(x) - y);
        if (change > worst) where = x;
        worst = std::max(worst, change);
    }
    // Values near an offset, and beyond the keys of a line, are as exact as their own size allows.
    const double size = std::max({high - low, std::abs(low) * 1e-3, std::abs(high) * 1e-3});
    if (!(worst > 1e-12 * size)) return "";
    return (testing::Message() << "changed by " << worst << " at " << where << ", range " << high - low).GetString();
}

std::vector<double> PlacesToCut(const FCurve& curve) {
    std::vector<double> places;
    for (const Segment& segment : curve) {
        const auto [from, to] = SpanOf(segment);
        for (const double part : {0.1, 0.25, 0.5, 0.7713}) places.push_back(from + part * (to - from));
    }
    return places;
}

class InsertionInEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, InsertionInEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST_P(InsertionInEveryExhibit, KeepsTheShape) {
    for (const double x : PlacesToCut(*GetParam().make())) {
        SCOPED_TRACE(testing::Message() << "at " << x);
        const auto curve = GetParam().make();
        Decorate(*curve);
        const auto before = FCurve::createCopy(*curve);
        const KeyframeInsertion preview = PreviewBezierKeyframe(*curve, x);
        EXPECT_EQ(Difference(*before, *curve), "");
        Recorder recorder;
        curve->subscribe(recorder);
        const auto added = InsertBezierKeyframe(*curve, x);
        EXPECT_EQ(Fault(*curve), "");
        if (preview.outcome == KeyframeInsertion::Refused) {
            EXPECT_EQ(added, curve->end());
            EXPECT_EQ(Difference(*before, *curve), "");
            EXPECT_TRUE(recorder.heard.empty());
            continue;
        }
        EXPECT_EQ(recorder.take(), Heard{"curve"});
        ASSERT_NE(added, curve->end());
        EXPECT_EQ(added->getLeftKey()->getX(), x);
        EXPECT_EQ(curve->size(), before->size() + 1);

        const std::string kind = ExpressionOf(*before->findSegment(x));
        const bool open = !before->findSegment(x)->getLeftKey() || !before->findSegment(x)->getRightKey();
        const bool reads = kind.find("cycle") != std::string::npos || kind.find("mirror") != std::string::npos;
        if (reads && open && before->size() > 2)
            EXPECT_EQ(preview.outcome, KeyframeInsertion::ChangesShape);
        else
            EXPECT_EQ(ChangeOf(*before, *curve), "") << kind;
        if (preview.outcome == KeyframeInsertion::KeepsShape) {
            EXPECT_LE(preview.error, 1e-11 * SizeOf(*before)) << kind;
        }
    }
}

// Whatever the tangents, what was there keeps its shape also when it is recomputed.
TEST(InsertBezierKeyframe, KeepsTheShapeWhateverTheTangents) {
    const std::vector<const char*> kinds = {"bezier()",   "bezier()",        "bezier()", "spline()",
                                            "ease()",     "easein()",        "linear()", "match()",
                                            "constant()", "constant_next()", "sin(x)"};
    for (unsigned seed = 0; seed < 200; ++seed) {
        RandomShape random(seed);
        const auto curve = random.make(kinds);
        const auto first = KeyAt(*curve, 0)->getX();
        const auto last = (--curve->end())->getLeftKey()->getX();
        for (int i = 0; i < 3; ++i) {
            const double x = random.between(first - 1, last + 1);
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", at " << x);
            const auto before = FCurve::createCopy(*curve);
            const auto preview = PreviewBezierKeyframe(*curve, x);
            const auto added = InsertBezierKeyframe(*curve, x);
            if (preview.outcome == KeyframeInsertion::Refused) {
                ASSERT_EQ(Difference(*before, *curve), "");
                continue;
            }
            ASSERT_EQ(Fault(*curve), "");
            if (preview.outcome == KeyframeInsertion::ChangesShape) { // only a match that passes beside both its keys
                const Segment& cut = *before->findSegment(x);
                ASSERT_EQ(ExpressionOf(cut), "match()");
                ASSERT_NE(EvalSegment(cut.getLeftKey()->getX(), cut), cut.getLeftKey()->getY());
                ASSERT_NE(EvalSegment(cut.getRightKey()->getX(), cut), cut.getRightKey()->getY());
                continue;
            }
            ASSERT_EQ(ChangeOf(*before, *curve), "") << ExpressionOf(*before->findSegment(x));

            // A move of the key too small to be seen recomputes the tangents around it: they must not leap.
            if (ExpressionOf(*added) != "bezier()") continue;
            const auto moved = FCurve::createCopy(*curve);
            const auto key = moved->findSegment(x)->getLeftKey();
            key->setY(key->getY() + 1e-9);
            double worst = 0.0;
            for (double at = first; at < last; at += (last - first) / 500)
                if (std::abs(GetFirstDerivative(*curve, at)) < 1e5)
                    worst = std::max(worst, std::abs(curve->eval(at) - moved->eval(at)));
            ASSERT_LE(worst, 1e-5 * SizeOf(*curve));
        }
    }
}

TEST(InsertBezierKeyframe, GivesTheHandlesOfTheCut) {
    using V = Vector2D<double>;
    const auto curve = MakeCurve({{0, 0, {}, V(1, 6)}, {4, 8, V(-1, 2), {}}});
    const auto left = KeyAt(*curve, 0), right = KeyAt(*curve, 1);
    // P = (0, 0), (1, 6), (3, 10), (4, 8) at t = 1/2.
    const auto added = InsertBezierKeyframe(*curve, 2.0)->getLeftKey();
    EXPECT_EQ(added->get(), V(2, 7));
    EXPECT_EQ(left->getOutTangent()->get(), V(0.5, 3));
    EXPECT_EQ(added->getInTangent()->get(), V(-0.75, -1.5));
    EXPECT_EQ(added->getOutTangent()->get(), V(0.75, 1.5));
    EXPECT_EQ(right->getInTangent()->get(), V(-0.5, 1));
    EXPECT_TRUE(added->isTangentsUnified() && added->getOutTangent()->isWeighted());
    EXPECT_TRUE(KeyAt(*curve, 0) == left && KeyAt(*curve, 2) == right);
}

TEST(InsertBezierKeyframe, KeepsTangentTypesThatStillGiveTheShape) {
    // Linear tangents stay linear, flat ones flat; smooth ones are still right on a straight line, but not on a wave.
    const auto line = CurveThrough({{0, 0}, {3, 3}, {6, 6}, {9, 9}}, Bezier::create());
    const auto wave = CurveThrough({{0, 0}, {3, 3}, {6, 1}, {9, 7}}, Bezier::create());
    for (const std::uint8_t type : {Tangent::Fixed, Tangent::Flat, Tangent::Linear, Tangent::Smooth}) {
        for (const bool straight : {true, false}) {
            const auto curve = FCurve::createCopy(straight ? *line : *wave);
            for (Segment& segment : *curve) {
                segment.getInTangent()->setType(type);
                segment.getOutTangent()->setType(type);
            }
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
    const auto before = FCurve::createCopy(*curve);
    for (const double x : {0.0, 0.0009, -0.0009, 0.9995, 1.0, 1.001, 7.0, std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        EXPECT_EQ(PreviewBezierKeyframe(*curve, x).outcome, KeyframeInsertion::Refused) << x;
        EXPECT_EQ(InsertBezierKeyframe(*curve, x), curve->end()) << x;
    }
    EXPECT_EQ(Difference(*before, *curve), "");
    EXPECT_NE(InsertBezierKeyframe(*curve, 0.001), curve->end());
    EXPECT_NE(InsertBezierKeyframe(*curve, 60.0), curve->end());
}

TEST(InsertBezierKeyframe, SaysBeforehandWhatItWillDo) {
    const struct {
        const char* kind;
        double x;
        KeyframeInsertion::Outcome outcome;
    } kRows[] = {
        {"bezier()", 1.5, KeyframeInsertion::KeepsShape},         {"bezier()", 9.0, KeyframeInsertion::KeepsShape},
        {"spline()", 1.5, KeyframeInsertion::KeepsShape},         {"easeout()", 1.5, KeyframeInsertion::KeepsShape},
        {"match()", 1.5, KeyframeInsertion::KeepsShape},          {"linear()", 1.5, KeyframeInsertion::KeepsShape},
        {"constant_next()", -3.0, KeyframeInsertion::KeepsShape}, {"5", 1.5, KeyframeInsertion::KeepsExpression},
        {"sin(x)", 9.0, KeyframeInsertion::KeepsExpression},      {"((", 1.5, KeyframeInsertion::KeepsExpression},
        {"cycle()", 1.5, KeyframeInsertion::KeepsExpression},     {"cycle()", 9.0, KeyframeInsertion::ChangesShape},
        {"mirror()", -2.5, KeyframeInsertion::ChangesShape},      {"cycle() + x", 9.0, KeyframeInsertion::ChangesShape},
    };
    for (const auto& row : kRows) {
        const auto kind = InterpolatorFactory::create(row.kind);
        const auto curve = CurveThrough({{0, 0}, {1, 4}, {3, 1}}, kind);
        curve->begin()->setInterpolator(kind);
        const KeyframeInsertion preview = PreviewBezierKeyframe(*curve, row.x);
        EXPECT_EQ(preview.outcome, row.outcome) << row.kind << " at " << row.x;
        if (row.outcome == KeyframeInsertion::ChangesShape)
            EXPECT_GT(preview.error, 0.1) << row.kind;
        else
            EXPECT_LT(preview.error, 1e-12) << row.kind;
    }
}

} // namespace
