#include "support/StreamOf.h"

#include <gtest/gtest.h>

using namespace Test;

namespace {

constexpr int kEof = std::char_traits<char>::eof();

} // namespace

TEST(StreamIostream, WritesAndReadsWithTheStandardOperators) {
    MemoryStream stream;
    Stream_iostream out(stream);
    out << "curve " << 42 << ' ' << 0.25 << '\n';
    EXPECT_TRUE(out.good());
    EXPECT_EQ(stream.getPosition(), 14) << "nothing is held back";

    stream.setPosition(0);
    Stream_iostream in(stream);
    std::string word;
    int number = 0;
    double fraction = 0;
    in >> word >> number >> fraction;
    EXPECT_TRUE(in.good());
    EXPECT_EQ(word, "curve");
    EXPECT_EQ(number, 42);
    EXPECT_EQ(fraction, 0.25);
    in >> word;
    EXPECT_TRUE(in.eof());
}

TEST(StreamIostream, AnEmptyStreamIsAtItsEnd) {
    MemoryStream stream;
    Stream_iostream in(stream);
    EXPECT_TRUE(in.good());
    in.exceptions(std::ios::goodbit);
    EXPECT_EQ(in.get(), kEof);
    EXPECT_TRUE(in.eof());
}

TEST(StreamIostream, TheByteFFEndsReading) {
    MemoryStream stream = StreamOf("\x41\xFF\x42");
    Stream_iostream in(stream);
    EXPECT_EQ(in.get(), 0x41);
    EXPECT_EQ(in.get(), kEof);
    EXPECT_TRUE(in.eof());

    MemoryStream high = StreamOf("\x80");
    Stream_streambuf buffer(high);
    EXPECT_EQ(buffer.sbumpc(), -128) << "widened as a signed char";
}

TEST(StreamIostream, WritesEveryByte) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all.push_back(static_cast<char>(byte));
    MemoryStream stream;
    Stream_iostream out(stream);
    out.write(all.data(), 256);
    for (const char byte : all) out.put(byte);
    EXPECT_TRUE(out.good());
    EXPECT_EQ(BytesOf(stream), all + all);
}

TEST(StreamIostream, HoldsOneCharacter) {
    MemoryStream stream = StreamOf("abc");
    Stream_streambuf buffer(stream);
    EXPECT_EQ(buffer.sungetc(), kEof) << "nothing was taken yet";
    EXPECT_EQ(buffer.sgetc(), 'a');
    EXPECT_EQ(buffer.sgetc(), 'a');
    EXPECT_EQ(stream.getPosition(), 1) << "a peek moves the stream";
    EXPECT_EQ(buffer.sputbackc('x'), kEof) << "one is held already";
    EXPECT_EQ(buffer.sbumpc(), 'a');
    EXPECT_EQ(buffer.sungetc(), 'a');
    EXPECT_EQ(buffer.sungetc(), kEof);
    EXPECT_EQ(buffer.sbumpc(), 'a');
    EXPECT_EQ(buffer.sputbackc('x'), 'x');
    EXPECT_EQ(buffer.sbumpc(), 'x');
    EXPECT_EQ(buffer.sungetc(), 'x');
    EXPECT_EQ(buffer.snextc(), 'b');
    EXPECT_EQ(buffer.sbumpc(), 'b');
    EXPECT_EQ(buffer.sbumpc(), 'c');
    EXPECT_EQ(buffer.sbumpc(), kEof);
    EXPECT_EQ(buffer.sungetc(), 'c') << "the end leaves the last character";
}

TEST(StreamIostream, ARefusedWriteFailsTheStandardStream) {
    char array[2] = {};
    ArrayStreamAdaptor stream(array, 2);
    Stream_iostream out(stream);
    out << "abc";
    EXPECT_TRUE(out.bad());
    EXPECT_EQ(std::string(array, 2), "ab");

    Stream_streambuf buffer(stream);
    EXPECT_EQ(buffer.sputc('c'), kEof);
}
