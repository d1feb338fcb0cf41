#include "support/CallRecorder.h"
#include "support/Complaint.h"
#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

using namespace Test;
using HoudiniChanFormat::HoudiniChanReader;

namespace {

constexpr auto Auto = HoudiniChanReader::Auto;
constexpr auto Yes = HoudiniChanReader::Yes;
constexpr auto No = HoudiniChanReader::No;

// The curves as "chan0(1 2)(2 4) chan1(1 5)".
struct Table : FormatInterface {
    std::ostringstream text;
    bool startCurve(const char* name) override {
        text << (text.tellp() == 0 ? "" : " ") << name;
        return true;
    }
    void keyframePosition(double x, double y) override { text << '(' << x << ' ' << y << ')'; }
};

// What a text reads as, or what it raises, as "BadNumber 2:5".
std::string reading(Stream& stream, HoudiniChanReader::FrameColumn frameColumn = Auto) {
    HoudiniChanReader reader(frameColumn);
    Table table;
    const std::string complaint = ComplaintOf("HoudiniChanFormat", [&] { reader.readCurves(stream, table); });
    EXPECT_TRUE(complaint.empty() || table.text.str().empty());
    return complaint + table.text.str();
}
std::string reading(const std::string& text, HoudiniChanReader::FrameColumn frameColumn = Auto) {
    MemoryStream stream = StreamOf(text);
    return reading(stream, frameColumn);
}

constexpr const char* kCamera = "1001\t1.000000\t2.000000\t-3.500000\t0.000000\t-0.000000\t45.000000\t32.268000\n"
                                "1002\t1.100000\t2.000000\t-3.400000\t0.000000\t-0.000000\t46.500000\t32.268000\n"
                                "1003\t1.250000\t2.000000\t-3.200000\t0.000000\t-0.000000\t49.000000\t32.268000\n";

} // namespace

TEST(HoudiniChan, ReadsTablesOrSaysWhereTheyAreWrong) {
    const struct {
        std::string text;
        HoudiniChanReader::FrameColumn frameColumn;
        const char* reading;
    } rows[] = {
        {"0 10 -1.5\n0.25 10 -1.25\n1 10 -1\n", Auto,
         "chan0(1 0)(2 0.25)(3 1) chan1(1 10)(2 10)(3 10) chan2(1 -1.5)(2 -1.25)(3 -1)"},
        {"# made by hand\r\n# columns: frame tx\r\n\r\n  1   1e-05 \t\r\n2 -2.5E+2\r\n\r\n4 .5\r\n", Auto,
         "chan0(1 1e-05)(2 -250)(4 0.5)"},
        {"\xef\xbb\xbf" + std::string("5 -0.0\r7 +2.\r \t\v\f\r#"), Auto, "chan0(5 -0)(7 2)"},
        {"1\n2\n3", Auto, "chan0(1 1)(2 2)(3 3)"},               // one column: no frames
        {"7 8", Auto, "chan0(1 7) chan1(1 8)"},                  // one row: no frames
        {"1 5\n1 6\n", Auto, "chan0(1 1)(2 1) chan1(1 5)(2 6)"}, // not rising
        {"1 5\n2.5 6\n", Auto, "chan0(1 1)(2 2.5) chan1(1 5)(2 6)"},
        {"-3 5\n-2.0 6\n1e1 7\n", Auto, "chan0(-3 5)(-2 6)(10 7)"},
        {std::string(65537 * 2, ' ').replace(0, 1, "1"), Auto, "chan0(1 1)"},

        {"1 10\n2 20\n", Auto, "chan0(1 10)(2 20)"},
        {"1 10\n2 20\n", No, "chan0(1 1)(2 2) chan1(1 10)(2 20)"},
        {"5 10", Yes, "chan0(5 10)"},
        {"0.5 1\n0.501 2\n2 3", Yes, "chan0(0.5 1)(0.501 2)(2 3)"},
        {"0.5 1\n0.5005 2\n", Yes, "BadFrame 2:1"},
        {"2 1\n\n  1 2\n", Yes, "BadFrame 3:3"},
        {"1\n2\n", Yes, "NoData 3:1"},

        {"", Auto, "NoData 1:1"},
        {"# nothing\n\n  \t\n", Auto, "NoData 4:1"},
        {"1 2 3\n4 5\n", Auto, "RaggedRow 2:4"},
        {"1 2\n4 5 6 7\n", Auto, "RaggedRow 2:5"},
        {"1 2 x\n", Auto, "BadNumber 1:5"},
        {"1 2\r\n3 4\r\r\n5 nan\r\n", Auto, "BadNumber 4:3"},
        {"1 2\n3 inf\n", Auto, "BadNumber 2:3"},
        {"1 2\n3 1e999\n", Auto, "BadNumber 2:3"},
        {"1 2\n3 0x10\n", Auto, "BadNumber 2:3"},
        {"1,5 2\n", Auto, "BadNumber 1:1"},
        {"1 2\x7f\n", Auto, "BadNumber 1:3"},
        {"1 2 # no comment\n", Auto, "BadNumber 1:5"},
        {std::string("1 2\n3\0 4\n", 9), Auto, "BadNumber 2:1"},
        {"{\n rate = 30\n}\n", Auto, "BadNumber 1:1"},
        {std::string("chan\0\0\0\2\0\0\0\1", 12), Auto, "BinaryFile 1:1"},
        {"1\n" + std::string(2000000, '1') + "\n", Auto, "LimitExceeded 2:1"},
    };
    for (const auto& row : rows) EXPECT_EQ(reading(row.text, row.frameColumn), row.reading) << row.text.substr(0, 100);

    std::string wide;
    for (int i = 0; i < 65536; ++i) wide += "1 ";
    EXPECT_EQ(reading(wide + "\n" + wide).substr(0, 11), "chan0(1 1)(");
    EXPECT_EQ(reading(wide + "1"), "LimitExceeded 1:131073");

    try {
        ReadFCurveFromString("1 2 3\n4 5\n", "hchan", *FCurve::create());
        FAIL();
    } catch (const HoudiniChanFormat::RaggedRow& error) {
        EXPECT_EQ(error.expected(), 3U);
        EXPECT_EQ(error.found(), 2U);
    }
}

