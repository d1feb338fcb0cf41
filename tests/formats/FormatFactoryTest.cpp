#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <memory>
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

TEST(FormatType, HoldsThreeTexts) {
    FormatType format("name", "Title", "ext");
    format.setTitle("Other");
    format.setExtension(nullptr);
    EXPECT_STREQ(format.getFormatName(), "name");
    EXPECT_STREQ(format.getTitle(), "Other");
    EXPECT_STREQ(format.getExtension(), "");
    EXPECT_STREQ(FormatType(nullptr, nullptr, nullptr).getFormatName(), "");
}

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

TEST(FormatFactory, FindsByExactNameTheNewestFirst) {
    BeginsWith older("twin", "");
    BeginsWith newer("twin", "");
    NullWriter writer("twin");
    EXPECT_EQ(FormatFactory::getReader("twin"), &newer);
    EXPECT_EQ(FormatFactory::getReader(type("twin")), &newer);
    EXPECT_EQ(FormatFactory::getWriter("twin"), &writer);
    EXPECT_EQ(FormatFactory::getWriter(type("twin")), &writer);
    EXPECT_EQ(&*FormatFactory::findReaderType("twin"), &newer.getFormatType());
    EXPECT_EQ(&*FormatFactory::findWriterType("twin"), &writer.getFormatType());

    for (const char* name : {"Twin", "twi", "twin ", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(FormatFactory::getReader(name), nullptr);
        EXPECT_EQ(FormatFactory::getWriter(name), nullptr);
        EXPECT_TRUE(FormatFactory::findReaderType(name) == FormatFactory::endReaderTypes());
        EXPECT_TRUE(FormatFactory::findWriterType(name) == FormatFactory::endWriterTypes());
    }
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

    // The header: 1024 bytes, zeros behind a shorter stream.
    EXPECT_EQ(hit.header, std::string("MAGIC word") + std::string(1014, '\0'));
    MemoryStream large = StreamOf(std::string(1023, 'a') + "bc");
    EXPECT_EQ(FormatFactory::getReader(large), nullptr);
    EXPECT_EQ(hit.header, std::string(1023, 'a') + "b");
    MemoryStream empty;
    EXPECT_THROW(ReadCurves(empty, *FCurveContainer::create()), UnknownFormat);
    EXPECT_EQ(hit.header, std::string(1024, '\0'));
    EXPECT_EQ(empty.getPosition(), 0);
}

TEST(FormatFactory, ARecogniserThatReadsPastTheEndDoesNotHideTheOthers) {
    BeginsWith hit("hit", "MAGIC");
    struct Greedy : BeginsWith {
        Greedy() : BeginsWith("greedy", "") {}
        bool canRead(Stream& stream, Stream&) override {
            char buffer[64];
            stream.readData(buffer, 64);
            return true;
        }
    } const greedy;
    MemoryStream stream = StreamOf("MAGIC");
    EXPECT_EQ(FormatFactory::getReader(stream), &hit);
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

// Blanks and comments of any length, and a byte-order mark, do not hide a document.
TEST(FormatFactory, RecognisesEachFormatByWhereItStarts) {
    const std::string root = "<fcurvelib version='1.0'>";
    const std::string mark = "\xef\xbb\xbf";
    std::string rows;
    for (int i = 0; i < 1000; ++i) rows += std::to_string(i) + " 0.25\n";
    const struct {
        std::string text;
        const char* format;
    } texts[] = {
        {root, "xml"},
        {"<fcurvelib>", "xml"},
        {"<fcurvelib/>", "xml"},
        {"<fcurvelib\t", "xml"},
        {"<?xml version='1.0'?>\n<!-- x --><?pi?>" + root, "xml"},
        {"<!DOCTYPE fcurvelib [<!ENTITY a 'b'>]>", "xml"}, // to be refused by name
        {"<!-- " + std::string(200000, '-') + "-->" + root, "xml"},
        {"<?a " + std::string(2000, '?') + "?>" + root, "xml"},
        {"<", ""},
        {"<fcurvelib", ""},
        {"<fcurvelibrary>", ""},
        {"<FCurveLib>", ""},
        {"x" + root, ""},
        {"<svg>" + root, ""},
        {"<!ELEMENT>" + root, ""},
        {"<!- -->" + root, ""},
        {"<!-- ", ""},
        {"\v" + root, ""},

        {"fcurvetext 1.0\n", "text"},
        {"# made by\n\n \tfcurvetext\t1.0\n", "text"},
        {std::string(2000, '#') + "\nfcurvetext 1.0", "text"},
        {"fcurvetexts 1.0\n", ""},
        {"fcurvetext", ""},
        {"# fcurvetext 1.0", ""},

        {"fcurve {", "tov_fcurve"},
        {"//" + std::string(3000, 'a') + "\rfcurve // a\n{", "tov_fcurve"},
        {"fcurve name", ""},
        {"/ fcurve {", ""},

        {"{rate=1", "hClip"},
        {" {\n start = 2", "hClip"},
        {"{" + std::string(2000, ' ') + "tracks = 1", "hClip"},
        {"{ tracklength = 1", "hClip"},
        {"{ rates = 1", ""},
        {"{ rate 1", ""},
        {"rate = 1", ""},

        {"1", "hchan"},
        {"# frame tx\r\n1 2\r\n", "hchan"},
        {"# für\n1 2\n", "hchan"},
        {"#" + std::string(5000, '1') + "\n1 2", "hchan"},
        {rows, "hchan"},
        {std::string(1023, '1').replace(2, 1, " ") + "-x", "hchan"}, // the last cell in the window may be cut
        {"1 2 3\n4 5\n", "hchan"},                                   // ragged: refused by name, with a place
        {"\n \n", ""},
        {"# only a comment\n", ""},
        {"1 2\n3 x\n", ""},
        {"1 nan\n", ""},
        {"1 2\n\xff", ""},
        {"1 2 #\n", ""},
        {"1\n{\nrate = 30\n}\n", ""},
        {std::string("chan\0\0\0\2", 8), ""},
        {std::string("1 2\n\0\0", 6), ""},
        {std::string(3000, '1'), ""}, // not one whole number in the window

        {std::string("Crvs\4\0\0\0Vers\4\0\0\0\1\0\0\0", 20), "binary"},
        {std::string("Crvs\4\0\0\0Verb", 12), ""},
        {std::string("Crv\0\4\0\0\0Vers", 12), ""},
        {"", ""},
        {std::string(2000, '\0'), ""},
    };
    for (const auto& row : texts) {
        const std::string format = row.format;
        const bool isText = format != "binary";
        for (const std::string& before :
             {std::string(), mark, mark + std::string(2000, '\n') + std::string(70000, ' ')}) {
            if (!before.empty() && !isText) continue;
            MemoryStream stream = StreamOf(before + row.text);
            const Reader* const reader = FormatFactory::getReader(stream);
            EXPECT_EQ(reader ? reader->getFormatType().getFormatName() : "", format) << row.text.substr(0, 60);
        }
    }
}
