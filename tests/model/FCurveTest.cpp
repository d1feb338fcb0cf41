#include "support/Basics.h"
#include "support/Invariants.h"
#include "support/RandomCurve.h"
#include "support/Recorder.h"
#include "support/SameCurve.h"

#include <atomic>
#include <random>
#include <thread>

using namespace Test;

namespace {

TEST(FCurve, InsertionCopiesTheKeyAndAtAKeyChangesNothing) {
    const auto curve = FCurve::create();
    EXPECT_STREQ(curve->begin()->getInterpolator()->getExpression(), "constant()");
    curve->begin()->setInterpolator(nullptr);
    EXPECT_EQ(curve->eval(5), 0);
    const auto key = Keyframe::create(4, 7);
    key->setTangentsUnified(true);
    key->setProperty("a", "b");
    const auto inserted = curve->insertSegment(*key, Linear::create())->getLeftKey();
    EXPECT_NE(inserted, key);
    EXPECT_TRUE(inserted->isTangentsUnified());
    EXPECT_STREQ(inserted->getProperty("a"), "b");

    AddKey(*curve, 0, 1);
    Recorder recorder;
    curve->subscribe(recorder);
    const auto position = curve->insertSegment(*Keyframe::create(4, 99), Constant::create());
    EXPECT_EQ(position->getLeftKey(), inserted);
    EXPECT_EQ(inserted->getY(), 7);
    EXPECT_STREQ(position->getInterpolator()->getExpression(), "linear()");
    EXPECT_EQ(curve->insertSegment(*Keyframe::create(-0.0, 2), nullptr)->getLeftKey()->getY(), 1);
    EXPECT_EQ(curve->size(), 3u);
    EXPECT_THAT(recorder.heard, IsEmpty());
}

TEST(FCurve, RemovalReturnsTheNextPositionAlsoWhereItRefuses) {
    const auto curve = CurveThrough({{0, 0}, {1, 1}, {2, 2}});
    const auto other = CurveThrough({{0, 0}});
    EXPECT_TRUE(curve->removeSegment(curve->begin()) == std::next(curve->begin()));
    EXPECT_TRUE(curve->removeSegment(curve->end()) == curve->end());
    EXPECT_TRUE(curve->removeSegment(FCurve::iterator()) == FCurve::iterator());
    EXPECT_TRUE(curve->removeSegment(std::next(other->begin())) == other->end());
    EXPECT_EQ(curve->size(), 4u);

    auto position = curve->removeSegment(curve->findSegment(1));
    EXPECT_EQ(position->getLeftKey()->getX(), 2);
    EXPECT_STREQ(curve->findSegment(1)->getInterpolator()->getExpression(), "linear()");
    position = curve->removeSegment(position);
    EXPECT_TRUE(position == curve->end());
    EXPECT_THAT(KeysOf(*curve), ElementsAre(0));
}

TEST(FCurve, RemovedPartsAnswerEmpty) {
    using Undo = std::function<void(std::shared_ptr<FCurve>&)>;
    const Undo ends[] = {[](auto& victim) { victim->removeSegment(victim->findSegment(1)); },
                         [](auto& victim) { victim->clear(); }, [](auto& victim) { *victim = *FCurve::create(); },
                         [](auto& victim) { victim.reset(); }};
    for (const Undo& end : ends) {
        auto victim = CurveThrough({{0, 0}, {1, 1}, {2, 2}});
        const auto key = KeyAt(*victim, 1);
        const auto segment = key->getRightSegment();
        const auto tangent = key->getOutTangent();
        end(victim);
        EXPECT_FALSE(key->getLeftSegment() || key->getRightSegment() || key->getInTangent() || key->getOutTangent()
                     || key->getOwningCurve());
        EXPECT_FALSE(segment->getOwningCurve() || segment->getRightKey() || tangent->getOwningCurve());
        EXPECT_EQ(segment->getLeftKey(), key);
        EXPECT_EQ(tangent->getOwningSegment(), segment);
        key->set(77, 78);
        tangent->set(1, 1);
        segment->setProperty("a", "b");
        EXPECT_EQ(key->getX(), 77);
    }
}

TEST(FCurve, ThreadsMayAskPartsForTheirOwnerWhileTheCurveDies) {
    for (int round = 0; round < 50; ++round) {
        auto curve = CurveThrough({{1, 0}, {2, 1}, {3, 2}});
        const auto key = KeyAt(*curve, 1);
        std::atomic<bool> started = false;
        std::thread asker([&, key, segment = key->getRightSegment(), tangent = key->getInTangent()] {
            started = true;
            while (const auto owner = key->getOwningCurve()) EXPECT_EQ(owner->size(), 4u);
            EXPECT_FALSE(segment->getOwningCurve() || tangent->getOwningCurve());
        });
        while (!started) std::this_thread::yield();
        curve.reset();
        asker.join();
        EXPECT_FALSE(key->getOwningCurve());
    }
}

// Enough keys that the index has many blocks, splits and joins.
TEST(FCurve, LargeOnesStaySoundAndKeepTheirIterators) {
    std::mt19937 random(7);
    for (const int order : {0, 1, 2}) {
        const auto curve = CurveThrough({{1000, 1}, {3000, 2}});
        const FCurve::const_iterator position = curve->findSegment(1000);
        const Segment* const segment = &*position;
        std::vector<double> xs;
        for (int i = 0; i < 5000; ++i) xs.push_back(i * 1.5 + 0.25);
        if (order == 1) std::reverse(xs.begin(), xs.end());
        if (order == 2) std::shuffle(xs.begin(), xs.end(), random);
        for (const double x : xs) AddKey(*curve, x, x);
        ASSERT_EQ(Fault(*curve), "");
        std::shuffle(xs.begin(), xs.end(), random);
        for (std::size_t i = 0; i < 4900; ++i) {
            curve->removeSegment(curve->findSegment(xs[i]));
            if (i % 700 == 0) {
                ASSERT_EQ(Fault(*curve), "") << i;
            }
        }
        EXPECT_EQ(Fault(*curve), "");
        EXPECT_EQ(curve->size(), 103u);
        EXPECT_EQ(&*position, segment);
        EXPECT_EQ(std::next(position)->getLeftKey(), position->getRightKey());
    }
}

TEST(FCurve, CopiesAreExactAndIndependent) {
    for (unsigned seed = 0; seed < 100; ++seed) {
        const auto curve = RandomCurve(seed).make();
        const auto copy = FCurve::createCopy(*curve);
        EXPECT_EQ(Fault(*copy), "") << seed;
        EXPECT_EQ(Difference(*curve, *copy), "") << seed;
        for (auto from = curve->begin(), to = copy->begin(); from != curve->end(); ++from, ++to) {
            EXPECT_NE(&*from, &*to);
            EXPECT_EQ(from->getInterpolator(), to->getInterpolator());
        }
        copy->setProperty("new", "x");
        EXPECT_STREQ(curve->getProperty("new"), "");
    }
}

TEST(FCurve, HandMadeSegmentsStayWithTheirCurveThroughASwap) {
    const auto a = CurveThrough({{0, 0}});
    auto b = FCurve::create();
    const auto segment = Segment::create(b, Keyframe::create(0, 1), Linear::create(), Keyframe::create(1, 2));
    a->swap(*b);
    EXPECT_EQ(segment->getOwningCurve(), b);
    EXPECT_EQ(segment->getInterpolator()->eval(0.5, *segment), 1.5);
    b.reset();
    EXPECT_EQ(segment->getOwningCurve(), nullptr);
}

} // namespace