TEST(HoudiniChan, TheDocumentedExampleReadsAsThePageSays) {
    const std::string page = readWholeFile(FCURVELIB_SOURCE_DIR "/docs/formats/hchan.md");
    const std::size_t begin = page.find("## Example\n\n```\n") + sizeof "## Example\n\n```";
    EXPECT_EQ(reading(page.substr(begin, page.find("```", begin) - begin)),
              "chan0(1001 1)(1002 1.1)(1004 0.5) chan1(1001 2)(1002 2)(1004 -250)");
}

TEST(HoudiniChan, TheSharedReaderTakesTheHostsWordToo) {
    auto& shared = dynamic_cast<HoudiniChanReader&>(*FormatFactory::getReader("hchan"));
    shared.setFrameColumn(No);
    const auto curve = FCurve::create();
    ReadFCurveFromString("1 10\n2 20\n", "hchan", *curve);
    shared.setFrameColumn(Auto);
    EXPECT_EQ(curve->begin()->getRightKey()->get(), Vector2D<double>(1, 1));
}

TEST(HoudiniChan, CurvesAreLinearBetweenKeysAndHoldOutside) {
    const auto container = FCurveContainer::create();
    MemoryStream stream = StreamOf(kCamera);
    EXPECT_STREQ(ReadCurves(stream, *container).getFormatName(), "hchan");
    std::string named;
    for (const FCurve& curve : *container) {
        named += std::string(" ") + curve.getName() + '=' + curve.getProperty("hchan_role");
        EXPECT_EQ(curve.size(), 4U);
    }
    EXPECT_EQ(named, " chan0=tx chan1=ty chan2=tz chan3=rx chan4=ry chan5=rz chan6=vfov");
    const FCurve& tx = *container->begin();
    EXPECT_EQ(tx.eval(-1e6), 1.0);
    EXPECT_EQ(tx.eval(1001.0), 1.0);
    EXPECT_NEAR(tx.eval(1002.5), 1.175, 1e-15);
    EXPECT_EQ(tx.eval(2000.0), 1.25);
    EXPECT_TRUE(std::signbit(std::next(container->begin(), 4)->begin()->getRightKey()->getY()));
    // Ordinary tangents, should anybody make the segments bezier: flat, a third of the span.
    EXPECT_EQ(tx.findSegment(1001.5)->getInTangent()->get(), Vector2D<double>(-1.0 / 3.0, 0.0));

    const auto first = FCurve::create();
    ReadFCurveFromString(kCamera, "hchan", *first);
    EXPECT_STREQ(first->getName(), "chan0");
    EXPECT_EQ(first->size(), 4U);
    for (const char* neitherCameraNorObject : {"1 2 3\n2 3 4\n", "1.5 2 3 4 5 6 7\n"}) {
        ReadFCurveFromString(neitherCameraNorObject, "hchan", *first);
        EXPECT_STREQ(first->getProperty("hchan_role"), "");
    }
}

