// Documents that are made to cost as much as possible: reading them takes memory in proportion to their length, little
// time, and ends in a curve or an exception.

#include "support/HostileDocument.h"
#include "FCurveLib/FCurveLib.h"
#include "support/BinaryDocument.h"

#include <gtest/gtest.h>

#include <string>

using namespace Test;

namespace {

const std::string kSum = repeated("1+") + '1'; // deeper than formulas may be

std::string text(const std::string& content) {
    return "fcurvetext 1.1\ncurve a {\n" + content + "\n}\n";
}
std::string xml(const std::string& content) {
    return "<fcurvelib version='1.1'><curve name='a'>" + content + "</curve></fcurvelib>";
}
std::string old(const std::string& content) {
    return "fcurve { name \"\" extensions constant constant " + content + '}';
}

std::string binary(const std::string& blocksOfCurve) {
    return binaryDocument(block("Curv", block("Name", sized("a")) + blocksOfCurve));
}

// The records of that many segments with keys.
std::string keys(int count) {
    std::string records;
    for (int i = 0; i < count; ++i) records += u16(16) + f64(i) + f64(0);
    return records;
}

const Hostile kHostile[] = {
    {"keys at one place", "text", text(repeated("key 1 1\n")), "BadNumber"},
    {"keys", "text", text(numbered("key % 1\n")), ""},
    {"empty curves", "text", "fcurvetext 1.0\n" + repeated("curve a {\n}\n"), ""},
    {"a long number", "text", text("key 1 " + repeated("1")), "BadNumber"},
    {"a text beyond the limit", "text", text("property a " + std::string(2000000, '1')), "LimitExceeded"},
    {"different properties", "text", text(numbered("property % 1\n")), ""},
    {"one property", "text", text(repeated("property a b\n")), ""},
    {"nested blocks", "text", text(repeated("a {\n")), "LimitExceeded"},
    {"a long line", "text", text(repeated("key ")), "LimitExceeded"},
    {"one long formula for many keys", "text",
     text("default \"" + kSum.substr(0, 40001) + "\"\n" + numbered("key % 1\n")), ""},
    {"parentheses", "text", text("segment \"" + repeated("(") + '"'), ""},
    {"signs", "text", text("segment \"" + repeated("-") + "x\""), ""},
    {"powers", "text", text("segment \"" + repeated("9**") + "9\""), ""},

    {"keys", "xml", xml(numbered("<segment interpolator=''/><key x='%' y='1'/>")), "MissingTag"},
    {"empty curves", "xml", "<fcurvelib version='1.0'><container>" + repeated("<curve name=''/>"), "ParseError"},
    {"nested elements", "xml", xml(repeated("<a>")), "LimitExceeded"},
    {"attributes", "xml", xml("<a" + numbered(" a%=''") + "/>"), ""},
    {"a comment", "xml", xml("<!--" + repeated("a") + "-->"), ""},
    {"different elements", "xml", xml(numbered("<a%/>")), ""},
    {"entities", "xml", "<!DOCTYPE a [" + numbered("<!ENTITY e% 'b'>"), "DoctypeRefused"},

    {"ends of a name", "tov_fcurve", "fcurve { name \"" + repeated("\"     extension "), "UnexpectedWord"},
    {"blanks in a name", "tov_fcurve", "fcurve { name \"" + repeated(" ") + repeated(" extensions"), "UnexpectedWord"},
    {"comments", "tov_fcurve", repeated("//\n") + "fcurve {", "UnexpectedWord"},
    {"empty curves", "tov_fcurve", repeated(old("")), ""},
    {"keys", "tov_fcurve", old(numbered("keyframe{% 0 interp tangents smooth 0 0 0 0}")), ""},

    {"one column", "hchan", repeated("1\n"), ""},
    {"one row", "hchan", repeated("1 "), "LimitExceeded"},
    {"the most columns", "hchan", repeated("1 ").substr(0, 131072) + '\n' + repeated("1 ").substr(0, 131072), ""},
    {"a number", "hchan", repeated("1"), "BadNumber"},
    {"comments", "hchan", repeated("#\n") + '1', ""},

    {"empty tracks", "hClip", "{tracklength=0" + repeated("{}") + '}', ""},
    {"samples", "hClip", "{tracklength=190000{data=" + repeated("1 ").substr(0, 380000) + "}}", ""},
    {"a length without data", "hClip", "{tracklength=10000000{data=1}}", "UnexpectedWord"},
    {"a run", "hClip", "{tracklength=4194304{data_rle=@4194304 1}}", "LimitExceeded"},
    {"the longest run", "hClip", "{tracklength=264500{data_rle=@264500 1" + std::string(400000, ' ') + "}}", ""},
    {"rotations", "hClip", "{tracklength=1{data=1}quaternions=xyz 1000000 " + repeated("0 ") + '}', "UnexpectedWord"},

    {"empty curves", "binary", binaryDocument(block("Cont", repeated(block("Curv", block("Name", u32(0)))))), ""},
    {"unknown blocks", "binary", binaryDocument(repeated(block("Nope", ""))), "MissingBlock"},
    {"a size beyond the end", "binary", binary("Segs" + u32(0x7FFFFFFF)), "WrongBlockSize"},
    {"a size of all bits", "binary", "Crvs" + u32(0xFFFFFFFF) + "Vers", "UnexpectedEnd"},
    {"expressions", "binary", binary(block("Expr", u32(9999999))), "WrongBlockSize"},
    {"segments", "binary", binary(block("Segs", u32(9999999))), "WrongBlockSize"},
    {"properties", "binary", binary(block("Prop", u32(60000))), "WrongBlockSize"},
    {"a text", "binary", binaryDocument(block("Curv", block("Name", u32(1048576)))), "WrongBlockSize"},
    {"one long formula for many segments", "binary",
     binary(block("Expr", u32(1) + sized(kSum)) + block("Segs", u32(20001) + keys(20000) + u16(0))), "LimitExceeded"},
    {"one short formula for many segments", "binary",
     binary(block("Expr", u32(1) + sized(kSum.substr(0, 63))) + block("Segs", u32(20001) + keys(20000) + u16(0))), ""},
};

} // namespace

