#include "support/BinaryDocument.h"
#include "support/CallRecorder.h"
#include "support/Complaint.h"
#include "support/RandomCurve.h"
#include "support/SameCurve.h"
#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <regex>
#include <sstream>

using namespace Test;
using namespace std::string_literals;

namespace {

std::string written(const FCurve& curve) {
    std::string bytes;
    WriteFCurveToString(curve, "binary", bytes);
    return bytes;
}

// What the calls make of a writer's stream.
template<class Call>
std::string writtenBy(const Call& call) {
    Writer& writer = *FormatFactory::getWriter("binary");
    MemoryStream stream;
    const Writer::StreamLink link(writer, stream);
    call(writer);
    return BytesOf(stream);
}

// --- documents by hand -----------------------------------------------------------------------------------------------

std::string version(unsigned major, unsigned minor) {
    return block("Vers", u16(major) + u16(minor));
}
const std::string kName = block("Name", sized("c"));
const std::string kExpressions = block("Expr", u32(1) + sized("3"));

std::string document(const std::string& content) {
    return binaryDocument(content);
}
std::string newer(const std::string& content) {
    return binaryDocument(content, 7);
}
std::string curveOf(const std::string& rest) {
    return block("Curv", kName + rest);
}
std::string container(const std::string& content) {
    return document(block("Cont", content));
}
// A document of one curve, of these records.
std::string segments(std::size_t count, const std::string& records) {
    return document(curveOf(kExpressions + block("Segs", u32(count) + records)));
}

std::string callsOf(const std::string& bytes, std::vector<std::string> only = {}) {
    CallRecorder recorder;
    recorder.only = std::move(only);
    MemoryStream stream = StreamOf(bytes);
    FormatFactory::getReader("binary")->readCurve(stream, recorder);
    EXPECT_EQ(stream.getPosition(), stream.getSize());
    return recorder.joined();
}

// Of reading a single curve; of reading a container.
std::string complaint(const std::string& bytes) {
    return ComplaintOf("BinaryFormat", [&] { callsOf(bytes); });
}
std::string complaintOfContainer(const std::string& bytes) {
    FormatInterface target;
    MemoryStream stream = StreamOf(bytes);
    return ComplaintOf("BinaryFormat", [&] { FormatFactory::getReader("binary")->readCurves(stream, target); });
}

// The exception that reading raises.
template<class Error>
Error raised(const std::string& bytes) {
    try {
        callsOf(bytes);
    } catch (const Error& error) {
        return error;
    }
    throw Exception();
}

} // namespace

TEST(BinaryFormat, IsSmallWhereTangentsAreDefault) {
    const auto curve = FCurve::create();
    const auto linear = InterpolatorFactory::create("linear()");
    for (int i = 0; i < 1000; ++i) curve->insertSegment(*Keyframe::create(i * 1.25, std::sin(i)), linear);
    EXPECT_LE(written(*curve).size(), 18U * 1000U + 200U);
    // ... and all handles by hand
    for (Segment& segment : *curve) {
        segment.getOutTangent()->setWeighted(true);
        segment.getOutTangent()->set(0.3, 1);
        segment.getInTangent()->setWeighted(true);
        segment.getInTangent()->set(-0.3, 1);
    }
    EXPECT_LE(written(*curve).size(), 52U * 1000U + 200U);
}

TEST(BinaryFormat, DocumentsFollowEachOtherInAStream) {
    const auto read = FCurve::create();
    MemoryStream stream;
    stream.writeData("head", 4);
    for (unsigned seed : {1U, 2U}) WriteCurve(*RandomCurve(seed).make(), stream, "binary");
    stream.setPosition(4);
    for (unsigned seed : {1U, 2U}) {
        ReadCurve(stream, "binary", *read);
        EXPECT_EQ(Difference(*read, *RandomCurve(seed).make()), "");
    }
    EXPECT_EQ(stream.getPosition(), stream.getSize());
}

