// How chunks are read, and that what is written nests, the seeds of fuzz/fuzz_chunks.cpp check against plain
// arithmetic.

#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

using namespace Test;
using namespace std::string_literals;

namespace {

using Little = LittleEndianBinaryPolicy;

std::string BytesOf(const IFFType& type) {
    return std::string(type.getTypeBytes(), 4);
}

} // namespace

TEST(IFFType, IsFourBytes) {
    EXPECT_EQ(BytesOf(IFFType()), "\0\0\0\0"s);
    EXPECT_EQ(BytesOf(IFFType("")), "\0\0\0\0"s);
    EXPECT_EQ(BytesOf(IFFType(nullptr)), "\0\0\0\0"s);
    EXPECT_EQ(BytesOf(IFFType("ab")), "ab\0\0"s);
    EXPECT_EQ(BytesOf(IFFType("Crvs")), "Crvs");
    EXPECT_EQ(BytesOf(IFFType("Crvslong")), "Crvs");
    EXPECT_EQ(BytesOf(IFFType::fromBytes("a\0bc")), "a\0bc"s);
    EXPECT_TRUE(IFFType("abcd") == IFFType("abcde"));
    EXPECT_TRUE(IFFType::fromBytes("a\0bc") != IFFType("a"));
    EXPECT_FALSE(IFFType::fromBytes("\xFF\xFE\xFD\xFC") != IFFType("\xFF\xFE\xFD\xFC"));
}

TEST(IFFWriter, MakesThePayloadEndAtThePosition) {
    BinaryIO<Little> io;
    MemoryStream stream;
    IFFWriter chunk(stream, io, "abcd");
    stream.writeData("12345", 5);
    stream.setPosition(4);
    EXPECT_THROW(chunk.patchSize(), Stream::StreamException) << "before the payload";
    EXPECT_EQ(BytesOf(stream), "abcd\0\0\0\0"s + "12345");
    stream.setPosition(10);
    const IFFWriter copy = chunk;
    copy.patchSize();
    EXPECT_EQ(stream.getPosition(), 10);
    EXPECT_EQ(BytesOf(stream), "abcd\2\0\0\0"s + "12345");
}

// The one stream in which the last position exists.
TEST(IFFReader, NoSizeWrapsAroundInTheLongestStream) {
    EndlessStream stream("", "\xFF");
    BinaryIO<Little> io;
    const IFFReader chunk(stream, io);
    EXPECT_THROW(chunk.skip(), Stream::StreamException);
    EXPECT_EQ(stream.getPosition(), 8);
}
