#include "support/Basics.h"
#include "support/Invariants.h"
#include "support/Recorder.h"

using namespace Test;

namespace {

TEST(Keyframe, StaysBetweenItsNeighbours) {
    const struct {
        std::vector<double> keys;
        int key;
        double x, expected;
    } rows[] = {
        {{0, 1, 2}, 1, 5, 2 - 0.001},
        {{0, 1, 2}, 1, -3, 0.001},
        {{0, 1, 2}, 0, -3, -3},
        {{0, 1, 2}, 2, 99, 99},
        {{0, 1, 2}, 1, 1.5, 1.5},
        // Keys may have been inserted closer than the separation: then there is no room to move that way.
        {{0, 0.0005, 0.0008}, 1, -1, 0.0005},
        {{0, 0.0005, 0.0008}, 1, 1, 0.0005},
        // At such abscissae the separation vanishes in the rounding; the order must not.
        {{1e17, 2e17}, 0, 3e17, 1e17},
        {{1e17, 2e17}, 1, 0, 2e17},
    };
    for (const auto& row : rows) {
        const auto curve = FCurve::create();
        for (const double x : row.keys) AddKey(*curve, x, 0);
        KeyAt(*curve, row.key)->set(row.x, 7);
        EXPECT_EQ(KeyAt(*curve, row.key)->get(), Vector2D<double>(row.expected, 7)) << row.x;
        EXPECT_EQ(Fault(*curve), "");
    }
}

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
