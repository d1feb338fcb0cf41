#include "support/CallRecorder.h"
#include "support/SameCurve.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace Test;

namespace {

using Vector = Vector2D<double>;

// What the builder makes of calls. Without a comma they are in a shorter notation, that of the curve: "0 (1 10) 2" is
// the segment "0", a key at (1, 10), and the segment "2".
struct Built {
    std::shared_ptr<FCurve> curve = FCurve::create();
    FCurveFormatInterface builder;

    explicit Built(const std::string& calls) {
        builder.setCurve(curve);
        CallPlayer::play("startCurve curve, startSegmentContainer", builder);
        add(calls);
    }
    void add(const std::string& calls) {
        if (calls.find(',') != std::string::npos) return CallPlayer::play(calls, builder);
        std::istringstream in(calls);
        for (std::string word; in >> word;) {
            std::string y;
            if (word[0] == '(') std::getline(in, y, ')');
            CallPlayer::play(word[0] == '('
                                 ? "startKeyframe, keyframePosition " + word.substr(1) + y + ", finishKeyframe"
                                 : "startSegment " + word + ", finishSegment",
                             builder);
        }
    }
    std::string finish() {
        CallPlayer::play("finishSegmentContainer, finishCurve", builder);
        std::ostringstream text;
        for (const Segment& one : *curve) {
            if (const auto key = one.getLeftKey()) text << " (" << key->getX() << ' ' << key->getY() << ") ";
            text << SameCurve::expression(one);
        }
        return text.str();
    }
    Keyframe& firstKey() {
        finish();
        return *curve->begin()->getRightKey();
    }
};

} // namespace

TEST(FCurveFormatInterface, OddOrdersLeadToTheNearestCurve) {
    const struct {
        const char* calls;
        const char* curve;
    } rows[] = {
        {"0 (5 50) 5 (1 10) 1 (9 90) 9", "0 (1 10) 1 (5 50) 5 (9 90) 9"},
        {"0 (5 50) 5 (5 55) 6", "0 (5 50) 6"},
        {"(1 10) 1 (2 20) (3 30)", "constant() (1 10) 1 (2 20) constant() (3 30) constant()"},
        {"0 1", "1"},
        {"(1 10) 1 2", "constant() (1 10) 2"},
        {"startCurve null, curveProperty null null, startSegment null, finishSegment, segmentProperty null null, "
         "keyframeProperty null null",
         ""},
    };
    for (const auto& row : rows) EXPECT_EQ(Built(row.calls).finish(), row.curve) << row.calls;
}

TEST(FCurveFormatInterface, EqualExpressionsShareAnInterpolator) {
    for (const std::string expression :
         {"linear()", "x*2", "unknown((", "x+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1+1"}) {
        Built built(expression + " (1 1) 0 (2 2) " + expression);
        built.finish();
        EXPECT_EQ(built.curve->begin()->getInterpolator(), (--built.curve->end())->getInterpolator());
        const auto first = built.curve->begin()->getInterpolator();
        built.builder.setCurve(built.curve = FCurve::create());
        built.add(expression);
        EXPECT_EQ(built.curve->begin()->getInterpolator(), first);
    }
}

TEST(FCurveFormatInterface, UnifiedAsAPropertyFlagsTheKeyAndTouchesNoHandle) {
    for (const std::string value : {"1", "0", "11", "yes"}) {
        Built built("startSegment bezier(), startInTangent, tangentVector -2 7, finishInTangent, finishSegment, "
                    "startKeyframe, keyframePosition 1 1, keyframeProperty fc_isUnified "
                    + value
                    + ", finishKeyframe, startSegment bezier(), startOutTangent, tangentVector 3 5, finishOutTangent, "
                      "finishSegment");
        const Keyframe& key = built.firstKey();
        EXPECT_EQ(key.isTangentsUnified(), value == "1");
        EXPECT_EQ(key.getProperty("fc_isUnified"), value);
        EXPECT_EQ(key.getInTangent()->get(), Vector(-2, 7));
        EXPECT_EQ(key.getOutTangent()->get(), Vector(3, 5));
    }
}

TEST(FCurveFormatInterface, HandlesThatAreNotGivenAreComputed) {
    Built built("bezier() (0 0)");
    built.add("startSegment bezier(), startInTangent, tangentType 3, finishSegment");
    built.add("(3 3) bezier() (9 9)");
    built.finish();
    EXPECT_EQ(built.curve->begin()->getOutTangent()->get(), Vector(1, 0));
    const auto middle = built.curve->findSegment(4.0)->getLeftKey();
    EXPECT_EQ(middle->getInTangent()->get(), Vector(-1, -1));
    EXPECT_EQ(middle->getInTangent()->getType(), Tangent::Smooth);
    EXPECT_EQ(middle->getOutTangent()->get(), Vector(2, 0));
}

TEST(FCurveFormatInterface, IgnoresWhatNoCurveHolds) {
    Built built("linear() (1 2)");
    built.add("keyframePosition nan 5, startSegment linear(), startOutTangent, tangentType 200, tangentVector -4 1, "
              "tangentVector nan 1, finishSegment");
    EXPECT_EQ(built.finish(), "linear() (1 2) linear()");
    const auto out = built.firstKey().getOutTangent();
    EXPECT_EQ(out->get(), Vector(0, 1)); // a handle across its key is cut
    EXPECT_EQ(out->getType(), Tangent::Fixed);
}

TEST(FCurveFormatInterface, SurvivesAHostThatEditsTheCurveMeanwhile) {
    Built built("0 (1 10)");
    built.add("startSegment 1, startOutTangent");
    built.curve->clear();
    built.add("tangentVector 1 1, finishSegment");
    built.add("(2 20) 2");
    EXPECT_EQ(built.finish(), "constant() (2 20) 2");
}
