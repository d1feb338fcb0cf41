#include "support/CallRecorder.h"
#include "support/RandomCurve.h"
#include "support/SameCurve.h"

#include <gtest/gtest.h>

#include <functional>

using namespace Test;

namespace {

// A format "script" whose documents are whatever calls a test makes. It recognises every stream.
struct Script : Reader {
    std::function<void(FormatInterface&)> run;

    explicit Script(std::function<void(FormatInterface&)> calls)
        : Reader(FormatType("script", "Script", "")), run(std::move(calls)) {}

    void readCurves(Stream&, FormatInterface& target) override { run(target); }
    void readCurve(Stream&, FormatInterface& target) override { run(target); }
    bool canRead(Stream&, Stream&) override { return true; }
};

struct Broken : FormatError {};

struct Listener : FCurveObserver, ContainerObserver {
    int curves = 0;
    int containers = 0;
    void curveChanged(FCurve&) override { ++curves; }
    void containerChanged(FCurveContainer&) override { ++containers; }
};

void addCurve(FormatInterface& target, const char* name) {
    target.startCurve(name);
    CallPlayer::play(
        "startSegmentContainer, startSegment linear(), finishSegment, startKeyframe, keyframePosition 1 2, "
        "finishKeyframe, startSegment 3, finishSegment, finishSegmentContainer, finishCurve",
        target);
}

} // namespace

TEST(WriteCurve, CallsInTheStatedOrder) {
    const auto curve = FCurve::create();
    curve->setName("ball");
    curve->setProperty("unit", "cm");
    curve->setProperty("fc_edit", "1"); // an editor's property without a call: stays behind
    SetVisible(*curve, false);
    SetVelocityVisible(*curve, true);
    SetGridSettings(*curve, {0.5, 0, 2, 4});
    SetTangentScale(*curve, 1.5);
    Keyframe key;
    key.set(10.0, -0.5);
    key.setBreakdown(true);
    key.setProperty("fc_lock", "1");
    key.setProperty("note", "up");
    Segment& trailing = *curve->insertSegment(key, InterpolatorFactory::create("bezier()"));
    trailing.setProperty("s", "t");
    trailing.getOutTangent()->setWeighted(true);
    trailing.getOutTangent()->set(3.0, 4.0);
    trailing.getOutTangent()->setWeightLocked(true);
    trailing.getOutTangent()->setProperty("o", "p");
    trailing.getOutTangent()->setProperty("fc_sel", "1");

    RecordingWriter writer;
    MemoryStream stream;
    WriteCurve(*curve, stream, "recorder");
    EXPECT_EQ(writer.joined(),
              "startCurve ball, curveVisible 0, curveLocked 0, curveShowVelocity 1, curveShowAcceleration 0, "
              "curveShowDiscontinuities 0, curveGrid 0.5 0 2 4, curveTangentScale 1.5, curveProperty unit cm, "
              "startSegmentContainer, startSegment constant(), "
              "startOutTangent, tangentType 0, tangentWeighted 0, tangentWeightLocked 0, tangentVector 1 0, "
              "finishOutTangent, "
              "startInTangent, tangentType 0, tangentWeighted 0, tangentWeightLocked 0, tangentVector -1 0, "
              "finishInTangent, finishSegment, "
              "startKeyframe, keyframePosition 10 -0.5, keyframeLocked 1, keyframeBreakdown 1, "
              "keyframeTangentsUnified 0, keyframeProperty note up, finishKeyframe, "
              "startSegment bezier(), segmentProperty s t, "
              "startOutTangent, tangentType 0, tangentWeighted 1, tangentWeightLocked 1, tangentVector 3 4, "
              "tangentProperty o p, finishOutTangent, "
              "startInTangent, tangentType 0, tangentWeighted 0, tangentWeightLocked 0, tangentVector -1 0, "
              "finishInTangent, finishSegment, finishSegmentContainer, finishCurve");
}

TEST(WriteCurves, ContainerPropertiesThenCurvesUntilTheWriterHasEnough) {
    const auto container = FCurveContainer::create();
    container->setProperty("b", "2");
    container->setProperty("a", "1");
    container->addCurve(FCurve::create());
    container->addCurve(FCurve::create());
    RecordingWriter writer;
    writer.only = {"startCurveContainer", "finishCurveContainer", "containerProperty", "startCurve", "finishCurve"};
    MemoryStream stream;
    const auto written = [&] {
        writer.calls.clear();
        WriteCurves(*container, stream, "recorder");
        return writer.joined();
    };
    const std::string begin = "startCurveContainer, containerProperty a 1, containerProperty b 2, ";
    EXPECT_EQ(written(), begin + "startCurve , finishCurve, startCurve , finishCurve, finishCurveContainer");
    writer.wantsMore = false;
    EXPECT_EQ(written(), begin + "startCurve , finishCurve, finishCurveContainer");
    writer.wantsCurve = false;
    EXPECT_EQ(written(), begin + "startCurve , startCurve , finishCurveContainer");
}

