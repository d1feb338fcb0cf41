#include "support/CallRecorder.h"
#include "support/Complaint.h"
#include "support/SameCurve.h"
#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace Test;

namespace {

std::string written(const FCurve& curve) {
    std::string text;
    WriteFCurveToString(curve, "xml", text);
    return text;
}

std::shared_ptr<FCurve> read(const std::string& text) {
    auto curve = FCurve::create();
    ReadFCurveFromString(text, "xml", *curve);
    return curve;
}

std::string complaint(Stream& stream) {
    const auto curve = FCurve::create();
    curve->setName("untouched");
    const std::string said = ComplaintOf("XMLFormat", [&] { ReadCurve(stream, "xml", *curve); });
    if (!said.empty()) {
        EXPECT_STREQ(curve->getName(), "untouched");
        EXPECT_EQ(curve->size(), 1U);
    }
    return said;
}

std::string complaint(const std::string& text) {
    MemoryStream stream = StreamOf(text);
    return complaint(stream);
}

std::string document(const std::string& content, const std::string& version = "1.0") {
    return "<fcurvelib version='" + version + "'>" + content + "</fcurvelib>";
}
// The content stands at the beginning of the second line.
std::string curveOf(const std::string& content) {
    return document("<curve name='c'>\n" + content + "</curve>");
}

const std::string kSegment = "<segment interpolator='1'/>";
const std::string kKey = "<key x='1' y='1'/>";

std::string calls(const std::string& text, std::vector<std::string> only = {}) {
    CallRecorder recorder;
    recorder.only = std::move(only);
    MemoryStream stream = StreamOf(text);
    FormatFactory::getReader("xml")->readCurves(stream, recorder);
    return recorder.joined();
}

struct Row {
    std::string text;
    const char* complaint;
};

} // namespace

// --- what is written comes back --------------------------------------------------------------------------------------

TEST(XMLFormat, EveryByteComesBackInEveryPlaceOfAText) {
    const auto curve = FCurve::create();
    std::string all;
    for (int byte = 1; byte < 256; ++byte) {
        const std::string one(1, static_cast<char>(byte));
        curve->setProperty(("key" + one).c_str(), (one + "x" + one + one).c_str());
        all += one;
        if (byte < 0x80) continue;
        // As the first of a character: with what stands at the edges of what UTF-8 and XML allow behind it, whole or
        // cut.
        for (const std::string second : {"\x80", "\x8f", "\x90", "\x9f", "\xa0", "\xbb", "\xbf", "("}) {
            for (const std::string rest : {"", "\x80", "\xbd", "\xbe", "\xbf", "\xbf\xbf", "(", "\x80("}) {
                curve->setProperty((one + second + rest).c_str(), ("<" + one + second + rest + "\\x4").c_str());
            }
        }
    }
    curve->setName(all.c_str());
    const std::string text = written(*curve);
    EXPECT_EQ(Difference(*curve, *read(text)), "");
    for (const char c : text) EXPECT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= ' ');
}

TEST(XMLFormat, TextsOfTheLongestAllowedLengthComeBack) {
    const auto curve = FCurve::create();
    const std::string quotes(GetFormatLimits().text, '"'); // six bytes each in the document
    curve->setProperty(quotes.c_str(), quotes.c_str());
    EXPECT_EQ(Difference(*curve, *read(written(*curve))), "");
}

TEST(XMLFormat, TheDocumentedExampleIsWhatIsWritten) {
    const std::string page = readWholeFile(FCURVELIB_SOURCE_DIR "/docs/formats/xml.md");
    const std::size_t first = page.find("```xml\n") + 7;
    const std::string example = page.substr(first, page.find("```", first) - first);
    const auto container = FCurveContainer::create();
    MemoryStream from = StreamOf(example);
    ReadCurves(from, *container);
    MemoryStream to;
    WriteCurves(*container, to, "xml");
    EXPECT_EQ(BytesOf(to), example);
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
    const std::string latin = "<?xml version='1.0' encoding='ISO-8859-1'?>";
    for (const std::string& text :
         {plain, utf16, latin + plain, document("<curve name='n'></curve>"),
          "\xef\xbb\xbf<?xml version='1.0'?>\r\n<!-- <fcurvelib> -->\r\n<fcurvelib\r\nversion='1.0'\r\n>\r\n"
              + std::string("<curve name='n'><!-- nothing --></curve><![CDATA[\n]]>\r\n</fcurvelib>\r\n<?end?>")}) {
        EXPECT_EQ(calls(text, {"startCurve", "finishCurve"}), "startCurve n, finishCurve");
    }
    EXPECT_STREQ(read(latin + document("<curve name='\xfc'/>"))->getName(), "ü");
    EXPECT_STREQ(read(document("<curve name='\\x4a\\x4A'/>"))->getName(), "JJ");
}