TEST(HostileDocument, CostsLittleTimeAndMemory) {
    for (const Hostile& hostile : kHostile) expectLittleCost(hostile);
}

// Each would go on for 2 GB. How much is read before it is refused bounds time and memory.
TEST(HostileDocument, WithoutEndIsGivenUpEarly) {
    const std::string later = "<fcurvelib version='1.9'>";
    const struct {
        const char* format;
        std::string beginning;
        std::string pattern;
        int mostBytes;
        const char* complaint;
    } rows[] = {
        {"xml", later, "<a>", 100000, "LimitExceeded"},
        {"xml", "", "<a>", 100000, "UnexpectedTag"},
        {"xml", later + "<curve name='", "x", 30000000, "LimitExceeded"},
        {"xml", later + "<curve name='", "&quot;", 30000000, "LimitExceeded"},
        {"xml", later + "<!-- ", "x", 30000000, "LimitExceeded"},
        {"xml", later + "<", "x", 30000000, "LimitExceeded"},
        {"xml", "<!DOCTYPE fcurvelib [", "<!ENTITY a 'b'>", 100000, "DoctypeRefused"},
        {"xml", later + "<curve ", "a='' ", 30000000, "LimitExceeded"},
        {"xml", later + "<curve name=''>", "<property key='a' value=''/>", 3000000, "LimitExceeded"},
        {"xml", "", std::string(1, '\0'), 100000, "ParseError"},
        {"hchan", "", "1", 2000000, "LimitExceeded"},
        {"hchan", "1 2\n", "1 ", 300000, "LimitExceeded"},
        {"text", "fcurvetext 1.0\ncurve ", "x", 2000000, "LimitExceeded"},
        {"tov_fcurve", "fcurve { name \"", "x", 2000000, "LimitExceeded"},
        {"hClip", "{ rate = ", "x", 2000000, "LimitExceeded"},
    };
    for (const auto& row : rows) {
        EndlessStream stream(row.beginning, row.pattern);
        FormatInterface nobody;
        std::string said;
        try {
            FormatFactory::getReader(row.format)->readCurves(stream, nobody);
        } catch (const Exception& exception) {
            said = exception.what();
        }
        EXPECT_EQ(said.substr(said.rfind(':') + 1), row.complaint) << row.beginning << row.pattern;
        EXPECT_LT(stream.bytesRead, row.mostBytes) << row.beginning << row.pattern;
    }
}

