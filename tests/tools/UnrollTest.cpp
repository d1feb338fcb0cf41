#include "support/Basics.h"
#include "support/Invariants.h"
#include "support/Random.h"
#include "support/Recorder.h"
#include "support/SameCurve.h"

#include <array>

using namespace Test;

namespace {

constexpr double kDegree = 3.14159265358979323846 / 180.0;
using Matrix = std::array<std::array<double, 3>, 3>;

Matrix Product(const Matrix& a, const Matrix& b) {
    Matrix c{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k) c[i][j] += a[i][k] * b[k][j];
    return c;
}

Matrix About(std::size_t axis, double degrees) {
    const std::size_t j = (axis + 1) % 3, k = (axis + 2) % 3;
    Matrix m{};
    m[axis][axis] = 1.0;
    m[j][j] = m[k][k] = std::cos(degrees * kDegree);
    m[k][j] = std::sin(degrees * kDegree);
    m[j][k] = -m[k][j];
    return m;
}

constexpr std::array<std::array<std::size_t, 3>, 6> kAxes{
    {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}}};

Matrix Rotation(const std::array<double, 3>& angles, std::size_t order) {
    const auto& axes = kAxes[order];
    return Product(About(axes[2], angles[axes[2]]),
                   Product(About(axes[1], angles[axes[1]]), About(axes[0], angles[axes[0]])));
}

using Channels = std::array<std::shared_ptr<FCurve>, 3>;

std::array<double, 3> At(const Channels& channels, double x) {
    return {channels[0]->eval(x), channels[1]->eval(x), channels[2]->eval(x)};
}

TEST(UnrollAngles, KeepsEveryRotationAndComesBackToTheSmoothAngles) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        Random random(seed);
        const std::size_t order = seed % 6, second = kAxes[order][1];
        Channels smooth, rolled;
        for (auto& curve : smooth) curve = FCurve::create();
        for (auto& curve : rolled) curve = FCurve::create();
        std::array<double, 3> angles{10, 20, 30};
        for (int x = 0; x < 50; ++x) {
            const bool other = x > 0 && random.coin();
            for (std::size_t c = 0; c < 3; ++c) {
                double angle = angles[c];
                if (other) angle = c == second ? 180 - angle : angle + 180;
                if (x > 0) angle += 360 * random.below(5) - 720;
                smooth[c]->insertSegment(*Keyframe::create(x, angles[c]), Linear::create());
                rolled[c]->insertSegment(*Keyframe::create(x, angle), Linear::create());
                angles[c] += random.between(-25, 25);
            }
        }
        const Channels before{FCurve::createCopy(*rolled[0]), FCurve::createCopy(*rolled[1]),
                              FCurve::createCopy(*rolled[2])};
        UnrollAngles(*rolled[0], *rolled[1], *rolled[2], static_cast<RotationOrder>(order));
        for (int x = 0; x < 50; ++x) {
            const Matrix was = Rotation(At(before, x), order), is = Rotation(At(rolled, x), order);
            for (std::size_t i = 0; i < 9; ++i) ASSERT_NEAR(was[i / 3][i % 3], is[i / 3][i % 3], 1e-9) << seed;
            for (std::size_t c = 0; c < 3; ++c) ASSERT_NEAR(smooth[c]->eval(x), rolled[c]->eval(x), 1e-9) << seed;
        }
        for (const auto& curve : rolled) EXPECT_EQ(Fault(*curve), "");
        EXPECT_EQ(UnrollAngles(*rolled[0], *rolled[1], *rolled[2], static_cast<RotationOrder>(order)), 0u);
    }
}

TEST(UnrollAngles, TakesWholeTurnsFromOneChannel) {
    const auto curve = CurveThrough({{0, 170}, {1, -180}, {2, -175}, {3, 540}}, Bezier::create());
    Recorder recorder;
    curve->subscribe(recorder);
    EXPECT_EQ(UnrollAngles(*curve), 3u);
    EXPECT_EQ(recorder.take(), Heard{"curve"});
    const double expected[] = {170, 180, 185, 180};
    for (int x = 0; x < 4; ++x) EXPECT_EQ(curve->eval(x), expected[x]);
    EXPECT_EQ(UnrollAngles(*curve), 0u);
    EXPECT_EQ(recorder.take(), Heard{});

    // What is half a turn away is as near as it gets.
    for (const auto& angles : {std::array<double, 4>{0, 180, 360, 540}, {0, -180, -360, -540}, {90, -90, 90, -90}}) {
        Channels channels;
        for (auto& channel : channels) channel = FCurve::create();
        for (int x = 0; x < 4; ++x) {
            const double angle = angles[static_cast<std::size_t>(x)];
            for (auto& channel : channels)
                AddKey(*channel, x, &channel == &channels[0] ? angle : 0.0, Linear::create());
        }
        EXPECT_EQ(UnrollAngles(*channels[0]), 0u);
        EXPECT_EQ(UnrollAngles(*channels[0], *channels[1], *channels[2], ROTATION_XYZ), 0u);
    }

    const auto radians = CurveThrough({{0, 3}, {1, -3}}, Linear::create());
    EXPECT_EQ(UnrollAngles(*radians, 360 * kDegree), 1u);
    EXPECT_NEAR(radians->eval(1), 360 * kDegree - 3, 1e-15);
}

TEST(UnrollAngles, ReflectsTheSecondAnglesHandles) {
    Channels c;
    for (auto& curve : c) curve = CurveThrough({{0, 0}, {1, 180}}, Bezier::create());
    for (auto& curve : c) curve->findSegment(0)->getInTangent()->set(-1.0 / 3.0, 7.0);
    EXPECT_EQ(UnrollAngles(*c[0], *c[1], *c[2], ROTATION_XYZ), 1u);
    const double expected[] = {7, -7, 7};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(c[i]->eval(1), 0.0);
        EXPECT_NEAR(c[i]->findSegment(0)->getInTangent()->getY(), expected[i], 1e-12);
    }
}

TEST(UnrollAngles, RefusesWhatFitsNotTogether) {
    const auto make = [] { return CurveThrough({{0, 0}, {1, 300}}, Linear::create()); };
    const auto a = make(), b = make(), c = make(), longer = CurveThrough({{0, 0}, {1, 300}, {2, 0}}, Linear::create());
    const auto moved = CurveThrough({{0, 0}, {1.1, 300}}, Linear::create());
    EXPECT_EQ(UnrollAngles(*a, *b, *longer, ROTATION_XYZ), 0u);
    EXPECT_EQ(UnrollAngles(*longer, *b, *FCurve::createCopy(*longer), ROTATION_XYZ), 0u);
    EXPECT_EQ(UnrollAngles(*a, *moved, *c, ROTATION_XYZ), 0u);
    EXPECT_EQ(UnrollAngles(*a, *a, *c, ROTATION_XYZ), 0u);
    EXPECT_EQ(UnrollAngles(*a, *b, *c, static_cast<RotationOrder>(6)), 0u);
    for (const double turn : {0.0, -360.0, kNaN, kInfinity}) {
        EXPECT_EQ(UnrollAngles(*a, turn), 0u);
        EXPECT_EQ(UnrollAngles(*a, *b, *c, ROTATION_ZYX, turn), 0u);
    }
    EXPECT_EQ(UnrollAngles(*FCurve::create()), 0u);
    for (const auto& curve : {a, b, c}) EXPECT_EQ(Difference(*make(), *curve), "");
}

} // namespace
