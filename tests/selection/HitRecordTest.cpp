#include "tests/selection/Parts.h"

namespace {

using namespace Test;

struct HitRecordTest : testing::Test {
    std::shared_ptr<FCurve> curve = makeCurve("a", 2, bent());
    std::shared_ptr<Segment> segment = segmentOf(*curve, 1).getShared();
    std::shared_ptr<Keyframe> key = segment->getRightKey();
    std::shared_ptr<Tangent> tangent = segment->getInTangent();
};

TEST_F(HitRecordTest, NamesOnePart) {
    using R = HitRecord;
    const struct {
        HitRecord::Type type;
        HitRecord record;
        std::function<void(HitRecord&)> reset;
        std::shared_ptr<FCurve> curve;
        std::shared_ptr<Segment> segment;
        std::shared_ptr<Keyframe> key;
        std::shared_ptr<Tangent> tangent;
    } rows[] = {
        {R::NONE, {}, [](auto& r) { r.reset(); }, {}, {}, {}, {}},
        {R::CURVE, {curve}, [&](auto& r) { r.reset(curve); }, curve, {}, {}, {}},
        {R::SEGMENT, {segment}, [&](auto& r) { r.reset(segment); }, curve, segment, {}, {}},
        {R::KEYFRAME, {key}, [&](auto& r) { r.reset(key); }, curve, {}, key, {}},
        {R::TANGENT, {tangent, true}, [&](auto& r) { r.reset(tangent, true); }, curve, {}, {}, tangent},
        {R::TANGENT_UNFLAGGED, {tangent, false}, [&](auto& r) { r.reset(tangent, false); }, curve, {}, {}, tangent},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        HitRecord pointed;
        row.reset(pointed);
        EXPECT_EQ(pointed, row.record);
        for (const auto& other : rows) EXPECT_EQ(row.record != other.record, &row != &other);
        const auto check = [&](const auto& record) {
            EXPECT_EQ(record.getType(), row.type);
            EXPECT_EQ(record.getCurve(), row.curve);
            EXPECT_EQ(record.getSegment(), row.segment);
            EXPECT_EQ(record.getKeyframe(), row.key);
            EXPECT_EQ(record.getTangent(), row.tangent);
        };
        check(row.record);
        check(ConstHitRecord(row.record));
    }
}

TEST_F(HitRecordTest, ResetLetsItsPartGoButKeepsATangentOutOfReach) {
    std::shared_ptr<FCurve> other = makeCurve("b", 0, straight());
    std::weak_ptr<FCurve> dead = other;
    HitRecord record(std::move(other));
    record.reset();
    EXPECT_EQ(record, HitRecord());
    EXPECT_TRUE(dead.expired());

    const auto lone = Tangent::create(nullptr, true); // of no curve, so that nobody else shares its owner
    const long before = lone.use_count();
    record.reset(lone, true);
    record.reset();
    EXPECT_EQ(record.getTangent(), nullptr);
    record.reset(key);
    EXPECT_EQ(record.getTangent(), nullptr);
    EXPECT_EQ(lone.use_count(), before + 1);
    record.reset(curve->begin()->getInTangent(), true);
    EXPECT_EQ(lone.use_count(), before);
}

TEST_F(HitRecordTest, OrderIsByTypeThenByAddress) {
    std::vector<HitRecord> records{HitRecord(), HitRecord()};
    for (int i = 0; i < 4; ++i) {
        const auto other = makeCurve("b", 2, bent());
        for (HitRecord& part : partsOf(*other, true)) {
            if (part.isTangent()) records.emplace_back(part.getTangent(), false);
            records.push_back(std::move(part));
        }
    }
    const auto addressOf = [](const HitRecord& r) -> const void* {
        if (r.getTangent()) return r.getTangent().get();
        if (r.getKeyframe()) return r.getKeyframe().get();
        if (r.getSegment()) return r.getSegment().get();
        return r.getCurve().get();
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
