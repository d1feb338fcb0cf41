#include "FCurveLib/FCurveLib.h"
#include "support/CallRecorder.h"
#include "support/Museum.h"
#include "support/RandomCurve.h"
#include "support/SameCurve.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
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

MemoryStream streamOf(const std::string& bytes) {
    MemoryStream stream;
    stream.writeData(bytes.data(), static_cast<int>(bytes.size()));
    stream.setPosition(0);
    return stream;
}

std::string bytesOf(const MemoryStream& stream) {
    return {stream.getData(), static_cast<std::size_t>(stream.getSize())};
}

// --- documents by hand -----------------------------------------------------------------------------------------------

std::string u16(unsigned number) {
    return {static_cast<char>(number & 255U), static_cast<char>(number >> 8U)};
}
std::string u32(std::size_t number) {
    return u16(static_cast<unsigned>(number & 65535U)) + u16(static_cast<unsigned>(number >> 16U));
}
std::string f64(double number) {
    std::uint64_t bits;
    std::memcpy(&bits, &number, sizeof bits);
    return u32(bits & 0xFFFFFFFFU) + u32(bits >> 32U);
}
std::string text(const std::string& content) {
    return u32(content.size()) + content;
}
std::string block(const char* type, const std::string& content) {
    return std::string(type, 4) + u32(content.size()) + content;
}
std::string version(unsigned major, unsigned minor) {
    return block("Vers", u16(major) + u16(minor));
}
const std::string kName = block("Name", text("c"));
const std::string kExpressions = block("Expr", u32(1) + text("3"));

std::string document(const std::string& content) {
    return block("Crvs", version(1, 0) + content);
}
std::string newer(const std::string& content) {
    return block("Crvs", version(1, 7) + content);
}
std::string curveOf(const std::string& rest) {
    return block("Curv", kName + rest);
}
// A document of one curve, of these records.
std::string segments(std::size_t count, const std::string& records) {
    return document(curveOf(kExpressions + block("Segs", u32(count) + records)));
}

std::vector<std::string> callsOf(const std::string& bytes, std::vector<std::string> only = {}) {
    CallRecorder recorder;
    recorder.only = std::move(only);
    MemoryStream stream = streamOf(bytes);
    FormatFactory::getReader("binary")->readCurve(stream, recorder);
    EXPECT_EQ(stream.getPosition(), stream.getSize());
    return recorder.calls;
}

// what() of the exception, and where: "WrongBlockType at 12"; empty if there is none.
std::string errorOf(const std::string& bytes, bool container = false) {
    FormatInterface target;
    MemoryStream stream = streamOf(bytes);
    Reader& reader = *FormatFactory::getReader("binary");
    try {
        container ? reader.readCurves(stream, target) : reader.readCurve(stream, target);
    } catch (const BinaryFormat::BinaryError& error) {
        EXPECT_STRNE(error.message(), "");
        EXPECT_EQ(error.line(), 0U);
        const std::string prefix = "VEM_FN::FCurveLib::BinaryFormat::";
        EXPECT_EQ(std::string(error.what()).substr(0, prefix.size()), prefix);
        return error.what() + prefix.size() + " at "s + std::to_string(error.offset());
    }
    return "";
}

class EveryExhibit : public testing::TestWithParam<Exhibit> {};

} // namespace

// --- what is written comes back --------------------------------------------------------------------------------------

TEST_P(EveryExhibit, ComesBackToTheLastBit) {
    const auto curve = GetParam().make();
    for (Segment& segment : *curve) // none evaluates to 0, and is written as such
        if (!segment.getInterpolator()) segment.setInterpolator(InterpolatorFactory::create("0"));
    const std::string bytes = written(*curve);
    const auto read = FCurve::create();
    ReadFCurveFromString(bytes, "binary", *read);
    EXPECT_EQ(Difference(*curve, *read), "");
    EXPECT_EQ(written(*read), bytes);
}
INSTANTIATE_TEST_SUITE_P(BinaryFormat, EveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST(BinaryFormat, RandomContainersComeBackToTheLastBit) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        RandomCurve random(seed);
        const auto container = FCurveContainer::create();
        for (int i = random.below(3); i > 0; --i) container->setProperty(("k" + random.text()).c_str(), "\xff\x01");
        for (int i = random.below(4); i > 0; --i) container->addCurve(random.make());
        MemoryStream stream;
        WriteCurves(*container, stream, "binary");

        const auto read = FCurveContainer::create();
        EXPECT_STREQ(ReadCurves(stream, *read).getFormatName(), "binary");
        EXPECT_EQ(SameCurve::properties(*container, *read), "");
        ASSERT_EQ(read->size(), container->size());
        for (auto a = container->begin(), b = read->begin(); a != container->end(); ++a, ++b)
            ASSERT_EQ(Difference(*a, *b), "") << "seed " << seed;
        MemoryStream again;
        WriteCurves(*read, again, "binary");
        ASSERT_EQ(bytesOf(again), bytesOf(stream)) << "seed " << seed;
    }
}

