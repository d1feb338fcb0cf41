// What holds for every format that is written as well as read.

#include "support/CallRecorder.h"
#include "support/Complaint.h"
#include "support/Museum.h"
#include "support/RandomCurve.h"
#include "support/SameCurve.h"
#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <thread>

using namespace Test;

namespace {

struct Format {
    const char* name;
    const char* scope; // of its exceptions
};

void PrintTo(const Format& format, std::ostream* out) {
    *out << format.name;
}

class EveryWrittenFormat : public testing::TestWithParam<Format> {
protected:
    const char* const m_name = GetParam().name;
    Reader& m_reader = *FormatFactory::getReader(m_name);
    Writer& m_writer = *FormatFactory::getWriter(m_name);

    std::string written(const FCurve& curve) const {
        std::string bytes;
        WriteFCurveToString(curve, m_name, bytes);
        return bytes;
    }
    std::string written(const FCurveContainer& container) const {
        MemoryStream stream;
        WriteCurves(container, stream, m_name);
        return BytesOf(stream);
    }
    std::shared_ptr<FCurve> read(const std::string& bytes) const {
        auto curve = FCurve::create();
        ReadFCurveFromString(bytes, m_name, *curve);
        return curve;
    }
    std::string calls(const std::string& bytes, CallRecorder& recorder) const {
        MemoryStream stream = StreamOf(bytes);
        m_reader.readCurves(stream, recorder);
        return recorder.joined();
    }
};

INSTANTIATE_TEST_SUITE_P(Formats, EveryWrittenFormat,
                         testing::Values(Format{"xml", "XMLFormat"}, Format{"binary", "BinaryFormat"}),
                         [](const auto& format) { return std::string(format.param.name); });

} // namespace

TEST_P(EveryWrittenFormat, CurvesComeBackToTheLastBitAndAreWrittenAgainByteForByte) {
    for (const Exhibit& exhibit : Museum()) {
        const auto curve = exhibit.make();
        const std::string bytes = written(*curve);
        const auto back = read(bytes);
        EXPECT_EQ(Difference(*curve, *back), "") << exhibit.name;
        EXPECT_EQ(written(*back), bytes) << exhibit.name;
    }
}

TEST_P(EveryWrittenFormat, ContainersComeBackToTheLastBitAndAreWrittenAgainByteForByte) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        RandomCurve random(seed);
        const auto container = FCurveContainer::create();
        const auto back = FCurveContainer::create();
        for (int i = random.below(3); i > 0; --i) {
            container->setProperty(("k" + random.text()).c_str(), random.text().c_str());
        }
        for (int i = random.below(4); i > 0; --i) container->addCurve(random.make());
        const std::string bytes = written(*container);
        MemoryStream stream = StreamOf(bytes);
        ASSERT_STREQ(ReadCurves(stream, *back).getFormatName(), m_name);
        ASSERT_EQ(Difference(*container, *back), "") << "seed " << seed;
        ASSERT_EQ(written(*back), bytes) << "seed " << seed;

        // Straight from the reader to the writer.
        MemoryStream again;
        stream.setPosition(0);
        const Writer::StreamLink link(m_writer, again);
        m_reader.readCurves(stream, m_writer);
        ASSERT_EQ(BytesOf(again), bytes) << "seed " << seed;
    }
}

TEST_P(EveryWrittenFormat, AMillionBytesReachTheStreamInAFewPieces) {
    struct Counting : MemoryStream {
        int writes = 0;
        void writeData(const void* buffer, int count) override {
            ++writes;
            MemoryStream::writeData(buffer, count);
        }
    } stream;
    const auto curve = FCurve::create();
    const auto bezier = InterpolatorFactory::create("bezier()");
    for (int i = 0; i < 10000; ++i) curve->insertSegment(*Keyframe::create(i, i), bezier);
    curve->setProperty("long", std::string(800000, 'x').c_str());
    WriteCurve(*curve, stream, m_name);
    EXPECT_GT(stream.getSize(), 900000);
    EXPECT_LT(stream.writes, 20);
    EXPECT_EQ(Difference(*curve, *read(BytesOf(stream))), "");
}

