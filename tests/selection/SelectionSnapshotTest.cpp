#include "support/Basics.h"
#include "support/Parts.h"

#include <random>

namespace {

using namespace Test;

struct SelectionSnapshotTest : testing::Test {
    std::shared_ptr<FCurve> a = makeCurve("a", 3, bent());
    std::shared_ptr<FCurve> b = makeCurve("b", 2, straight());
    std::shared_ptr<FCurveContainer> container = makeContainer({a, b});
    Selection selection{container};

    SelectionSnapshot take(const std::vector<HitRecord>& parts) {
        SelectionSnapshot().restore(selection);
        for (const HitRecord& part : parts) selection.select(part);
        return SelectionSnapshot(selection);
    }
    HitRecord key(FCurve& curve, int i) { return HitRecord(keyOf(curve, i).getShared()); }
};

TEST_F(SelectionSnapshotTest, FollowsAKeyButDoesNotReplaceARemovedOne) {
    const SelectionSnapshot snapshot = take({key(*a, 0), key(*a, 2)});
    selection.clear();
    addKey(*a, 9.0, 0.0, bent());
    snapshot.restore(selection);
    EXPECT_EQ(namesOf(selection), (Names{"a.key1", "a.key3"})) << "the same keys, counted anew";
    selection.clear();
    a->removeSegment(a->findSegment(12.0));
    EXPECT_EQ(snapshot.restore(selection), 1U);
    EXPECT_EQ(namesOf(selection), (Names{"a.key1"}));
    EXPECT_EQ(snapshot.size(), 2U);
}

TEST_F(SelectionSnapshotTest, FindsPartsOfARebuiltCurveByNumber) {
    const SelectionSnapshot snapshot = take({HitRecord(a), key(*a, 1), HitRecord(segmentOf(*a, 2).getInTangent(), true),
                                             HitRecord(segmentOf(*a, 3).getShared())});
    const auto held = keyOf(*a, 1).getShared(); // outside any curve from now on
    *a = *makeCurve("a", 3, bent());
    EXPECT_EQ(snapshot.restore(selection), 0U);
    EXPECT_EQ(namesOf(selection), (Names{"a", "a.key1", "a.in2", "a.segment3"}));
    EXPECT_EQ(SelectionSnapshot(selection), snapshot);
    *a = *makeCurve("a", 1, bent());
    EXPECT_EQ(snapshot.restore(selection), 3U);
    EXPECT_EQ(namesOf(selection), (Names{"a"}));
}

TEST_F(SelectionSnapshotTest, FollowsSwappedPartsAndReturningCurves) {
    const SelectionSnapshot snapshot = take({key(*a, 2), key(*b, 0)});
    a->swap(*b);
    snapshot.restore(selection);
    EXPECT_TRUE(selection.isSelected(keyOf(*b, 2)));
    a->swap(*b);

    container->removeCurve(container->begin());
    EXPECT_EQ(snapshot.restore(selection), 1U);
    EXPECT_EQ(namesOf(selection), (Names{"b.key0"}));
    container->addCurve(a); // the host kept it
    EXPECT_EQ(snapshot.restore(selection), 0U);
    EXPECT_EQ(namesOf(selection), (Names{"b.key0", "a.key2"}));

    const std::weak_ptr<FCurve> watched = a;
    container->clear();
    a.reset();
    EXPECT_TRUE(watched.expired()) << "a snapshot keeps nothing alive";
    EXPECT_EQ(snapshot.restore(selection), 2U);
}

// As sets of records combine, so do snapshots.
TEST_F(SelectionSnapshotTest, CombinesAsSetsDo) {
    std::mt19937 random(5);
    const Records all = [this] {
        for (FCurve& curve : *container) SelectCurveCompletely(selection, curve);
        Records records;
        SelectionSnapshot(selection).resolve(*container, records);
        return records;
    }();
    ASSERT_EQ(all.size(), 1U + 4U + 3U + 6U + 1U + 3U + 2U + 4U);
    const auto some = [&] {
        Records records;
        const int only = static_cast<int>(random() % 3); // curve, or any
        for (const HitRecord& record : all)
            if (random() % 2 == 0 && (only == 2 || record.getCurve().get() == &*std::next(container->begin(), only)))
                records.insert(record);
        return records;
    };
    const auto snapshotOf = [&](const Records& records) {
        return take(std::vector<HitRecord>(records.begin(), records.end()));
    };
    const CompareRecord before;
    for (int i = 0; i < 50; ++i) {
        const Records left = some();
        const Records right = i % 5 == 0 ? left : some();
        Records both, rest;
        std::set_union(left.begin(), left.end(), right.begin(), right.end(), std::inserter(both, both.end()), before);
        std::set_difference(left.begin(), left.end(), right.begin(), right.end(), std::inserter(rest, rest.end()),
                            before);
        SelectionSnapshot merged = snapshotOf(left);
        SelectionSnapshot subtracted = merged;
        const SelectionSnapshot other = snapshotOf(right);
        EXPECT_EQ(merged == other, left == right);
        merged.merge(other);
        subtracted.subtract(other);
        EXPECT_EQ(merged, snapshotOf(both));
        EXPECT_EQ(subtracted, snapshotOf(rest));
        EXPECT_EQ(merged.size(), both.size());
        Records found;
        EXPECT_EQ(subtracted.resolve(*container, found), 0U);
        EXPECT_EQ(found, rest);
    }
}

} // namespace