TEST(HoudiniChan, KeepsTheLimitsThatTheHostSet) {
    FormatLimits limits;
    limits.text = 4;
    limits.keys = 2;
    limits.curves = 2;
    const UnderLimits under(limits);
    EXPECT_EQ(reading("1.25 1\n2 2\n"), "chan0(1 1.25)(2 2) chan1(1 1)(2 2)");
    EXPECT_EQ(reading("1.125 1\n"), "LimitExceeded 1:1");
    EXPECT_EQ(reading("1 1\n2 2\n\n3 3\n"), "LimitExceeded 4:1");
    EXPECT_EQ(reading("1 1 1\n2 2 2\n"), "chan0(1 1)(2 2) chan1(1 1)(2 2)");
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

TEST(HoudiniChan, RecognisesRowsOfNumbersAndNothingElse) {
    std::string large;
    std::string longRow;
    for (int i = 0; i < 1000; ++i) {
        large += std::to_string(i) + " 0.25\n";
        longRow += std::to_string(i) + ' ';
    }
    const struct {
        std::string text;
        bool isChan;
    } rows[] = {
        {kCamera, true},
        {"1", true},
        {"\xef\xbb\xbf# frame tx\r\n1 2\r\n", true},
        {large, true},
        {longRow, true},                                          // one row, longer than the window
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
    for (const auto& row : rows) {
        MemoryStream stream = StreamOf(row.text);
        const Reader* reader = FormatFactory::getReader(stream);
        EXPECT_EQ(reader && reader->getFormatType().getFormatName() == std::string("hchan"), row.isChan)
            << row.text.substr(0, 60);
    }
}

// Files that were not made for this reader.
TEST(HoudiniChan, ReadsRealFilesAsTheNumbersInThem) {
    const struct {
        const char* name;
        std::size_t rows;
    } files[] = {{"pyroclast_scoop.chan", 250}, {"pyroclast_move_up.chan", 1000}};
    for (const auto& file : files) {
        const std::string path = std::string(FCURVELIB_SOURCE_DIR "/../shared/data/chan/") + file.name;
        const std::string text = readWholeFile(path);
        if (text.empty()) GTEST_SKIP() << path << " is not here";
        const auto container = FCurveContainer::create();
        FileStream stream(path.c_str(), FileStream::Read, 0);
        EXPECT_STREQ(ReadCurves(stream, *container).getFormatName(), "hchan");
        ASSERT_EQ(container->size(), 6U);
        std::istringstream numbers(text);
        std::size_t rows = 0;
        for (double frame, value; numbers >> frame; ++rows) {
            for (const FCurve& curve : *container) {
                numbers >> value;
                ASSERT_EQ(curve.eval(frame), value) << path << ", frame " << frame;
            }
        }
        EXPECT_EQ(rows, file.rows);
        for (const FCurve& curve : *container) EXPECT_EQ(curve.size(), rows + 1);
        EXPECT_STREQ(container->begin()->getProperty("hchan_role"), "tx");
    }
}
