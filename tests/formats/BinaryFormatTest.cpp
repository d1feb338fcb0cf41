#include "support/BinaryDocument.h"
#include "support/CallRecorder.h"
#include "support/RandomCurve.h"
#include "support/SameCurve.h"
#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>

using namespace Test;

namespace {

std::string curveOf(const std::string& segments) {
    const std::string head = block("Name", sized("c")) + block("Show", u16(1)) + block("Expr", u32(1) + sized("3"));
    return binaryDocument(block("Curv", head + block("Segs", segments)));
}

// The exception that reading raises.
template<class Error>
Error raised(const std::string& bytes) {
    try {
        ReadFCurveFromString(bytes, "binary", *FCurve::create());
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
    EXPECT_LE(WrittenAs("binary", *curve).size(), 18U * 1000U + 200U);
    // ... and all handles by hand
    for (Segment& segment : *curve) {
        segment.getOutTangent()->setWeighted(true);
        segment.getOutTangent()->set(0.3, 1);
        segment.getInTangent()->setWeighted(true);
        segment.getInTangent()->set(-0.3, 1);
    }
    EXPECT_LE(WrittenAs("binary", *curve).size(), 52U * 1000U + 200U);
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

TEST(BinaryFormat, FlatHandlesAreAThirdOfASpanOr1AndTakeNoRoom) {
    const auto key = [](double x) { return u16(16) + f64(x) + f64(0); };
    const std::string bytes = curveOf(u32(4) + key(0) + key(6) + key(15) + u16(0));
    CallRecorder recorder;
    recorder.only = {"tangentVector"};
    MemoryStream from = StreamOf(bytes);
    FormatFactory::getReader("binary")->readCurve(from, recorder);
    EXPECT_EQ(recorder.joined(),
              "tangentVector 1 0, tangentVector -1 0, tangentVector 2 0, tangentVector -2 0, tangentVector 3 0, "
              "tangentVector -3 0, tangentVector 1 0, tangentVector -1 0");
    EXPECT_EQ(WrittenAs("binary", *ReadAs("binary", bytes)), bytes);
}

TEST(BinaryFormat, ExceptionsTellWhatWasExpectedAndFound) {
    using namespace BinaryFormat;
    const auto show = raised<WrongBlockType>(binaryDocument(block("Nam\x01", "") + block("Show", "")));
    EXPECT_STREQ(show.expected(), "a single \"Curv\"");
    EXPECT_STREQ(show.found(), "Show");
    EXPECT_EQ(show.offset(), 28U);
    EXPECT_EQ(show.line(), 0U);
    EXPECT_STREQ(raised<WrongBlockType>("Cr\x1b\xff\1\2\3\4").found(), "Cr??");

    const auto size = raised<WrongBlockSize>(curveOf(u32(2) + u16(16) + f64(0)));
    EXPECT_EQ(size.expectedSize(), 8U);
    EXPECT_EQ(size.foundSize(), 0U);

    const auto end = raised<UnexpectedEnd>(binaryDocument("").substr(0, 19));
    EXPECT_EQ(end.expectedSize(), 12U);
    EXPECT_EQ(end.foundSize(), 11U);

    const auto later = raised<UnsupportedVersion>(block("Crvs", block("Vers", u16(2) + u16(3))));
    EXPECT_EQ(later.majorVersion(), 2U);
    EXPECT_EQ(later.minorVersion(), 3U);
    EXPECT_EQ(later.supportedVersion(), 1U);
}

TEST(BinaryWriter, RefusesADocumentBeyondTheEndOfAllStreams) {
    // Stands so close to 2^31-1 that nothing but a small document fits before it.
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
    Far far;
    const std::string bytes = WrittenAs("binary", *curve);
    for (far.room = 0; far.room < static_cast<int>(bytes.size()); ++far.room) {
        EXPECT_THROW(WriteCurve(*curve, far, "binary"), BinaryFormat::DocumentTooLarge) << far.room;
        EXPECT_EQ(far.bytes, "");
    }
    const std::string text = WrittenAs("xml", *curve);
    far.room = static_cast<int>(text.size()) - 1;
    EXPECT_THROW(WriteCurve(*curve, far, "xml"), XMLFormat::LimitExceeded);
    EXPECT_EQ(far.bytes, "");
    ++far.room;
    WriteCurve(*curve, far, "xml");
    EXPECT_EQ(far.bytes, text);
}