// Under a limit that just suffices a document is read, and written; under one less neither.
TEST(FormatLimits, HoldForReadersAndWriters) {
    const auto container = FCurveContainer::create();
    for (const char* name : {"ab", "c"}) {
        container->addCurve(FCurve::create())->setName(name);
        FCurve& curve = *--container->end();
        for (const char* key : {"k", "l", "m"}) curve.begin()->getOutTangent()->setProperty(key, "v");
        for (const double x : {1.0, 2.0, 3.0, 4.0}) curve.insertSegment(*Keyframe::create(x, x), Linear::create());
        for (Segment& segment : curve) segment.setInterpolator(NumberInterp::create(7));
    }
    const std::string xmlText = WrittenAs("xml", *container);
    const std::string bytes = WrittenAs("binary", *container);
    const std::string textual = "fcurvetext 1.0\ncurve a {\n  property a b\n  property b c\n  default 12345678901\n"
                                "  key 1 1\n  key 2 2\n  key 3 3\n}\ncurve b {\n}\n";
    const std::string olds = "fcurve{name \"abcdefghi\" extensions constant constant keyframe{1 0 interp tangents "
                             "smooth 0 0 0 0}keyframe{2 0 interp tangents smooth 0 0 0 0}}fcurve{name \"\" extensions "
                             "constant constant}";
    const std::string clip = "{tracklength=3{data_rle=@3 1}{data=1 2 3}}";
    using Limits = FormatLimits;
    const struct {
        const char* format;
        std::string document;
        std::size_t Limits::*limit;
        std::size_t enough;
    } rows[] = {
        {"xml", xmlText, &Limits::text, 2},
        {"xml", xmlText, &Limits::nesting, 6},
        {"xml", xmlText, &Limits::properties, 3},
        {"xml", xmlText, &Limits::curves, 2},
        {"xml", xmlText, &Limits::keys, 4},
        {"binary", bytes, &Limits::text, 2},
        {"binary", bytes, &Limits::properties, 3},
        {"binary", bytes, &Limits::curves, 2},
        {"binary", bytes, &Limits::keys, 4},
        {"binary", bytes, &Limits::expressions, 10},
        {"text", textual, &Limits::text, 11},
        {"text", textual, &Limits::properties, 2},
        {"text", textual, &Limits::curves, 2},
        {"text", textual, &Limits::keys, 3},
        {"text", textual, &Limits::expressions, 52},
        {"text", "fcurvetext 1.1\na {\n b {\n  c {\n  }\n }\n}\n", &Limits::nesting, 3},
        {"tov_fcurve", olds, &Limits::text, 21},
        {"tov_fcurve", olds, &Limits::curves, 2},
        {"tov_fcurve", olds, &Limits::keys, 2},
        {"hchan", "1.25 1\n2 2\n", &Limits::text, 4},
        {"hchan", "1.25 1\n2 2\n", &Limits::keys, 2},
        {"hchan", "1.25 1\n2 2\n", &Limits::curves, 2},
        {"hClip", clip, &Limits::text, 11},
        {"hClip", clip, &Limits::curves, 2},
        {"hClip", clip, &Limits::keys, 3},
        {"hClip", "{tracklength=2184{data_rle=@2184 1}}", &Limits::runs, 8},
    };
    for (const auto& row : rows) {
        for (const std::size_t less : {0U, 1U}) {
            FormatLimits limits;
            limits.*row.limit = row.enough - less;
            const UnderLimits under(limits);
            const auto acts = [&](const auto& act) -> std::string {
                try {
                    act();
                } catch (const Exception& exception) {
                    return exception.what();
                }
                return "";
            };
            FormatInterface nobody;
            MemoryStream from = StreamOf(row.document);
            MemoryStream to;
            const std::string read = acts([&] { FormatFactory::getReader(row.format)->readCurves(from, nobody); });
            const std::string expected = less ? "LimitExceeded" : "";
            EXPECT_EQ(read.substr(read.rfind(':') + 1), expected) << row.format << ' ' << row.enough << row.document;
            if (!FormatFactory::getWriter(row.format)) continue;
            const std::string wrote = acts([&] { WriteCurves(*container, to, row.format); });
            EXPECT_EQ(wrote.substr(wrote.rfind(':') + 1), expected) << row.format << ' ' << row.enough;
            EXPECT_EQ(BytesOf(to), less ? "" : row.document);
        }
    }
}
