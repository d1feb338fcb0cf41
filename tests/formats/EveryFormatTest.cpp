// What holds for every reader, and the read-only formats of text.

#include "FCurveLib/FCurveLib.h"
#include "support/Allocations.h"
#include "support/CallRecorder.h"
#include "support/Museum.h"
#include "support/RandomCurve.h"
#include "support/SameCurve.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>

using namespace Test;

namespace {

struct Sample {
    const char* format;
    std::string bytes;
};

std::string writtenAs(const char* format, bool inContainer) {
    const auto curve = FCurve::create();
    curve->setName("ty");
    curve->setProperty("unit", "cm");
    curve->insertSegment(*Keyframe::create(0, 0), InterpolatorFactory::create("bezier()"));
    curve->insertSegment(*Keyframe::create(10, 5), InterpolatorFactory::create("cycle()"));
    MemoryStream stream;
    const auto container = FCurveContainer::create();
    container->addCurve(curve);
    inContainer ? WriteCurves(*container, stream, format) : WriteCurve(*curve, stream, format);
    return {stream.getData(), static_cast<std::size_t>(stream.getSize())};
}

std::string oldText(const FCurve& curve) {
    std::ostringstream out;
    out << std::setprecision(17) << TovConversion::TovCurve(curve);
    return out.str();
}

const std::string kText = R"(fcurvetext 1.0   # by hand
property shot "12 \"b\"\n\x41"
curve "ball ty" {
    hidden
    locked
    velocity
    acceleration
    discontinuities
    grid 0 1 2 4
    tangentscale 1.5
    property unit cm
    segment cycle()
    key 0 -1e3
    segment "sin(x) * 2" {
        property s t
        out smooth
        in fixed -1 0.5 weighted weightLocked {
            property o p
        }
    }
    key 10 5 locked breakdown unified {
        property note up
    }
    default constant_next()
    key 20 6
    segment mirror()
}
curve two {
    key 1 2
    key 3 4
}
)";

const std::string kClip = R"({
   rate = 24
   start = -1
   tracklength = 4
   tracks = 3
   {
      name = ANIM/box:tx
      data = 0 0.5 1 1.5
   }
   {
      name = ANIM/box:ty
      lefttype = cycle
      righttype = default
      default = -2
      data = 3.0000000000000001e-05 -1 -1 7.0999999999999996
   }
   {
      name = r
      lefttype = slope
      righttype = twist
      data_rle = @3 1 4
   }

   quaternions = xyz 1
   0 1 2
}
)";

const std::vector<Sample>& samples() {
    static const std::vector<Sample> all = {
        {"xml", writtenAs("xml", true)},
        {"xml", writtenAs("xml", false)},
        {"binary", writtenAs("binary", true)},
        {"binary", writtenAs("binary", false)},
        {"text", kText},
        {"tov_fcurve", oldText(*RandomCurve(3).make())},
        {"tov_fcurve", oldText(*MakeCurve({{0, 0}, {10, 5}}))},
        {"hClip", kClip},
        {"hchan", "1001\t1.5\t2\n1002\t-0.5 1e3\n"},
    };
    return all;
}

MemoryStream streamOf(const std::string& bytes) {
    MemoryStream stream;
    stream.writeData(bytes.data(), static_cast<int>(bytes.size()));
    stream.setPosition(0);
    return stream;
}

std::vector<std::string> callsOf(const char* format, const std::string& bytes, std::vector<std::string> only) {
    CallRecorder recorder;
    recorder.only = std::move(only);
    MemoryStream stream = streamOf(bytes);
    FormatFactory::getReader(format)->readCurves(stream, recorder);
    return recorder.calls;
}

// "UnexpectedWord 3:5", or nothing.
std::string errorOf(const char* format, const std::string& bytes) {
    try {
        callsOf(format, bytes, {});
    } catch (const FormatError& error) {
        EXPECT_STRNE(error.message(), "");
        const std::string what = error.what();
        return what.substr(what.rfind(':') + 1) + ' ' + std::to_string(error.line()) + ':'
               + std::to_string(error.column());
    }
    return "";
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    return text.replace(text.find(what), what.size(), by);
}

