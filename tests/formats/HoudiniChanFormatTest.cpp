#include "support/CallRecorder.h"
#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <sstream>

using namespace Test;
using HoudiniChanFormat::HoudiniChanReader;

namespace {

// What a text reads as: "chan0 (1 2)(2 4) chan1 ..."; or what it raises, as "BadNumber 2:5".
std::string reading(Stream& stream, HoudiniChanReader::FrameColumn frameColumn = HoudiniChanReader::Auto) {
    HoudiniChanReader reader(frameColumn);
    CallRecorder recorder;
    recorder.only = {"startCurve", "keyframePosition"};
    try {
        reader.readCurves(stream, recorder);
    } catch (const HoudiniChanFormat::ChanError& error) {
        const std::string what = error.what();
        const std::string prefix = "VEM_FN::FCurveLib::HoudiniChanFormat::";
        EXPECT_EQ(what.substr(0, prefix.size()), prefix);
        EXPECT_STRNE(error.message(), "");
        EXPECT_TRUE(recorder.calls.empty());
        return what.substr(prefix.size()) + ' ' + std::to_string(error.line()) + ':' + std::to_string(error.column());
    }
    std::string result;
    for (const std::string& call : recorder.calls) {
        const std::string arguments = call.substr(call.find(' ') + 1);
        if (call[0] == 's') {
            result += (result.empty() ? "" : " ") + arguments + ' ';
        } else {
            result += '(' + arguments + ')';
        }
    }
    return result;
}

std::string reading(const std::string& text, HoudiniChanReader::FrameColumn frameColumn = HoudiniChanReader::Auto) {
    MemoryStream stream = StreamOf(text);
    return reading(stream, frameColumn);
}

bool isRecognised(const std::string& text) {
    MemoryStream stream = StreamOf(text);
    const Reader* reader = FormatFactory::getReader(stream);
    return reader && reader->getFormatType().getFormatName() == std::string("hchan");
}

constexpr const char* kCamera = "1001\t1.000000\t2.000000\t-3.500000\t0.000000\t-0.000000\t45.000000\t32.268000\n"
                                "1002\t1.100000\t2.000000\t-3.400000\t0.000000\t-0.000000\t46.500000\t32.268000\n"
                                "1003\t1.250000\t2.000000\t-3.200000\t0.000000\t-0.000000\t49.000000\t32.268000\n";

} // namespace

TEST(HoudiniChan, ReadsBothDialects) {
    const struct {
        std::string text;
        const char* reading;
    } rows[] = {
        {"0 10 -1.5\n0.25 10 -1.25\n1 10 -1\n",
         "chan0 (1 0)(2 0.25)(3 1) chan1 (1 10)(2 10)(3 10) chan2 (1 -1.5)(2 -1.25)(3 -1)"},
        {"# made by hand\r\n# columns: frame tx\r\n\r\n  1   1e-05 \t\r\n2 -2.5E+2\r\n\r\n4 .5\r\n",
         "chan0 (1 1e-05)(2 -250)(4 0.5)"},
        {"\xef\xbb\xbf"
         "5 -0.0\r7 +2.\r \t\v\f\r#",
         "chan0 (5 -0)(7 2)"},
        {"1\n2\n3", "chan0 (1 1)(2 2)(3 3)"},                // one column: no frames
        {"7 8", "chan0 (1 7) chan1 (1 8)"},                  // one row: no frames
        {"1 5\n1 6\n", "chan0 (1 1)(2 1) chan1 (1 5)(2 6)"}, // not rising
        {"1 5\n2.5 6\n", "chan0 (1 1)(2 2.5) chan1 (1 5)(2 6)"},
        {"-3 5\n-2.0 6\n1e1 7\n", "chan0 (-3 5)(-2 6)(10 7)"},
    };
    for (const auto& row : rows) EXPECT_EQ(reading(row.text), row.reading) << row.text;
}

TEST(HoudiniChan, TheDocumentedExampleReadsAsThePageSays) {
    std::ifstream file(FCURVELIB_SOURCE_DIR "/docs/formats/hchan.md", std::ios::binary);
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    const std::size_t first = page.find("## Example\n\n```\n");
    ASSERT_NE(first, std::string::npos);
    const std::size_t begin = first + sizeof "## Example\n\n```";
    EXPECT_EQ(reading(page.substr(begin, page.find("```", begin) - begin)),
              "chan0 (1001 1)(1002 1.1)(1004 0.5) chan1 (1001 2)(1002 2)(1004 -250)");
}

