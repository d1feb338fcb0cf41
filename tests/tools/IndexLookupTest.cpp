#include "support/Basics.h"
#include "support/Recorder.h"

#include <climits>

namespace {

using namespace Test;

std::shared_ptr<FCurve> makeCurve(int keys) {
    auto curve = FCurve::create();
    for (int i = 0; i < keys; ++i) AddKey(*curve, i, 0, nullptr);
    return curve;
}

// Against a count along the chain, over several of the curve's blocks; some keys are taken out so that those differ.
TEST(IndexLookup, AgreesWithCountingAlongTheCurve) {
    for (const int keys : {0, 1, 2, 5, 700}) {
        SCOPED_TRACE(keys);
        const auto curve = makeCurve(keys);
        const FCurve& constant = *curve;
        for (int i = keys / 2; i < keys / 2 + keys / 5; ++i) curve->removeSegment(curve->findSegment(i));

        int i = 0;
        for (auto it = curve->begin(); it != curve->end(); ++it, ++i) {
            SCOPED_TRACE(i);
            Segment& segment = *it;
            const std::shared_ptr<Keyframe> key = segment.getRightKey();
            EXPECT_EQ(GetIndexedSegment(*curve, i).get(), &segment);
            EXPECT_EQ(GetIndexedSegment(constant, i).get(), &segment);
            EXPECT_EQ(GetIndexedSegmentIterator(*curve, i), it);
            EXPECT_EQ(GetIndexedSegmentIterator(constant, i), FCurve::const_iterator(it));
            EXPECT_EQ(GetIndexedKeyframe(*curve, i), key);
            EXPECT_EQ(GetSegmentIndex(*curve, segment), i);
            if (key) {
                EXPECT_EQ(GetKeyframeIndex(*curve, *key), i);
                EXPECT_EQ(GetIndexedTangent(*curve, 2 * i), key->getInTangent());
                EXPECT_EQ(GetIndexedTangent(*curve, 2 * i + 1), key->getOutTangent());
                EXPECT_EQ(GetTangentIndex(*curve, *key->getInTangent()), 2 * i);
                EXPECT_EQ(GetTangentIndex(*curve, *key->getOutTangent()), 2 * i + 1);
            } else {
                EXPECT_EQ(GetTangentIndex(*curve, *segment.getInTangent()), -1);
            }
        }
        EXPECT_EQ(GetTangentIndex(*curve, *curve->begin()->getOutTangent()), -1);
        EXPECT_EQ(GetIndexedKeyframe(*curve, i - 1), nullptr);
        for (const int none : {i, i + 1, -1, -2, INT_MAX, INT_MIN}) {
            SCOPED_TRACE(none);
            EXPECT_EQ(GetIndexedSegment(*curve, none), nullptr);
            EXPECT_EQ(GetIndexedSegment(constant, none), nullptr);
            EXPECT_EQ(GetIndexedSegmentIterator(*curve, none), curve->end());
            EXPECT_EQ(GetIndexedSegmentIterator(constant, none), constant.end());
            EXPECT_EQ(GetIndexedKeyframe(*curve, none), nullptr);
            EXPECT_EQ(GetIndexedTangent(*curve, none < i ? none : INT_MAX), nullptr);
        }
        EXPECT_EQ(GetIndexedTangent(*curve, 2 * (i - 1)), nullptr);
    }
}

TEST(IndexLookup, KnowsPartsByIdentityOnly) {
    const auto curve = makeCurve(3);
    const auto twin = FCurve::createCopy(*curve);
    const Segment& segment = *std::next(twin->begin());
    EXPECT_EQ(GetSegmentIndex(*curve, segment), -1);
    EXPECT_EQ(GetKeyframeIndex(*curve, *segment.getRightKey()), -1);
    EXPECT_EQ(GetTangentIndex(*curve, *segment.getInTangent()), -1);
    EXPECT_EQ(GetKeyframeIndex(*curve, Keyframe()), -1);
    EXPECT_EQ(GetTangentIndex(*curve, Tangent()), -1);

    const auto real = GetIndexedSegment(*curve, 1);
    const auto byHand = Segment::create(curve, real->getLeftKey(), nullptr, real->getRightKey());
    EXPECT_EQ(GetSegmentIndex(*curve, *byHand), -1);
    EXPECT_EQ(GetSegmentIndex(*curve, Segment()), -1);
    EXPECT_EQ(GetTangentIndex(*curve, Tangent(real, true)), -1);

    const auto removed = GetIndexedSegment(*curve, 2);
    curve->removeSegment(GetIndexedSegmentIterator(*curve, 2));
    EXPECT_EQ(GetSegmentIndex(*curve, *removed), -1);
    EXPECT_EQ(GetKeyframeIndex(*curve, *removed->getLeftKey()), -1);
    EXPECT_EQ(GetTangentIndex(*curve, *removed->getOutTangent()), -1);
    EXPECT_EQ(GetTangentIndex(*curve, *removed->getInTangent()), -1);
}

} // namespace
