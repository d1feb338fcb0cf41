#include "support/CallRecorder.h"
#include "support/Museum.h"
#include "support/RandomCurve.h"
#include "support/SameCurve.h"
#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <limits>
#include <thread>
#include <utility>

using namespace Test;

namespace {

std::string written(const FCurve& curve) {
    std::string text;
    WriteFCurveToString(curve, "xml", text);
    return text;
}

std::string written(const FCurveContainer& container) {
    MemoryStream stream;
    WriteCurves(container, stream, "xml");
    return {stream.getData(), static_cast<std::size_t>(stream.getSize())};
}

std::shared_ptr<FCurve> read(const std::string& text) {
    auto curve = FCurve::create();
    ReadFCurveFromString(text, "xml", *curve);
    return curve;
}

std::shared_ptr<FCurveContainer> readContainer(const std::string& text) {
    auto container = FCurveContainer::create();
    MemoryStream stream = StreamOf(text);
    EXPECT_STREQ(ReadCurves(stream, *container).getFormatName(), "xml");
    return container;
}

// What reading a text raises, as "BadAttribute 2:5 x"; "" for nothing. The line and the column are always there.
std::string complaint(Stream& stream) {
    const auto curve = FCurve::create();
    curve->setName("untouched");
    std::string result;
    try {
        ReadCurve(stream, "xml", *curve);
        return "";
    } catch (const XMLFormat::XMLError& error) {
        const std::string what = error.what();
        const std::string prefix = "VEM_FN::FCurveLib::XMLFormat::";
        EXPECT_EQ(what.substr(0, prefix.size()), prefix);
        EXPECT_GT(error.line(), 0U);
        EXPECT_GT(error.column(), 0U);
        EXPECT_STRNE(error.message(), "");
        result = what.substr(prefix.size()) + ' ' + std::to_string(error.line()) + ':' + std::to_string(error.column());
        if (*error.name()) result += std::string(" ") + error.name();
    }
    EXPECT_STREQ(curve->getName(), "untouched");
    EXPECT_EQ(curve->size(), 1U);
    return result;
}

std::string complaint(const std::string& text) {
    MemoryStream stream = StreamOf(text);
    return complaint(stream);
}

// A document with the given curve elements.
std::string document(const std::string& content, const char* version = "1.0") {
    return std::string("<fcurvelib version='") + version + "'>" + content + "</fcurvelib>";
}

constexpr const char* kSegment = "<segment interpolator='linear()'/>";

std::string calls(const std::string& text, std::vector<std::string> only = {}) {
    CallRecorder recorder;
    recorder.only = std::move(only);
    MemoryStream stream = StreamOf(text);
    FormatFactory::getReader("xml")->readCurves(stream, recorder);
    return recorder.joined();
}

} // namespace

// --- what is written comes back --------------------------------------------------------------------------------------

TEST(XMLFormat, CurvesComeBackToTheLastBitAndAreWrittenAgainByteForByte) {
    std::vector<std::pair<std::string, std::shared_ptr<FCurve>>> curves;
    for (const Exhibit& exhibit : Museum()) curves.emplace_back(exhibit.name, exhibit.make());
    for (unsigned seed = 0; seed < 300; ++seed) curves.emplace_back(std::to_string(seed), RandomCurve(seed).make());
    for (const auto& [name, curve] : curves) {
        const std::string text = written(*curve);
        const auto back = read(text);
        ASSERT_EQ(Difference(*curve, *back), "") << name << "\n" << text;
        ASSERT_EQ(written(*back), text) << name;
    }
}

TEST(XMLFormat, ContainersComeBackInOrderWithTheirProperties) {
    for (int count : {0, 1, 5}) {
        RandomCurve random(static_cast<unsigned>(count));
        const auto container = FCurveContainer::create();
        for (int i = 0; i < count; ++i) {
            container->setProperty(("p" + random.text()).c_str(), random.text().c_str());
            container->addCurve(random.make());
        }
        const std::string text = written(*container);
        const auto back = readContainer(text);
        ASSERT_EQ(back->size(), static_cast<std::size_t>(count));
        for (auto i = container->begin(), j = back->begin(); i != container->end(); ++i, ++j) {
            EXPECT_EQ(Difference(*i, *j), "");
        }
        EXPECT_EQ(SameCurve::properties(*container, *back), "");
        EXPECT_EQ(written(*back), text);
    }
}

