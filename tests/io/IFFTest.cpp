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

TEST(IFFWriter, PatchesTheSizeInTheByteOrder) {
    BinaryIO<Little> little;
    BinaryIO<BigEndianBinaryPolicy> big;
    const std::string payload(258, 'x');

    MemoryStream stream;
    IFFWriter<Little>(stream, little, "none").patchSize();
    EXPECT_EQ(BytesOf(stream), "none\0\0\0\0"s);

    IFFWriter first(stream, little, "litt");
    stream.writeData(payload.data(), 258);
    first.patchSize();
    IFFWriter second(stream, big, "big");
    stream.writeData(payload.data(), 258);
    second.patchSize();
    EXPECT_EQ(stream.getPosition(), stream.getSize());
    EXPECT_EQ(BytesOf(stream), "none\0\0\0\0litt\x02\x01\0\0"s + payload + "big\0\0\0\x01\x02"s + payload);
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

TEST(IFFReader, ReadsSkipsAndValidates) {
    const std::string bytes = "a\0b\0\5\0\0\0hello"s + "next\0\0\0\0"s;
    ArrayStreamAdaptor stream(bytes.data(), static_cast<int>(bytes.size()));
    BinaryIO<Little> io;
    IFFReader chunk(stream, io);
    EXPECT_EQ(chunk.getIFFType(), IFFType::fromBytes("a\0b"));
    EXPECT_EQ(chunk.getIFFSize(), 5);
    EXPECT_EQ(chunk.getPayloadBegin(), 8);
    EXPECT_EQ(chunk.getPayloadEnd(), 13);
    EXPECT_EQ(&chunk.getStream(), &stream);
    EXPECT_EQ(&chunk.getBinaryIO(), &io);
    EXPECT_FALSE(chunk.validateSize());
    char part[2];
    stream.readData(part, 2);
    chunk.skip();
    EXPECT_TRUE(chunk.validateSize());
    IFFReader next(stream, io);
    EXPECT_EQ(next.getIFFType(), "next");
    EXPECT_TRUE(next.validateSize());
    EXPECT_THROW(IFFReader(stream, io), ArrayStreamAdaptor::EndOfBuffer);
    chunk.skip();
    EXPECT_EQ(stream.getPosition(), 13) << "backwards too";
    chunk = next;
    EXPECT_EQ(chunk.getPayloadBegin(), 21);
}

TEST(IFFReader, NoSizeWrapsAround) {
    for (const std::uint32_t size : {6u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFF8u, 0xFFFFFFFFu}) {
        BinaryIO<Little> io;
        MemoryStream stream;
        stream.writeData("huge", 4);
        io.writeUInt32(stream, size);
        stream.writeData("12345", 5);
        stream.setPosition(0);
        const IFFReader chunk(stream, io);
        EXPECT_EQ(chunk.getIFFSize(), size == 6 ? 6 : INT_MAX);
        EXPECT_EQ(chunk.getPayloadEnd(), std::int64_t{8} + size);
        EXPECT_FALSE(chunk.validateSize());
        EXPECT_THROW(chunk.skip(), MemoryStream::EndOfBuffer) << size;
        EXPECT_EQ(stream.getPosition(), 8) << size;
        stream.setPosition(0);
        EXPECT_FALSE(chunk.validateSize()) << size;
    }
}

// The one stream in which the last position exists.
TEST(IFFReader, NoSizeWrapsAroundInTheLongestStream) {
    EndlessStream stream("", "\xFF");
    BinaryIO<Little> io;
    const IFFReader chunk(stream, io);
    EXPECT_THROW(chunk.skip(), Stream::StreamException);
    EXPECT_EQ(stream.getPosition(), 8);
}

// Chunks in chunks, each with a byte in front and one behind its child.
TEST(IFF, Nests) {
    MemoryStream stream;
    BinaryIO<Little> io;
    std::vector<IFFWriter<Little>> open;
    for (int depth = 0; depth < 5; ++depth) {
        open.emplace_back(stream, io, "nest");
        stream.writeData("(", 1);
    }
    for (; !open.empty(); open.pop_back()) {
        stream.writeData(")", 1);
        open.back().patchSize();
    }
    EXPECT_EQ(stream.getPosition(), 50);
    stream.setPosition(0);
    for (int size = 42; size > 0; size -= 10) {
        const IFFReader chunk(stream, io);
        EXPECT_EQ(chunk.getIFFType(), "nest");
        EXPECT_EQ(chunk.getIFFSize(), size);
        char byte;
        stream.readData(&byte, 1);
        EXPECT_EQ(byte, '(');
    }
}
