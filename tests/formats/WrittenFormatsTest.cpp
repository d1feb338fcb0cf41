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

    std::string calls(const std::string& bytes, CallRecorder& recorder) const {
        MemoryStream stream = StreamOf(bytes);
        m_reader.readCurves(stream, recorder);
        return recorder.joined();
    }
    template<class Act>
    std::string complaint(const Act& act) const {
        const std::string text = ComplaintOf(GetParam().scope, act);
        return text.substr(0, text.find(' '));
    }
    // The class of the exception that calls raise, after which nothing reaches the stream any more.
    std::string complaintAbout(const std::string& text) {
        MemoryStream stream;
        const Writer::StreamLink link(m_writer, stream);
        const std::string said = complaint([&] { CallPlayer::play(text, m_writer); });
        if (!said.empty()) {
            EXPECT_EQ(stream.getSize(), 0);
            EXPECT_EQ(complaint([&] { m_writer.finishCurve(); }), "RefusedCall") << text;
        }
        return said;
    }
};

INSTANTIATE_TEST_SUITE_P(Formats, EveryWrittenFormat,
                         testing::Values(Format{"xml", "XMLFormat"}, Format{"binary", "BinaryFormat"}),
                         [](const auto& format) { return std::string(format.param.name); });

} // namespace

TEST_P(EveryWrittenFormat, ContainersComeBackToTheLastBitAndAreWrittenAgainByteForByte) {
    const auto museum = FCurveContainer::create();
    for (const Exhibit& exhibit : Museum()) museum->addCurve(exhibit.make());
    std::vector<std::shared_ptr<FCurveContainer>> containers = {museum};
    for (unsigned seed = 0; seed < 300; ++seed) {
        RandomCurve random(seed);
        containers.push_back(FCurveContainer::create());
        for (int i = random.below(3); i > 0; --i) {
            containers.back()->setProperty(("k" + random.text()).c_str(), random.text().c_str());
        }
        for (int i = random.below(4); i > 0; --i) containers.back()->addCurve(random.make());
    }
    for (std::size_t i = 0; i < containers.size(); ++i) {
        const std::string bytes = WrittenAs(m_name, *containers[i]);
        const auto back = FCurveContainer::create();
        MemoryStream stream = StreamOf(bytes);
        ASSERT_STREQ(ReadCurves(stream, *back).getFormatName(), m_name);
        ASSERT_EQ(Difference(*containers[i], *back), "") << "container " << i;
        ASSERT_EQ(WrittenAs(m_name, *back), bytes) << "container " << i;

        // Straight from the reader to the writer.
        MemoryStream again;
        stream.setPosition(0);
        const Writer::StreamLink link(m_writer, again);
        m_reader.readCurves(stream, m_writer);
        ASSERT_EQ(BytesOf(again), bytes) << "container " << i;
    }
}

TEST_P(EveryWrittenFormat, SettlesDisplayPropertiesThatAHostWroteItself) {
    for (const char* grid : {"0.123456789 0 1 1", "0 0 0 5", "what", "0 1e40 1 1", "1 2", "1e-50 0 1 1e-50"}) {
        for (const char* scale : {"1.23456789", "1.0000001", "1e999", "what", "-0", "5e-324"}) {
            const auto curve = FCurve::create();
            curve->setProperty("fc_grid", grid);
            curve->setProperty("fc_scal", scale);
            curve->setProperty("fc_lock", "0");
            const std::string first = WrittenAs(m_name, *curve);
            EXPECT_EQ(first, WrittenAs(m_name, *ReadAs(m_name, first))) << grid << ", " << scale;
        }
    }
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
        return calls(WrittenAs(m_name, *container), recorder);
    };
    const std::string a = "startCurve a, startSegmentContainer, finishCurve, ";
    const std::string b = "startCurve b, startSegmentContainer, finishCurve, ";
    EXPECT_EQ(callsFor(true, true), "startCurveContainer, " + a + b + "finishCurveContainer");
    EXPECT_EQ(callsFor(true, false), "startCurveContainer, " + a + "finishCurveContainer");
    EXPECT_EQ(callsFor(false, true), "startCurveContainer, startCurve a, startCurve b, finishCurveContainer");
}