TEST(XMLFormat, EveryByteComesBackInEveryPlaceOfAText) {
    const auto curve = FCurve::create();
    std::string all;
    for (int byte = 1; byte < 256; ++byte) {
        const std::string one(1, static_cast<char>(byte));
        curve->setProperty(("key" + one).c_str(), (one + "x" + one + one).c_str());
        all += one;
    }
    curve->setName(all.c_str());
    // Every character at the edges of what UTF-8 and XML allow, and one to either side.
    for (const char* text : {"\x7f",
                             "\xc2\x80",
                             "\xc1\xbf",
                             "\xdf\xbf",
                             "\xe0\xa0\x80",
                             "\xe0\x9f\xbf",
                             "\xed\x9f\xbf",
                             "\xed\xa0\x80",
                             "\xee\x80\x80",
                             "\xef\xbf\xbd",
                             "\xef\xbf\xbe",
                             "\xef\xbf\xbf",
                             "\xf0\x90\x80\x80",
                             "\xf0\x8f\xbf\xbf",
                             "\xf4\x8f\xbf\xbf",
                             "\xf4\x90\x80\x80",
                             "\xf5\x80",
                             "\xe2\x82",
                             "\xf0\x9f\x92",
                             "\xe2\x28\xa1",
                             "\xef\xbb\xbf",
                             "\xc2\x85",
                             "\xe2\x80\xa8"}) {
        curve->setProperty(text, (std::string("<") + text + "\\x4" + text).c_str());
    }
    const std::string text = written(*curve);
    EXPECT_EQ(Difference(*curve, *read(text)), "");
    for (const char c : text) EXPECT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= ' ');
}

TEST(XMLFormat, TheDocumentedExampleIsWhatIsWritten) {
    std::ifstream file(FCURVELIB_SOURCE_DIR "/docs/formats/xml.md", std::ios::binary);
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    const std::size_t first = page.find("```xml\n");
    ASSERT_NE(first, std::string::npos);
    const std::string example = page.substr(first + 7, page.find("```", first + 7) - first - 7);
    EXPECT_EQ(written(*readContainer(example)), example);
}

TEST(XMLFormat, GoesStraightFromReaderToWriter) {
    const auto container = FCurveContainer::create();
    RandomCurve random(7);
    for (int i = 0; i < 3; ++i) container->addCurve(random.make());
    const std::string text = written(*container);
    MemoryStream from = StreamOf(text);
    MemoryStream to;
    Writer& writer = *FormatFactory::getWriter("xml");
    {
        const Writer::StreamLink link(writer, to);
        FormatFactory::getReader("xml")->readCurves(from, writer);
    }
    EXPECT_EQ(std::string(to.getData(), static_cast<std::size_t>(to.getSize())), text);
}

// --- reading ---------------------------------------------------------------------------------------------------------

TEST(XMLReader, CallsInTheStatedOrder) {
    const std::string text = document("<curve grid='1 2 3 4' name='c'><property key='k' value='v'/>"
                                      "<segment interpolator='spline()'>"
                                      "<out y='2' x='1' type='plateau'><property key='a' value='b'/></out>"
                                      "<in/></segment><key y='-0' x='5e-324' breakdown='1'/><segment interpolator=''/>"
                                      "</curve>");
    EXPECT_EQ(
        calls(text),
        "startCurveContainer, startCurve c, curveVisible 1, curveLocked 0, curveShowVelocity 0, "
        "curveShowAcceleration 0, curveShowDiscontinuities 0, curveGrid 1 2 3 4, curveTangentScale 1, "
        "curveProperty k v, startSegmentContainer, startSegment spline(), "
        "startOutTangent, tangentType 6, tangentWeighted 0, tangentWeightLocked 0, tangentVector 1 2, "
        "tangentProperty a b, finishOutTangent, "
        "startInTangent, tangentType 0, tangentWeighted 0, tangentWeightLocked 0, finishInTangent, finishSegment, "
        "startKeyframe, keyframePosition 5e-324 -0, keyframeLocked 0, keyframeBreakdown 1, "
        "keyframeTangentsUnified 0, finishKeyframe, startSegment , finishSegment, finishSegmentContainer, "
        "finishCurve, finishCurveContainer");
}

