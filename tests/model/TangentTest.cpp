#include "support/Basics.h"
#include "support/Recorder.h"

using namespace Test;

namespace {

constexpr double kSteepest = 5729577.948511148;

void ExpectHandle(const std::shared_ptr<Tangent>& tangent, double x, double y, const char* what = "") {
    EXPECT_NEAR(tangent->getX(), x, 1e-12 * (1 + std::fabs(x))) << what;
    EXPECT_NEAR(tangent->getY(), y, 1e-12 * (1 + std::fabs(y))) << what;
}

TEST(Tangent, TypesComputeTheirHandles) {
    const std::vector<Vector2D<double>> points = {{0, 0}, {3, 5}, {9, 7}, {12, 1}};
    const double inX[] = {-1, -1, -2, -1}, outX[] = {1, 2, 1, 1}; // a third of the neighbouring span, if any
    const struct {
        Tangent::Type type;
        int key;
        double in, out; // the handles' y; key 2 is the highest
    } rows[] = {{Tangent::Fixed, 1, 0, 0},
                {Tangent::Flat, 1, 0, 0},
                {Tangent::Linear, 0, 0, 5.0 / 3},
                {Tangent::Linear, 1, -5.0 / 3, 2.0 / 3},
                {Tangent::Smooth, 0, 0, 5.0 / 3},
                {Tangent::Smooth, 1, -7.0 / 9, 14.0 / 9},
                {Tangent::Smooth, 2, 8.0 / 9, -4.0 / 9},
                {Tangent::Smooth, 3, 2, 0},
                {Tangent::SmoothContinued, 0, -5.0 / 3, 5.0 / 3},
                {Tangent::SmoothContinued, 1, -7.0 / 9, 14.0 / 9},
                {Tangent::SmoothContinued, 3, 2, -2},
                {Tangent::Plateau, 1, -7.0 / 9, 14.0 / 9},
                {Tangent::Plateau, 2, 0, 0}};
    for (const auto& row : rows) {
        const auto curve = CurveThrough(points);
        const auto key = KeyAt(*curve, row.key);
        key->getInTangent()->setType(row.type);
        key->getOutTangent()->setType(row.type);
        for (const char* when : {"at once", "recomputed, after a key moved away and back"}) {
            SCOPED_TRACE(testing::Message() << "type " << row.type << " key " << row.key << " " << when);
            ExpectHandle(key->getInTangent(), inX[row.key], row.in);
            ExpectHandle(key->getOutTangent(), outX[row.key], row.out);
            KeyAt(*curve, 2)->set(9.5, 3);
            KeyAt(*curve, 2)->set(9, 7);
        }
    }
}

TEST(Tangent, ClampedGoesFlatWhenANeighbourIsNearTheHandlesOwnY) {
    for (const auto& [leftY, expected] : {std::pair(0.01, 0.0), {1.0, 1.0}}) {
        const auto curve = CurveThrough({{0, leftY}, {3, 5}, {6, 7}});
        const auto out = KeyAt(*curve, 1)->getOutTangent();
        ASSERT_EQ(out->getY(), 0);
        out->setType(Tangent::Clamped);
        ExpectHandle(out, 1, expected);
    }
}

TEST(Tangent, PlateauNeverRisesAboveItsSegment) {
    const auto curve = CurveThrough({{-3, -5}, {0, 0}, {3, 1}});
    const auto key = KeyAt(*curve, 1);
    key->getOutTangent()->setType(Tangent::Plateau); // slope 1 along (-3, -5) to (3, 1): exactly up to the next key
    ExpectHandle(key->getOutTangent(), 1, 1);
    KeyAt(*curve, 0)->setY(-11); // slope 2 would reach height 2
    ExpectHandle(key->getOutTangent(), 1, 0);
    key->getInTangent()->setType(Tangent::Plateau);
    for (const auto& [before, after] : {std::pair(0, 1), {0, -1}, {1, 0}, {-1, 0}}) {
        KeyAt(*curve, 0)->setY(before);
        KeyAt(*curve, 2)->setY(after);
        ExpectHandle(key->getOutTangent(), 1, 0, "beside a key of the same height");
        ExpectHandle(key->getInTangent(), -1, 0, "likewise");
    }
}

TEST(Tangent, UnweightedHandlesReachAThirdAndKeepTheirSlope) {
    const auto curve = CurveThrough({{0, 0}, {3, 5}});
    const auto out = KeyAt(*curve, 0)->getOutTangent();
    const auto in = KeyAt(*curve, 1)->getInTangent();
    const struct {
        double x, y, expectedX, expectedY;
    } rows[] = {
        {5, 10, 1, 2},         {0, 2, 1, kSteepest}, {0, -2, 1, -kSteepest},
        {-4, 2, 1, kSteepest}, {0, 0, 1, 0},         {1e-3, 7e-3, 1, 7},
    };
    for (const auto& row : rows) {
        out->set(row.x, row.y);
        ExpectHandle(out, row.expectedX, row.expectedY);
        in->set(-row.x, row.y);
        ExpectHandle(in, -row.expectedX, row.expectedY);
    }
    out->set(2, 3);
    KeyAt(*curve, 1)->setX(6);
    ExpectHandle(out, 2, 3, "the third grows with the span, the slope stays");

    // The segment before the first key has no third: what is set there stays, also where it is vertical.
    const auto end = KeyAt(*curve, 0)->getInTangent();
    end->set(1, -2);
    ExpectHandle(end, 0, -2);
    end->setAngle(std::acos(-1.0) / 2);
    EXPECT_DOUBLE_EQ(end->getWeight(), 2);
    end->set(-1, 0);
    out->setWeighted(true);
    out->set(0, 3);
    KeyAt(*curve, 0)->setTangentsUnified(true);
    ExpectHandle(end, 0, -1, "turned to the vertical with its own length");
    KeyAt(*curve, 0)->setTangentsUnified(false);
    end->set(0, 0);
    KeyAt(*curve, 0)->setTangentsUnified(true);
    ExpectHandle(end, 0, -1, "and 1 long where it had none");
}

TEST(Tangent, WeightedHandlesStayAsSet) {
    const auto curve = CurveThrough({{0, 0}, {3, 5}});
    const auto out = KeyAt(*curve, 0)->getOutTangent();
    const auto in = KeyAt(*curve, 1)->getInTangent();
    out->setWeighted(true);
    in->setWeighted(true);
    out->set(-1, 1);
    ExpectHandle(out, 0, 1, "a handle never points across its key");
    in->set(1, 1);
    ExpectHandle(in, 0, 1);
    out->set(3, 4);
    EXPECT_DOUBLE_EQ(out->getWeight(), 5);
    out->setWeight(10);
    ExpectHandle(out, 6, 8);
    out->setWeight(0);
    EXPECT_NEAR(out->getWeight(), 1e-05, 1e-17);
    out->setWeight(-3);
    EXPECT_NEAR(out->getWeight(), 1e-05, 1e-17);
    for (const auto& [tangent, side] : {std::pair(out, 1.0), {in, -1.0}}) {
        tangent->set(0, 0);
        tangent->setWeight(2);
        ExpectHandle(tangent, 2 * side, 0, "a handle without direction becomes flat");
        tangent->set(0, 0);
        tangent->setAngle(0);
        ExpectHandle(tangent, side, 0, "and one without length becomes 1 long");
    }

    out->set(3, 4);
    out->setWeightLocked(true);
    out->set(10, 0);
    ExpectHandle(out, 5, 0, "locked: the length stays");
    out->setWeight(1);
    ExpectHandle(out, 5, 0);
    out->setAngle(std::atan2(3, 4));
    ExpectHandle(out, 4, 3);
    KeyAt(*curve, 1)->setX(30);
    ExpectHandle(out, 4, 3);
    EXPECT_NEAR(out->getAngle(), std::atan2(3, 4), 1e-12);
    in->setAngle(-1.2);
    EXPECT_NEAR(in->getAngle(), -1.2, 1e-12) << "of one line through the key, both angles are equal";
    EXPECT_LT(in->getX(), 0);
    out->setAngle(3); // points across the key: turned by half a turn
    EXPECT_NEAR(out->getAngle(), 3 - std::acos(-1.0), 1e-12);
    out->setAngle(std::atan2(3, 4));

    out->setWeighted(false);
    ExpectHandle(out, 10, 7.5, "unweighted again: a third, same slope");
}

TEST(Tangent, UnifiedFixedTangentsFollowEachOther) {
    const auto curve = CurveThrough({{0, 0}, {3, 0}, {9, 0}});
    const auto key = KeyAt(*curve, 1);
    const auto in = key->getInTangent();
    const auto out = key->getOutTangent();
    out->set(2, 4);
    Recorder recorder;
    curve->subscribe(recorder);
    key->setTangentsUnified(true);
    ExpectHandle(in, -1, -2, "switching on aligns the in tangent");
    EXPECT_THAT(recorder.take(), ElementsAre("key 1 unified", "tangent 1.in"));

    in->set(-1, 1);
    ExpectHandle(out, 2, -2);
    EXPECT_THAT(recorder.take(), ElementsAre("tangent 1.in", "tangent 1.out"));

    in->setWeighted(true);
    in->set(-3, -4);
    EXPECT_THAT(recorder.take(), ElementsAre("tangent 1.in weighted", "tangent 1.in", "tangent 1.out"));
    ExpectHandle(out, 2, 2 * 4.0 / 3);
    out->set(2, 0);
    ExpectHandle(in, -5, 0, "the weighted side keeps its weight");

    out->setType(Tangent::Linear); // towards (9, 0): flat
    KeyAt(*curve, 2)->setY(6);
    ExpectHandle(in, -5 / std::sqrt(2.0), -5 / std::sqrt(2.0), "a fixed side follows an automatic one");
    in->set(-1, 0);
    ExpectHandle(out, 2, 2, "but not the reverse");
    out->setType(Tangent::Fixed);
    ExpectHandle(out, 2, 0, "before it is fixed itself");

    Tangent::create(key->getRightSegment(), false)->set(2, 2);
    ExpectHandle(in, -1, 0, "one made by hand is not the key's");
}

TEST(Tangent, SettersIgnoreWhatIsNotFiniteOrUnknown) {
    const auto curve = CurveThrough({{0, 0}, {3, 5}});
    const auto out = KeyAt(*curve, 0)->getOutTangent();
    Recorder recorder;
    curve->subscribe(recorder);
    for (const double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
        out->set(bad, 1);
        out->set(1, bad);
        out->setAngle(bad);
        out->setWeight(bad);
    }
    out->setType(7);
    out->setType(255);
    out->set(1, 5e-08);            // within the tolerance of the stored handle
    out->set(1e-07 * 1.01, 1e308); // the slope is beyond every double
    EXPECT_THAT(recorder.heard, IsEmpty());
    EXPECT_EQ(out->get(), Vector2D<double>(1, 0));
    EXPECT_EQ(out->getType(), Tangent::Fixed);
}

TEST(Tangent, AssignmentCopiesWithoutRecomputing) {
    const auto curve = CurveThrough({{0, 0}, {3, 5}, {9, 9}});
    const auto from = KeyAt(*curve, 0)->getOutTangent();
    from->setWeighted(true);
    from->set(7, 8);
    from->setProperty("a", "1");
    const auto to = KeyAt(*curve, 1)->getInTangent();
    to->setProperty("b", "2");
    Recorder recorder;
    curve->subscribe(recorder);
    *to = *from;
    EXPECT_EQ(to->get(), Vector2D<double>(-7, -8)) << "through the key, so that the slope stays";
    EXPECT_TRUE(to->isWeighted() && to->isInTangent());
    EXPECT_THAT(recorder.take(),
                ElementsAre("tangent 1.in", "tangent 1.in weighted", "tangent 1.in b=", "tangent 1.in a=1"));
    *to = *from;
    EXPECT_THAT(recorder.heard, IsEmpty());
}

} // namespace