TEST(XMLReader, LaterMinorVersionsAreReadAndTheUnknownSkipped) {
    const std::string content =
        "<curve name='c' hue='blue'><layer depth='2'><curve name='no'/>text</layer>"
        "<segment interpolator='linear()'><out type='wavy' x='1' y='2'/>and text<mid/></segment></curve><extra/>";
    EXPECT_EQ(calls(document(content, "1.7"), {"startCurve", "tangentType", "tangentVector", "finishCurve"}),
              "startCurve c, tangentType 0, tangentVector 1 2, finishCurve");
    EXPECT_EQ(complaint(document(content, "1.0")), "BadAttribute 1:26 hue");
    EXPECT_EQ(complaint(document("<curve/>", "1.7")), "BadAttribute 1:26 name"); // what is known is checked as ever
}

TEST(XMLReader, OtherMajorVersionsAreRefusedWithBothNumbers) {
    try {
        read(document("<curve name='c'/>", "2.5"));
        FAIL();
    } catch (const XMLFormat::UnsupportedVersion& error) {
        EXPECT_EQ(error.majorVersion(), 2U);
        EXPECT_EQ(error.supportedVersion(), 1U);
        EXPECT_NE(std::string(error.message()).find("version 2"), std::string::npos);
        EXPECT_NE(std::string(error.message()).find("version 1"), std::string::npos);
    }
    EXPECT_EQ(complaint(document("", "0.1")), "UnsupportedVersion 1:1 version");
    std::istringstream bad("1 1. .0 1.0.0 -1.0 1.x +1.0 1234567.0 1.99999999");
    for (std::string version; bad >> version;) {
        EXPECT_EQ(complaint(document("", version)), "BadAttribute 1:1 version") << version;
    }
    for (const char* version : {"", " 1.0"}) EXPECT_EQ(complaint(document("", version)), "BadAttribute 1:1 version");
}

TEST(XMLReader, RefusesWhatTheFormatDoesNotAllowAndSaysWhere) {
    const Row documents[] = {
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
        {document(kSegment), "UnexpectedTag 1:26 segment"},
        {document("<curve name='c'>words</curve>"), "UnexpectedText 1:42"},
        {document("<curve name='\\'/>"), "BadAttribute 1:26 name"},
        {document("<curve name='\\x4'/>"), "BadAttribute 1:26 name"},
        {document("<curve name='\\x00'/>"), "BadAttribute 1:26 name"},
        {document("<curve name='\\xG0'/>"), "BadAttribute 1:26 name"},
        {document("<curve name='\\xg0'/>"), "BadAttribute 1:26 name"},
        {document("<curve name='\\n'/>"), "BadAttribute 1:26 name"},
        // Entities, which would be the way to a document that grows for ever, or to other files.
        {"<?xml version='1.0'?>\n<!DOCTYPE fcurvelib [<!ENTITY a '&b;&b;'>]>\n<fcurvelib/>", "DoctypeRefused 2:21"},
        {"<!DOCTYPE fcurvelib SYSTEM 'file:///etc/passwd'><fcurvelib/>", "DoctypeRefused 1:48"},
    };
    for (const Row& row : documents) EXPECT_EQ(complaint(row.text), row.complaint) << row.text;

    const Row contentsOfCurves[] = {
        {kKey, "UnexpectedTag 2:1 key"},
        {kSegment + kSegment, "UnexpectedTag 2:28 segment"},
        {kSegment + kKey + kKey, "UnexpectedTag 2:46 key"},
        {kSegment + kKey, "MissingTag 2:46 segment"},
        {kSegment + "<property key='a' value='b'/>", "UnexpectedTag 2:28 property"},
        {kSegment + kKey + kSegment + kKey + kSegment, "BadAttribute 2:73 x"},
        {"<segment interpolator='1'><out/><out/></segment>", "UnexpectedTag 2:33 out"},
        {"<segment interpolator='1'><out x='1'/></segment>", "BadAttribute 2:27 y"},
        {"<segment interpolator='1'><out y='1'/></segment>", "BadAttribute 2:27 x"},
        {"<segment interpolator='1'><out x='1' y='?'/></segment>", "BadAttribute 2:27 y"},
        {"<segment interpolator='1'><in type='round'/></segment>", "BadAttribute 2:27 type"},
        {kSegment + "<key x='1' y='1'><out/></key>", "UnexpectedTag 2:45 out"},
        {"<segment/>", "BadAttribute 2:1 interpolator"},
        {"<property key='a'/>", "BadAttribute 2:1 value"},
        {"<property value='a'/>", "BadAttribute 2:1 key"},
        {"<property key='a' value='b'><property/></property>", "UnexpectedTag 2:29 property"},
    };
    for (const Row& row : contentsOfCurves) EXPECT_EQ(complaint(curveOf(row.text)), row.complaint) << row.text;

    for (const std::string attribute : {"visible='yes'", "grid='1 2 3'", "grid='1 2 3 4 5'", "grid='1  2 3 4'",
                                        "tangentScale=''", "locked=''", "hue='blue'"}) {
        EXPECT_EQ(complaint(document("<curve name='c' " + attribute + "/>")),
                  "BadAttribute 1:26 " + attribute.substr(0, attribute.find('=')));
    }
}

