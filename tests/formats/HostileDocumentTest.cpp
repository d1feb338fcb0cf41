// Documents that are made to cost as much as possible: reading them takes memory in proportion to their length, little
// time, and ends in a curve or an exception.

#include "FCurveLib/FCurveLib.h"
#include "support/Allocations.h"
#include "support/BinaryDocument.h"
#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

using namespace Test;

namespace {

constexpr int kBytes = 400000; // of a document, about

std::string repeated(const std::string& pattern) {
    std::string text;
    while (text.size() < kBytes) text += pattern;
    return text;
}
// The pattern with 0, 1, 2 ... in place of its "%".
std::string numbered(const std::string& pattern) {
    const std::size_t place = pattern.find('%');
    std::string text;
    for (int i = 0; text.size() < kBytes; ++i) text += std::string(pattern).replace(place, 1, std::to_string(i));
    return text;
}
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

struct Hostile {
    const char* name;
    const char* format;
    std::string document;
    const char* outcome; // the exception's class; nothing where the document is read
};

const Hostile kHostile[] = {
    {"keys at one place", "text", text(repeated("key 1 1\n")), ""},
    {"falling keys", "text", text(numbered("key -% 1\n")), ""},
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

    {"falling keys", "xml", xml(numbered("<segment interpolator=''/><key x='-%' y='1'/>")), "BadAttribute"},
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
    {"falling keys", "tov_fcurve", old(numbered("keyframe{-% 0 interp tangents smooth 0 0 0 0}")), ""},

    {"one column", "hchan", repeated("1\n"), ""},
    {"one row", "hchan", repeated("1 "), "LimitExceeded"},
    {"the most columns", "hchan", repeated("1 ").substr(0, 131072) + '\n' + repeated("1 ").substr(0, 131072), ""},
    {"a number", "hchan", repeated("1"), "BadNumber"},
    {"comments", "hchan", repeated("#\n") + '1', ""},

    {"empty tracks", "hClip", "{tracklength=0" + repeated("{}") + '}', ""},
    {"samples", "hClip", "{tracklength=190000{data=" + repeated("1 ").substr(0, 380000) + "}}", ""},
    {"a length without data", "hClip", "{tracklength=10000000{data=1}}", "UnexpectedWord"},
    {"a run", "hClip", "{tracklength=10000000{data_rle=@10000000 1}}", "LimitExceeded"},
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
     binary(block("Expr", u32(1) + sized(kSum)) + block("Segs", u32(60000) + std::string(120000, '\0'))),
     "LimitExceeded"},
};

// A key in a curve takes some 450 bytes and a curve 1 000, for which the shortest formats have two.
constexpr std::size_t kBytesPerByte = 600;

} // namespace

TEST(HostileDocument, CostsLittleTimeAndMemory) {
    for (const Hostile& hostile : kHostile) {
        MemoryStream stream = StreamOf(hostile.document);
        std::string outcome;
        const auto begin = std::chrono::steady_clock::now();
        const std::size_t peak = peakOf([&] {
            const auto container = FCurveContainer::create();
            ContainerInterface target(*container);
            try {
                FormatFactory::getReader(hostile.format)->readCurves(stream, target);
            } catch (const Exception& exception) {
                outcome = exception.what();
                outcome.erase(0, outcome.rfind(':') + 1);
            }
        });
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
        SCOPED_TRACE(std::string(hostile.format) + ", " + hostile.name);
        EXPECT_EQ(outcome, hostile.outcome);
        EXPECT_LT(peak, 100000 + kBytesPerByte * hostile.document.size());
        EXPECT_LT(took.count(), 20.0);
    }
}