TEST(XMLReader, ReadsWhatXmlToolsMakeOfADocument) {
    const std::string plain = "<fcurvelib version=\"1.0\"><curve name=\"n\"/></fcurvelib>";
    std::string utf16 = "\xff\xfe";
    for (const char c : plain) utf16 += std::string{c, '\0'};
    const std::string variants[] = {
        plain,
        "\xef\xbb\xbf<?xml version='1.0'?>\r\n<!-- <fcurvelib> -->\r\n<fcurvelib\r\nversion='1.0'\r\n>\r\n"
        "<curve name='n'><!-- nothing --></curve><![CDATA[\n]]>\r\n</fcurvelib>\r\n<?end?>",
        utf16,
        "<?xml version='1.0' encoding='ISO-8859-1'?>" + plain,
        document("<curve name='n'></curve>"),
    };
    for (const std::string& text : variants) {
        EXPECT_EQ(calls(text, {"startCurve", "finishCurve"}), "startCurve n, finishCurve");
    }
    EXPECT_STREQ(read("<?xml version='1.0' encoding='ISO-8859-1'?>" + document("<curve name='\xfc'/>"))->getName(),
                 "ü");
}

TEST(XMLReader, LaterMinorVersionsAreReadAndTheUnknownSkipped) {
    const std::string content =
        "<curve name='c' hue='blue'><layer depth='2'><curve name='no'/>text</layer>"
        "<segment interpolator='linear()'><out type='wavy' x='1' y='2'/>and text<mid/></segment></curve><extra/>";
    EXPECT_EQ(calls(document(content, "1.7"), {"startCurve", "tangentType", "tangentVector", "finishCurve"}),
              "startCurve c, tangentType 0, tangentVector 1 2, finishCurve");
    EXPECT_EQ(complaint(document(content, "1.0")), "BadAttribute 1:26 hue");
    // What is known is checked as ever.
    EXPECT_EQ(complaint(document("<curve/>", "1.7")), "BadAttribute 1:26 name");
}

TEST(XMLReader, OtherMajorVersionsAreRefusedWithBothNumbers) {
    try {
        read(document("<curve name='c'/>", "2.5"));
        FAIL();
    } catch (const XMLFormat::UnsupportedVersion& error) {
        EXPECT_EQ(error.majorVersion(), 2U);
        EXPECT_EQ(error.supportedVersion(), 1U);
        EXPECT_EQ(error.line(), 1U);
        EXPECT_NE(std::string(error.message()).find("version 2"), std::string::npos);
        EXPECT_NE(std::string(error.message()).find("version 1"), std::string::npos);
    }
    EXPECT_EQ(complaint(document("", "0.1")), "UnsupportedVersion 1:1 version");
    for (const char* version :
         {"", "1", "1.", ".0", "1.0.0", "-1.0", "1.x", "+1.0", " 1.0", "1234567.0", "1.99999999"}) {
        EXPECT_EQ(complaint(document("", version)), "BadAttribute 1:1 version") << version;
    }
}