TEST_P(EveryWrittenFormat, PassesOnWhatTheTargetRaises) {
    const std::string bytes = WrittenAs(m_name, *RandomCurve(3).make());
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
    std::string bytes = WrittenAs(m_name, *RandomCurve(4).make());
    ASSERT_GT(bytes.size(), 600U);
    if (bytes.back() == '\n') bytes.pop_back(); // without the last line end a document is complete
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        ASSERT_NE(complaint([&] { ReadAs(m_name, bytes.substr(0, length)); }), "") << length;
    }
    EXPECT_NO_THROW(ReadAs(m_name, bytes));

    // Of a container, the curves that are whole stay.
    const auto container = FCurveContainer::create();
    for (const unsigned seed : {3U, 4U}) container->addCurve(RandomCurve(seed).make());
    const std::string both = WrittenAs(m_name, *container);
    const auto kept = FCurveContainer::create();
    MemoryStream stream = StreamOf(both.substr(0, both.size() - 200));
    EXPECT_NE(complaint([&] { ReadCurves(stream, *kept); }), "");
    ASSERT_EQ(kept->size(), 1U);
    EXPECT_EQ(Difference(*container->begin(), *kept->begin()), "");
}

TEST_P(EveryWrittenFormat, OneReaderServesManyThreads) {
    const std::string bytes = WrittenAs(m_name, *RandomCurve(4).make());
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

TEST_P(EveryWrittenFormat, ManyThreadsWriteAtATime) {
    std::vector<std::shared_ptr<FCurve>> curves;
    for (unsigned seed = 1; seed <= 4; ++seed) curves.push_back(RandomCurve(seed).make());
    std::vector<std::thread> threads;
    std::vector<std::string> results(curves.size());
    for (std::size_t i = 0; i < curves.size(); ++i) {
        threads.emplace_back([&, this, i] {
            for (int round = 0; round < 20; ++round) WriteFCurveToString(*curves[i], m_name, results[i]);
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < curves.size(); ++i) EXPECT_EQ(results[i], WrittenAs(m_name, *curves[i]));

    // Two documents of one writer take turns.
    MemoryStream streams[2];
    const std::unique_ptr<FormatInterface> documents[] = {m_writer.createDocument(streams[0]),
                                                          m_writer.createDocument(streams[1])};
    for (const auto& document : documents) document->startCurveContainer();
    for (const auto& curve : curves)
        for (const auto& document : documents) EmitCurve(*curve, *document);
    for (const auto& document : documents) document->finishCurveContainer();
    const auto container = FCurveContainer::create();
    for (const auto& curve : curves) container->addCurve(curve);
    for (const MemoryStream& stream : streams) EXPECT_EQ(BytesOf(stream), WrittenAs(m_name, *container));
}

// Each call after each beginning that leads to another place in a document: what is out of order is refused, and
// whatever is written can be read.
TEST_P(EveryWrittenFormat, RefusesEveryCallThatIsOutOfOrder) {
    const std::string head = "startCurveContainer, startCurve c, ";
    const std::string segments = head + "startSegmentContainer, ";
    const std::string segment = segments + "startSegment 1, ";
    const std::string afterSegment = segment + "finishSegment, ";
    const std::string key = afterSegment + "startKeyframe, ";
    const struct {
        std::string before;
        const char* allowed; // the calls that may follow, each by " name "
    } places[] = {
        {"", " startCurveContainer startCurve "},
        {"startCurveContainer, ", " finishCurveContainer containerProperty startCurve "},
        {head, " curveVisible curveLocked curveShowVelocity curveShowAcceleration curveShowDiscontinuities curveGrid "
               "curveTangentScale curveProperty startSegmentContainer finishCurve "},
        {segments, " startSegment finishSegmentContainer "},
        {segment, " segmentProperty startInTangent startOutTangent finishSegment "},
        {segment + "startInTangent, ",
         " tangentVector tangentType tangentWeighted tangentWeightLocked tangentProperty finishInTangent "},
        {segment + "startOutTangent, ",
         " tangentVector tangentType tangentWeighted tangentWeightLocked tangentProperty finishOutTangent "},
        {segment + "startOutTangent, finishOutTangent, ", " segmentProperty startInTangent finishSegment "},
        {segment + "startInTangent, finishInTangent, ", " segmentProperty startOutTangent finishSegment "},
        {afterSegment, " startKeyframe finishSegmentContainer "},
        {key,
         " keyframePosition keyframeTangentsUnified keyframeLocked keyframeBreakdown keyframeProperty finishKeyframe "},
        {key + "finishKeyframe, ", " startSegment "},
        {afterSegment + "finishSegmentContainer, ", " finishCurve "},
        {head + "finishCurve, ", " startCurve finishCurveContainer "},
        {head + "finishCurve, finishCurveContainer, ", " startCurveContainer startCurve "},
    };
    for (const auto& place : places) {
        for (const std::string& call : CallPlayer::names()) {
            const bool isAllowed = std::string(place.allowed).find(' ' + call + ' ') != std::string::npos;
            MemoryStream stream;
            const Writer::StreamLink link(m_writer, stream);
            CallPlayer::play(place.before, m_writer);
            const std::string said = complaint([&] { CallPlayer::play(call, m_writer); });
            EXPECT_EQ(said, isAllowed ? "" : "RefusedCall") << place.before << call;
        }
    }
}

TEST_P(EveryWrittenFormat, RefusesWhatItsReaderWouldAndDropsTheDocument) {
    const std::string segment = "startSegmentContainer, startSegment 3, ";
    const std::string key = "startKeyframe, keyframePosition ";
    const struct {
        std::string calls;
        const char* complaint;
    } rows[] = {
        {"curveTangentScale inf", "NotFinite"},
        {"curveGrid nan 0 1 1", "NotFinite"},
        {"curveGrid 0 0 1 inf", "NotFinite"},
        {segment + "startInTangent, tangentVector 0 inf", "NotFinite"},
        {segment + "startInTangent, tangentVector nan 0", "NotFinite"},
        {segment + "finishSegment, " + key + "-inf 0", "NotFinite"},
        {segment + "finishSegment, " + key + "0 nan", "NotFinite"},
        {segment + "startInTangent, tangentType 6", ""},
        {segment + "startInTangent, tangentType 7", "RefusedCall"},
        {segment + "finishSegment, " + key + "0 1, finishKeyframe, startSegment 3, finishSegment, " + key
             + "-0 2, finishKeyframe",
         "RefusedCall"},
    };
    for (const auto& row : rows) EXPECT_EQ(complaintAbout("startCurve c, " + row.calls), row.complaint) << row.calls;

    MemoryStream stream;
    m_writer.startCurve("without a stream");
    const auto curve = RandomCurve(3).make();
    ArrayStream<100> small;
    EXPECT_THROW(WriteCurve(*curve, small, m_name), ArrayStreamAdaptor::EndOfBuffer);
    EXPECT_EQ(Difference(*curve, *ReadAs(m_name, WrittenAs(m_name, *curve))), "");
}

TEST_P(EveryWrittenFormat, ADocumentThatIsPutAsideGoesOn) {
    const auto inner = RandomCurve(5).make();
    std::string innerBytes;
    MemoryStream outer;
    {
        const Writer::StreamLink link(m_writer, outer);
        CallPlayer::play("startCurveContainer, startCurve outer, startSegmentContainer, startSegment 1", m_writer);
        WriteFCurveToString(*inner, m_name, innerBytes); // finds the same writer
        CallPlayer::play("finishSegment, finishSegmentContainer, finishCurve, finishCurveContainer", m_writer);
    }
    EXPECT_EQ(innerBytes, WrittenAs(m_name, *inner));
    CallRecorder recorder;
    recorder.only = {"startCurve", "startSegment", "finishCurve", "finishCurveContainer"};
    EXPECT_EQ(calls(BytesOf(outer), recorder), "startCurve outer, startSegment 1, finishCurve, finishCurveContainer");
}
