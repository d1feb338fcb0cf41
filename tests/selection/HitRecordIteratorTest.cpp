// What it yields, forwards and backwards, HostTest.cpp compares with a walk of its own.

#include "tests/selection/Parts.h"

namespace {

using namespace Test;

TEST(HitRecordIterator, StepsAndRecordsAgree) {
    EXPECT_EQ(HitRecordIterator(), HitRecordIterator());
    const auto container = makeContainer({makeCurve("a", 1, bent()), makeCurve("b", 1, straight())});
    const FCurveContainer& constant = *container;
    auto it = HitRecordIterator::begin(*container);
    ConstHitRecordIterator constIt = it;
    EXPECT_EQ(constIt, ConstHitRecordIterator::begin(constant));
    for (const HitRecord& part : partsOf(*container, false)) {
        SCOPED_TRACE(nameOf(part));
        EXPECT_NE(it, HitRecordIterator::end(*container));
        EXPECT_EQ(it.getType(), part.getType());
        EXPECT_EQ(*it.operator->(), part);
        EXPECT_EQ(*it, part);
        EXPECT_EQ(*constIt, ConstHitRecord(part));
        const auto here = it++;
        EXPECT_NE(here, it);
        EXPECT_EQ(*here, part);
        auto back = it;
        EXPECT_EQ(back--, it);
        EXPECT_EQ(back, here);
        EXPECT_EQ(*back.operator->(), part) << "a record is made anew after a step";
        ++constIt;
    }
    EXPECT_EQ(it, HitRecordIterator::end(*container));
    EXPECT_EQ(constIt, ConstHitRecordIterator::end(constant));
}

TEST(HitRecordIterator, StandsItsGroundWhenItsKeyIsRemoved) {
    const auto curve = makeCurve("a", 2, straight());
    const auto container = makeContainer({curve});
    auto it = std::next(HitRecordIterator::begin(*container), 4);
    ASSERT_EQ(nameOf(*it), "a.key1");
    curve->removeSegment(std::next(curve->begin(), 2));
    EXPECT_STREQ(it.getProperty("fc_sel"), "");
    EXPECT_EQ(++it, HitRecordIterator::end(*container));
}

TEST(FilterIterator, AsksPlainFiltersForElementsAndStacks) {
    const auto container = makeContainer({makeCurve("a", 3, straight())});
    struct LateKeys { // a host's own filter
        bool operator()(const HitRecord& r) const { return r.getKeyframe() && r.getKeyframe()->getX() >= 11.0; }
    };
    using Late = FilterIterator<LateKeys, HitRecordIterator>;
    const auto end = HitRecordIterator::end(*container);
    const Late first(HitRecordIterator::begin(*container), end);
    const Late last(end, end);
    EXPECT_EQ(nameOf(*first), "a.key1");
    EXPECT_EQ(first->getKeyframe()->getX(), 11.0);
    EXPECT_EQ(std::distance(first, last), 2);
    using LateCurves = FilterIterator<Private::CurveFilter, Late>;
    EXPECT_EQ(LateCurves(first, last), LateCurves(last, last));
}

} // namespace