TEST(XMLReader, RefusesWhatTheFormatDoesNotAllowAndSaysWhere) {
    const std::string segment = kSegment;
    const std::string key = "<key x='1' y='1'/>";
    const struct {
        std::string text;
        const char* complaint;
    } rows[] = {
        {"", "ParseError 1:1"},
        {"curve", "ParseError 1:1"},
        {"<fcurvelib version='1.0'>", "ParseError 1:26"},
        {document("<curve name='c'/>") + "<x/>", "ParseError 1:55"},
        {document("<curve name='c' name='d'/>"), "ParseError 1:42"},
        {document("<curve name='&nothing;'/>"), "ParseError 1:26"},
        {document("<curve name='\x01'/>"), "ParseError 1:39"},
        {"\n\n  <svg/>", "UnexpectedTag 3:3 svg"},
        {"<fcurvelib/>", "BadAttribute 1:1 version"},
        {"<fcurvelib version='1.0' lang='de'/>", "BadAttribute 1:1 lang"},
        {document(""), "MissingTag 1:26 curve"},
        {document("<container/>"), "UnexpectedTag 1:26 container"},
        {document("<curve name='c'/><curve name='d'/>"), "UnexpectedTag 1:43 curve"},
        {document("<segment interpolator='1'/>"), "UnexpectedTag 1:26 segment"},
        {document("<curve name='c'>words</curve>"), "UnexpectedText 1:42"},
        {document("<curve name='c'>\n" + key + "</curve>"), "UnexpectedTag 2:1 key"},
        {document("<curve name='c'>\n" + segment + segment + "</curve>"), "UnexpectedTag 2:35 segment"},
        {document("<curve name='c'>\n" + segment + key + key + "</curve>"), "UnexpectedTag 2:53 key"},
        {document("<curve name='c'>\n" + segment + key + "</curve>"), "MissingTag 2:53 segment"},
        {document("<curve name='c'>\n" + segment + "<property key='a' value='b'/></curve>"),
         "UnexpectedTag 2:35 property"},
        {document("<curve name='c'>\n" + segment + key + segment + key + segment + "</curve>"), "BadAttribute 2:87 x"},
        {document("<curve name='c'>\n<segment interpolator='1'><out/><out/></segment></curve>"),
         "UnexpectedTag 2:33 out"},
        {document("<curve name='c'>\n<segment interpolator='1'><out x='1'/></segment></curve>"), "BadAttribute 2:27 y"},
        {document("<curve name='c'>\n<segment interpolator='1'><out y='1'/></segment></curve>"), "BadAttribute 2:27 x"},
        {document("<curve name='c'>\n<segment interpolator='1'><in type='round'/></segment></curve>"),
         "BadAttribute 2:27 type"},
        {document("<curve name='c'>\n<segment/></curve>"), "BadAttribute 2:1 interpolator"},
        {document("<curve name='c'>\n<property key='a'/></curve>"), "BadAttribute 2:1 value"},
        {document("<curve name='c'>\n<property value='a'/></curve>"), "BadAttribute 2:1 key"},
        {document("<curve name='c'><property key='a' value='b'>\n<property/></property></curve>"),
         "UnexpectedTag 2:1 property"},
        {document("<curve name='c' visible='yes'/>"), "BadAttribute 1:26 visible"},
        {document("<curve name='c' grid='1 2 3'/>"), "BadAttribute 1:26 grid"},
        {document("<curve name='c' grid='1 2 3 4 5'/>"), "BadAttribute 1:26 grid"},
        {document("<curve name='c' grid='1  2 3 4'/>"), "BadAttribute 1:26 grid"},
        {document("<curve name='c' tangentScale=''/>"), "BadAttribute 1:26 tangentScale"},
        {document("<curve name='\\'/>"), "BadAttribute 1:26 name"},
        {document("<curve name='\\x4'/>"), "BadAttribute 1:26 name"},
        {document("<curve name='\\x00'/>"), "BadAttribute 1:26 name"},
        {document("<curve name='\\n'/>"), "BadAttribute 1:26 name"},
    };
    for (const auto& row : rows) EXPECT_EQ(complaint(row.text), row.complaint) << row.text;
}

