#include "support/Basics.h"

using namespace Test;

namespace {

TEST(PropertyMap, AbsentAndEmptyAreTheSame) {
    PropertyMap map;
    EXPECT_FALSE(map.set("k", ""));
    EXPECT_TRUE(map.set("k", "a"));
    EXPECT_FALSE(map.set("k", "a"));
    EXPECT_TRUE(map.set("k", "b"));
    EXPECT_FALSE(map.set("l", ""));
    PropertyMap copy(map);
    EXPECT_TRUE(copy.set("k", nullptr));
    EXPECT_STREQ(copy.get("k"), "");
    EXPECT_STREQ(copy.get(nullptr), "");
    EXPECT_TRUE(copy.empty() && copy.begin() == copy.end());
    EXPECT_STREQ(map.get("k"), "b") << "copies are independent";
}

TEST(PropertyMap, OrdersKeysByUnsignedBytes) {
    PropertyMap map;
    for (const char* key : {"b", "\xC3\xA9", "ab", "a", "Z"}) map.set(key, key);
    map = map;
    map.swap(map);
    std::string order;
    for (const auto& [key, value] : map) order += key + " ";
    EXPECT_EQ(order, "Z a ab b \xC3\xA9 ");
    EXPECT_EQ(map.size(), 5u);
}

TEST(Tolerance, BoundsAreInclusiveAndNaNIsNearNothing) {
    EXPECT_EQ(GetEpsilon(), 1e-07);
    EXPECT_TRUE(Near(0, 5, 5) && Near(5, 0, 5));
    EXPECT_TRUE(NearZero(1e-07) && NearZero(-1e-07));
    EXPECT_FALSE(NearZero(2e-07) || NearZero(-2e-07));
    EXPECT_TRUE(NearEqual(1e-07, 0.0));
    EXPECT_FALSE(NearEqual(1.0, 1.0 + 1e-07)) << "the sum rounds up, and the difference with it";
    EXPECT_FALSE(NearEqual(NAN, NAN) || NearZero(NAN) || Near(INFINITY, INFINITY, 1));
}

TEST(SharedFromThis, CopiesHaveNoOwner) {
    const auto key = Keyframe::create(1, 2);
    const Keyframe copy(*key);
    EXPECT_EQ(copy.getShared(), nullptr);
    EXPECT_EQ(copy.get(), key->get());
}

} // namespace