TEST(XMLReader, NumbersAreDecimalAndFinite) {
    const auto keyAt = [](const std::string& x) { return kSegment + "<key x='" + x + "' y='1'/>" + kSegment; };
    std::istringstream bad("1,5 0x10 1e e5 . + --1 +-1 inf -inf nan 1e309 -1e309 1e99999999999999999999 1.5.2 1e5.5");
    for (std::string number; bad >> number;) {
        EXPECT_EQ(complaint(curveOf(keyAt(number))), "BadAttribute 2:28 x") << number;
    }
    for (const char* number : {"", " 1", "1 "}) EXPECT_EQ(complaint(curveOf(keyAt(number))), "BadAttribute 2:28 x");

    // as written, as read, and so on
    std::istringstream good("+1 1  1. 1  .5 0.5  -.5E+1 -5  1e-400 0  -1e-400 -0  0e99999999999 0  -0 -0  007 7 "
                            "1e0000000001 10  0.000e-99999999 0  1e-99999999999999999999 0");
    for (std::string text, number; good >> text >> number;) {
        EXPECT_EQ(calls(curveOf(keyAt(text)), {"keyframePosition"}), "keyframePosition " + number + " 1") << text;
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

// --- hostile input ---------------------------------------------------------------------------------------------------

// Each would go on for 2 GB. How much is read before it is refused bounds time and memory.
TEST(XMLReader, GivesUpEarlyOnDocumentsMadeToExhaust) {
    const std::string later = "<fcurvelib version='1.9'>";
    const struct {
        std::string beginning;
        std::string pattern;
        int mostBytes;
        const char* complaint;
    } rows[] = {
        {later, "<a>", 100000, "LimitExceeded"},
        {"", "<a>", 100000, "UnexpectedTag"},
        {later + "<curve name='", "x", 30000000, "LimitExceeded"},
        {later + "<curve name='", "&quot;", 30000000, "LimitExceeded"},
        {later + "<!-- ", "x", 30000000, "LimitExceeded"},
        {later + "<", "x", 30000000, "LimitExceeded"},
        {"<!DOCTYPE fcurvelib [", "<!ENTITY a 'b'>", 100000, "DoctypeRefused"},
        {later + "<curve ", "a='' ", 30000000, "LimitExceeded"},
        {later + "<curve name=''>", "<property key='a' value=''/>", 3000000, "LimitExceeded"},
        {"", std::string(1, '\0'), 100000, "ParseError"},
    };
    for (const auto& row : rows) {
        EndlessStream stream(row.beginning, row.pattern);
        const std::string said = complaint(stream);
        EXPECT_EQ(said.substr(0, said.find(' ')), row.complaint) << row.beginning << row.pattern;
        EXPECT_LT(stream.bytesRead, row.mostBytes) << row.beginning << row.pattern;
    }
}

TEST(XMLReader, BoundsWhatTheParserKeeps) {
    // Very many attributes of one tag, or tags of different names: neither is too long by itself.
    FormatLimits limits;
    limits.text /= 16;
    const UnderLimits under(limits);
    std::string attributes = "<curve name='' ";
    std::string tags;
    for (int i = 0; i < 70000; ++i) attributes += "a" + std::to_string(i) + "='' ";
    for (int i = 0; i < 200000; ++i) tags += "<a" + std::to_string(i) + "/>";
    EXPECT_EQ(complaint(document(attributes + "/>")).substr(0, 13), "LimitExceeded");
    EXPECT_EQ(complaint(document(tags, "1.9")).substr(0, 13), "LimitExceeded");
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
    const std::string segment = "<segment interpolator='1'>";
    const Row rows[] = {
        {document("<curve name='12&lt;4\\x05'/>"), ""},
        {document("<curve name='123456'/>"), "LimitExceeded 1:26 name"},
        {curveOf("<property key='123456' value=''/>"), "LimitExceeded 2:1 key"},
        {curveOf("<segment interpolator='123456'/>"), "LimitExceeded 2:1 interpolator"},
        {curveOf(segment + "<out/></segment>"), ""},
        {curveOf(segment + "<out>" + property + "</out></segment>"), "LimitExceeded 2:32 property"},
        {curveOf(property + property + segment + property + property + "</segment>"), ""},
        {curveOf(property + property + property), "LimitExceeded 2:57"},
        {curveOf(kSegment + kKey + kSegment), ""},
        {curveOf(kSegment + kKey + kSegment + "<key x='2' y='1'/>" + kSegment), "LimitExceeded 2:73"},
    };
    for (const Row& row : rows) EXPECT_EQ(complaint(row.text), row.complaint) << row.text;
    const std::string keyed = kSegment + kKey + kSegment + "</curve>";
    const std::string two = "<container><curve name='a'>" + keyed + "<curve name='b'>" + keyed;
    EXPECT_NO_THROW(calls(document(two + "</container>")));
    EXPECT_THROW(calls(document(two + "<curve name='c'/></container>")), XMLFormat::LimitExceeded);
}
