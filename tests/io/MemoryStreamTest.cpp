#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <utility>

using namespace Test;

TEST(MemoryStream, CopiesAndMovesBytesAndPosition) {
    MemoryStream stream = StreamOf("abcd");
    stream.setPosition(1);

    MemoryStream copy(stream);
    copy.writeData("X", 1);
    EXPECT_EQ(BytesOf(copy), "aXcd");
    EXPECT_EQ(BytesOf(stream), "abcd");
    EXPECT_EQ(stream.getPosition(), 1);

    stream = copy;
    EXPECT_EQ(BytesOf(stream), "aXcd");
    EXPECT_EQ(stream.getPosition(), 2);
    const MemoryStream& itself = stream;
    stream = itself;
    EXPECT_EQ(BytesOf(stream), "aXcd");

    MemoryStream moved(std::move(copy));
    EXPECT_EQ(BytesOf(moved), "aXcd");
    EXPECT_EQ(moved.getPosition(), 2);
    EXPECT_EQ(copy.getSize(), 0); // NOLINT(bugprone-use-after-move): promised to be empty
    EXPECT_EQ(copy.getPosition(), 0);

    moved.clear();
    EXPECT_EQ(moved.getSize(), 0);
    EXPECT_EQ(moved.getPosition(), 0);
    moved = std::move(stream);
    EXPECT_EQ(BytesOf(moved), "aXcd");
}
