#include "FCurveLib/IFF.h"

#include "FCurveLib/ArrayStreamAdaptor.h"
#include "FCurveLib/FileStream.h"
#include "FCurveLib/MemoryStream.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>

using namespace VEM_FN::FCurveLib;

namespace {

using Little = LittleEndianBinaryPolicy;

std::string bytesOf(const MemoryStream& stream) {
    return std::string(stream.getData(), static_cast<std::size_t>(stream.getSize()));
}

std::string bytesOf(const IFFType& type) {
    return std::string(type.getTypeBytes(), 4);
}

std::string operator""_bytes(const char* text, std::size_t length) {
    return std::string(text, length);
}

// Chunks of chunks of an odd number of bytes, depth levels deep, two at every level.
template<class Policy>
void writeTree(Stream& stream, BinaryIO<Policy>& io, int depth) {
    for (int child = 0; child < 2; ++child) {
        IFFWriter<Policy> chunk(stream, io, child == 0 ? "even" : "odd");
        if (depth == 0) {
            stream.writeData("leaves", child == 0 ? 6 : 5);
        } else {
            writeTree(stream, io, depth - 1);
        }
        const int end = stream.getPosition();
        chunk.patchSize();
        ASSERT_EQ(stream.getPosition(), end);
    }
}

template<class Policy>
int countLeaves(Stream& stream, BinaryIO<Policy>& io, int depth) {
    int leaves = 0;
    for (int child = 0; child < 2; ++child) {
        IFFReader<Policy> chunk(stream, io);
        EXPECT_EQ(chunk.getIFFType(), child == 0 ? "even" : "odd");
        if (depth == 0) {
            char bytes[6];
            stream.readData(bytes, chunk.getIFFSize());
            ++leaves;
        } else if (child == 1 && depth == 1) {
            chunk.skip();
        } else {
            leaves += countLeaves(stream, io, depth - 1);
        }
        EXPECT_TRUE(chunk.validateSize());
    }
    return leaves;
}

} // namespace

TEST(IFFType, IsFourBytes) {
    EXPECT_EQ(bytesOf(IFFType()), "\0\0\0\0"_bytes);
    EXPECT_EQ(bytesOf(IFFType("")), "\0\0\0\0"_bytes);
    EXPECT_EQ(bytesOf(IFFType(nullptr)), "\0\0\0\0"_bytes);
    EXPECT_EQ(bytesOf(IFFType("ab")), "ab\0\0"_bytes);
    EXPECT_EQ(bytesOf(IFFType("Crvs")), "Crvs");
    EXPECT_EQ(bytesOf(IFFType("Crvslong")), "Crvs");
    EXPECT_EQ(bytesOf(IFFType::fromBytes("a\0bc")), "a\0bc"_bytes);
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
    EXPECT_EQ(bytesOf(stream), "none\0\0\0\0"_bytes);

    IFFWriter first(stream, little, "litt");
    stream.writeData(payload.data(), 258);
    first.patchSize();
    IFFWriter second(stream, big, "big");
    stream.writeData(payload.data(), 258);
    second.patchSize();
    EXPECT_EQ(stream.getPosition(), stream.getSize());
    EXPECT_EQ(bytesOf(stream), "none\0\0\0\0litt\x02\x01\0\0"_bytes + payload + "big\0\0\0\x01\x02"_bytes + payload);
}

TEST(IFFWriter, MakesThePayloadEndAtThePosition) {
    BinaryIO<Little> io;
    MemoryStream stream;
    IFFWriter chunk(stream, io, "abcd");
    stream.writeData("12345", 5);
    stream.setPosition(4);
    EXPECT_THROW(chunk.patchSize(), Stream::StreamException) << "before the payload";
    EXPECT_EQ(bytesOf(stream), "abcd\0\0\0\0"_bytes + "12345");
    stream.setPosition(10);
    const IFFWriter copy = chunk;
    copy.patchSize();
    EXPECT_EQ(stream.getPosition(), 10);
    EXPECT_EQ(bytesOf(stream), "abcd\2\0\0\0"_bytes + "12345");
}

TEST(IFFReader, ReadsSkipsAndValidates) {
    const std::string bytes = "a\0b\0\5\0\0\0hello"_bytes + "next\0\0\0\0"_bytes;
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
    struct Row {
        std::uint32_t size;
        int reported;
    };
    for (const Row row : {Row{6, 6}, Row{INT_MAX, INT_MAX}, Row{0x80000000u, INT_MAX}, Row{0xFFFFFFF8u, INT_MAX},
                          Row{0xFFFFFFFFu, INT_MAX}}) {
        BinaryIO<Little> io;
        MemoryStream stream;
        stream.writeData("huge", 4);
        io.writeUInt32(stream, row.size);
        stream.writeData("12345", 5);
        stream.setPosition(0);
        const IFFReader chunk(stream, io);
        EXPECT_EQ(chunk.getIFFSize(), row.reported);
        EXPECT_EQ(chunk.getPayloadEnd(), std::int64_t{8} + row.size);
        EXPECT_FALSE(chunk.validateSize());
        EXPECT_THROW(chunk.skip(), MemoryStream::EndOfBuffer) << row.size;
        EXPECT_EQ(stream.getPosition(), 8) << row.size;
        stream.setPosition(0);
        EXPECT_FALSE(chunk.validateSize()) << row.size;
    }
}

// The one stream in which the last position exists.
TEST(IFFReader, NoSizeWrapsAroundInTheLongestStream) {
    class Longest : public Stream {
    public:
        void readData(void* buffer, int count) override {
            std::memset(buffer, 0xFF, static_cast<std::size_t>(count));
            m_position += count;
        }
        void writeData(const void*, int) override {}
        int getPosition() const override { return m_position; }
        void setPosition(int position) override { m_position = position; }
        int getSize() const override { return INT_MAX; }

    private:
        int m_position = 0;
    };
    Longest stream;
    BinaryIO<Little> io;
    const IFFReader chunk(stream, io);
    EXPECT_THROW(chunk.skip(), Stream::StreamException);
    EXPECT_EQ(stream.getPosition(), 8);
}

TEST(IFF, NestsOnEveryStream) {
    const TempFolder folder;
    MemoryStream memory;
    FileStream file(folder.file("chunks").c_str());
    ArrayStream<4096> array;
    BinaryIO<Little> io;
    for (Stream* stream : {static_cast<Stream*>(&memory), static_cast<Stream*>(&file), static_cast<Stream*>(&array)}) {
        writeTree(*stream, io, 5);
        stream->setPosition(0);
        EXPECT_EQ(countLeaves(*stream, io, 5), 32);
    }
    EXPECT_TRUE(file.flush());
    EXPECT_EQ(readWholeFile(folder.file("chunks")), bytesOf(memory));
    EXPECT_EQ(std::string(&array.getArray()[0], static_cast<std::size_t>(memory.getSize())), bytesOf(memory));
}