TEST(BinaryFormat, CallsThatLeaveThingsOutComeBackAsTheyWere) {
    RecordingWriter expected;
    MemoryStream stream;
    const auto run = [](FormatInterface& target) {
        target.startCurve("");
        target.startSegmentContainer();
        target.startSegment("");
        target.startInTangent(); // no handle: the type will compute one
        target.tangentType(Tangent::Smooth);
        target.finishInTangent();
        target.finishSegment();
        target.startKeyframe();
        target.keyframePosition(-0.0, 5e-324);
        target.finishKeyframe();
        target.startSegment("linear()");
        target.finishSegment();
        target.finishSegmentContainer();
        target.finishCurve();
    };
    Writer& writer = *FormatFactory::getWriter("binary");
    const Writer::StreamLink link(writer, stream);
    run(writer);
    EXPECT_EQ(callsOf(bytesOf(stream), {"tangentVector", "tangentType", "keyframePosition", "startSegment"}),
              (std::vector<std::string>{"startSegment ", "tangentType 0", "tangentType 3", "keyframePosition -0 5e-324",
                                        "startSegment linear()", "tangentType 0", "tangentType 0"}));
}

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
    const auto one = RandomCurve(1).make();
    const auto two = RandomCurve(2).make();
    MemoryStream stream;
    stream.writeData("head", 4);
    WriteCurve(*one, stream, "binary");
    WriteCurve(*two, stream, "binary");
    stream.setPosition(4);
    const auto read = FCurve::create();
    ReadCurve(stream, "binary", *read);
    EXPECT_EQ(Difference(*read, *one), "");
    ReadCurve(stream, "binary", *read);
    EXPECT_EQ(Difference(*read, *two), "");
    EXPECT_EQ(stream.getPosition(), stream.getSize());
}