TEST_P(EveryWrittenFormat, AsksTheTargetWhetherACurveIsWanted) {
    const auto container = FCurveContainer::create();
    for (const char* name : {"a", "b"}) container->addCurve(RandomCurve(3).make())->setName(name);
    const auto callsFor = [&](bool wantsCurve, bool wantsMore) {
        CallRecorder recorder;
        recorder.only = {"startCurveContainer", "startCurve", "startSegmentContainer", "finishCurve",
                         "finishCurveContainer"};
        recorder.wantsCurve = wantsCurve;
        recorder.wantsMore = wantsMore;
        return calls(written(*container), recorder);
    };
    const std::string a = "startCurve a, startSegmentContainer, finishCurve, ";
    const std::string b = "startCurve b, startSegmentContainer, finishCurve, ";
    EXPECT_EQ(callsFor(true, true), "startCurveContainer, " + a + b + "finishCurveContainer");
    EXPECT_EQ(callsFor(true, false), "startCurveContainer, " + a + "finishCurveContainer");
    EXPECT_EQ(callsFor(false, true), "startCurveContainer, startCurve a, startCurve b, finishCurveContainer");
}

TEST_P(EveryWrittenFormat, PassesOnWhatTheTargetRaises) {
    const std::string bytes = written(*RandomCurve(3).make());
    CallRecorder all;
    calls(bytes, all);
    ASSERT_GT(all.calls.size(), 40U);
    for (std::size_t i = 0; i < all.calls.size(); ++i) {
        CallRecorder recorder;
        recorder.fullAt = static_cast<int>(i) + 1;
        EXPECT_THROW(calls(bytes, recorder), CallRecorder::Full) << all.calls[i];
        EXPECT_EQ(recorder.calls.size(), i);
    }
}

TEST_P(EveryWrittenFormat, CutAnywhereRaises) {
    std::string bytes = written(*RandomCurve(4).make());
    ASSERT_GT(bytes.size(), 600U);
    if (bytes.back() == '\n') bytes.pop_back(); // without the last line end a document is complete
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        ASSERT_NE(ComplaintOf(GetParam().scope, [&] { read(bytes.substr(0, length)); }), "") << length;
    }
    EXPECT_NO_THROW(read(bytes));

    // Of a container, the curves that are whole stay.
    const auto container = FCurveContainer::create();
    for (const unsigned seed : {3U, 4U}) container->addCurve(RandomCurve(seed).make());
    const std::string both = written(*container);
    const auto kept = FCurveContainer::create();
    MemoryStream stream = StreamOf(both.substr(0, both.size() - 200));
    EXPECT_NE(ComplaintOf(GetParam().scope, [&] { ReadCurves(stream, *kept); }), "");
    ASSERT_EQ(kept->size(), 1U);
    EXPECT_EQ(Difference(*container->begin(), *kept->begin()), "");
}