TEST(HoudiniChan, TheHostMaySayWhatTheFirstColumnIs) {
    const std::string ramp = "1 10\n2 20\n";
    EXPECT_EQ(reading(ramp), "chan0 (1 10)(2 20)");
    EXPECT_EQ(reading(ramp, HoudiniChanReader::No), "chan0 (1 1)(2 2) chan1 (1 10)(2 20)");
    EXPECT_EQ(reading("5 10", HoudiniChanReader::Yes), "chan0 (5 10)");
    EXPECT_EQ(reading("0.5 1\n0.501 2\n2 3", HoudiniChanReader::Yes), "chan0 (0.5 1)(0.501 2)(2 3)");
    EXPECT_EQ(reading("0.5 1\n0.5005 2\n", HoudiniChanReader::Yes), "BadFrame 2:1");
    EXPECT_EQ(reading("2 1\n\n  1 2\n", HoudiniChanReader::Yes), "BadFrame 3:3");
    EXPECT_EQ(reading("1\n2\n", HoudiniChanReader::Yes), "NoData 3:1");

    // The reader that everybody shares has the switch too.
    auto& shared = dynamic_cast<HoudiniChanReader&>(*FormatFactory::getReader("hchan"));
    shared.setFrameColumn(HoudiniChanReader::No);
    const auto curve = FCurve::create();
    ReadFCurveFromString(ramp, "hchan", *curve);
    shared.setFrameColumn(HoudiniChanReader::Auto);
    EXPECT_EQ(curve->begin()->getRightKey()->get(), Vector2D<double>(1, 1));
}

TEST(HoudiniChan, CurvesAreLinearBetweenKeysAndHoldOutside) {
    const auto container = FCurveContainer::create();
    MemoryStream stream = StreamOf(kCamera);
    EXPECT_STREQ(ReadCurves(stream, *container).getFormatName(), "hchan");
    ASSERT_EQ(container->size(), 7U);
    const char* const roles[] = {"tx", "ty", "tz", "rx", "ry", "rz", "vfov"};
    int channel = 0;
    for (const FCurve& curve : *container) {
        EXPECT_EQ(curve.getName(), "chan" + std::to_string(channel));
        EXPECT_STREQ(curve.getProperty("hchan_role"), roles[channel++]);
        EXPECT_EQ(curve.size(), 4U);
    }
    const FCurve& tx = *container->begin();
    EXPECT_EQ(tx.eval(-1e6), 1.0);
    EXPECT_EQ(tx.eval(1001.0), 1.0);
    EXPECT_NEAR(tx.eval(1002.5), 1.175, 1e-15);
    EXPECT_EQ(tx.eval(2000.0), 1.25);
    const FCurve& ry = *std::next(container->begin(), 4);
    EXPECT_TRUE(std::signbit(ry.begin()->getRightKey()->getY()));
    // Ordinary tangents, should anybody make the segments bezier: flat, a third of the span.
    EXPECT_EQ(tx.findSegment(1001.5)->getInTangent()->get(), Vector2D<double>(-1.0 / 3.0, 0.0));

    const auto first = FCurve::create();
    ReadFCurveFromString(kCamera, "hchan", *first);
    EXPECT_STREQ(first->getName(), "chan0");
    EXPECT_EQ(first->size(), 4U);

    // Roles are only for what looks like a camera or an object.
    ReadFCurveFromString("1 2 3\n2 3 4\n", "hchan", *first);
    EXPECT_STREQ(first->getProperty("hchan_role"), "");
    ReadFCurveFromString("1.5 2 3 4 5 6 7\n", "hchan", *first);
    EXPECT_STREQ(first->getProperty("hchan_role"), "");
}

TEST(HoudiniChan, RefusesBadTablesAndSaysWhere) {
    const struct {
        std::string text;
        const char* complaint;
    } rows[] = {
        {"", "NoData 1:1"},
        {"# nothing\n\n  \t\n", "NoData 4:1"},
        {"1 2 3\n4 5\n", "RaggedRow 2:4"},
        {"1 2\n4 5 6 7\n", "RaggedRow 2:5"},
        {"1 2 x\n", "BadNumber 1:5"},
        {"1 2\r\n3 4\r\r\n5 nan\r\n", "BadNumber 4:3"},
        {"1 2\n3 inf\n", "BadNumber 2:3"},
        {"1 2\n3 1e999\n", "BadNumber 2:3"},
        {"1 2\n3 0x10\n", "BadNumber 2:3"},
        {"1,5 2\n", "BadNumber 1:1"},
        {"1 2 # no comment\n", "BadNumber 1:5"},
        {std::string("1 2\n3\0 4\n", 9), "BadNumber 2:1"},
        {"{\n rate = 30\n}\n", "BadNumber 1:1"},
        {std::string("chan\0\0\0\2\0\0\0\1", 12), "BinaryFile 1:1"},
        {"1\n" + std::string(2000000, '1') + "\n", "LimitExceeded 2:1"},
        {std::string(65537 * 2, ' ').replace(0, 1, "1"), "chan0 (1 1)"},
    };
    for (const auto& row : rows) EXPECT_EQ(reading(row.text), row.complaint) << row.text.substr(0, 100);

    std::string wide;
    for (int i = 0; i < 65536; ++i) wide += "1 ";
    EXPECT_EQ(reading(wide + "\n" + wide).substr(0, 12), "chan0 (1 1)(");
    EXPECT_EQ(reading(wide + "1"), "LimitExceeded 1:131073");

    try {
        const auto curve = FCurve::create();
        ReadFCurveFromString("1 2 3\n4 5\n", "hchan", *curve);
        FAIL();
    } catch (const HoudiniChanFormat::RaggedRow& error) {
        EXPECT_EQ(error.expected(), 3U);
        EXPECT_EQ(error.found(), 2U);
    }
}