TEST(XMLReader, NumbersAreDecimalAndFinite) {
    for (const char* number : {"",
                               " 1",
                               "1 ",
                               "1,5",
                               "0x10",
                               "1e",
                               "e5",
                               ".",
                               "+",
                               "--1",
                               "+-1",
                               "inf",
                               "-inf",
                               "nan",
                               "1e309",
                               "-1e309",
                               "1e99999999999999999999",
                               "1.5.2",
                               "1e5.5",
                               "1d5"}) {
        const std::string key = std::string("<key x='") + number + "' y='0'/>";
        EXPECT_EQ(complaint(document("<curve name='c'>\n" + std::string(kSegment) + key + kSegment + "</curve>")),
                  "BadAttribute 2:35 x")
            << number;
    }
    const struct {
        const char* text;
        const char* number;
    } rows[] = {{"+1", "1"},
                {"1.", "1"},
                {".5", "0.5"},
                {"-.5E+1", "-5"},
                {"1e-400", "0"},
                {"-1e-400", "-0"},
                {"0e99999999999", "0"},
                {"-0", "-0"},
                {"007", "7"},
                {"1e0000000001", "10"},
                {"0.000e-99999999", "0"},
                {"1e-99999999999999999999", "0"}};
    for (const auto& row : rows) {
        const std::string key = std::string("<key x='1' y='") + row.text + "'/>";
        EXPECT_EQ(calls(document(std::string("<curve name='c'>") + kSegment + key + kSegment + "</curve>"),
                        {"keyframePosition"}),
                  std::string("keyframePosition 1 ") + row.number)
            << row.text;
    }
}

TEST(XMLReader, AsksTheTargetWhetherACurveIsWanted) {
    const std::string text = document("<container><curve name='a'/><curve name='b'/></container>");
    CallRecorder recorder;
    recorder.wantsCurve = false;
    MemoryStream stream = StreamOf(text);
    Reader& reader = *FormatFactory::getReader("xml");
    reader.readCurves(stream, recorder);
    EXPECT_EQ(recorder.joined(), "startCurveContainer, startCurve a, startCurve b, finishCurveContainer");

    recorder.calls.clear();
    recorder.only = {"startCurve", "finishCurve", "startCurveContainer", "finishCurveContainer"};
    recorder.wantsCurve = true;
    recorder.wantsMore = false;
    stream.setPosition(0);
    reader.readCurves(stream, recorder);
    EXPECT_EQ(recorder.joined(), "startCurveContainer, startCurve a, finishCurve, finishCurveContainer");
}

TEST(XMLReader, PassesOnWhatTheTargetRaises) {
    struct Full {};
    struct Thrower : CallRecorder {
        std::size_t left = 0;
        void check() {
            if (left-- == 0) throw Full();
        }
        bool startCurve(const char*) override { return check(), true; }
        void curveProperty(const char*, const char*) override { check(); }
        void startSegment(const char*) override { check(); }
        void finishOutTangent() override { check(); }
        void finishKeyframe() override { check(); }
        bool finishCurve() override { return check(), true; }
        void finishCurveContainer() override { check(); }
    };
    const std::string text = document("<container><curve name='a'><property key='a' value='b'/>"
                                      "<segment interpolator='1'><out/></segment><key x='1' y='1'/>"
                                      "<segment interpolator='1'/></curve></container>");
    for (std::size_t i = 0; i < 8; ++i) {
        Thrower thrower;
        thrower.left = i;
        MemoryStream stream = StreamOf(text);
        EXPECT_THROW(FormatFactory::getReader("xml")->readCurves(stream, thrower), Full) << i;
    }
}

TEST(XMLReader, RecognisesDocumentsByTheirFirstTag) {
    const std::string root = "<fcurvelib version='1.0'>";
    const struct {
        std::string text;
        bool isXml;
    } rows[] = {
        {root, true},
        {"<fcurvelib>", true},
        {"<fcurvelib/>", true},
        {"\xef\xbb\xbf \n<?xml version='1.0'?>\n<!-- x --><?pi?>" + root, true},
        {"<!DOCTYPE fcurvelib [<!ENTITY a 'b'>]>", true}, // to be refused by name
        {"", false},
        {"<", false},
        {"<fcurvelib", false},
        {"<fcurvelibrary>", false},
        {"<FCurveLib>", false},
        {"x" + root, false},
        {"<svg>" + root, false},
        {"<!-- " + std::string(2000, '-') + "-->" + root, false},
        {"1 2 3\n4 5 6\n", false},
        {std::string(2000, '\0'), false},
    };
    for (const auto& row : rows) {
        MemoryStream stream = StreamOf(row.text);
        const Reader* reader = FormatFactory::getReader(stream);
        EXPECT_EQ(reader && reader->getFormatType().getFormatName() == std::string("xml"), row.isXml) << row.text;
    }
}

