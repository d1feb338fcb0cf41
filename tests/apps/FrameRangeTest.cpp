#include "FrameRange.h"

#include "Failure.h"

#include <gtest/gtest.h>

#include <vector>

using namespace fcurvetool;

namespace {

std::vector<double> List(const FrameRange& range) {
    std::vector<double> frames;
    for (std::int64_t i = 0; i < range.size(); ++i) frames.push_back(range[i]);
    return frames;
}

} // namespace

TEST(FrameRange, ListsWhatWasMeant) {
    EXPECT_EQ(List(FrameRange::parse("12.5")), (std::vector<double>{12.5}));
    EXPECT_EQ(List(FrameRange::parse("-1:2")), (std::vector<double>{-1, 0, 1, 2}));
    EXPECT_EQ(List(FrameRange::parse("5:3:-1")), (std::vector<double>{5, 4, 3}));
    EXPECT_EQ(List(FrameRange::parse("0:1:0.4")), (std::vector<double>{0, 0.4, 0.8}));
    // Decimal numbers, not sums of rounded steps.
    EXPECT_EQ(List(FrameRange::parse("0:1:0.1")),
              (std::vector<double>{0, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1}));
    EXPECT_EQ(List(FrameRange::parse("100000.25:100000.35:0.05")),
              (std::vector<double>{100000.25, 100000.3, 100000.35}));
    // No decimal step: the end is reached all the same.
    EXPECT_EQ(FrameRange(0.0, 1.0, 1.0 / 3.0).size(), 4);
    EXPECT_EQ(FrameRange(7.0, 7.0, 0.0).size(), 1);
}

TEST(FrameRange, RefusesNonsense) {
    for (const char* text :
         {"", ":", "1:", "a", "1:2:3:4", "1:10:0", "1:10:-1", "10:1", "0:1:1e-9", "-1e308:1e308", "nan", "1:inf"})
        EXPECT_THROW(FrameRange::parse(text), UsageError) << text;
    for (const char* text : {"1", "1:1", "2:1", "1:2:3", "x:1"})
        EXPECT_THROW(parseInterval(text, "--range"), UsageError) << text;
    EXPECT_EQ(parseInterval("-1:2.5", "--range").high, 2.5);
}
