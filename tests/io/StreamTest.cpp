// What every stream promises, on each of the library's streams; then what one of them does otherwise.

#include "FCurveLib/FileReplacement.h"
#include "FCurveLib/FileStream.h"
#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <random>
#include <utility>

using namespace Test;

namespace {

constexpr int kLength = 200000; // more than a FileStream's buffer, and no multiple of it
constexpr int kEof = std::char_traits<char>::eof();

std::shared_ptr<Stream> makeStream(const std::string& kind, const std::string& path, std::string& array) {
    if (kind == "Memory") return std::make_shared<MemoryStream>();
    if (kind == "File") return std::make_shared<FileStream>(path.c_str());
    if (kind == "Replacement") {
        const auto file = std::make_shared<FileReplacement>(path.c_str());
        return {file, &file->getStream()};
    }
    if (kind == "Adaptor") return std::make_shared<ArrayStreamAdaptor>(array.data(), kLength);
    return std::make_shared<ArrayStream<kLength>>();
}

class EveryStream : public testing::TestWithParam<const char*> {};

} // namespace

// Random transfers and positions, possible and impossible, in pieces of 0 bytes to twice a file's buffer.
TEST_P(EveryStream, DoesWhatAStringDoesAndRefusesWhatItCannot) {
    const TempFolder folder;
    std::string array(kLength, '\0');
    const std::shared_ptr<Stream> stream = makeStream(GetParam(), folder.file("stream"), array);
    const bool isFile = GetParam() == std::string("File"); // which keeps what came of a read that is too long
    const bool isReplacement = GetParam() == std::string("Replacement"); // which is over when it grows too large
    const bool grows = isFile || isReplacement || GetParam() == std::string("Memory");
    std::string model(kLength, '\0');
    stream->writeData(model.data(), kLength);
    std::mt19937 random(7);
    std::size_t position = model.size();
    for (int step = 0; step < 4000; ++step) {
        SCOPED_TRACE(step);
        const std::size_t count = random() % (step % 50 == 0 ? 140000 : 300);
        const std::size_t there = std::min(count, model.size() - position);
        std::string buffer(count, '-');
        const auto size = static_cast<int>(count);
        switch (random() % 4) {
        case 0: {
            const std::string expected = there == count || isFile ? model.substr(position, there) : "";
            if (there == count) {
                stream->readData(buffer.data(), size);
            } else {
                EXPECT_THROW(stream->readData(buffer.data(), size), Exception);
            }
            ASSERT_TRUE(buffer == expected + std::string(count - expected.size(), '-'));
            position += expected.size();
            break;
        }
        case 1:
            for (char& c : buffer) c = static_cast<char>(random());
            if (there < count && !grows) {
                EXPECT_THROW(stream->writeData(buffer.data(), size), ArrayStreamAdaptor::EndOfBuffer);
                break;
            }
            stream->writeData(buffer.data(), size);
            model.replace(position, there, buffer);
            position += count;
            break;
        case 2:
            position = random() % 4 == 0 ? model.size() : random() % (model.size() + 1);
            stream->setPosition(static_cast<int>(position));
            break;
        default:
            for (const int to : {-1, INT_MIN, static_cast<int>(model.size()) + 1, INT_MAX})
                EXPECT_THROW(stream->setPosition(to), Exception) << to;
            for (const int bytes : {-1, INT_MIN, INT_MAX - 1, INT_MAX}) {
                if (bytes < 0 || (position > 1 && !isReplacement)) {
                    EXPECT_THROW(stream->writeData("x", bytes), Exception) << bytes;
                }
                if (!isFile) {
                    EXPECT_THROW(stream->readData(buffer.data(), bytes), Exception) << bytes;
                }
            }
            EXPECT_EQ(stream->getSize(), static_cast<int>(model.size()));
        }
        ASSERT_EQ(stream->getPosition(), static_cast<int>(position));
    }
    stream->setPosition(0);
    std::string all(model.size(), '-');
    stream->readData(all.data(), static_cast<int>(all.size()));
    EXPECT_TRUE(all == model);
}