TEST(WriteCurve, UnknownNamesRaiseAndAFailedStringKeepsItsContent) {
    const auto curve = FCurve::create();
    const auto container = FCurveContainer::create();
    MemoryStream stream;
    std::string text = "before";
    EXPECT_THROW(WriteCurve(*curve, stream, "nothing"), UnknownFormat);
    EXPECT_THROW(WriteCurve(*curve, stream, nullptr), UnknownFormat);
    EXPECT_THROW(WriteCurves(*container, stream, FormatType()), UnknownFormat);
    EXPECT_THROW(WriteFCurveToString(*curve, "nothing", text), UnknownFormat);
    EXPECT_THROW(ReadCurve(stream, "nothing", *curve), UnknownFormat);
    EXPECT_THROW(ReadFCurveFromString("", nullptr, *curve), UnknownFormat);
    EXPECT_EQ(text, "before");
    EXPECT_STREQ(UnknownFormat().what(), "VEM_FN::FCurveLib::UnknownFormat");
    EXPECT_STREQ(FormatError().what(), "VEM_FN::FCurveLib::FormatError");
    EXPECT_STREQ(FormatError().message(), "");
}

TEST(ReadCurve, ReplacesTheTargetAndTellsOnceOrLeavesItAlone) {
    for (const bool raises : {false, true}) {
        const Script script([&](FormatInterface& target) {
            addCurve(target, "read");
            if (raises) throw Broken();
        });
        const auto curve = RandomCurve(1).make();
        const auto before = FCurve::createCopy(*curve);
        Listener listener;
        Listener everywhere;
        curve->subscribe(listener);
        FCurve::subscribeGlobal(everywhere);
        if (raises) {
            EXPECT_THROW(ReadFCurveFromString("", "script", *curve), Broken);
            EXPECT_EQ(Difference(*curve, *before), "");
            EXPECT_EQ(listener.curves, 0);
            continue;
        }
        ReadFCurveFromString("", "script", *curve);
        EXPECT_EQ(listener.curves, 1);
        EXPECT_EQ(everywhere.curves, 1);
        EXPECT_STREQ(curve->getName(), "read");
        EXPECT_EQ(curve->size(), 2U);
        EXPECT_EQ(curve->sizeProperties(), 0U);
        EXPECT_EQ(curve->begin()->getRightKey()->get(), Vector2D<double>(1.0, 2.0));
        EXPECT_EQ(curve->eval(5.0), 3.0);
    }
}

TEST(ReadCurves, AddsCompleteCurvesAndTellsTheContainerOnceNobodyElse) {
    for (const bool raises : {false, true}) {
        const Script script([&](FormatInterface& target) {
            target.startCurveContainer();
            target.containerProperty("shot", "12");
            addCurve(target, "one");
            addCurve(target, "two");
            if (!raises) return target.finishCurveContainer();
            target.startCurve("half");
            throw Broken();
        });
        const auto container = FCurveContainer::create();
        container->addCurve(FCurve::create());
        Listener listener;
        Listener everywhere;
        container->subscribe(listener);
        FCurve::subscribeGlobal(everywhere);
        MemoryStream stream;
        if (raises) {
            EXPECT_THROW(ReadCurves(stream, *container), Broken);
        } else {
            EXPECT_STREQ(ReadCurves(stream, *container).getFormatName(), "script");
        }
        EXPECT_EQ(listener.containers, 1);
        EXPECT_EQ(everywhere.curves, 0);
        EXPECT_STREQ(container->getProperty("shot"), "12");
        ASSERT_EQ(container->size(), 3U);
        FCurve& last = *--container->end();
        EXPECT_STREQ(last.getName(), "two");
        EXPECT_EQ(last.getShared(), last.begin()->getOwningCurve());
        last.setName("renamed"); // a curve that was read is an ordinary one: it tells
        EXPECT_EQ(everywhere.curves, 1);

        const Script nothing([](FormatInterface&) {});
        ReadCurves(stream, *container);
        EXPECT_EQ(listener.containers, 1);
    }
}
