#include "support/SameCurve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

using namespace Test;

namespace {

using Vector = Vector2D<double>;

// The builder, and what it builds, in a short notation: "0 (1 10) linear()" is the segment "0", a key at (1, 10), and
// the segment "linear()".
struct Builder : FCurveFormatInterface {
    std::shared_ptr<FCurve> curve = FCurve::create();

    Builder() {
        setCurve(curve);
        startCurve("curve");
        startSegmentContainer();
    }
    void add(const std::string& parts) {
        std::istringstream in(parts);
        for (std::string word; in >> word;) {
            if (word[0] != '(') {
                startSegment(word.c_str());
                finishSegment();
                continue;
            }
            double y = 0.0;
            in >> y;
            in.ignore(); // the ")"
            startKeyframe();
            keyframePosition(std::stod(word.substr(1)), y);
            finishKeyframe();
        }
    }
    std::string finish() {
        finishSegmentContainer();
        finishCurve();
        std::ostringstream text;
        for (const Segment& one : *curve) {
            if (const auto key = one.getLeftKey()) text << " (" << key->getX() << ' ' << key->getY() << ") ";
            text << SameCurve::expression(one);
        }
        return text.str();
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
    };
    for (const auto& row : rows) {
        Builder builder;
        builder.add(row.calls);
        EXPECT_EQ(builder.finish(), row.curve) << row.calls;
    }
    Builder nulls;
    nulls.startCurve(nullptr);
    nulls.curveProperty(nullptr, nullptr);
    nulls.startSegment(nullptr);
    nulls.finishSegment();
    nulls.segmentProperty(nullptr, nullptr);
    nulls.keyframeProperty(nullptr, nullptr);
    EXPECT_EQ(nulls.finish(), "");
}

TEST(FCurveFormatInterface, SharesTheBuiltInInterpolators) {
    Builder builder;
    builder.add("linear() (1 1) linear()");
    builder.finish();
    for (const Segment& segment : *builder.curve) {
        EXPECT_EQ(segment.getInterpolator(), InterpolatorFactory::create("linear()"));
    }
}

TEST(FCurveFormatInterface, UnifiedAsAPropertyFlagsTheKeyAndTouchesNoHandle) {
    for (const char* value : {"1", "0", "11", "yes"}) {
        Builder builder;
        builder.startSegment("bezier()");
        builder.startInTangent();
        builder.tangentVector(-2, 7);
        builder.finishInTangent();
        builder.finishSegment();
        builder.add("(1 1)");
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
        EXPECT_EQ(key->getInTangent()->get(), Vector(-2, 7));
        EXPECT_EQ(key->getOutTangent()->get(), Vector(3, 5));
    }
}

TEST(FCurveFormatInterface, HandlesThatAreNotGivenAreComputed) {
    Builder builder;
    builder.add("bezier() (0 0)");
    builder.startSegment("bezier()");
    builder.startInTangent();
    builder.tangentType(Tangent::Smooth);
    builder.finishSegment();
    builder.add("(3 3) bezier() (9 9)");
    builder.finish();
    const auto middle = builder.curve->findSegment(4.0)->getLeftKey();
    EXPECT_EQ(middle->getInTangent()->get(), Vector(-1, -1));
    EXPECT_EQ(middle->getInTangent()->getType(), Tangent::Smooth);
    EXPECT_EQ(middle->getOutTangent()->get(), Vector(2, 0));
    EXPECT_EQ(builder.curve->begin()->getOutTangent()->get(), Vector(1, 0));
}

TEST(FCurveFormatInterface, IgnoresWhatNoCurveHolds) {
    Builder builder;
    builder.add("linear() (1 2)");
    builder.keyframePosition(std::nan(""), 5);
    builder.startSegment("linear()");
    builder.startOutTangent();
    builder.tangentType(200);
    builder.tangentVector(-4, 1);
    builder.tangentVector(std::nan(""), 1);
    builder.finishSegment();
    EXPECT_EQ(builder.finish(), "linear() (1 2) linear()");
    const auto out = (--builder.curve->end())->getOutTangent();
    EXPECT_EQ(out->get(), Vector(0, 1)); // a handle across its key is cut
    EXPECT_EQ(out->getType(), Tangent::Fixed);
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
    builder.add("0 (1 10)");
    builder.startSegment("1");
    builder.startOutTangent();
    builder.curve->clear();
    builder.tangentVector(1, 1);
    builder.finishSegment();
    builder.add("(2 20) 2");
    EXPECT_EQ(builder.finish(), "constant() (2 20) 2");
}
