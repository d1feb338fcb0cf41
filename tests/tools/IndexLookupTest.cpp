#include "support/Basics.h"
#include "support/Recorder.h"

#include <climits>

using namespace Test;

namespace {

// Against a count along the chain, over several of the curve's blocks; some keys are taken out so that those differ.
TEST(IndexLookup, AgreesWithCountingAlongTheCurve) {
    for (const int keys : {0, 1, 5, 700}) {
        SCOPED_TRACE(keys);
        const auto curve = FCurve::create();
        for (int i = 0; i < keys; ++i) AddKey(*curve, i, 0, nullptr);
        const FCurve& constant = *curve;
        for (int i = keys / 2; i < keys / 2 + keys / 5; ++i) curve->removeSegment(curve->findSegment(i));

        int i = 0;
        for (auto it = curve->begin(); it != curve->end(); ++it, ++i) {
            const auto key = it->getRightKey();
            EXPECT_EQ(GetIndexedSegment(*curve, i), it->getShared());
            EXPECT_EQ(GetIndexedSegment(constant, i), it->getShared());
            EXPECT_EQ(GetIndexedSegmentIterator(*curve, i), it);
            EXPECT_EQ(GetIndexedSegmentIterator(constant, i), FCurve::const_iterator(it));
            EXPECT_EQ(GetIndexedKeyframe(*curve, i), key);
            EXPECT_EQ(GetIndexedTangent(*curve, 2 * i), key ? key->getInTangent() : nullptr);
            EXPECT_EQ(GetIndexedTangent(*curve, 2 * i + 1), key ? key->getOutTangent() : nullptr);
            EXPECT_EQ(GetSegmentIndex(*curve, *it), i);
            EXPECT_EQ(GetTangentIndex(*curve, *it->getInTangent()), key ? 2 * i : -1);
            EXPECT_EQ(GetTangentIndex(*curve, *it->getOutTangent()), i > 0 ? 2 * i - 1 : -1);
            EXPECT_TRUE(!key || GetKeyframeIndex(*curve, *key) == i);
        }
        for (const int none : {i, -1, INT_MAX, INT_MIN}) {
            EXPECT_EQ(GetIndexedSegment(*curve, none), nullptr);
            EXPECT_EQ(GetIndexedSegment(constant, none), nullptr);
            EXPECT_EQ(GetIndexedSegmentIterator(*curve, none), curve->end());
            EXPECT_EQ(GetIndexedSegmentIterator(constant, none), constant.end());
            EXPECT_EQ(GetIndexedKeyframe(*curve, none), nullptr);
            EXPECT_EQ(GetIndexedTangent(*curve, none == i ? 2 * i : none), nullptr);
        }
    }
}

TEST(IndexLookup, KnowsPartsByIdentityOnly) {
    const auto curve = CurveThrough({{0, 0}, {1, 0}, {2, 0}});
    const auto expectUnknown = [&](const Segment& segment) {
        EXPECT_EQ(GetSegmentIndex(*curve, segment), -1);
        EXPECT_EQ(GetTangentIndex(*curve, *segment.getInTangent()), -1);
        EXPECT_EQ(GetTangentIndex(*curve, *segment.getOutTangent()), -1);
    };
    const auto twin = FCurve::createCopy(*curve);
    expectUnknown(*GetIndexedSegment(*twin, 1));
    EXPECT_EQ(GetKeyframeIndex(*curve, *KeyAt(*twin, 1)), -1);
    EXPECT_EQ(GetKeyframeIndex(*curve, Keyframe()), -1);
    EXPECT_EQ(GetTangentIndex(*curve, Tangent()), -1);

    const auto real = GetIndexedSegment(*curve, 1);
    const auto byHand = Segment::create(curve, real->getLeftKey(), nullptr, real->getRightKey());
    EXPECT_EQ(GetSegmentIndex(*curve, *byHand), -1);
    EXPECT_EQ(GetSegmentIndex(*curve, Segment()), -1);
    EXPECT_EQ(GetTangentIndex(*curve, Tangent(real, true)), -1);

    const auto removed = GetIndexedSegment(*curve, 2);
    curve->removeSegment(GetIndexedSegmentIterator(*curve, 2));
    expectUnknown(*removed);
    EXPECT_EQ(GetKeyframeIndex(*curve, *removed->getLeftKey()), -1);
}

} // namespace