TEST(BinaryFormat, TheDumpInTheDocumentationIsWhatIsWritten) {
    const std::string page = readWholeFile(FCURVELIB_SOURCE_DIR "/docs/formats/binary.md");
    std::string dumped;
    const std::regex line("\n([0-9a-f]{4})((?: [0-9a-f]{2})+)(?=[ \n])");
    for (std::sregex_iterator i(page.begin(), page.end(), line), end; i != end; ++i) {
        EXPECT_EQ(std::stoul((*i)[1], nullptr, 16), dumped.size());
        std::istringstream bytes((*i)[2]);
        for (unsigned byte; bytes >> std::hex >> byte;) dumped += static_cast<char>(byte);
    }

    const auto curve = FCurve::create();
    curve->setName("ty");
    curve->setProperty("unit", "cm");
    SetLocked(*curve, true);
    curve->insertSegment(*Keyframe::create(0, 0), InterpolatorFactory::create("bezier()"));
    auto last = Keyframe::create(10, 5);
    last->setBreakdown(true);
    Segment& trailing = *curve->insertSegment(*last, InterpolatorFactory::create("constant()"));
    trailing.getLeftKey()->getInTangent()->setType(Tangent::Linear);
    EXPECT_EQ(dumped, written(*curve));
}

TEST(BinaryFormat, SkipsBlocksOfUnknownTypes) {
    const std::string unknown = block("Zzzz", "any\0thing"s);
    EXPECT_EQ(callsOf(document(unknown + block("Curv", unknown + kName + unknown + kExpressions + unknown) + unknown),
                      {"startCurve", "finishCurve"}),
              "startCurve c, finishCurve");
}

TEST(BinaryFormat, FlatHandlesAreAThirdOfASpanOr1AndTakeNoRoom) {
    const auto key = [](double x) { return u16(16) + f64(x) + f64(0); };
    const std::string bytes = document(curveOf(block("Show", u16(1)) + kExpressions
                                               + block("Segs", u32(5) + key(0) + key(6) + u16(0) + key(12) + key(15))));
    EXPECT_EQ(callsOf(bytes, {"tangentVector"}),
              "tangentVector 1 0, tangentVector -1 0, tangentVector 2 0, tangentVector -2 0, tangentVector 1 0, "
              "tangentVector -1 0, tangentVector 1 0, tangentVector -1 0, tangentVector 1 0, tangentVector -1 0");
    EXPECT_EQ(writtenBy([&](Writer& writer) {
                  MemoryStream stream = StreamOf(bytes);
                  FormatFactory::getReader("binary")->readCurve(stream, writer);
              }),
              bytes);
}

TEST(BinaryFormat, OfALaterMinorVersionItReadsWhatItKnows) {
    const std::string name = block("Name", sized("c") + "more");
    const std::string show = block("Show", u16(1U + 0x100U) + "more");
    const std::string segs = block("Segs", u32(2) + u16(16U + 0x0200U + 0x8000U) + f64(1) + f64(2) + u32(3) + "xyz"
                                               + u16(2) + "\x90"s + "more");
    const std::string content = block("Curv", name + show + kExpressions + segs);
    EXPECT_EQ(callsOf(newer(content), {"curveVisible", "startSegment", "keyframePosition", "tangentVector"}),
              "curveVisible 1, startSegment 3, tangentVector 1 0, tangentVector -1 0, keyframePosition 1 2, "
              "startSegment 3, tangentVector 1 0, tangentVector -1 0");
    EXPECT_EQ(complaint(document(content)), "WrongBlockSize at 41");
    EXPECT_EQ(complaint(newer(block("Curv", kName)).replace(16, 4, u16(2) + u16(3))), "UnsupportedVersion at 16");
}