// Reads or raises an exception of the library; the target is untouched if it raises. Takes little memory.
void expectHarmless(const char* format, const std::string& bytes) {
    static const auto before = RandomCurve(7).make();
    const std::size_t peak = peakOf([&] {
        const auto target = FCurve::createCopy(*before);
        try {
            ReadFCurveFromString(bytes, format, *target);
        } catch (const Exception&) {
            EXPECT_EQ(Difference(*target, *before), "");
        }
        const auto container = FCurveContainer::create();
        MemoryStream stream = streamOf(bytes);
        try {
            ReadCurves(stream, *container);
        } catch (const Exception&) {
        }
    });
    EXPECT_LT(peak, 200000U);
}

class EverySample : public testing::TestWithParam<std::size_t> {
protected:
    const Sample& sample() const { return samples()[GetParam()]; }
};

} // namespace

TEST_P(EverySample, IsRecognisedByItsOwnReaderAlone) {
    for (auto type = FormatFactory::beginReaderTypes(); type != FormatFactory::endReaderTypes(); ++type) {
        MemoryStream stream = streamOf(sample().bytes);
        std::string head = sample().bytes;
        head.resize(1024, '\0');
        MemoryStream header = streamOf(head);
        const std::string name = type->getFormatName();
        EXPECT_EQ(FormatFactory::getReader(*type)->canRead(stream, header), name == sample().format) << name;
    }
    const auto container = FCurveContainer::create();
    MemoryStream stream = streamOf(sample().bytes);
    EXPECT_STREQ(ReadCurves(stream, *container).getFormatName(), sample().format);
    EXPECT_FALSE(container->empty());
}

TEST_P(EverySample, CutAnywhereReadsOrRaises) {
    for (std::size_t length = 0; length < sample().bytes.size(); ++length)
        expectHarmless(sample().format, sample().bytes.substr(0, length));
}

