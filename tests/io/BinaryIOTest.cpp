// That numbers of every width come back bit for bit, the seeds of fuzz/fuzz_chunks.cpp check.

#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <string>

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
