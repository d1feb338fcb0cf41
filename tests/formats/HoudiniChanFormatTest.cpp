#include "support/CallRecorder.h"
#include "support/Complaint.h"
#include "support/StreamOf.h"

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
std::string reading(const std::string& text, HoudiniChanReader::FrameColumn frameColumn) {
    HoudiniChanReader reader(frameColumn);
    Table table;
    MemoryStream stream = StreamOf(text);
    const std::string complaint = ComplaintOf("HoudiniChanFormat", [&] { reader.readCurves(stream, table); });
    EXPECT_TRUE(complaint.empty() || table.text.str().empty());
    return complaint + table.text.str();
}

} // namespace

TEST(HoudiniChan, AHostSaysWhetherThereAreFrames) {
    const struct {
        const char* text;
        HoudiniChanReader::FrameColumn frameColumn;
        const char* reading;
    } rows[] = {
        {"1 10\n2 20\n", Auto, "chan0(1 10)(2 20)"},
        {"1 10\n2 20\n", No, "chan0(1 1)(2 2) chan1(1 10)(2 20)"},
        {"5 10", Auto, "chan0(1 5) chan1(1 10)"},
        {"5 10", Yes, "chan0(5 10)"},
        {"0.5 1\n0.501 2\n2 3", Yes, "chan0(0.5 1)(0.501 2)(2 3)"},
        {"0.5 1\n0.5005 2\n", Yes, "BadFrame 2:1"},
        {"2 1\n\n  1 2\n", Yes, "BadFrame 3:3"},
        {"1\n2\n", Yes, "NoData 3:1"},
    };
    for (const auto& row : rows) EXPECT_EQ(reading(row.text, row.frameColumn), row.reading) << row.text;

    auto& shared = dynamic_cast<HoudiniChanReader&>(*FormatFactory::getReader("hchan"));
    shared.setFrameColumn(No);
    const auto curve = FCurve::create();
    ReadFCurveFromString("1 10\n2 20\n", "hchan", *curve);
    shared.setFrameColumn(Auto);
    EXPECT_EQ(curve->begin()->getRightKey()->get(), Vector2D<double>(1, 1));
}