TEST(HoudiniChan, KeepsTheLimitsThatTheHostSet) {
    FormatLimits limits;
    limits.text = 4;
    limits.keys = 2;
    limits.curves = 2;
    const UnderLimits under(limits);
    EXPECT_EQ(reading("1.25 1\n2 2\n"), "chan0 (1 1.25)(2 2) chan1 (1 1)(2 2)");
    EXPECT_EQ(reading("1.125 1\n"), "LimitExceeded 1:1");
    EXPECT_EQ(reading("1 1\n2 2\n\n3 3\n"), "LimitExceeded 4:1");
    EXPECT_EQ(reading("1 1 1\n2 2 2\n"), "chan0 (1 1)(2 2) chan1 (1 1)(2 2)");
    EXPECT_EQ(reading("1 1 1\n"), "LimitExceeded 1:1");
}

TEST(HoudiniChan, GivesUpEarlyOnEndlessRowsAndNumbers) {
    EndlessStream digits("", "1");
    EXPECT_EQ(reading(digits), "LimitExceeded 1:1");
    EXPECT_LT(digits.bytesRead, 2000000);
    EndlessStream row("1 2\n", "1 ");
    EXPECT_EQ(reading(row), "LimitExceeded 2:131073");
    EXPECT_LT(row.bytesRead, 300000);
}

TEST(HoudiniChan, TruncatedOrChangedTextReadsOrRaises) {
    const std::string text = kCamera;
    for (std::size_t i = 0; i < text.size(); ++i) {
        EXPECT_NE(reading(text.substr(0, i)), "");
        for (const char c : {'\0', '\n', 'x', '#', '9', ' '}) {
            std::string changed = text;
            changed[i] = c;
            EXPECT_NE(reading(changed), "");
        }
    }
}

TEST(HoudiniChan, RecognisesRowsOfNumbersAndNothingElse) {
    std::string large;
    for (int i = 0; i < 1000; ++i) large += std::to_string(i) + " 0.25\n";
    const std::string longRow = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22 23 24 25 26 27 28 29 30 31 ";
    std::string row;
    while (row.size() < 3000) row += longRow;
    const struct {
        std::string text;
        bool isChan;
    } rows[] = {
        {kCamera, true},
        {"1", true},
        {"\xef\xbb\xbf# frame tx\r\n1 2\r\n", true},
        {large, true},
        {row, true},                                              // one row, longer than the window
        {std::string(1023, '1').replace(2, 1, " ") + "-x", true}, // the last cell in the window may be cut
        {"1 2 3\n4 5\n", true},                                   // ragged: refused by name, with a place
        {"", false},
        {"\n \n", false},
        {"# only a comment\n", false},
        {std::string(1024, '\0'), false},
        {"1 2\n3 x\n", false},
        {"1 nan\n", false},
        {std::string("1 2\n\0\0", 6), false},
        {"1 2\n\xff", false},
        {"# für\n1 2\n", false},
        {std::string("chan\0\0\0\2", 8), false},
        {"1\n{\nrate = 30\n}\n", false},
        {std::string(3000, '1'), false}, // not one whole number in the window
    };
    for (const auto& one : rows) EXPECT_EQ(isRecognised(one.text), one.isChan) << one.text.substr(0, 60);
}

// Files that were not made for this reader.
TEST(HoudiniChan, ReadsRealFilesAsTheNumbersInThem) {
    const struct {
        const char* name;
        std::size_t rows;
    } files[] = {{"pyroclast_scoop.chan", 250}, {"pyroclast_move_up.chan", 1000}};
    for (const auto& one : files) {
        const std::string path = std::string(FCURVELIB_SOURCE_DIR "/../shared/data/chan/") + one.name;
        std::ifstream file(path);
        if (!file) GTEST_SKIP() << path << " is not here";
        const auto container = FCurveContainer::create();
        FileStream stream(path.c_str(), FileStream::Read, 0);
        EXPECT_STREQ(ReadCurves(stream, *container).getFormatName(), "hchan");
        ASSERT_EQ(container->size(), 6U);
        std::size_t rows = 0;
        for (std::string line; std::getline(file, line); ++rows) {
            std::istringstream cells(line);
            double frame = 0.0;
            cells >> frame;
            for (const FCurve& curve : *container) {
                double value = 0.0;
                cells >> value;
                ASSERT_EQ(curve.eval(frame), value) << path << ", frame " << frame;
            }
        }
        EXPECT_EQ(rows, one.rows);
        for (const FCurve& curve : *container) EXPECT_EQ(curve.size(), rows + 1);
        EXPECT_STREQ(container->begin()->getProperty("hchan_role"), "tx");
    }
}