// --- hostile and broken input ----------------------------------------------------------------------------------------

TEST(XMLReader, RefusesEntityBombsBeforeTheyAreDefined) {
    EXPECT_EQ(complaint("<?xml version='1.0'?>\n"
                        "<!DOCTYPE fcurvelib [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;'>"
                        "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;'>]>\n<fcurvelib version='1.0'>&c;</fcurvelib>"),
              "DoctypeRefused 2:21");
    EXPECT_EQ(complaint("<!DOCTYPE fcurvelib SYSTEM 'file:///etc/passwd'><fcurvelib/>"), "DoctypeRefused 1:48");
}

// Each would go on for 2 GB. How much is read before it is refused bounds time and memory.
TEST(XMLReader, GivesUpEarlyOnDocumentsMadeToExhaust) {
    const std::string later = "<fcurvelib version='1.9'>";
    const struct {
        const char* name;
        std::string beginning;
        std::string pattern;
        int mostBytes;
        const char* complaint;
    } rows[] = {
        {"nested elements", later, "<a>", 100000, "LimitExceeded"},
        {"nested elements, not ours", "", "<a>", 100000, "UnexpectedTag"},
        {"an endless text", later + "<curve name='", "x", 30000000, "LimitExceeded"},
        {"an endless text, escaped", later + "<curve name='", "&quot;", 30000000, "LimitExceeded"},
        {"an endless comment", later + "<!-- ", "x", 30000000, "LimitExceeded"},
        {"an endless tag", later + "<", "x", 30000000, "LimitExceeded"},
        {"an endless DOCTYPE", "<!DOCTYPE fcurvelib [", "<!ENTITY a 'b'>", 100000, "DoctypeRefused"},
        {"endless attributes", later + "<curve ", "a='' ", 30000000, "LimitExceeded"},
        {"endless properties", later + "<curve name=''>", "<property key='a' value=''/>", 3000000, "LimitExceeded"},
        {"zeros", "", std::string(1, '\0'), 100000, "ParseError"},
    };
    for (const auto& row : rows) {
        EndlessStream stream(row.beginning, row.pattern);
        const std::string said = complaint(stream);
        EXPECT_EQ(said.substr(0, said.find(' ')), row.complaint) << row.name;
        EXPECT_LT(stream.bytesRead, row.mostBytes) << row.name;
    }
}

TEST(XMLReader, BoundsWhatTheParserKeeps) {
    // Very many attributes of one tag, or tags of different names: neither is too long by itself.
    FormatLimits limits;
    limits.text /= 16;
    const UnderLimits under(limits);
    std::string attributes = document("<curve name='' ");
    attributes.resize(attributes.find("</"));
    std::string tags = "<fcurvelib version='1.9'>";
    for (int i = 0; i < 70000; ++i) attributes += "a" + std::to_string(i) + "='' ";
    for (int i = 0; i < 200000; ++i) tags += "<a" + std::to_string(i) + "/>";
    EXPECT_EQ(complaint(attributes + "/></fcurvelib>").substr(0, 13), "LimitExceeded");
    EXPECT_EQ(complaint(tags + "</fcurvelib>").substr(0, 13), "LimitExceeded");
}