TEST_P(EveryWrittenFormat, OneReaderServesManyThreads) {
    const std::string bytes = written(*RandomCurve(4).make());
    CallRecorder alone;
    const std::string expected = calls(bytes, alone);
    std::vector<std::thread> threads;
    std::vector<std::string> results(4);
    for (std::string& result : results) {
        threads.emplace_back([&, this] {
            for (int i = 0; i < 20; ++i) {
                CallRecorder recorder;
                result = calls(bytes, recorder);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(results, std::vector<std::string>(4, expected));
}

TEST_P(EveryWrittenFormat, IgnoresCallsThatMakeNoDocument) {
    MemoryStream stream;
    m_writer.startCurve("without a stream");
    const Writer::StreamLink link(m_writer, stream);
    CallPlayer::play("finishCurve, finishCurveContainer, startKeyframe, containerProperty a b, startCurve c", m_writer);
    EXPECT_FALSE(m_writer.startCurve("in a curve"));
    CallPlayer::play("startCurveContainer, containerProperty a b, finishCurveContainer, tangentVector 1 2, "
                     "keyframePosition 1 2, curveLocked 1, curveVisible 0, curveLocked 0, startSegmentContainer, "
                     "curveVisible 1, curveProperty too late, "
                     "startSegment null, segmentProperty null v, startKeyframe, "
                     "startInTangent, tangentProperty k null, tangentType 7, tangentVector -1 2, finishOutTangent, "
                     "finishInTangent, tangentVector 1 2, finishSegment, "
                     "startKeyframe, keyframeProperty p q, keyframeBreakdown 1, keyframePosition -0 5e-324, "
                     "finishKeyframe, startSegment linear(), finishSegment, finishSegmentContainer, startSegment 3",
                     m_writer);
    EXPECT_EQ(stream.getSize(), 0);
    m_writer.finishCurve();

    CallRecorder recorder;
    recorder.only = {"startCurve",       "curveVisible",      "curveLocked",     "curveProperty",   "finishCurve",
                     "startSegment",     "segmentProperty",   "tangentVector",   "tangentProperty", "startKeyframe",
                     "keyframePosition", "keyframeBreakdown", "keyframeProperty"};
    EXPECT_EQ(calls(BytesOf(stream), recorder),
              "startCurve c, curveVisible 0, curveLocked 0, startSegment , segmentProperty  v, "
              "tangentVector -1 2, tangentProperty k , "
              "startKeyframe, keyframePosition -0 5e-324, keyframeBreakdown 1, keyframeProperty p q, "
              "startSegment linear(), finishCurve");
}

TEST_P(EveryWrittenFormat, ADocumentThatFailsLeavesNothingForTheNext) {
    MemoryStream stream;
    for (const std::string bad : {"curveTangentScale inf", "curveGrid nan 0 1 1", "curveGrid 0 0 1 inf",
                                  "startSegmentContainer, startSegment 3, startInTangent, tangentVector 0 inf",
                                  "startSegmentContainer, startSegment 3, finishSegment, startKeyframe, "
                                  "keyframePosition -inf 0"}) {
        const Writer::StreamLink link(m_writer, stream);
        const std::string said =
            ComplaintOf(GetParam().scope, [&] { CallPlayer::play("startCurve c, " + bad, m_writer); });
        EXPECT_EQ(said.substr(0, 9), "NotFinite") << bad;
    }
    EXPECT_EQ(stream.getSize(), 0);
    const auto curve = RandomCurve(3).make();
    ArrayStream<100> small;
    EXPECT_THROW(WriteCurve(*curve, small, m_name), ArrayStreamAdaptor::EndOfBuffer);
    EXPECT_EQ(Difference(*curve, *read(written(*curve))), "");
}

TEST_P(EveryWrittenFormat, ADocumentThatIsPutAsideGoesOn) {
    const auto inner = RandomCurve(5).make();
    std::string innerBytes;
    MemoryStream outer;
    {
        const Writer::StreamLink link(m_writer, outer);
        CallPlayer::play("startCurveContainer, startCurve outer, startSegmentContainer, startSegment 1", m_writer);
        WriteFCurveToString(*inner, m_name, innerBytes);                                // finds the same writer
        CallPlayer::play("finishSegment, finishCurve, finishCurveContainer", m_writer); // ends the segments, too
    }
    EXPECT_EQ(innerBytes, written(*inner));
    CallRecorder recorder;
    recorder.only = {"startCurve", "startSegment", "finishCurve", "finishCurveContainer"};
    EXPECT_EQ(calls(BytesOf(outer), recorder), "startCurve outer, startSegment 1, finishCurve, finishCurveContainer");
}