TEST(BinaryFormat, RefusesWhatIsWrongAndSaysWhere) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // 20: the first block behind the version; 28: the first one in the curve; 41: behind "Name"; 58: records in "Segs"
    const struct {
        std::string bytes;
        const char* complaint;
    } rows[] = {
        {"", "UnexpectedEnd at 0"},
        {"Crvs", "UnexpectedEnd at 0"},
        {"crvs\0\0\0\0"s, "WrongBlockType at 0"},
        {"Crvs\xff\xff\xff\xff", "UnexpectedEnd at 8"},
        {"Crvs\x05\0\0\0Vers"s, "UnexpectedEnd at 8"},
        {block("Crvs", ""), "MissingBlock at 8"},
        {block("Crvs", "Vers"), "WrongBlockSize at 8"},
        {block("Crvs", block("Zzzz", "") + version(1, 0)), "WrongBlockType at 8"},
        {block("Crvs", block("Vers", "\1\0\0"s)), "WrongBlockSize at 18"},
        {block("Crvs", block("Vers", "\1\0\0\0\0"s)), "WrongBlockSize at 20"},
        {block("Crvs", version(0, 9)), "UnsupportedVersion at 16"},
        {document(""), "MissingBlock at 20"},
        {document(block("Name", "")), "WrongBlockType at 20"},
        {document(curveOf("") + curveOf("")), "WrongBlockType at 41"},
        {document("Curv"s + u32(13) + "Name" + u32(6) + "\0\0\0\0"s + "x"), "WrongBlockSize at 28"},
        {document("Curv"s + u32(0xFFFFFFFFU)), "WrongBlockSize at 20"},
        {document(block("Curv", "")), "MissingBlock at 28"},
        {document(block("Curv", block("Show", u16(0)) + kName)), "WrongBlockType at 28"},
        {document(block("Curv", block("Name", u32(5) + "four"))), "WrongBlockSize at 40"},
        {document(block("Curv", block("Name", sized("a\0b"s)))), "BadValue at 36"},
        {document(block("Curv", block("Name", u32(1U << 30U)))), "LimitExceeded at 36"},
        {document(curveOf(kName)), "WrongBlockType at 41"},
        {document(curveOf(kExpressions + block("Show", u16(0)))), "WrongBlockType at 58"},
        {document(curveOf(block("Show", u16(128)))), "BadValue at 49"},
        {document(curveOf(block("Show", u16(32) + f64(0) + f64(1) + f64(HUGE_VAL) + f64(1)))), "BadValue at 67"},
        {document(curveOf(block("Prop", u32(1) + sized("key")))), "WrongBlockSize at 49"},
        {document(curveOf(block("Prop", u32(100000)))), "LimitExceeded at 49"},
        {document(curveOf(block("Expr", u32(0xFFFFFFFFU)))), "LimitExceeded at 49"},
        {document(curveOf(block("Expr", u32(2) + sized("a")))), "WrongBlockSize at 49"},
        {document(curveOf(block("Segs", u32(1) + u16(0)))), "BadValue at 53"},
        {segments(1, u16(1) + u32(1)), "BadValue at 70"},
        {segments(2, u16(0)), "WrongBlockSize at 66"},
        {segments(1, u16(0x200)), "BadValue at 70"},
        {segments(1, u16(32)), "BadValue at 70"},
        {segments(1, u16(0) + "x"), "WrongBlockSize at 72"},
        {segments(1, u16(16) + f64(nan) + f64(0)), "BadValue at 72"},
        {segments(1, u16(16) + f64(0) + f64(-HUGE_VAL)), "BadValue at 80"},
        {segments(1, u16(2) + "\x18"), "BadValue at 72"},
        {segments(1, u16(2) + "\x40"), "BadValue at 72"},
        {segments(1, u16(2) + "\x08" + f64(nan) + f64(0)), "BadValue at 73"},
        {segments(1, u16(0x8000) + u32(0xFFFFFFFFU)), "WrongBlockSize at 76"},
    };
    for (const auto& row : rows) EXPECT_EQ(complaint(row.bytes), row.complaint) << testing::PrintToString(row.bytes);
    EXPECT_EQ(complaintOfContainer(container(block("Name", ""))), "WrongBlockType at 28");
    EXPECT_EQ(complaintOfContainer(container(curveOf("") + block("Prop", u32(0)))), "WrongBlockType at 49");
    // A single curve is a container, but not the reverse.
    EXPECT_EQ(complaintOfContainer(document(curveOf(""))), "");
    EXPECT_EQ(complaintOfContainer(container("")), "");
    EXPECT_EQ(complaint(container(curveOf(""))), "WrongBlockType at 20");
}

