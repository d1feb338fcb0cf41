// What every stream promises, on each of the library's streams; and the texts of their exceptions.

#include "FCurveLib/ArrayStreamAdaptor.h"
#include "FCurveLib/FileStream.h"
#include "FCurveLib/MemoryStream.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <random>
#include <vector>

using namespace VEM_FN::FCurveLib;

namespace {

constexpr int kLength = 200000; // more than a FileStream's buffer, and no multiple of it

std::unique_ptr<Stream> makeStream(const std::string& kind, const std::string& path, std::vector<char>& array) {
    if (kind == "Memory") return std::make_unique<MemoryStream>();
    if (kind == "File") return std::make_unique<FileStream>(path.c_str());
    if (kind == "Adaptor") return std::make_unique<ArrayStreamAdaptor>(array.data(), kLength);
    return std::make_unique<ArrayStream<kLength>>();
}

class EveryStream : public testing::TestWithParam<const char*> {
protected:
    TempFolder m_folder;
    std::vector<char> m_array = std::vector<char>(kLength);
    std::unique_ptr<Stream> m_stream = makeStream(GetParam(), m_folder.file("stream"), m_array);
    const bool m_isFile = GetParam() == std::string("File");
    const bool m_grows = m_isFile || GetParam() == std::string("Memory");

    void fill() {
        const std::vector<char> zeros(kLength);
        m_stream->setPosition(0);
        m_stream->writeData(zeros.data(), kLength);
        m_stream->setPosition(0);
    }
};

} // namespace

// Random transfers and positions, pieces of 0 bytes to twice a file's buffer, against a plain string.
TEST_P(EveryStream, DoesWhatAStringDoes) {
    fill();
    std::mt19937 random(7);
    std::string model(kLength, '\0');
    std::size_t position = 0;
    std::string buffer;
    for (int step = 0; step < 4000; ++step) {
        const std::size_t longest = step % 50 == 0 ? 140000 : 300;
        const std::size_t count = std::min(random() % longest, model.size() - position);
        buffer.resize(count);
        switch (random() % 3) {
        case 0:
            m_stream->readData(buffer.data(), static_cast<int>(count));
            ASSERT_TRUE(buffer == model.substr(position, count)) << "step " << step;
            position += count;
            break;
        case 1:
            for (char& c : buffer) c = static_cast<char>(random());
            m_stream->writeData(buffer.data(), static_cast<int>(count));
            model.replace(position, count, buffer);
            position += count;
            break;
        default:
            position = random() % (model.size() + 1);
            m_stream->setPosition(static_cast<int>(position));
        }
        ASSERT_EQ(m_stream->getPosition(), static_cast<int>(position)) << "step " << step;
    }
    buffer.resize(kLength);
    m_stream->setPosition(0);
    m_stream->readData(buffer.data(), kLength);
    EXPECT_TRUE(buffer == model);
    EXPECT_EQ(m_stream->getSize(), kLength);
}

TEST_P(EveryStream, RefusesWhatLiesOutside) {
    fill();
    m_stream->writeData("abcd", 4);
    m_stream->setPosition(2);
    for (const int position : {-1, INT_MIN, kLength + 1, INT_MAX}) {
        EXPECT_THROW(m_stream->setPosition(position), Exception) << position;
        EXPECT_EQ(m_stream->getPosition(), 2) << position;
    }
    for (const int count : {-1, INT_MIN, INT_MAX - 1, INT_MAX}) {
        EXPECT_THROW(m_stream->writeData("x", count), Exception) << count;
        EXPECT_EQ(m_stream->getPosition(), 2) << count;
    }
    m_stream->setPosition(kLength);
    EXPECT_NO_THROW(m_stream->readData(nullptr, 0));
    EXPECT_NO_THROW(m_stream->writeData(nullptr, 0));
    char byte = 'x';
    EXPECT_THROW(m_stream->readData(&byte, 1), Exception);
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(m_stream->getPosition(), kLength);
    EXPECT_EQ(m_stream->getSize(), kLength);
    if (!m_isFile) { // which keeps what came
        m_stream->setPosition(kLength - 1);
        for (const int count : {2, -1, INT_MIN, INT_MAX}) EXPECT_THROW(m_stream->readData(&byte, count), Exception);
        EXPECT_EQ(byte, 'x');
        EXPECT_EQ(m_stream->getPosition(), kLength - 1);
    }

    char start[4];
    m_stream->setPosition(0);
    m_stream->readData(start, 4);
    EXPECT_EQ(std::string(start, 4), "abcd");
}

TEST_P(EveryStream, GrowsByWritingOrRefuses) {
    fill();
    m_stream->setPosition(kLength - 1);
    if (!m_grows) {
        EXPECT_THROW(m_stream->writeData("xyz", 3), ArrayStreamAdaptor::EndOfBuffer) << "nothing is written in part";
        EXPECT_EQ(m_stream->getPosition(), kLength - 1);
        return;
    }
    m_stream->writeData("xyz", 3);
    m_stream->writeData("!", 1);
    EXPECT_EQ(m_stream->getPosition(), kLength + 3);
    m_stream->setPosition(kLength - 2);
    EXPECT_EQ(m_stream->getSize(), kLength + 3);
    char end[6] = {};
    m_stream->readData(end, 5);
    EXPECT_EQ(std::string(end, 5), std::string("\0xyz!", 5));
}

INSTANTIATE_TEST_SUITE_P(Streams, EveryStream, testing::Values("Memory", "File", "Adaptor", "Array"),
                         [](const auto& kind) { return std::string(kind.param); });

namespace {

// Without "VEM_FN::FCurveLib::".
template<class Base, class Raised>
std::string textOf(const Raised& raised) {
    try {
        throw Raised(raised);
    } catch (const Base& exception) {
        const std::string text = exception.what();
        EXPECT_EQ(text.find("VEM_FN::FCurveLib::"), 0U);
        return text.substr(sizeof "VEM_FN::FCurveLib::" - 1);
    }
}

} // namespace

TEST(Streams, ExceptionsCarryTheirTextsAndBases) {
    using StreamError = Stream::StreamException;
    using FileError = File::FileException;
    EXPECT_EQ(textOf<Exception>(StreamError()), "Stream::StreamException");
    EXPECT_EQ(textOf<StreamError>(MemoryStream::EndOfBuffer()), "MemoryStream::EndOfBuffer");
    EXPECT_EQ(textOf<StreamError>(ArrayStreamAdaptor::EndOfBuffer()), "ArrayStreamAdaptor::EndOfBuffer");
    EXPECT_EQ(textOf<StreamError>(ArrayStreamAdaptor::AccessError()), "ArrayStreamAdaptor::AccessError");
    EXPECT_EQ(textOf<Exception>(FileError()), "File::Exception");
    EXPECT_EQ(textOf<FileError>(File::CantOpen()), "File::CantOpen");
    EXPECT_EQ(textOf<FileError>(File::FileExists()), "File::FileExists");
    EXPECT_EQ(textOf<FileError>(File::FileDoesntExist()), "File::FileDoesntExist");
    EXPECT_EQ(textOf<FileError>(File::AccessError()), "File::AccessError");
    EXPECT_EQ(textOf<FileError>(File::ReadError()), "File::ReadError");
    EXPECT_EQ(textOf<FileError>(File::WriteError()), "File::WriteError");
    EXPECT_EQ(textOf<FileError>(File::EndOfFile()), "File::EndOfFile");
}
