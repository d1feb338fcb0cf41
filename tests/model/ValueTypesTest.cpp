#include "support/Basics.h"

#include <cstring>

using namespace Test;

namespace {

TEST(PropertyMap, AbsentAndEmptyAreTheSame) {
    PropertyMap map;
    EXPECT_STREQ(map.get("k"), "");
    EXPECT_FALSE(map.set("k", ""));
    EXPECT_TRUE(map.empty());

    EXPECT_TRUE(map.set("k", "a"));
    EXPECT_FALSE(map.set("k", "a"));
    EXPECT_TRUE(map.set("k", "b"));
    EXPECT_STREQ(map.get("k"), "b");
    EXPECT_TRUE(map.set("k", ""));
    EXPECT_EQ(map.size(), 0u);
    EXPECT_TRUE(map.begin() == map.end());
}

TEST(PropertyMap, OrdersKeysByUnsignedBytes) {
    PropertyMap map;
    for (const char* key : {"b", "\xC3\xA9", "ab", "a", "Z"}) map.set(key, key);
    std::string order;
    for (const auto& [key, value] : map) order += key + " ";
    EXPECT_EQ(order, "Z a ab b \xC3\xA9 ");
}

TEST(PropertyMap, CopiesAreIndependentAndNullIsEmpty) {
    PropertyMap map;
    map.set("k", "1");
    PropertyMap copy(map);
    copy.set("k", "2");
    EXPECT_STREQ(map.get("k"), "1");
    map.swap(copy);
    EXPECT_STREQ(map.get("k"), "2");
    map.swap(map);
    EXPECT_STREQ(map.get("k"), "2");
    map = map;
    EXPECT_STREQ(map.get("k"), "2");

    EXPECT_STREQ(map.get(nullptr), "");
    EXPECT_TRUE(map.set("k", nullptr));
    EXPECT_TRUE(map.empty());
}

TEST(Tolerance, BoundsAreInclusiveAndNaNIsNear_Nothing) {
    EXPECT_EQ(GetEpsilon(), 1e-07);
    EXPECT_TRUE(Near(0, 5, 5));
    EXPECT_TRUE(NearZero(1e-07) && NearZero(-1e-07));
    EXPECT_FALSE(NearZero(2e-07));
    EXPECT_TRUE(NearEqual(1e-07, 0.0));
    EXPECT_FALSE(NearEqual(1.0, 1.0 + 1e-07)) << "the sum rounds up, and the difference with it";
    EXPECT_FALSE(NearEqual(NAN, NAN) || NearZero(NAN) || Near(INFINITY, INFINITY, 1));
}

TEST(SharedFromThis, CopiesHaveNoOwner) {
    const auto key = Keyframe::create(1, 2);
    EXPECT_EQ(key->getShared(), key);
    Keyframe copy(*key);
    EXPECT_EQ(copy.getShared(), nullptr);
    EXPECT_EQ(copy.get(), key->get());
}

TEST(Exception, NamesItsClass) {
    EXPECT_STREQ(Exception().what(), "VEM_FN::FCurveLib::Exception");
    EXPECT_THROW(throw Exception(), std::exception);
}

} // namespace