TEST(XMLReader, KeepsTheLimitsThatTheHostSet) {
    FormatLimits limits;
    limits.text = 5;
    limits.nesting = 4;
    limits.properties = 2;
    limits.curves = 2;
    limits.keys = 1;
    const UnderLimits under(limits);
    const std::string property = "<property key='a' value=''/>";
    const std::string segment = "<segment interpolator='1'/>";
    const auto curve = [](const std::string& content) { return document("<curve name='c'>" + content + "</curve>"); };
    const auto container = [](const std::string& content) {
        return document("<container>" + content + "</container>");
    };

    EXPECT_EQ(complaint(document("<curve name='12&lt;4\\x05'/>")), "");
    EXPECT_EQ(complaint(document("<curve name='123456'/>")), "LimitExceeded 1:26 name");
    EXPECT_EQ(complaint(curve("<property key='123456' value=''/>")), "LimitExceeded 1:42 key");
    EXPECT_EQ(complaint(curve("<segment interpolator='123456'/>")), "LimitExceeded 1:42 interpolator");
    EXPECT_EQ(complaint(curve("<segment interpolator='1'><out/></segment>")), "");
    EXPECT_EQ(complaint(curve("<segment interpolator='1'><out>" + property + "</out></segment>")),
              "LimitExceeded 1:73 property");
    EXPECT_EQ(complaint(curve(property + property + "<segment interpolator='1'>" + property + property + "</segment>")),
              "");
    EXPECT_EQ(complaint(curve(property + property + property)), "LimitExceeded 1:98");
    EXPECT_EQ(complaint(curve(segment + "<key x='1' y='1'/>" + segment)), "");
    EXPECT_EQ(complaint(curve(segment + "<key x='1' y='1'/>" + segment + "<key x='2' y='1'/>" + segment)),
              "LimitExceeded 1:114");
    EXPECT_NO_THROW(calls(container("<curve name='a'/><curve name='b'/>")));
    EXPECT_THROW(calls(container("<curve name='a'/><curve name='b'/><curve name='c'/>")), XMLFormat::LimitExceeded);
}

TEST(XMLFormat, TextsOfTheLongestAllowedLengthComeBack) {
    const auto curve = FCurve::create();
    const std::string quotes(GetFormatLimits().text, '"'); // six bytes each in the document
    curve->setProperty(quotes.c_str(), quotes.c_str());
    EXPECT_EQ(Difference(*curve, *read(written(*curve))), "");
}

TEST(XMLReader, TruncatedAtEveryLengthRaisesAndLeavesTheTarget) {
    std::string text;
    for (unsigned seed = 0; text.size() < 4000; ++seed) text = written(*RandomCurve(seed).make());
    text.pop_back(); // without the last line end a document is complete
    for (std::size_t length = 0; length < text.size(); ++length) {
        ASSERT_EQ(complaint(text.substr(0, length)).substr(0, 10), "ParseError") << length;
    }
    EXPECT_EQ(complaint(text), "");
}

TEST(XMLReader, FlippedBytesRaiseOrReadButNeverBreak) {
    std::mt19937 random(1);
    int refused = 0;
    for (unsigned seed = 0; seed < 2000; ++seed) {
        std::string text = written(*RandomCurve(seed % 50).make());
        for (auto flips = 1 + random() % 3; flips > 0; --flips) {
            text[random() % text.size()] = static_cast<char>(random());
        }
        if (!complaint(text).empty()) ++refused;
    }
    EXPECT_GT(refused, 1000);
    EXPECT_LT(refused, 2000);
}

// --- writing ---------------------------------------------------------------------------------------------------------

TEST(XMLWriter, IgnoresCallsThatMakeNoDocument) {
    XMLFormat::XMLWriter writer;
    MemoryStream stream;
    writer.startCurve("without a stream");
    const Writer::StreamLink link(writer, stream);
    writer.finishCurve();
    writer.startKeyframe();
    writer.containerProperty("a", "b");
    writer.startCurve("c");
    EXPECT_FALSE(writer.startCurve("in a curve"));
    writer.startCurveContainer();
    writer.tangentVector(1, 2);
    writer.curveLocked(true);
    writer.curveVisible(false);
    writer.curveLocked(false);
    writer.startSegmentContainer();
    writer.curveProperty("too", "late");
    writer.startSegment(nullptr);
    writer.startKeyframe();
    writer.startInTangent();
    writer.tangentProperty("k", nullptr);
    writer.tangentType(9);
    writer.tangentVector(-1, 2);
    writer.finishOutTangent();
    writer.finishInTangent();
    writer.segmentProperty(nullptr, "v");
    writer.finishSegment();
    writer.startKeyframe();
    writer.keyframeProperty("p", "q");
    writer.keyframeBreakdown(true);
    writer.keyframePosition(1, 2);
    writer.finishKeyframe();
    writer.finishCurve();
    EXPECT_EQ(std::string(stream.getData(), static_cast<std::size_t>(stream.getSize())),
              R"(<?xml version="1.0" encoding="UTF-8"?>
<fcurvelib version="1.0">
  <curve name="c" visible="false">
    <segment interpolator="">
      <in x="-1" y="2">
        <property key="k" value=""/>
      </in>
      <property key="" value="v"/>
    </segment>
    <key x="1" y="2" breakdown="true">
      <property key="p" value="q"/>
    </key>
  </curve>
</fcurvelib>
)");
}

