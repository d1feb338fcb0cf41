#include "support/Basics.h"
#include "support/Recorder.h"

using namespace Test;

namespace {

// Where keys stop beside their neighbours, support/Host.h checks against a naive model.

TEST(Keyframe, IgnoresNonFiniteCoordinates) {
    const auto curve = CurveThrough({{0, 0}, {1, 1}});
    const auto key = KeyAt(*curve, 1);
    Recorder recorder;
    curve->subscribe(recorder);
    for (const double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        key->set(bad, 0);
        key->set(0.5, bad);
        key->setX(bad);
        key->setY(bad);
    }
    key->set(1, 1);
    EXPECT_EQ(key->get(), Vector2D<double>(1, 1));
    EXPECT_THAT(recorder.heard, IsEmpty());
    const auto free = Keyframe::create(1, NAN);
    EXPECT_EQ(free->get(), Vector2D<double>());
    free->set(1e12, -5); // outside a curve
    EXPECT_EQ(free->get(), Vector2D<double>(1e12, -5));
}

TEST(Keyframe, TellsOfTheKeyFirstAndThenOfTangentsFromLeftToRight) {
    const auto curve = CurveThrough({{0, 0}, {10, 0}, {20, 0}, {30, 0}});
    Recorder recorder;
    curve->subscribe(recorder);
    KeyAt(*curve, 1)->setX(12);
    EXPECT_THAT(recorder.take(),
                ElementsAre("key 1 moved", "tangent 0.out", "tangent 1.in", "tangent 1.out", "tangent 2.in"));
    KeyAt(*curve, 1)->setY(5); // flat handles do not depend on values
    EXPECT_THAT(recorder.take(), ElementsAre("key 1 moved"));
}

TEST(Keyframe, FlagsAndPropertiesTellOnlyChanges) {
    const auto curve = CurveThrough({{0, 0}, {10, 0}});
    const auto key = KeyAt(*curve, 1);
    Recorder recorder;
    curve->subscribe(recorder);
    key->setBreakdown(true);
    key->setBreakdown(true);
    key->setTangentsUnified(true);
    key->setTangentsUnified(true);
    key->setProperty("a", "1");
    key->setProperty("a", "1");
    key->setProperty("b", nullptr);
    key->setProperty("b", "-2");
    key->setProperty("b", key->getProperty("b") + 1); // texts of its own, which the change overwrites or frees
    key->setProperty(key->beginProperties()->first.c_str(), "");
    key->clearProperties();
    EXPECT_EQ(key->sizeProperties(), 0u);
    EXPECT_THAT(recorder.heard, ElementsAre("key 1 breakdown", "key 1 unified", "key 1 a=1", "key 1 b=-2", "key 1 b=2",
                                            "key 1 a=", "key 1 b="));
}

} // namespace
