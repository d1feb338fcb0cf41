#include "support/Ask.h"
#include "support/Basics.h"

namespace Test {
namespace {

// A host's own kind: y = x^3, every other operation the default. Remembers where it was asked.
class Cube : public Interpolator {
public:
    double eval(double x, const Segment&) const override {
        asked.push_back(x);
        return x * x * x;
    }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<Cube>(*this); }

    mutable std::vector<double> asked;
};

// A segment outside any curve; a key is left out where x is NaN.
Segment Between(double x0, double y0, double x1, double y1) {
    const auto key = [](double x, double y) { return std::isnan(x) ? nullptr : Keyframe::create(x, y); };
    return Segment(nullptr, key(x0, y0), nullptr, key(x1, y1));
}
constexpr double none = std::numeric_limits<double>::quiet_NaN();

TEST(Interpolator, DefaultDerivatives) {
    const Cube cube;
    const Segment open = Between(none, 0, none, 0);
    for (const double x : {-100.0, -1.0, 0.0, 0.01, 1.0, 50.0}) {
        EXPECT_NEAR(cube.getFirstDerivative(x, open), 3 * x * x, 1e-9 * std::max(1.0, x * x));
        EXPECT_NEAR(cube.getSecondDerivative(x, open), 6 * x, 1e-2 * std::max(1.0, std::abs(x)));
    }
    EXPECT_FALSE(cube.usesTangents());

    // The stencil never leaves the segment: at a key it ends there.
    const Segment closed = Between(1, 0, 2, 0);
    for (const double x : {1.0, 1.0 + 1e-6, 2.0 - 1e-6, 2.0}) {
        cube.asked.clear();
        EXPECT_NEAR(cube.getFirstDerivative(x, closed), 3 * x * x, 1e-4);
        EXPECT_NEAR(cube.getSecondDerivative(x, closed), 6 * x, 1e-2);
        for (const double asked : cube.asked) EXPECT_TRUE(asked >= 1.0 && asked <= 2.0) << asked;
    }

    // No room for a stencil.
    const Segment narrow = Between(1, 0, 1 + 1e-9, 0);
    EXPECT_EQ(cube.getFirstDerivative(1, narrow), 0.0);
    EXPECT_EQ(cube.getSecondDerivative(1, narrow), 0.0);
}

TEST(Interpolator, DefaultExtentsStepByTenths) {
    const Cube cube;
    const Segment segment = Between(0, 0, 4, 64);
    const auto asked = [&](double x0, double x1) {
        cube.asked.clear();
        const Bounds extents = BoundsOf(cube, segment, x0, x1);
        EXPECT_TRUE(std::isnan(extents.low) || extents.low <= extents.high);
        return cube.asked;
    };
    EXPECT_EQ(asked(1, 1.05), (std::vector<double>{1, 1.05, 1}));
    EXPECT_EQ(asked(1, 1.15), (std::vector<double>{1, 1.15, 1, 1.1}));
    EXPECT_EQ(asked(1, 1).size(), 3u);
    EXPECT_EQ(asked(2, 1), (std::vector<double>{2, 1}));
    EXPECT_EQ(asked(0, 100).size(), 2u + 1001u); // the accumulated steps end just before 100

    // Where a step cannot move x, or never arrives, the ends are all there is.
    for (const double x : {1e17, 1e300, kInfinity, none})
        for (const auto& [x0, x1] : {std::pair(0.0, x), {-x, 0.0}, {-x, x}, {x, x}})
            EXPECT_EQ(asked(x0, x1).size(), 2u) << x;

    const Bounds extents = BoundsOf(cube, segment, -2, 3);
    EXPECT_EQ(extents.low, -8.0);
    EXPECT_EQ(extents.high, 27.0);
}

} // namespace
} // namespace Test