TEST(XMLWriter, RefusesNumbersThatNoFileHolds) {
    XMLFormat::XMLWriter writer;
    MemoryStream stream;
    const Writer::StreamLink link(writer, stream);
    writer.startCurve("c");
    EXPECT_THROW(writer.curveTangentScale(std::numeric_limits<double>::infinity()), XMLFormat::NotFinite);
    EXPECT_THROW(writer.curveGrid(std::numeric_limits<double>::quiet_NaN(), 0, 1, 1), XMLFormat::NotFinite);
    writer.startSegmentContainer();
    writer.startKeyframe();
    EXPECT_THROW(writer.keyframePosition(0, -std::numeric_limits<double>::infinity()), XMLFormat::NotFinite);
}

TEST(XMLWriter, NestedLinksWriteTwoDocuments) {
    const auto inner = RandomCurve(1).make();
    const auto outer = RandomCurve(2).make();
    XMLFormat::XMLWriter writer;
    MemoryStream outerStream;
    std::string text;
    {
        const Writer::StreamLink link(writer, outerStream);
        writer.startCurve("outer");
        writer.startSegmentContainer();
        writer.startSegment("1");
        WriteFCurveToString(*inner, "xml", text); // finds the newest writer, which is this one
        writer.finishSegment();
        writer.finishSegmentContainer();
        writer.finishCurve();
    }
    EXPECT_EQ(text, written(*inner));
    const auto back = FCurve::create();
    outerStream.setPosition(0);
    ReadCurve(outerStream, "xml", *back);
    EXPECT_STREQ(back->getName(), "outer");
    EXPECT_EQ(back->eval(0.0), 1.0);
}

TEST(XMLWriter, AFullStreamRaisesAndTheNextDocumentIsWhole) {
    const auto curve = RandomCurve(3).make();
    ArrayStream<100> small;
    EXPECT_THROW(WriteCurve(*curve, small, "xml"), ArrayStreamAdaptor::EndOfBuffer);
    EXPECT_EQ(Difference(*curve, *read(written(*curve))), "");
}

TEST(XMLFormat, AMillionBytesReachTheStreamInAFewPieces) {
    struct Counting : MemoryStream {
        int writes = 0;
        void writeData(const void* buffer, int count) override {
            ++writes;
            MemoryStream::writeData(buffer, count);
        }
    } stream;
    const auto curve = FCurve::create();
    for (int i = 0; i < 10000; ++i) {
        Keyframe key;
        key.set(i, i);
        curve->insertSegment(key, InterpolatorFactory::create("bezier()"));
    }
    WriteCurve(*curve, stream, "xml");
    EXPECT_GT(stream.getSize(), 1000000);
    EXPECT_LT(stream.writes, 10);
    stream.setPosition(0);
    const auto back = FCurve::create();
    ReadCurve(stream, "xml", *back);
    EXPECT_EQ(Difference(*curve, *back), "");
}

TEST(XMLFormat, OneReaderServesManyThreads) {
    const std::string text = written(*RandomCurve(4).make());
    std::vector<std::thread> threads;
    std::vector<std::string> results(4);
    for (std::string& result : results) {
        threads.emplace_back([&text, &result] {
            for (int i = 0; i < 20; ++i) {
                CallRecorder recorder;
                MemoryStream stream = StreamOf(text);
                FormatFactory::getReader("xml")->readCurve(stream, recorder);
                result = recorder.calls.back() + std::to_string(recorder.calls.size());
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::string& result : results) EXPECT_EQ(result, results[0]);
    EXPECT_EQ(results[0].substr(0, 11), "finishCurve");
}