TEST_P(EverySample, WithAnyByteChangedReadsOrRaises) {
    for (std::size_t i = 0; i < sample().bytes.size(); ++i) {
        for (const int flip : {0x01, 0x80, 0xFF}) {
            std::string bytes = sample().bytes;
            bytes[i] = static_cast<char>(bytes[i] ^ flip);
            expectHarmless(sample().format, bytes);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, EverySample, testing::Range(std::size_t{0}, std::size_t{9}));

TEST(EveryWriter, SettlesDisplayPropertiesThatAHostWroteItself) {
    const char* const grids[] = {"0.123456789 0 1 1", "0 0 0 5", "what", "0 1e40 1 1", "1 2", "1e-50 0 1 1e-50"};
    const char* const scales[] = {"1.23456789", "1.0000001", "1e999", "what", "-0", "5e-324"};
    for (const char* format : {"xml", "binary"}) {
        for (const char* grid : grids) {
            for (const char* scale : scales) {
                const auto curve = FCurve::create();
                curve->setProperty("fc_grid", grid);
                curve->setProperty("fc_scal", scale);
                curve->setProperty("fc_lock", "0");
                std::string first;
                std::string second;
                WriteFCurveToString(*curve, format, first);
                const auto read = FCurve::create();
                ReadFCurveFromString(first, format, *read);
                WriteFCurveToString(*read, format, second);
                EXPECT_EQ(first, second) << format << ", " << grid << ", " << scale;
            }
        }
    }
}

TEST(TextFormat, SaysAllThatACurveHolds) {
    const auto read = FCurveContainer::create();
    MemoryStream stream = streamOf(kText);
    ReadCurves(stream, *read);
    EXPECT_STREQ(read->getProperty("shot"), "12 \"b\"\nA");
    ASSERT_EQ(read->size(), 2U);

    // The same through "xml", which loses nothing.
    MemoryStream xml;
    WriteCurves(*read, xml, "xml");
    const std::string text(xml.getData(), static_cast<std::size_t>(xml.getSize()));
    for (const char* part :
         {"name=\"ball ty\" visible=\"false\" locked=\"true\" velocity=\"true\" acceleration=\"true\" "
          "discontinuities=\"true\" grid=\"0 1 2 4\" tangentScale=\"1.5\"",
          "<segment interpolator=\"cycle()\">", "<segment interpolator=\"sin(x) * 2\">",
          "<in x=\"-1\" y=\"0.5\" weighted=\"true\" weightLocked=\"true\">", "type=\"smooth\"",
          "x=\"10\" y=\"5\" locked=\"true\" breakdown=\"true\" unified=\"true\">",
          "<segment interpolator=\"constant_next()\">", "<segment interpolator=\"mirror()\">",
          "key=\"note\" value=\"up\"", "key=\"o\" value=\"p\"", "key=\"s\" value=\"t\"",
          "<segment interpolator=\"linear()\">"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
}

TEST(TextFormat, RefusesWhatIsWrongAndSaysWhere) {
    const struct {
        std::string text;
        const char* error;
    } cases[] = {
        {"", "UnexpectedWord 1:1"},
        {"fcurvetext 2.3\n", "UnsupportedVersion 1:12"},
        {"fcurvetext one\n", "UnexpectedWord 1:12"},
        {"fcurvetext 1.0\nkey 1 2\n", "UnexpectedWord 2:1"},
        {"fcurvetext 1.0\ncurve a {\n", "UnexpectedWord 3:1"},
        {"fcurvetext 1.0\ncurve a {\n  key 1 b\n}\n", "BadNumber 3:9"},
        {"fcurvetext 1.0\ncurve a {\n  key 1 nan\n}\n", "BadNumber 3:9"},
        {"fcurvetext 1.0\ncurve a {\n  key 1\n}\n", "UnexpectedWord 3:8"},
        {"fcurvetext 1.0\ncurve a {\n  segment a\n  segment b\n}\n", "UnexpectedWord 4:3"},
        {"fcurvetext 1.0\ncurve \"a\n", "BadText 2:7"},
        {"fcurvetext 1.0\ncurve \"a\\q\" {\n", "BadText 2:10"},
        {"fcurvetext 1.0\nnew thing {\n}\n", "UnexpectedWord 2:1"},
        {"fcurvetext 1.9\nnew thing {\n other {\n }\n}\ncurve a {\n  new\n}\n", ""},
    };
    for (const auto& [text, error] : cases) EXPECT_EQ(errorOf("text", text), error) << text;
    EXPECT_THROW(ReadFCurveFromString(kText, "text", *FCurve::create()), TextFormat::UnexpectedWord);
}

// Curves that the older system can hold: every handle within a third or weighted, every kind it knows.
TEST(OldFormat, ReadsBackWhatWasConvertedWithoutLoss) {
    std::vector<std::shared_ptr<FCurve>> curves;
    for (const Exhibit& exhibit : Museum()) curves.push_back(exhibit.make());
    RandomCurve random(11);
    for (int i = 0; i < 200; ++i) {
        std::vector<Key> keys;
        double x = random.below(100) / 7.0 - 5.0;
        for (int count = 1 + random.below(6); count > 0; --count) {
            const char* const kinds[] = {"constant()", "linear()", "bezier()"};
            keys.push_back({x, random.number(), {}, {}, kinds[random.below(3)]});
            x += 0.5 + random.below(1000) / 11.0;
        }
        keys.back().interpolator = "constant()";
        const auto curve = MakeCurve(keys);
        for (Segment& segment : *curve) {
            for (const auto& tangent : {segment.getInTangent(), segment.getOutTangent()}) {
                if (!segment.getLeftKey() || !segment.getRightKey() || random.coin()) continue;
                const double third = (segment.getRightKey()->getX() - segment.getLeftKey()->getX()) / 3.0;
                tangent->setWeighted(random.coin());
                const double length = tangent->isWeighted() ? third * (0.25 + random.below(100) / 64.0) : third;
                tangent->set(tangent->isInTangent() ? -length : length, random.below(2000) / 9.0);
            }
            if (segment.getRightKey()) SetLocked(*segment.getRightKey(), random.coin());
        }
        curves.push_back(curve);
    }
    int converted = 0;
    for (const auto& curve : curves) {
        curve->setName("a \"b\" c");
        if (TovConversion::TovCurve(*curve).getLossFlags() != 0) continue;
        ++converted;
        // Handles that stand at no key have no place in the text.
        curve->begin()->getOutTangent()->set(1, 0);
        (--curve->end())->getInTangent()->set(-1, 0);
        const auto read = FCurve::create();
        ReadFCurveFromString(oldText(*curve), "tov_fcurve", *read);
        EXPECT_EQ(Difference(*read, *curve), "");
    }
    EXPECT_GE(converted, 150);
}

// The first listing of a page of docs/formats.
std::string listingOf(const char* page) {
    std::ifstream file(std::string(FCURVELIB_SOURCE_DIR "/docs/formats/") + page, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::size_t begin = text.find("```\n") + 4;
    return text.substr(begin, text.find("```", begin) - begin);
}

TEST(OldFormat, TheDocumentedExampleIsWhatIsWrittenAndRead) {
    const auto curve = MakeCurve({{0, 0}, {10, 5, {}, {}, "constant()"}});
    curve->setName("ball ty");
    SetLocked(*(--curve->end())->getLeftKey(), true);
    std::ostringstream written;
    written << TovConversion::TovCurve(*curve);
    EXPECT_EQ(listingOf("tov_fcurve.md"), written.str());
    EXPECT_EQ(callsOf("tov_fcurve", listingOf("tov_fcurve.md"), {"startCurve", "startSegment", "keyframePosition"}),
              (std::vector<std::string>{"startCurve ball ty", "startSegment constant()", "keyframePosition 0 0",
                                        "startSegment bezier()", "keyframePosition 10 5", "startSegment constant()"}));
}

TEST(TextFormat, TheDocumentedExampleReadsAsThePageSays) {
    EXPECT_EQ(callsOf("text", listingOf("text.md"),
                      {"containerProperty", "startCurve", "startSegment", "keyframePosition", "tangentVector"}),
              (std::vector<std::string>{"containerProperty shot 12 b", "startCurve ball ty", "startSegment cycle()",
                                        "keyframePosition 0 0", "startSegment bezier()", "tangentVector -3 0.5",
                                        "keyframePosition 10 5", "startSegment constant_next()",
                                        "keyframePosition 20 6", "startSegment constant()", "startCurve lamp",
                                        "startSegment constant()", "keyframePosition 0 1", "startSegment linear()",
                                        "keyframePosition 24 0", "startSegment constant()"}));
}

TEST(HoudiniClip, TheDocumentedExampleReadsAsThePageSays) {
    EXPECT_EQ(callsOf("hClip", listingOf("hclip.md"),
                      {"containerProperty", "startCurve", "curveProperty", "keyframePosition"}),
              (std::vector<std::string>{"containerProperty hclip_rate 24",
                                        "containerProperty hclip_start -1",
                                        "containerProperty hclip_quaternions xyz:0,1,2",
                                        "startCurve ANIM/box:rx",
                                        "keyframePosition 0 0",
                                        "keyframePosition 1 0.5",
                                        "keyframePosition 2 1",
                                        "keyframePosition 3 1.5",
                                        "startCurve ANIM/box:ry",
                                        "curveProperty hclip_cycle_key 1",
                                        "keyframePosition 0 0",
                                        "keyframePosition 1 0",
                                        "keyframePosition 2 1",
                                        "keyframePosition 3 7.1",
                                        "keyframePosition 4 0",
                                        "startCurve ANIM/box:rz",
                                        "keyframePosition 0 3e-05",
                                        "keyframePosition 1 -1",
                                        "keyframePosition 2 -1",
                                        "keyframePosition 3 7"}));
}

TEST(OldFormat, TakesAnyWhiteSpaceSeveralCurvesAndRefusesTheRest) {
    const std::string one = oldText(*MakeCurve({{0, 0}, {10, 5}}));
    std::string packed = one.substr(one.find("fcurve"));
    for (char& c : packed)
        if (c == '\n') c = '\t';
    EXPECT_EQ(callsOf("tov_fcurve", one + "// loss\r" + packed, {"startCurve", "keyframePosition"}),
              (std::vector<std::string>{"startCurve ", "keyframePosition 0 0", "keyframePosition 10 5", "startCurve ",
                                        "keyframePosition 0 0", "keyframePosition 10 5"}));
    EXPECT_EQ(errorOf("tov_fcurve", replaced(one, "10 5", "10 x")), "BadNumber 12:12");
    EXPECT_EQ(errorOf("tov_fcurve", replaced(one, "smooth", "broken")), "UnexpectedWord 8:18");
    EXPECT_EQ(errorOf("tov_fcurve", replaced(one, "constant constant", "cycle constant")), "UnexpectedWord 4:16");
}

TEST(HoudiniClip, BuildsKeysEndsAndProperties) {
    EXPECT_EQ(callsOf("hClip", kClip,
                      {"containerProperty", "startCurve", "curveProperty", "keyframePosition", "startSegment",
                       "tangentVector"}),
              (std::vector<std::string>{"containerProperty hclip_rate 24",
                                        "containerProperty hclip_start -1",
                                        "containerProperty hclip_quaternions xyz:0,1,2",
                                        "startCurve ANIM/box:tx",
                                        "startSegment constant()",
                                        "keyframePosition 0 0",
                                        "startSegment linear()",
                                        "keyframePosition 1 0.5",
                                        "startSegment linear()",
                                        "keyframePosition 2 1",
                                        "startSegment linear()",
                                        "keyframePosition 3 1.5",
                                        "startSegment constant()",
                                        "startCurve ANIM/box:ty",
                                        "curveProperty hclip_cycle_key 1",
                                        "startSegment cycle()",
                                        "keyframePosition 0 3e-05",
                                        "startSegment linear()",
                                        "keyframePosition 1 -1",
                                        "startSegment linear()",
                                        "keyframePosition 2 -1",
                                        "startSegment linear()",
                                        "keyframePosition 3 7.1",
                                        "startSegment linear()",
                                        "keyframePosition 4 3e-05",
                                        "startSegment -2",
                                        "startCurve r",
                                        "curveProperty hclip_righttype twist",
                                        "startSegment bezier()",
                                        "tangentVector -1 -0",
                                        "keyframePosition 0 1",
                                        "startSegment linear()",
                                        "keyframePosition 1 1",
                                        "startSegment linear()",
                                        "keyframePosition 2 1",
                                        "startSegment linear()",
                                        "keyframePosition 3 4",
                                        "startSegment constant()"}));
    EXPECT_EQ(callsOf("hClip", "{start=0 tracklength=0 new=thing{name=a=b data=}}", {"startCurve", "startSegment"}),
              (std::vector<std::string>{"startCurve a=b", "startSegment constant()"}));
}

TEST(HoudiniClip, RefusesWhatIsWrongAndBombs) {
    const struct {
        std::string text;
        const char* error;
    } cases[] = {
        {replaced(kClip, "1 1.5", "1"), "UnexpectedWord 9:4"},
        {replaced(kClip, "1 1.5", "1 1.5 2"), "UnexpectedWord 8:26"},
        {replaced(kClip, "@3 1 4", "@4 1 4"), "UnexpectedWord 21:23"},
        {replaced(kClip, "@3", "@5"), "BadNumber 21:18"},
        {replaced(kClip, "@3", "@0"), "BadNumber 21:18"},
        {replaced(kClip, "0.5", "nan"), "BadNumber 8:16"},
        {replaced(kClip, "tracks = 3", "tracks = 2"), "WrongTrackCount 26:1"},
        {replaced(kClip, "0 1 2", "0 1 3"), "BadNumber 25:8"},
        {replaced(kClip, "name = r", "{"), "UnexpectedWord 18:7"},
        {replaced(kClip, "rate", "# rate"), "UnexpectedWord 2:4"},
        {"{ tracklength = 2000000000 tracks = 1 { name = bomb data_rle = @2000000000 0 } }", "LimitExceeded 1:17"},
    };
    for (const auto& [text, error] : cases) EXPECT_EQ(errorOf("hClip", text), error) << text;
    std::string bomb = "{ tracklength = 10000000 ";
    for (int i = 0; i < 6; ++i) bomb += "{ data_rle = 0 } ";
    EXPECT_EQ(errorOf("hClip", bomb), "UnexpectedWord 1:41");
}
