#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <climits>
#include <utility>

using namespace Test;

TEST(MemoryStream, GrowsByWritingOnly) {
    MemoryStream stream;
    EXPECT_NO_THROW(stream.setPosition(0));
    EXPECT_THROW(stream.setPosition(10), MemoryStream::EndOfBuffer);
    EXPECT_EQ(stream.getSize(), 0);

    stream.writeData("abcd", 4);
    stream.writeData("efgh", 4);
    EXPECT_EQ(stream.getSize(), 8);
    stream.setPosition(2);
    stream.writeData("C", 1);
    EXPECT_EQ(stream.getSize(), 8);
    EXPECT_EQ(stream.getPosition(), 3);
    stream.setPosition(7);
    stream.writeData("HIJ", 3);
    EXPECT_EQ(BytesOf(stream), "abCdefgHIJ");
}

TEST(MemoryStream, AFailedReadLeavesThePosition) {
    MemoryStream stream = StreamOf("abc");
    stream.setPosition(1);
    char buffer[8] = {};
    for (const int count : {3, -1, INT_MIN, INT_MAX}) {
        EXPECT_THROW(stream.readData(buffer, count), MemoryStream::EndOfBuffer) << count;
        EXPECT_EQ(stream.getPosition(), 1);
    }
    EXPECT_EQ(buffer[0], 0);
    stream.readData(buffer, 2);
    EXPECT_STREQ(buffer, "bc");
}

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
