#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <vector>

using namespace Test;

namespace {

FormatType type(const char* name) {
    return {name, "Title", "ext"};
}

// A reader that knows a format by its first bytes.
struct BeginsWith : Reader {
    std::string magic;
    int asked = 0;
    std::string header;

    BeginsWith(const char* name, std::string bytes) : Reader(type(name)), magic(std::move(bytes)) {}

    void readCurves(Stream&, FormatInterface&) override {}
    void readCurve(Stream&, FormatInterface&) override {}
    bool canRead(Stream& stream, Stream& head) override {
        ++asked;
        header.assign(static_cast<std::size_t>(head.getSize()), '\0');
        head.readData(header.data(), head.getSize());
        if (stream.getPosition() != 0) return false;
        stream.setPosition(stream.getSize()); // a reader may leave both where it likes
        return header.compare(0, magic.size(), magic) == 0;
    }
};

struct NullWriter : Writer {
    std::vector<Stream*> streams;

    explicit NullWriter(const char* name) : Writer(type(name)) {}

private:
    void newStream(Stream* stream) override { streams.push_back(stream); }
};

std::vector<std::string> readerNames() {
    std::vector<std::string> names;
    for (auto i = FormatFactory::beginReaderTypes(); i != FormatFactory::endReaderTypes(); ++i) {
        names.emplace_back(i->getFormatName());
    }
    return names;
}

} // namespace

TEST(FormatFactory, ListsReadersNewestFirstForAsLongAsTheyLive) {
    const std::vector<std::string> builtIn = readerNames();
    auto expected = [&](std::vector<std::string> own) {
        own.insert(own.end(), builtIn.begin(), builtIn.end());
        return own;
    };
    const BeginsWith a("a", "");
    auto b = std::make_unique<BeginsWith>("b", "");
    const BeginsWith c("c", "");
    EXPECT_EQ(readerNames(), expected({"c", "b", "a"}));
    EXPECT_EQ(SimpleListNode<Reader>::first(), &c);
    EXPECT_EQ(c.next(), b.get());

    b.reset();
    EXPECT_EQ(readerNames(), expected({"c", "a"}));
    EXPECT_EQ(c.next(), &a);
    const BeginsWith d("d", "");
    EXPECT_EQ(readerNames(), expected({"d", "c", "a"}));

    std::vector<std::string> backward;
    for (auto i = FormatFactory::endReaderTypes(); i != FormatFactory::beginReaderTypes();) {
        backward.insert(backward.begin(), (--i)->getFormatName());
    }
    EXPECT_EQ(backward, readerNames());
}

TEST(FormatFactory, RecognisesByContentTheNewestFirst) {
    BeginsWith last("last", "MAG");
    BeginsWith hit("hit", "MAGIC");
    BeginsWith miss("miss", "OTHER");
    MemoryStream stream = StreamOf("MAGIC word");
    stream.setPosition(7);
    EXPECT_EQ(FormatFactory::getReader(stream), &hit);
    EXPECT_EQ(stream.getPosition(), 0);
    EXPECT_EQ(miss.asked, 1);
    EXPECT_EQ(last.asked, 0);

    // The header: 1024 bytes, zeros after a shorter stream.
    EXPECT_EQ(hit.header, std::string("MAGIC word") + std::string(1014, '\0'));
    MemoryStream large = StreamOf(std::string(1023, 'a') + "bc");
    EXPECT_EQ(FormatFactory::getReader(large), nullptr);
    EXPECT_EQ(hit.header, std::string(1023, 'a') + "b");
    MemoryStream empty;
    EXPECT_THROW(ReadCurves(empty, *FCurveContainer::create()), UnknownFormat);
    EXPECT_EQ(hit.header, std::string(1024, '\0'));
    EXPECT_EQ(empty.getPosition(), 0);
}

TEST(Writer, LinksNestAndTellOfEveryChange) {
    NullWriter writer("links");
    MemoryStream outer;
    MemoryStream inner;
    {
        const Writer::StreamLink first(writer, outer);
        EXPECT_EQ(writer.getStream(), &outer);
        {
            const Writer::StreamLink second(writer, inner);
            EXPECT_EQ(writer.getStream(), &inner);
        }
        EXPECT_EQ(writer.getStream(), &outer);
    }
    EXPECT_EQ(writer.getStream(), nullptr);
    EXPECT_EQ(writer.streams, (std::vector<Stream*>{&outer, &inner, &outer, nullptr}));
}

// Lines of a format and a text, in which "{{0a}}" is a byte and "{{2000 x}}" many times a text. Blanks and comments of
// any length, and a byte-order mark, do not hide a document.
TEST(FormatFactory, RecognisesEachFormatByWhereItStarts) {
    std::istringstream lines(readWholeFile(FCURVELIB_SOURCE_DIR "/tests/recognised.txt"));
    const std::string mark = "\xef\xbb\xbf";
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        const std::size_t blank = line.find(' ');
        const std::string format = line.substr(0, blank);
        std::string text = line.substr(blank + 1);
        for (std::size_t at = 0; (at = text.find("{{", at)) != std::string::npos; ++at) {
            const std::size_t end = text.find("}}", at);
            const std::string code = text.substr(at + 2, end - at - 2);
            std::string bytes(1, static_cast<char>(std::strtol(code.c_str(), nullptr, 16)));
            if (const std::size_t space = code.find(' '); space != std::string::npos) {
                bytes.clear();
                for (int i = std::stoi(code); i > 0; --i) bytes += code.substr(space + 1);
            }
            text.replace(at, end + 2 - at, bytes);
            at += bytes.size() - 1;
        }
        for (const std::string& before :
             {std::string(), mark, mark + std::string(2000, '\n') + std::string(70000, ' ')}) {
            if (!before.empty() && format == "binary") continue;
            MemoryStream stream = StreamOf(before + text);
            const Reader* const reader = FormatFactory::getReader(stream);
            EXPECT_EQ(reader ? reader->getFormatType().getFormatName() : "none", format) << line;
            EXPECT_EQ(stream.getPosition(), 0);
        }
    }
    EXPECT_GT(count, 50);
}