INSTANTIATE_TEST_SUITE_P(Streams, EveryStream, testing::Values("Memory", "File", "Replacement", "Adaptor", "Array"),
                         [](const auto& kind) { return std::string(kind.param); });

TEST(ArrayStreamAdaptor, AConstArrayIsReadOnlyWhateverTheCount) {
    const char array[] = "abc";
    ArrayStreamAdaptor stream(array, 3);
    for (const int count : {0, 1, 4, -1, INT_MAX})
        EXPECT_THROW(stream.writeData("x", count), ArrayStreamAdaptor::AccessError) << count;
    EXPECT_EQ(ArrayStreamAdaptor(array, -5).getSize(), 0);

    ArrayStream<4> first;
    ArrayStreamAdaptor second(first); // a second position over the same bytes
    second.writeData("2", 1);
    EXPECT_EQ(std::string(&first.getArray()[0], 4), std::string("2\0\0\0", 4));
    EXPECT_EQ(first.getPosition(), 0);
}

TEST(MemoryStream, CopiesAndMovesBytesAndPosition) {
    MemoryStream stream = StreamOf("abcd");
    stream.setPosition(1);
    MemoryStream copy(stream);
    copy.writeData("X", 1);
    EXPECT_EQ(BytesOf(stream), "abcd");
    stream = copy;
    const MemoryStream& itself = stream;
    stream = itself;
    MemoryStream moved(std::move(copy));
    EXPECT_EQ(copy.getSize() + copy.getPosition(), 0); // NOLINT(bugprone-use-after-move): promised to be empty
    for (const MemoryStream* each : {&stream, &moved}) {
        EXPECT_EQ(BytesOf(*each), "aXcd");
        EXPECT_EQ(each->getPosition(), 2);
    }
    moved.clear();
    EXPECT_EQ(moved.getSize() + moved.getPosition(), 0);
}

TEST(StreamIostream, WritesAndReadsWithTheStandardOperators) {
    MemoryStream stream;
    Stream_iostream out(stream);
    out << "curve " << 42 << ' ' << 0.25 << '\n';
    EXPECT_EQ(stream.getPosition(), 14) << "nothing is held back";
    stream.setPosition(0);
    Stream_iostream in(stream);
    std::string word;
    int number = 0;
    double fraction = 0;
    in >> word >> number >> fraction;
    EXPECT_TRUE(in.good() && word == "curve" && number == 42 && fraction == 0.25);
    in >> word;
    EXPECT_TRUE(in.eof());

    char array[2] = {};
    ArrayStreamAdaptor full(array, 2);
    Stream_iostream refused(full);
    refused << "abc";
    EXPECT_TRUE(refused.bad());
    EXPECT_EQ(Stream_streambuf(full).sputc('c'), kEof);
}

TEST(StreamIostream, HoldsOneCharacterAndEndsAtTheByteFF) {
    MemoryStream stream = StreamOf("abc\xFF"
                                   "d");
    Stream_streambuf buffer(stream);
    EXPECT_EQ(buffer.sungetc(), kEof) << "nothing was taken yet";
    EXPECT_EQ(buffer.sgetc(), 'a');
    EXPECT_EQ(stream.getPosition(), 1) << "a peek moves the stream";
    EXPECT_EQ(buffer.sputbackc('x'), kEof) << "one is held already";
    EXPECT_EQ(buffer.sbumpc(), 'a');
    EXPECT_EQ(buffer.sungetc(), 'a');
    EXPECT_EQ(buffer.sungetc(), kEof);
    EXPECT_EQ(buffer.sbumpc(), 'a');
    EXPECT_EQ(buffer.sputbackc('x'), 'x');
    EXPECT_EQ(buffer.sbumpc(), 'x');
    EXPECT_EQ(buffer.snextc(), 'c');
    EXPECT_EQ(buffer.sbumpc(), 'c');
    EXPECT_EQ(buffer.sbumpc(), kEof);

    MemoryStream high = StreamOf("\x80");
    EXPECT_EQ(Stream_streambuf(high).sbumpc(), -128) << "widened as a signed char";
}
