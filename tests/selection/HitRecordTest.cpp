#include "tests/selection/Parts.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using namespace Test;

struct HitRecordTest : testing::Test {
    std::shared_ptr<FCurve> curve = makeCurve("a", 2, bent());
    std::shared_ptr<Segment> segment = segmentOf(*curve, 1).getShared();
    std::shared_ptr<Keyframe> key = segment->getRightKey();
    std::shared_ptr<Tangent> tangent = segment->getInTangent();
};

TEST_F(HitRecordTest, NamesOnePart) {
    const struct {
        HitRecord record;
        HitRecord::Type type;
        bool hasCurve, hasSegment, hasKeyframe, hasTangent;
    } rows[] = {
        {HitRecord(), HitRecord::NONE, false, false, false, false},
        {HitRecord(curve), HitRecord::CURVE, true, false, false, false},
        {HitRecord(segment), HitRecord::SEGMENT, true, true, false, false},
        {HitRecord(key), HitRecord::KEYFRAME, true, false, true, false},
        {HitRecord(tangent, true), HitRecord::TANGENT, true, false, false, true},
        {HitRecord(tangent, false), HitRecord::TANGENT_UNFLAGGED, true, false, false, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        const ConstHitRecord twin(row.record);
        HitRecord pointed;
        switch (row.type) {
        case HitRecord::CURVE:
            pointed.reset(curve);
            break;
        case HitRecord::SEGMENT:
            pointed.reset(segment);
            break;
        case HitRecord::KEYFRAME:
            pointed.reset(key);
            break;
        case HitRecord::TANGENT:
            pointed.reset(tangent, true);
            break;
        case HitRecord::TANGENT_UNFLAGGED:
            pointed.reset(tangent, false);
            break;
        case HitRecord::NONE:
            break;
        }
        EXPECT_EQ(pointed, row.record);
        EXPECT_EQ(row.record.getType(), row.type);
        EXPECT_EQ(row.record.getCurve(), row.hasCurve ? curve : nullptr);
        EXPECT_EQ(row.record.getSegment(), row.hasSegment ? segment : nullptr);
        EXPECT_EQ(row.record.getKeyframe(), row.hasKeyframe ? key : nullptr);
        EXPECT_EQ(row.record.getTangent(), row.hasTangent ? tangent : nullptr);
        EXPECT_EQ(twin.getType(), row.type);
        EXPECT_EQ(twin.getCurve(), row.record.getCurve());
        EXPECT_EQ(twin.getSegment(), row.record.getSegment());
        EXPECT_EQ(twin.getKeyframe(), row.record.getKeyframe());
        EXPECT_EQ(twin.getTangent(), row.record.getTangent());
        EXPECT_EQ(twin, row.record);
    }
}

TEST_F(HitRecordTest, ResetLetsItsPartGoButKeepsATangentOutOfReach) {
    std::shared_ptr<FCurve> other = makeCurve("b", 0, straight());
    std::weak_ptr<FCurve> dead = other;
    HitRecord record(std::move(other));
    record.reset();
    EXPECT_EQ(record, HitRecord());
    EXPECT_TRUE(dead.expired());

    const long before = tangent.use_count();
    record.reset(tangent, true);
    record.reset();
    EXPECT_EQ(record.getTangent(), nullptr);
    record.reset(key);
    EXPECT_EQ(record.getTangent(), nullptr);
    EXPECT_EQ(tangent.use_count(), before + 1);
    record.reset(curve->begin()->getInTangent(), true);
    EXPECT_EQ(tangent.use_count(), before);
}

TEST_F(HitRecordTest, KeepsAPartThatLeftItsCurve) {
    const HitRecord record(key);
    std::weak_ptr<Keyframe> weak = key;
    curve->removeSegment(std::next(curve->begin(), 2));
    key.reset();
    EXPECT_FALSE(weak.expired());
    EXPECT_EQ(record.getCurve(), nullptr);
    EXPECT_EQ(record.getKeyframe()->getX(), 1.0);
}

TEST_F(HitRecordTest, EqualityIsIdentityOfTypeAndObject) {
    EXPECT_EQ(HitRecord(), HitRecord());
    EXPECT_NE(HitRecord(), HitRecord(curve));
    EXPECT_EQ(HitRecord(key), HitRecord(key));
    EXPECT_NE(HitRecord(key), HitRecord(keyOf(*curve, 0).getShared()));
    EXPECT_NE(HitRecord(tangent, true), HitRecord(tangent, false));
    EXPECT_NE(ConstHitRecord(tangent, true), ConstHitRecord(tangent, false));
}

TEST_F(HitRecordTest, OrderIsByTypeThenByAddress) {
    std::vector<HitRecord> records{HitRecord(), HitRecord()};
    for (int i = 0; i < 8; ++i) {
        const auto other = makeCurve("b", 3, bent());
        records.emplace_back(other);
        for (Segment& s : *other) {
            records.emplace_back(s.getShared());
            records.emplace_back(s.getInTangent(), true);
            records.emplace_back(s.getInTangent(), false);
            if (s.getRightKey()) records.emplace_back(s.getRightKey());
        }
    }
    const auto addressOf = [](const HitRecord& r) -> const void* {
        switch (r.getType()) {
        case HitRecord::CURVE:
            return r.getCurve().get();
        case HitRecord::SEGMENT:
            return r.getSegment().get();
        case HitRecord::KEYFRAME:
            return r.getKeyframe().get();
        case HitRecord::NONE:
            return nullptr;
        default:
            return r.getTangent().get();
        }
    };
    for (const HitRecord& a : records) {
        for (const HitRecord& b : records) {
            const bool before = std::pair(a.getType(), addressOf(a)) < std::pair(b.getType(), addressOf(b));
            EXPECT_EQ(CompareRecord()(a, b), before);
            EXPECT_EQ(CompareRecord()(ConstHitRecord(a), ConstHitRecord(b)), before);
        }
    }
}

} // namespace
