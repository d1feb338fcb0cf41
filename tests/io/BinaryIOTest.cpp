#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace Test;

namespace {

template<class Policy, class Write>
std::string written(Write write) {
    MemoryStream stream;
    const BinaryIO<Policy> io;
    write(io, stream);
    std::string hex;
    for (int i = 0; i < stream.getSize(); ++i) {
        for (const int shift : {4, 0}) hex += "0123456789abcdef"[stream.getData()[i] >> shift & 15];
    }
    return hex;
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

// The first bytes of one number as another.
template<class To, class From>
To as(From from) {
    To to;
    std::memcpy(&to, &from, sizeof to);
    return to;
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

TEST(BinaryIO, EveryValueComesBackBitForBit) {
    using IO = BinaryIO<DynamicBinaryPolicy>;
    using Limits = std::numeric_limits<double>;
    std::vector<std::uint64_t> all = {0, ~std::uint64_t{0}, 0x7FF4000000000001,
                                      0x7FA00000}; // signalling NaNs: a double, a float
    for (const double number :
         {-0.0, Limits::infinity(), -Limits::infinity(), std::nan("0x123"), Limits::denorm_min(), Limits::max()}) {
        all.push_back(as<std::uint64_t>(number));
    }
    std::mt19937_64 random(3);
    for (int i = 0; i < 1000; ++i) all.push_back(random());
    for (const bool swap : {false, true}) {
        const IO io{DynamicBinaryPolicy(swap)};
        const auto comesBack = [&](auto value, auto write, auto read) {
            MemoryStream stream;
            (io.*write)(stream, value);
            stream.setPosition(0);
            const auto back = (io.*read)(stream);
            // Memory gets the same bytes as a stream.
            char record[sizeof value];
            auto loaded = value;
            const bool ends =
                io.store(record, value) == record + sizeof record && io.load(record, loaded) == record + sizeof record;
            return ends && BytesOf(stream) == std::string(record, sizeof record)
                   && std::memcmp(&back, &value, sizeof value) == 0 && std::memcmp(&loaded, &value, sizeof value) == 0;
        };
        for (const std::uint64_t bits : all) {
            SCOPED_TRACE(bits);
            ASSERT_TRUE(comesBack(as<std::int8_t>(bits), &IO::writeInt8, &IO::readInt8));
            ASSERT_TRUE(comesBack(as<std::uint8_t>(bits), &IO::writeUInt8, &IO::readUInt8));
            ASSERT_TRUE(comesBack(as<std::int16_t>(bits), &IO::writeInt16, &IO::readInt16));
            ASSERT_TRUE(comesBack(as<std::uint16_t>(bits), &IO::writeUInt16, &IO::readUInt16));
            ASSERT_TRUE(comesBack(as<std::int32_t>(bits), &IO::writeInt32, &IO::readInt32));
            ASSERT_TRUE(comesBack(as<std::uint32_t>(bits), &IO::writeUInt32, &IO::readUInt32));
            ASSERT_TRUE(comesBack(as<std::int64_t>(bits), &IO::writeInt64, &IO::readInt64));
            ASSERT_TRUE(comesBack(bits, &IO::writeUInt64, &IO::readUInt64));
            ASSERT_TRUE(comesBack(as<float>(bits), &IO::writeFloat, &IO::readFloat));
            ASSERT_TRUE(comesBack(as<double>(bits), &IO::writeDouble, &IO::readDouble));
        }
    }
}
