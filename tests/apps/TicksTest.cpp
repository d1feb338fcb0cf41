#include "Ticks.h"

#include "Picture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>
#include <string>

using namespace fcurvetool;

namespace {

std::string Labels(double low, double high, int maxCount) {
    const Ticks ticks = makeTicks(low, high, maxCount);
    std::string text;
    for (const Tick& tick : ticks.marks) text += (text.empty() ? "" : " ") + tick.label;
    return text + (ticks.exponent != 0 ? exponentText(ticks.exponent) : "");
}

} // namespace

TEST(Ticks, AreNiceNumbers) {
    EXPECT_EQ(Labels(0, 1, 8), "0 0.2 0.4 0.6 0.8 1.0");
    EXPECT_EQ(Labels(-2.4, 62.4, 8), "0 10 20 30 40 50 60");
    EXPECT_EQ(Labels(100000.2, 100000.55, 5), "100000.2 100000.3 100000.4 100000.5");
    EXPECT_EQ(Labels(-1.3e-12, 4e-12, 8), "\u22121 0 1 2 3 4 ×10⁻¹²");
    EXPECT_EQ(Labels(0, 2.5e12, 4), "0 1 2 ×10¹²");
    EXPECT_EQ(Labels(1.1, 1.9, 2).find("1."), 0U); // more than two rather than none
}

// Whatever the range: labels are distinct, say where their mark is, and there are enough of them and not too many.
TEST(Ticks, SayWhereTheyAre) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (int i = 0; i < 20000; ++i) {
        const double centre = unit(random) * std::pow(10.0, unit(random) * 290.0);
        const double span = std::fabs(centre) * std::pow(10.0, -6.0 + 7.0 * unit(random)) * (1.1 + unit(random));
        const AxisRange range = makeAxisRange(centre - span, centre + span, 0.06);
        const int maxCount = 2 + i % 19;
        const Ticks ticks = makeTicks(range.low, range.high, maxCount);
        ASSERT_GE(ticks.marks.size(), 2U) << range.low << ' ' << range.high;
        ASSERT_LE(ticks.marks.size(), maxCount < 5 ? 6U : static_cast<unsigned>(maxCount));
        const double slack = (range.high - range.low) * 1e-2;
        std::set<std::string> labels;
        for (const Tick& tick : ticks.marks) {
            EXPECT_GE(tick.value, range.low - slack);
            EXPECT_LE(tick.value, range.high + slack);
            labels.insert(tick.label);
            const double said = View::ReadLabel(tick.label) * std::pow(10.0, ticks.exponent);
            EXPECT_NEAR(said, tick.value, std::fabs(tick.value) * 1e-14);
        }
        ASSERT_EQ(labels.size(), ticks.marks.size()) << range.low << ' ' << range.high;
    }
}

TEST(Ticks, AnyFiniteRangeCanBeShown) {
    const double kMax = 1.7976931348623157e308;
    const double pairs[][2] = {{0, 0},  {5, 5}, {-kMax, kMax}, {kMax, kMax}, {5e-324, 1e-323}, {1e12, 1e12 + 1e-4},
                               {-7, -7}};
    for (const auto& pair : pairs) {
        const AxisRange range = makeAxisRange(pair[0], pair[1], 0.06);
        EXPECT_LT(range.low, range.high);
        EXPECT_TRUE(std::isfinite(range.high - range.low));
        if (std::fabs(pair[0]) < 1e300) {
            EXPECT_LE(range.low, pair[0]);
            EXPECT_GE(range.high, pair[1]);
        }
        EXPECT_GE(makeTicks(range.low, range.high, 8).marks.size(), 2U);
    }
}
