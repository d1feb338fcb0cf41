#include "support/Basics.h"
#include "tests/selection/Parts.h"

namespace {

using namespace Test;

// The order of the walk, written down a second time: by curve and segment, without an iterator.
Names expectedNames(const FCurveContainer& container) {
    Names names;
    for (const FCurve& curve : container) {
        const std::string name = curve.getName();
        names.push_back(name);
        const auto size = static_cast<int>(curve.size());
        for (int i = 0; i < size; ++i) {
            const Segment& segment = *std::next(curve.begin(), i);
            names.push_back(name + ".segment" + std::to_string(i));
            const auto kind = segment.getInterpolator();
            const bool bentHere = kind && kind->usesTangents();
            if (bentHere && i > 0) names.push_back(name + ".out" + std::to_string(i - 1));
            if (bentHere && i + 1 < size) names.push_back(name + ".in" + std::to_string(i));
            if (i + 1 < size) names.push_back(name + ".key" + std::to_string(i));
        }
    }
    return names;
}

std::shared_ptr<FCurve> makeMixed(const char* name, const std::vector<int>& kinds) {
    auto curve = makeCurve(name, static_cast<int>(kinds.size()) - 1, nullptr);
    int i = 0;
    for (Segment& segment : *curve) {
        const int kind = kinds[static_cast<std::size_t>(i++)];
        segment.setInterpolator(kind == 2 ? bent() : kind == 1 ? straight() : nullptr);
    }
    return curve;
}

struct Exhibit {
    const char* name;
    std::vector<std::vector<int>> curves; // per segment: 0 no interpolator, 1 straight, 2 bent
};

class HitRecordIteratorTest : public testing::TestWithParam<Exhibit> {
protected:
    void SetUp() override {
        container = FCurveContainer::create();
        for (const auto& kinds : GetParam().curves)
            container->addCurve(makeMixed(std::string(1, static_cast<char>('a' + container->size())).c_str(), kinds));
    }
    std::shared_ptr<FCurveContainer> container;
};

TEST_P(HitRecordIteratorTest, YieldsEveryPartInOrderForwardsAndBackwards) {
    Names expected = expectedNames(*container);
    const auto first = HitRecordIterator::begin(*container);
    const auto last = HitRecordIterator::end(*container);
    EXPECT_EQ(namesOf(first, last), expected);

    const FCurveContainer& constant = *container;
    EXPECT_EQ(namesOf(ConstHitRecordIterator::begin(constant), ConstHitRecordIterator::end(constant)), expected);
    EXPECT_EQ(ConstHitRecordIterator(first), ConstHitRecordIterator::begin(constant));

    std::reverse(expected.begin(), expected.end());
    EXPECT_EQ(namesOf(std::make_reverse_iterator(last), std::make_reverse_iterator(first)), expected);
}

TEST_P(HitRecordIteratorTest, StepsAreEachOthersInverseAndRecordsAgree) {
    const auto first = HitRecordIterator::begin(*container);
    const auto last = HitRecordIterator::end(*container);
    for (auto it = first; it != last; ++it) {
        SCOPED_TRACE(nameOf(*it));
        EXPECT_EQ(it->getType(), it.getType());
        EXPECT_EQ(*it, *it.operator->());
        const HitRecord record = *it;
        auto next = it;
        EXPECT_EQ(next++, it);
        EXPECT_NE(next, it);
        EXPECT_EQ(next--, std::next(it));
        EXPECT_EQ(next, it);
        EXPECT_EQ(*next, record);
        if (it != first) {
            auto there = it;
            --there;
            ++there;
            EXPECT_EQ(there, it);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Containers, HitRecordIteratorTest,
                         testing::Values(Exhibit{"none", {}}, Exhibit{"empty", {{1}}}, Exhibit{"emptyBent", {{2}}},
                                         Exhibit{"noInterpolator", {{0, 0}}}, Exhibit{"straight", {{1, 1, 1}}},
                                         Exhibit{"bent", {{2, 2, 2, 2}}}, Exhibit{"oneKeyLeft", {{2, 1}}},
                                         Exhibit{"oneKeyRight", {{1, 2}}}, Exhibit{"mixed", {{1, 2, 1, 2, 0, 2}}},
                                         Exhibit{"several", {{2}, {2, 2}, {1}, {1, 1, 2}, {2, 1, 1}, {0}}}),
                         [](const auto& tested) { return tested.param.name; });

TEST(HitRecordIterator, DefaultsAreEqualAndEndEqualsAWalkedOffOne) {
    EXPECT_EQ(HitRecordIterator(), HitRecordIterator());
    const auto container = makeContainer({makeCurve("a", 1, straight())});
    auto it = HitRecordIterator::begin(*container);
    EXPECT_EQ(it, HitRecordIterator(container->begin()));
    for (int i = 0; i < 4; ++i) {
        EXPECT_NE(it, HitRecordIterator::end(*container));
        ++it;
    }
    EXPECT_EQ(it, HitRecordIterator::end(*container));
}

TEST(HitRecordIterator, ServesTheStandardAlgorithms) {
    const auto container = makeContainer({makeCurve("a", 3, bent()), makeCurve("b", 1, straight())});
    const auto first = HitRecordIterator::begin(*container);
    const auto last = HitRecordIterator::end(*container);
    const auto isKey = [](const HitRecord& r) { return r.getType() == HitRecord::KEYFRAME; };
    EXPECT_EQ(std::count_if(first, last, isKey), 4);
    EXPECT_EQ(nameOf(*std::find_if(first, last, isKey)), "a.key0");
    const std::set<HitRecord, CompareRecord> all(first, last);
    EXPECT_EQ(static_cast<std::ptrdiff_t>(all.size()), std::distance(first, last));
    EXPECT_EQ(std::prev(last, 2), std::find_if(first, last, [](const auto& r) { return nameOf(r) == "b.key0"; }));
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
        bool operator()(const HitRecord& r) const { return r.getKeyframe() && r.getKeyframe()->getX() >= 1.0; }
    };
    using Late = FilterIterator<LateKeys, HitRecordIterator>;
    const auto end = HitRecordIterator::end(*container);
    const Late first(HitRecordIterator::begin(*container), end);
    const Late last(end, end);
    EXPECT_EQ(namesOf(first, last), (Names{"a.key1", "a.key2"}));
    EXPECT_EQ(first->getKeyframe()->getX(), 1.0);
    using LateCurves = FilterIterator<Private::CurveFilter, Late>;
    EXPECT_EQ(LateCurves(first, last), LateCurves(last, last));
    EXPECT_EQ(Late(), Late());
}

} // namespace
