#include "FCurveLib/BinaryIO.h"

#include "FCurveLib/MemoryStream.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

using namespace VEM_FN::FCurveLib;

namespace {

std::string hexOf(const MemoryStream& stream) {
    static const char digits[] = "0123456789abcdef";
    std::string hex;
    for (int i = 0; i < stream.getSize(); ++i) {
        const auto byte = static_cast<unsigned char>(stream.getData()[i]);
        hex += digits[byte >> 4];
        hex += digits[byte & 15];
    }
    return hex;
}

template<class Policy, class Write>
std::string written(Write write) {
    MemoryStream stream;
    const BinaryIO<Policy> io;
    write(io, stream);
    return hexOf(stream);
}

// The bytes of the same transfer, least and most significant first.
#define EXPECT_BYTES(transfer, little, big)                                                                            \
    do {                                                                                                               \
        const auto write = [](const auto& io, Stream& stream) { io.transfer; };                                        \
        EXPECT_EQ(written<LittleEndianBinaryPolicy>(write), little) << #transfer;                                      \
        EXPECT_EQ(written<NoSwapBinaryPolicy>(write), little) << #transfer;                                            \
        EXPECT_EQ(written<DynamicBinaryPolicy>(write), little) << #transfer;                                           \
        EXPECT_EQ(written<BigEndianBinaryPolicy>(write), big) << #transfer;                                            \
        EXPECT_EQ(written<SwapBinaryPolicy>(write), big) << #transfer;                                                 \
    } while (false)

template<class Number>
bool sameBits(Number a, Number b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

TEST(BinaryIO, WritesBytesInThePolicysOrder) {
    EXPECT_BYTES(writeInt8(stream, -2), "fe", "fe");
    EXPECT_BYTES(writeUInt8(stream, 200), "c8", "c8");
    EXPECT_BYTES(writeInt16(stream, -2), "feff", "fffe");
    EXPECT_BYTES(writeUInt16(stream, 0x0102), "0201", "0102");
    EXPECT_BYTES(writeInt32(stream, -2), "feffffff", "fffffffe");
    EXPECT_BYTES(writeUInt32(stream, 0x01020304), "04030201", "01020304");
    EXPECT_BYTES(writeInt64(stream, -2), "feffffffffffffff", "fffffffffffffffe");
    EXPECT_BYTES(writeUInt64(stream, 0x0102030405060708), "0807060504030201", "0102030405060708");
    EXPECT_BYTES(writeFloat(stream, 1.5f), "0000c03f", "3fc00000");
    EXPECT_BYTES(writeDouble(stream, -1.5), "000000000000f8bf", "bff8000000000000");
}

TEST(BinaryIO, EveryValueComesBack) {
    std::mt19937_64 random(3);
    for (const bool swap : {false, true}) {
        const BinaryIO<DynamicBinaryPolicy> io{DynamicBinaryPolicy(swap)};
        for (int round = 0; round < 1000; ++round) {
            const std::uint64_t bits = random();
            MemoryStream stream;
            double number;
            std::memcpy(&number, &bits, sizeof number);
            float single;
            std::memcpy(&single, &bits, sizeof single);
            io.writeInt8(stream, static_cast<std::int8_t>(bits));
            io.writeInt16(stream, static_cast<std::int16_t>(bits));
            io.writeInt32(stream, static_cast<std::int32_t>(bits));
            io.writeInt64(stream, static_cast<std::int64_t>(bits));
            io.writeFloat(stream, single);
            io.writeDouble(stream, number);
            ASSERT_EQ(stream.getSize(), 27);
            stream.setPosition(0);
            ASSERT_EQ(io.readInt8(stream), static_cast<std::int8_t>(bits));
            ASSERT_EQ(io.readInt16(stream), static_cast<std::int16_t>(bits));
            ASSERT_EQ(io.readInt32(stream), static_cast<std::int32_t>(bits));
            ASSERT_EQ(io.readInt64(stream), static_cast<std::int64_t>(bits));
            ASSERT_TRUE(sameBits(io.readFloat(stream), single)) << std::hex << bits;
            ASSERT_TRUE(sameBits(io.readDouble(stream), number)) << std::hex << bits;
            stream.setPosition(0);
            ASSERT_EQ(io.readUInt8(stream), static_cast<std::uint8_t>(bits));
            ASSERT_EQ(io.readUInt16(stream), static_cast<std::uint16_t>(bits));
            ASSERT_EQ(io.readUInt32(stream), static_cast<std::uint32_t>(bits));
            ASSERT_EQ(io.readUInt64(stream), bits);
        }
    }
}

TEST(BinaryIO, FloatingPointKeepsItsBits) {
    using Limits = std::numeric_limits<double>;
    const BinaryIO<BigEndianBinaryPolicy> io;
    for (const double value : {-0.0, Limits::infinity(), -Limits::infinity(), std::nan("0x123"),
                               Limits::signaling_NaN(), Limits::denorm_min(), Limits::max()}) {
        MemoryStream stream;
        io.writeDouble(stream, value);
        stream.setPosition(0);
        EXPECT_TRUE(sameBits(io.readDouble(stream), value)) << value;
    }
}

TEST(BinaryIO, MemoryGetsTheSameBytesAsAStream) {
    const BinaryIO<BigEndianBinaryPolicy> io;
    MemoryStream stream;
    io.writeUInt16(stream, 0xABCD);
    io.writeDouble(stream, 0.1);
    io.writeInt8(stream, -7);

    char record[11];
    char* end = io.store(record, std::uint16_t{0xABCD});
    end = io.store(end, 0.1);
    end = io.store(end, std::int8_t{-7});
    ASSERT_EQ(end, record + sizeof record);
    EXPECT_EQ(std::string(record, sizeof record), std::string(stream.getData(), sizeof record));

    std::uint16_t word = 0;
    double number = 0;
    std::int8_t byte = 0;
    EXPECT_EQ(io.load(io.load(io.load(record, word), number), byte), record + sizeof record);
    EXPECT_EQ(word, 0xABCD);
    EXPECT_EQ(number, 0.1);
    EXPECT_EQ(byte, -7);
}

TEST(BinaryIO, CarriesItsPolicy) {
    BinaryIO<DynamicBinaryPolicy> io;
    EXPECT_FALSE(io.getPolicy().getSwap());
    io.getPolicy().setSwap(true);
    BinaryIO<DynamicBinaryPolicy> copy(io);
    io.getPolicy().setSwap(false);
    EXPECT_TRUE(copy.getPolicy().getSwap());
    copy = io;
    EXPECT_FALSE(copy.getPolicy().getSwap());
    EXPECT_EQ(sizeof(BinaryIO<LittleEndianBinaryPolicy>), 1u);
}

TEST(BinaryIO, AShortStreamRaisesItsOwnException) {
    MemoryStream stream;
    stream.writeData("abc", 3);
    stream.setPosition(0);
    const BinaryIO<LittleEndianBinaryPolicy> io;
    EXPECT_THROW(io.readUInt32(stream), MemoryStream::EndOfBuffer);
    EXPECT_EQ(stream.getPosition(), 0);
}
