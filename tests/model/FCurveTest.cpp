#include "support/Basics.h"
#include "support/Invariants.h"
#include "support/RandomCurve.h"
#include "support/Recorder.h"
#include "support/SameCurve.h"

using namespace Test;

namespace {

TEST(FCurve, IsBornWithOneConstantSegment) {
    const auto curve = FCurve::create();
    EXPECT_EQ(curve->size(), 1u);
    EXPECT_STREQ(curve->getName(), "");
    EXPECT_EQ(curve->sizeProperties(), 0u);
    EXPECT_STREQ(curve->begin()->getInterpolator()->getExpression(), "constant()");
    EXPECT_EQ(curve->eval(5), 0);
    EXPECT_EQ(curve->eval(NAN), 0);
    curve->begin()->setInterpolator(nullptr);
    EXPECT_EQ(curve->eval(5), 0);
    EXPECT_EQ(Fault(*curve), "");
}

TEST(FCurve, InsertedKeyCopiesPositionFlagsAndProperties) {
    const auto curve = FCurve::create();
    const auto key = Keyframe::create(4, 7);
    key->setBreakdown(true);
    key->setTangentsUnified(true);
    key->setProperty("a", "b");
    const auto position = curve->insertSegment(*key, Linear::create());
    const auto inserted = position->getLeftKey();
    EXPECT_NE(inserted, key);
    EXPECT_EQ(inserted->get(), key->get());
    EXPECT_TRUE(inserted->isBreakdown() && inserted->isTangentsUnified());
    EXPECT_STREQ(inserted->getProperty("a"), "b");
    EXPECT_STREQ(position->getInterpolator()->getExpression(), "linear()");
    EXPECT_STREQ(curve->begin()->getInterpolator()->getExpression(), "constant()") << "the one before keeps its own";
}

TEST(FCurve, InsertionAtAKeyChangesNothing) {
    const auto curve = CurveThrough({{0, 0}, {4, 7}});
    Recorder recorder;
    curve->subscribe(recorder);
    const auto position = curve->insertSegment(*Keyframe::create(4, 99), Constant::create());
    EXPECT_EQ(position->getLeftKey(), KeyAt(*curve, 1));
    EXPECT_EQ(position->getLeftKey()->getY(), 7);
    EXPECT_STREQ(position->getInterpolator()->getExpression(), "linear()");
    EXPECT_EQ(curve->insertSegment(*Keyframe::create(-0.0, 1), nullptr)->getLeftKey()->getY(), 0);
    EXPECT_EQ(curve->size(), 3u);
    EXPECT_THAT(recorder.heard, IsEmpty());
}

TEST(FCurve, KeysKeepTheirTangentsThroughInsertionAndRemoval) {
    const auto curve = CurveThrough({{0, 0}, {6, 6}, {12, 0}});
    const auto tangents = [&] {
        std::vector<std::shared_ptr<Tangent>> all;
        for (int i = 0; i < 3; ++i)
            all.insert(all.end(), {KeyAt(*curve, i)->getInTangent(), KeyAt(*curve, i)->getOutTangent()});
        return all;
    };
    const auto before = tangents();
    for (const double x : {3.0, -5.0, 20.0}) {
        const std::weak_ptr<Tangent> own = AddKey(*curve, x, 1)->getInTangent();
        EXPECT_EQ(Fault(*curve), "");
        curve->removeSegment(curve->findSegment(x));
        EXPECT_EQ(Fault(*curve), "");
        EXPECT_TRUE(own.expired() || own.lock()->getOwningCurve() == nullptr);
    }
    EXPECT_EQ(tangents(), before);
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

TEST(FCurve, IteratorsSurviveEditsAroundThem) {
    const auto curve = CurveThrough({{0, 0}, {1000, 1}, {2000, 2}});
    const auto position = curve->findSegment(1000);
    const Segment* segment = &*position;
    for (int i = 1; i < 3000; ++i) AddKey(*curve, (i * 7919) % 3001 + 0.5, i);
    for (int i = 1; i < 3000; i += 2) curve->removeSegment(curve->findSegment((i * 7919) % 3001 + 0.5));
    EXPECT_EQ(&*position, segment);
    EXPECT_EQ(position->getLeftKey()->getX(), 1000);
    EXPECT_EQ(std::next(position)->getLeftKey(), position->getRightKey());
    const FCurve::const_iterator constant = position;
    EXPECT_TRUE(constant == position);
    EXPECT_EQ(Fault(*curve), "");
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

TEST(FCurve, AssignmentSwapAndClearTellOnceAndMoveTheParts) {
    const auto a = CurveThrough({{0, 0}, {1, 1}});
    const auto b = CurveThrough({{5, 5}});
    a->setName("a");
    b->setName("b");
    Recorder hearsA, hearsB;
    a->subscribe(hearsA);
    b->subscribe(hearsB);
    const auto key = KeyAt(*a, 0);
    const auto position = a->findSegment(0);
    a->swap(*b);
    EXPECT_EQ(key->getOwningCurve(), b);
    EXPECT_EQ(position->getOwningCurve(), b);
    EXPECT_STREQ(b->getName(), "a");
    EXPECT_EQ(Fault(*a) + Fault(*b), "");
    EXPECT_THAT(hearsA.take(), ElementsAre("curve"));
    EXPECT_THAT(hearsB.take(), ElementsAre("curve"));
    a->swap(*a);
    *a = *a;
    EXPECT_THAT(hearsA.take(), IsEmpty());

    *a = *b;
    EXPECT_THAT(hearsA.take(), ElementsAre("curve"));
    EXPECT_THAT(KeysOf(*a), ElementsAre(0, 1));
    EXPECT_NE(KeyAt(*a, 0), key);
    key->setY(9);
    EXPECT_THAT(hearsA.take(), IsEmpty());
    EXPECT_THAT(hearsB.take(), ElementsAre("key 0 moved"));

    a->clear();
    a->clear();
    EXPECT_STREQ(a->getName(), "a");
    EXPECT_EQ(a->size(), 1u);
    EXPECT_THAT(hearsA.take(), ElementsAre("curve", "curve"));
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

TEST(FCurve, CompareKeysPutsNullFirst) {
    const Keyframe zero;
    const auto one = Keyframe::create(1, 0);
    const FCurve::CompareKeys before;
    EXPECT_TRUE(before(nullptr, &zero) && before(&zero, one.get()));
    EXPECT_FALSE(before(&zero, nullptr) || before(nullptr, nullptr) || before(one.get(), &zero)
                 || before(&zero, &zero));
}

} // namespace
