#include "support/CallRecorder.h"
#include "support/SameCurve.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Test;

namespace {

// The builder with short words for documents.
struct Builder : FCurveFormatInterface {
    std::shared_ptr<FCurve> curve = FCurve::create();

    Builder() {
        setCurve(curve);
        startCurve("curve");
        startSegmentContainer();
    }
    void segment(const char* expression) {
        startSegment(expression);
        finishSegment();
    }
    void key(double x, double y) {
        startKeyframe();
        keyframePosition(x, y);
        finishKeyframe();
    }
    std::string finish() {
        finishSegmentContainer();
        finishCurve();
        std::string text;
        for (const Segment& one : *curve) {
            CallRecorder numbers;
            if (one.getLeftKey()) numbers.keyframePosition(one.getLeftKey()->getX(), one.getLeftKey()->getY());
            if (!numbers.calls.empty()) text += " (" + numbers.calls[0].substr(sizeof "keyframePosition") + ") ";
            text += SameCurve::expression(one);
        }
        return text;
    }
};

std::string handle(const Tangent& tangent) {
    CallRecorder numbers;
    numbers.tangentVector(tangent.getX(), tangent.getY());
    return numbers.calls[0].substr(sizeof "tangentVector");
}

} // namespace

TEST(FCurveFormatInterface, SharesTheBuiltInInterpolators) {
    Builder builder;
    builder.segment("linear()");
    builder.key(1, 1);
    builder.segment("linear()");
    builder.finish();
    EXPECT_EQ(builder.curve->begin()->getInterpolator(), InterpolatorFactory::create("linear()"));
    EXPECT_EQ((--builder.curve->end())->getInterpolator(), InterpolatorFactory::create("linear()"));
}

TEST(FCurveFormatInterface, UnifiedAsAPropertyFlagsTheKeyAndTouchesNoHandle) {
    for (const char* value : {"1", "0", "11", "yes"}) {
        Builder builder;
        builder.startSegment("bezier()");
        builder.startInTangent();
        builder.tangentVector(-2, 7);
        builder.finishInTangent();
        builder.finishSegment();
        builder.key(1, 1);
        builder.keyframeProperty("fc_isUnified", value);
        builder.startSegment("bezier()");
        builder.startOutTangent();
        builder.tangentVector(3, 5);
        builder.finishOutTangent();
        builder.finishSegment();
        builder.finish();
        const auto key = builder.curve->begin()->getRightKey();
        EXPECT_EQ(key->isTangentsUnified(), std::string(value) == "1");
        EXPECT_STREQ(key->getProperty("fc_isUnified"), value);
        EXPECT_EQ(handle(*key->getInTangent()), "-2 7");
        EXPECT_EQ(handle(*key->getOutTangent()), "3 5");
    }
}

TEST(FCurveFormatInterface, HandlesThatAreNotGivenAreComputed) {
    Builder builder;
    builder.segment("bezier()");
    builder.key(0, 0);
    builder.startSegment("bezier()");
    builder.startInTangent();
    builder.tangentType(Tangent::Smooth);
    builder.finishSegment();
    builder.key(3, 3);
    builder.segment("bezier()");
    builder.key(9, 9);
    builder.finish();
    const auto middle = builder.curve->findSegment(4.0)->getLeftKey();
    EXPECT_EQ(handle(*middle->getInTangent()), "-1 -1");
    EXPECT_EQ(middle->getInTangent()->getType(), Tangent::Smooth);
    EXPECT_EQ(handle(*middle->getOutTangent()), "2 0");
    EXPECT_EQ(handle(*builder.curve->begin()->getOutTangent()), "1 0");
}

TEST(FCurveFormatInterface, IgnoresWhatNoCurveHolds) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Builder builder;
    builder.segment("linear()");
    builder.key(1, 2);
    builder.keyframePosition(nan, 5);
    builder.startSegment("linear()");
    builder.startOutTangent();
    builder.tangentType(200);
    builder.tangentVector(-4, 1);
    builder.tangentVector(nan, 1);
    builder.finishSegment();
    EXPECT_EQ(builder.finish(), "linear() (1 2) linear()");
    const auto out = (--builder.curve->end())->getOutTangent();
    EXPECT_EQ(handle(*out), "0 1"); // a handle across its key is cut
    EXPECT_EQ(out->getType(), Tangent::Fixed);
}

TEST(FCurveFormatInterface, OddOrdersLeadToTheNearestCurve) {
    {
        Builder builder; // keys out of order
        builder.segment("0");
        builder.key(5, 50);
        builder.segment("5");
        builder.key(1, 10);
        builder.segment("1");
        builder.key(9, 90);
        builder.segment("9");
        EXPECT_EQ(builder.finish(), "0 (1 10) 1 (5 50) 5 (9 90) 9");
    }
    {
        Builder builder; // the same x twice
        builder.segment("0");
        builder.key(5, 50);
        builder.segment("5");
        builder.key(5, 55);
        builder.segment("6");
        EXPECT_EQ(builder.finish(), "0 (5 50) 6");
    }
    {
        Builder builder; // a key first, two keys in a row, a key last
        builder.key(1, 10);
        builder.segment("1");
        builder.key(2, 20);
        builder.key(3, 30);
        EXPECT_EQ(builder.finish(), "constant() (1 10) 1 (2 20) constant() (3 30) constant()");
    }
    {
        Builder builder; // two segments in a row
        builder.segment("0");
        builder.segment("1");
        EXPECT_EQ(builder.finish(), "1");
    }
    {
        Builder builder; // nulls
        builder.startCurve(nullptr);
        builder.curveProperty(nullptr, nullptr);
        builder.segment(nullptr);
        builder.segmentProperty(nullptr, nullptr);
        builder.keyframeProperty(nullptr, nullptr);
        EXPECT_EQ(builder.finish(), "");
    }
}

TEST(FCurveFormatInterface, CallsWithoutACurveOrAPartHaveNoEffect) {
    FCurveFormatInterface nothing;
    EXPECT_TRUE(nothing.startCurve("x"));
    nothing.curveVisible(false);
    nothing.curveGrid(0, 0, 1, 1);
    nothing.startSegmentContainer();
    nothing.startSegment("linear()");
    nothing.startInTangent();
    nothing.tangentVector(1, 1);
    nothing.startKeyframe();
    nothing.keyframePosition(1, 1);
    EXPECT_TRUE(nothing.finishCurve());

    const auto curve = FCurve::create();
    const auto before = FCurve::createCopy(*curve);
    nothing.setCurve(curve);
    nothing.finishSegment();
    nothing.segmentProperty("a", "b");
    nothing.startOutTangent();
    nothing.tangentType(3);
    nothing.tangentProperty("a", "b");
    nothing.finishCurve();
    EXPECT_EQ(Difference(*curve, *before), "");
}

TEST(FCurveFormatInterface, SurvivesAHostThatEditsTheCurveMeanwhile) {
    Builder builder;
    builder.segment("0");
    builder.key(1, 10);
    builder.startSegment("1");
    builder.startOutTangent();
    builder.curve->clear();
    builder.tangentVector(1, 1);
    builder.finishSegment();
    builder.key(2, 20);
    builder.segment("2");
    EXPECT_EQ(builder.finish(), "constant() (2 20) 2");
}