TEST(BinaryFormat, TheDumpInTheDocumentationIsWhatIsWritten) {
    std::ifstream in(FCURVELIB_SOURCE_DIR "/docs/formats/binary.md");
    const std::string page{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
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

// --- what is read ----------------------------------------------------------------------------------------------------

TEST(BinaryFormat, ReadsASingleCurveAsAContainerButNotTheReverse) {
    const std::string container = document(block("Cont", curveOf("") + curveOf("")));
    EXPECT_EQ(errorOf(document(curveOf("")), true), "");
    EXPECT_EQ(errorOf(container, true), "");
    EXPECT_EQ(errorOf(container, false), "WrongBlockType at 20");
    EXPECT_EQ(errorOf(document(block("Cont", "")), true), "");
}

TEST(BinaryFormat, SkipsBlocksOfUnknownTypes) {
    const std::string unknown = block("Zzzz", "any\0thing"s);
    EXPECT_EQ(callsOf(document(unknown + block("Curv", unknown + kName + unknown + kExpressions + unknown) + unknown),
                      {"startCurve", "finishCurve"}),
              (std::vector<std::string>{"startCurve c", "finishCurve"}));
}

TEST(BinaryFormat, OfALaterMinorVersionItReadsWhatItKnows) {
    const std::string name = block("Name", text("c") + "more");
    const std::string show = block("Show", u16(1U + 0x100U) + "more");
    const std::string segs = block("Segs", u32(2) + u16(16U + 0x0200U + 0x8000U) + f64(1) + f64(2) + u32(3) + "xyz"
                                               + u16(2) + "\x90"s + "more");
    const std::string content = block("Curv", name + show + kExpressions + segs);
    EXPECT_EQ(callsOf(newer(content), {"curveVisible", "startSegment", "keyframePosition", "tangentVector"}),
              (std::vector<std::string>{"curveVisible 1", "startSegment 3", "tangentVector 1 0", "tangentVector -1 0",
                                        "keyframePosition 1 2", "startSegment 3", "tangentVector 1 0",
                                        "tangentVector -1 0"}));
    EXPECT_EQ(errorOf(document(content)), "WrongBlockSize at 41");
    EXPECT_EQ(errorOf(newer(block("Curv", kName)).replace(16, 4, u16(2) + u16(3))), "UnsupportedVersion at 16");

    try {
        callsOf(block("Crvs", version(2, 3)));
        FAIL();
    } catch (const BinaryFormat::UnsupportedVersion& error) {
        EXPECT_EQ(error.majorVersion(), 2U);
        EXPECT_EQ(error.minorVersion(), 3U);
        EXPECT_EQ(error.supportedVersion(), 1U);
        EXPECT_STREQ(error.message(), "The document has version 2.3 of the format; version 1.0 can be read.");
    }
}

TEST(BinaryFormat, RefusesWhatIsWrongAndSaysWhere) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // 20: the first block behind the version; 28: the first one in the curve; 41: behind "Name"; 58: records in "Segs"
    const struct {
        std::string bytes;
        const char* error;
    } cases[] = {
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
        {document(block("Curv", block("Name", text("a\0b"s)))), "BadValue at 36"},
        {document(block("Curv", block("Name", u32(1U << 30U)))), "LimitExceeded at 36"},
        {document(curveOf(kName)), "WrongBlockType at 41"},
        {document(curveOf(kExpressions + block("Show", u16(0)))), "WrongBlockType at 58"},
        {document(curveOf(block("Show", u16(128)))), "BadValue at 49"},
        {document(curveOf(block("Show", u16(32) + f64(0) + f64(1) + f64(HUGE_VAL) + f64(1)))), "BadValue at 67"},
        {document(curveOf(block("Prop", u32(1) + text("key")))), "WrongBlockSize at 49"},
        {document(curveOf(block("Prop", u32(100000)))), "LimitExceeded at 49"},
        {document(curveOf(block("Expr", u32(0xFFFFFFFFU)))), "LimitExceeded at 49"},
        {document(curveOf(block("Expr", u32(2) + text("a")))), "WrongBlockSize at 49"},
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
    for (const auto& [bytes, error] : cases) EXPECT_EQ(errorOf(bytes), error) << testing::PrintToString(bytes);
    EXPECT_EQ(errorOf(document(block("Cont", block("Name", ""))), true), "WrongBlockType at 28");
    EXPECT_EQ(errorOf(document(block("Cont", curveOf("") + block("Prop", u32(0)))), true), "WrongBlockType at 49");
}

TEST(BinaryFormat, ExceptionsTellWhatWasExpectedAndFound) {
    try {
        callsOf(document(block("Nam\x01", "") + block("Show", "")));
        FAIL();
    } catch (const BinaryFormat::WrongBlockType& error) {
        EXPECT_STREQ(error.expected(), "a single \"Curv\"");
        EXPECT_STREQ(error.found(), "Show");
    }
    try {
        callsOf("Cr\x1b\xff\1\2\3\4");
        FAIL();
    } catch (const BinaryFormat::WrongBlockType& error) {
        EXPECT_STREQ(error.found(), "Cr??");
        EXPECT_STREQ(error.message(), "Expected here is \"Crvs\", found is a block of type \"Cr??\".");
    }
    try {
        callsOf(segments(1, u16(16) + f64(0)));
        FAIL();
    } catch (const BinaryFormat::WrongBlockSize& error) {
        EXPECT_EQ(error.expectedSize(), 8U);
        EXPECT_EQ(error.foundSize(), 0U);
        EXPECT_STREQ(error.message(), "The block \"Segs\" ends too early: expected 8 bytes, found 0 bytes.");
    }
    try {
        callsOf(document("").substr(0, 19));
        FAIL();
    } catch (const BinaryFormat::UnexpectedEnd& error) {
        EXPECT_EQ(error.expectedSize(), 12U);
        EXPECT_EQ(error.foundSize(), 11U);
    }
}

TEST(BinaryFormat, HoldsToTheLimitsThatAreSet) {
    const FormatLimits before = GetFormatLimits();
    const std::string two = segments(2, u16(16) + f64(0) + f64(0) + u16(0));
    const std::string properties =
        document(curveOf(block("Prop", u32(2) + text("k") + text("v") + text("l") + text("v"))));
    const std::string curves = document(block("Cont", curveOf("") + curveOf("")));
    FormatLimits limits;
    limits.text = 1;
    limits.properties = 2;
    limits.curves = 2;
    limits.keys = 1;
    SetFormatLimits(limits);
    EXPECT_EQ(errorOf(two), "");
    EXPECT_EQ(errorOf(properties), "");
    EXPECT_EQ(errorOf(curves, true), "");
    limits.keys = 0;
    limits.properties = 1;
    limits.curves = 1;
    SetFormatLimits(limits);
    EXPECT_EQ(errorOf(two), "LimitExceeded at 66");
    EXPECT_EQ(errorOf(properties), "LimitExceeded at 49");
    EXPECT_EQ(errorOf(curves, true), "LimitExceeded at 49");
    limits.text = 0;
    SetFormatLimits(limits);
    EXPECT_EQ(errorOf(document(curveOf(""))), "LimitExceeded at 36");
    SetFormatLimits(before);
}

TEST(BinaryFormat, StopsWhereTheTargetHasEnough) {
    CallRecorder recorder;
    recorder.only = {"startCurveContainer", "startCurve", "finishCurve", "startSegmentContainer",
                     "finishCurveContainer"};
    const auto container = FCurveContainer::create();
    for (int i = 0; i < 2; ++i) container->addCurve(RandomCurve(3).make());
    MemoryStream stream;
    WriteCurves(*container, stream, "binary");
    const auto calls = [&] {
        recorder.calls.clear();
        stream.setPosition(0);
        FormatFactory::getReader("binary")->readCurves(stream, recorder);
        for (std::string& call : recorder.calls) call.resize(std::min<std::size_t>(call.find(' '), call.size()));
        return recorder.calls;
    };
    recorder.wantsMore = false;
    EXPECT_EQ(calls(), (std::vector<std::string>{"startCurveContainer", "startCurve", "startSegmentContainer",
                                                 "finishCurve", "finishCurveContainer"}));
    recorder.wantsCurve = false;
    EXPECT_EQ(calls(),
              (std::vector<std::string>{"startCurveContainer", "startCurve", "startCurve", "finishCurveContainer"}));
}

// --- the writer ------------------------------------------------------------------------------------------------------

TEST(BinaryWriter, WritesNothingBeforeTheDocumentIsComplete) {
    Writer& writer = *FormatFactory::getWriter("binary");
    MemoryStream stream;
    {
        const Writer::StreamLink link(writer, stream);
        writer.startCurve("c");
        writer.startSegmentContainer();
        writer.startSegment("3");
        writer.finishSegment();
        writer.startKeyframe();
        EXPECT_THROW(writer.keyframePosition(HUGE_VAL, 0), BinaryFormat::NotFinite);
        EXPECT_THROW(writer.keyframePosition(0, std::nan("")), BinaryFormat::NotFinite);
    }
    EXPECT_EQ(stream.getSize(), 0);

    // Nothing of it is left for the next one.
    const auto curve = RandomCurve(4).make();
    WriteCurve(*curve, stream, "binary");
    EXPECT_EQ(bytesOf(stream), written(*curve));
}

TEST(BinaryWriter, ADocumentThatIsPutAsideGoesOn) {
    Writer& writer = *FormatFactory::getWriter("binary");
    const auto other = RandomCurve(5).make();
    MemoryStream outer;
    MemoryStream inner;
    {
        const Writer::StreamLink link(writer, outer);
        writer.startCurveContainer();
        writer.startCurve("a");
        WriteCurve(*other, inner, "binary");
        writer.finishCurve();
        writer.finishCurveContainer();
    }
    EXPECT_EQ(bytesOf(inner), written(*other));
    EXPECT_EQ(bytesOf(outer), document(block("Cont", block("Curv", block("Name", text("a")) + block("Show", u16(1))))));
}

TEST(BinaryWriter, IgnoresCallsThatMakeNoDocument) {
    Writer& writer = *FormatFactory::getWriter("binary");
    MemoryStream stream;
    const Writer::StreamLink link(writer, stream);
    writer.finishCurve();
    writer.tangentVector(1, 2);
    writer.finishCurveContainer();
    writer.startCurve("c");
    EXPECT_FALSE(writer.startCurve("d"));
    writer.startCurveContainer();
    writer.containerProperty("a", "b");
    writer.finishCurveContainer();
    writer.keyframePosition(1, 2);
    writer.startSegmentContainer();
    writer.curveVisible(false);
    writer.startKeyframe(); // before any segment
    writer.keyframePosition(HUGE_VAL, 0);
    writer.finishKeyframe();
    writer.finishSegmentContainer();
    writer.startSegment("3");
    writer.finishCurve();
    EXPECT_EQ(bytesOf(stream),
              document(curveOf(block("Show", u16(1)) + block("Expr", u32(0)) + block("Segs", u32(0)))));
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