TEST(BinaryFormat, ExceptionsTellWhatWasExpectedAndFound) {
    using namespace BinaryFormat;
    const auto show = raised<WrongBlockType>(document(block("Nam\x01", "") + block("Show", "")));
    EXPECT_STREQ(show.expected(), "a single \"Curv\"");
    EXPECT_STREQ(show.found(), "Show");
    EXPECT_STREQ(raised<WrongBlockType>("Cr\x1b\xff\1\2\3\4").message(),
                 "Expected here is \"Crvs\", found is a block of type \"Cr??\".");

    const auto size = raised<WrongBlockSize>(segments(1, u16(16) + f64(0)));
    EXPECT_EQ(size.expectedSize(), 8U);
    EXPECT_EQ(size.foundSize(), 0U);
    EXPECT_STREQ(size.message(), "The block \"Segs\" ends too early: expected 8 bytes, found 0 bytes.");

    const auto end = raised<UnexpectedEnd>(document("").substr(0, 19));
    EXPECT_EQ(end.expectedSize(), 12U);
    EXPECT_EQ(end.foundSize(), 11U);

    const auto later = raised<UnsupportedVersion>(block("Crvs", version(2, 3)));
    EXPECT_EQ(later.majorVersion(), 2U);
    EXPECT_EQ(later.minorVersion(), 3U);
    EXPECT_EQ(later.supportedVersion(), 1U);
    EXPECT_STREQ(later.message(), "The document has version 2.3 of the format; version 1.0 can be read.");
}

TEST(BinaryFormat, KeepsTheLimitsThatTheHostSet) {
    const std::string two = segments(2, u16(16) + f64(0) + f64(0) + u16(0));
    const std::string properties =
        document(curveOf(block("Prop", u32(2) + sized("k") + sized("v") + sized("l") + sized("v"))));
    const std::string curves = container(curveOf("") + curveOf(""));
    FormatLimits limits;
    limits.text = 1;
    limits.properties = 2;
    limits.curves = 2;
    limits.keys = 1;
    const UnderLimits enough(limits);
    EXPECT_EQ(complaint(two), "");
    EXPECT_EQ(complaint(properties), "");
    EXPECT_EQ(complaintOfContainer(curves), "");
    limits.keys = 0;
    limits.properties = 1;
    limits.curves = 1;
    const UnderLimits tooLittle(limits);
    EXPECT_EQ(complaint(two), "LimitExceeded at 66");
    EXPECT_EQ(complaint(properties), "LimitExceeded at 49");
    EXPECT_EQ(complaintOfContainer(curves), "LimitExceeded at 49");
    limits.text = 0;
    const UnderLimits noText(limits);
    EXPECT_EQ(complaint(document(curveOf(""))), "LimitExceeded at 36");
}

TEST(BinaryWriter, IgnoresKeysBeforeSegmentsAndPropertiesBehindCurves) {
    EXPECT_EQ(writtenBy([](Writer& writer) {
                  CallPlayer::play("startCurve c, startSegmentContainer, startKeyframe, keyframePosition inf 0, "
                                   "finishKeyframe, finishCurve",
                                   writer);
              }),
              document(curveOf(block("Show", u16(1)) + block("Expr", u32(0)) + block("Segs", u32(0)))));
    EXPECT_EQ(writtenBy([](Writer& writer) {
                  CallPlayer::play(
                      "startCurveContainer, startCurve c, finishCurve, containerProperty a b, startCurve c, "
                      "finishCurve, finishCurveContainer",
                      writer);
              }),
              container(curveOf(block("Show", u16(1))) + curveOf(block("Show", u16(1)))));
}

TEST(BinaryWriter, RefusesADocumentBeyondTheEndOfAllStreams) {
    // Stands so close to 2^31-1 that nothing but a small document fits behind.
    struct Far : Stream {
        int room = 0;
        std::string bytes;
        void readData(void*, int) override {}
        void writeData(const void* buffer, int count) override {
            bytes.append(static_cast<const char*>(buffer), static_cast<std::size_t>(count));
        }
        int getPosition() const override { return INT_MAX - room; }
        void setPosition(int) override {}
        int getSize() const override { return INT_MAX; }
    };
    const auto curve = RandomCurve(6).make();
    const std::string bytes = written(*curve);
    Far far;
    for (far.room = 0; far.room < static_cast<int>(bytes.size()); ++far.room) {
        EXPECT_THROW(WriteCurve(*curve, far, "binary"), BinaryFormat::DocumentTooLarge) << far.room;
        EXPECT_EQ(far.bytes, "");
    }
    WriteCurve(*curve, far, "binary");
    EXPECT_EQ(far.bytes, bytes);
}
