#include "FCurveLib/DrawCurves.h"

#include "draw/Picture.h"
#include "support/Museum.h"

#include <FCurveLib/FCurveLib.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace Test;
using testing::HasSubstr;

namespace {

using Points = std::vector<Vector2D<double>>;

std::shared_ptr<FCurve> Make(const Points& keys, const char* between, const char* outside = "constant()") {
    auto curve = FCurve::create();
    for (const auto& key : keys)
        curve->insertSegment(*Keyframe::create(key.x, key.y), InterpolatorFactory::create(between));
    curve->begin()->setInterpolator(InterpolatorFactory::create(outside));
    std::prev(curve->end())->setInterpolator(InterpolatorFactory::create(outside));
    return curve;
}

Svg::Picture Draw(const std::shared_ptr<const FCurve>& curve, const DrawOptions& options = {}) {
    return Svg::Picture(DrawCurves({{curve, "curve"}}, options));
}

/// Lowest and highest value within a distance of x.
std::pair<double, double> Around(const FCurve& curve, double x, double distance) {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (int i = -20; i <= 20; ++i) {
        const double y = curve.eval(x + distance * i / 20.0);
        low = std::min(low, y);
        high = std::max(high, y);
    }
    return {low, high};
}

// Dots and lines, measured by the labels on the axes, are the curve's.
void ExpectDrawn(const FCurve& curve, const Svg::Panel& panel) {
    const auto& [element, frames, values] = panel;
    const auto dots = element->find("g", "keys");
    std::vector<const Svg::Element*> circles = dots.empty() ? dots : dots[0]->find("circle");
    const auto clip = element->find("rect").at(0);
    const double top = clip->number("y");
    const double bottom = top + clip->number("height");
    std::size_t next = 0;
    for (const Segment& segment : curve) {
        const auto key = segment.getLeftKey();
        if (!key || key->isBreakdown()) continue;
        ASSERT_LT(next, circles.size());
        EXPECT_NEAR(circles[next]->number("cx"), frames.toPixel(key->getX()), 0.1);
        EXPECT_NEAR(circles[next++]->number("cy"), values.toPixel(key->getY()), 0.1);
    }
    for (const char* kind : {"line", "outside", "unknown"}) {
        for (const Svg::Element* path : element->find("path", kind)) {
            for (const auto& stroke : Svg::ReadPath((*path)["d"])) {
                for (std::size_t i = 0; i + 1 < stroke.size(); ++i) {
                    for (const double t : {0.25, 0.5, 0.75}) { // between two points, where a coarse line would be off
                        const double x = stroke[i].x + t * (stroke[i + 1].x - stroke[i].x);
                        const double y = stroke[i].y + t * (stroke[i + 1].y - stroke[i].y);
                        if (y < top || y > bottom) continue;
                        const auto [low, high] =
                            Around(curve, frames.toValue(x), std::fabs(frames.unitsPerPixel) * 0.4);
                        EXPECT_LE(values.toPixel(high) - 0.4, y) << "at pixel " << x;
                        EXPECT_GE(values.toPixel(low) + 0.4, y) << "at pixel " << x;
                    }
                }
            }
        }
    }
}

double LowestPixel(const Svg::Panel& panel) {
    double lowest = 0.0;
    for (const auto& stroke : Svg::ReadPath((*panel.element->find("path", "line").at(0))["d"]))
        for (const auto& point : stroke) lowest = std::max(lowest, point.y);
    return lowest;
}

// What hosts ask for their own views is what pictures have.
TEST(DrawCurves, HostsGetThePicturesColoursAndMarks) {
    const std::vector<std::string> names = {"tx", "ty", "rotateX", "weight", "weight", ""};
    std::vector<DrawnCurve> curves;
    for (const std::string& name : names) curves.push_back({Make({{0, 0}, {10, 5}}, "linear()"), name});
    const std::string picture = DrawCurves(curves);
    const auto colours = ChooseCurveColours(names);
    ASSERT_EQ(colours.size(), names.size());
    for (const std::string& colour : colours) EXPECT_THAT(picture, HasSubstr("stroke=\"" + colour + "\""));

    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<double, double> nothing[] = {
        {1, 1}, {2, 1}, {nan, 1}, {0, nan}, {-inf, 0}, {0, inf}, {-1e308, 1e308}, {1e15, std::nextafter(1e15, inf)}};
    for (const auto& [low, high] : nothing) EXPECT_TRUE(MakeAxisTicks(low, high, 10).marks.empty()) << low << high;
    for (const auto& [low, high] : {std::pair(-3.0, 7.5), {100000.25, 100000.5}, {1e-12, 3e-12}, {-1e12, 1e13}}) {
        const AxisTicks ticks = MakeAxisTicks(low, high, 7);
        ASSERT_GE(ticks.marks.size(), 2U);
        EXPECT_LE(ticks.marks.size(), 7U);
        for (std::size_t i = 0; i < ticks.marks.size(); ++i) {
            EXPECT_GE(ticks.marks[i].value, low);
            EXPECT_LE(ticks.marks[i].value, high);
            EXPECT_TRUE(i == 0 || ticks.marks[i].label != ticks.marks[i - 1].label) << low;
        }
    }
}

} // namespace

class EveryDrawnExhibit : public testing::TestWithParam<Exhibit> {};

INSTANTIATE_TEST_SUITE_P(DrawCurves, EveryDrawnExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST_P(EveryDrawnExhibit, IsDrawnWhereTheLabelsSay) {
    const auto curve = GetParam().make();
    DrawOptions options;
    options.keys = DrawOptions::On;
    const Svg::Picture picture = Draw(curve, options);
    ASSERT_EQ(picture.panels().size(), 1U);
    ExpectDrawn(*curve, picture.panels()[0]);
}

// Whatever the options, there is nothing that renderers cannot digest.
TEST_P(EveryDrawnExhibit, StandsEveryOption) {
    const auto curve = GetParam().make();
    DrawOptions options;
    options.velocity = options.acceleration = options.separate = options.parts = options.selection = true;
    options.keys = options.handles = DrawOptions::On;
    const auto check = [&] {
        const std::string svg = DrawCurves({{curve, "curve", curve}}, options);
        EXPECT_LT(svg.size(), 600000U + 400U * curve->size());
        const Svg::Picture picture(svg);
        EXPECT_EQ(picture.panels().size(), 3U);
        for (const Svg::Element* path : picture.root().find("path"))
            for (const auto& stroke : Svg::ReadPath((*path)["d"]))
                for (const auto& [x, y] : stroke) ASSERT_TRUE(std::fabs(x) < 1e5 && std::fabs(y) < 1e5);
    };
    check();
    options.frames = DrawOptions::Interval{1e6, 1e6 + 0.5};
    options.values = DrawOptions::Interval{-1e308, 1e308};
    options.width = 300;
    options.height = 400;
    check();
}

// Keys anywhere: labels are distinct, enough, and say where their marks are.
TEST(DrawCurves, AxesSayWhereKeysAre) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    const auto pair = [&](double exponents) {
        const double centre = unit(random) * std::pow(10.0, unit(random) * exponents);
        const double span = std::fabs(centre) * std::pow(10.0, -4.0 + 5.0 * unit(random)) * (1.1 + unit(random));
        return std::make_pair(centre - span, centre + span);
    };
    for (int i = 0; i < 300; ++i) {
        const auto x = pair(8.0);
        const auto y = pair(250.0);
        if (x.second - x.first < 0.01) continue;
        const auto curve = Make({{x.first, y.first}, {x.second, y.second}}, "linear()");
        ExpectDrawn(*curve, Draw(curve).panels().at(0));
    }
}

TEST(DrawCurves, PolesDoNotFlattenTheRest) {
    for (const char* formula : {"1 / (x - 50.3)", "tan(x / 10)", "1 / sqrt(abs(x - 3))", "1 / (x - 20) ** 2"}) {
        const Svg::Picture picture = Draw(Make({{0, 1}, {100, -1}}, formula));
        EXPECT_LT(std::fabs(picture.panels()[0].values.unitsPerPixel), 0.2) << formula;
        EXPECT_THAT(picture.text(), HasSubstr("values cut off")) << formula;
    }
    DrawOptions options;
    options.velocity = true; // of a vertical tangent
    const auto curve = MakeCurve({{0, 0}, {10, 5, Vector2D<double>(0, -4)}, {20, 0, {}, {}, "constant()"}});
    EXPECT_LT(std::fabs(Draw(curve, options).panels()[1].values.unitsPerPixel), 0.5);
    EXPECT_THAT(Draw(Make({{0, 0}, {50, 1}, {100, 0}}, "bezier()")).text(), testing::Not(HasSubstr("cut")));
}

// An unknown expression evaluates to 0, which says nothing about the scale.
TEST(DrawCurves, UnknownExpressionsDoNotFlattenTheRest) {
    const auto curve = Make({{0, 1000}, {50, 1010}, {100, 1005}}, "linear()");
    std::next(curve->begin())->setInterpolator(InterpolatorFactory::create("dance(x"));
    const Svg::Picture picture = Draw(curve);
    EXPECT_LT(std::fabs(picture.panels()[0].values.unitsPerPixel), 0.1);
    EXPECT_EQ(picture.root().find("g", "unknown").size(), 1U);
}

// What lies between two pixels shows: in a few points per pixel, values and velocities reach their extremes.
TEST(DrawCurves, DenseKeysReachTheirExtremes) {
    DrawOptions options;
    options.velocity = true;
    for (const int count : {1000, 20000}) {
        const auto curve = FCurve::create();
        std::mt19937 random(1);
        double lowest = 0.0;
        for (int i = 0; i < count; ++i) {
            const double y = static_cast<double>(random() % 2000U) / 1000.0 - 1.0;
            lowest = std::min(lowest, y);
            curve->insertSegment(
                *Keyframe::create(i, y),
                InterpolatorFactory::create("bezier()")); // flat tangents: the velocity at every key is 0
        }
        double slowest = 0.0;
        for (int i = 0; i < 20 * count; ++i) slowest = std::min(slowest, GetFirstDerivative(*curve, i / 20.0));
        const std::string svg = DrawCurves({{curve, "noise"}}, options);
        EXPECT_LT(svg.size(), 300000U);
        const Svg::Picture picture(svg);
        EXPECT_THAT(picture.text(), HasSubstr(std::to_string(count) + " keys"));
        EXPECT_NEAR(LowestPixel(picture.panels()[0]), picture.panels()[0].values.toPixel(lowest), 0.3);
        EXPECT_NEAR(LowestPixel(picture.panels()[1]), picture.panels()[1].values.toPixel(slowest), 0.6);
    }
}

TEST(DrawCurves, LegendNamesEveryCurveOrSaysHowManyMore) {
    for (const std::size_t count : {2U, 24U, 400U}) {
        std::vector<DrawnCurve> curves;
        for (std::size_t i = 0; i < count; ++i)
            curves.push_back({Make({{0, 0}, {1, 1}}, "linear()"), "a joint with a long name " + std::to_string(i)});
        std::size_t named = 0;
        const Svg::Picture picture(DrawCurves(curves));
        for (const Svg::Element* text : picture.root().find("g", "legend").at(0)->find("text"))
            named += text->text.rfind("and ", 0) == 0 ? std::stoul(text->text.substr(4)) : 1;
        EXPECT_EQ(named, count);
        EXPECT_EQ(picture.text().find("more") == std::string::npos, count <= 24U);
    }
}

TEST(DrawCurves, TextIsEscaped) {
    DrawOptions options;
    options.title = "<script>\"&\x01\u0E01";
    const Svg::Picture picture(
        DrawCurves({{Make({{0, 0}, {1, 1}}, "linear()"), "</text>\xFF\xC0\x80\xED\xA0\x80"}}, options));
    EXPECT_THAT(picture.text(), HasSubstr("<script>\"&\uFFFD\u0E01"));
    EXPECT_THAT(picture.text(), HasSubstr("</text>\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"));
}

TEST(DrawCurves, SizesWithoutRoomAreRefusedAndTellWhatWouldDo) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    DrawOptions options;
    options.velocity = options.acceleration = true;
    for (const auto& [width, height] : Points{{960, 120}, {110, 500}, {nan, 0}, {960, nan}, {1e9, 0}, {960, -1}}) {
        options.width = width;
        options.height = height;
        try {
            DrawCurves({}, options);
            ADD_FAILURE() << width << 'x' << height;
        } catch (const BadPictureSize& error) {
            options.width = error.leastWidth();
            options.height = error.leastHeight();
            EXPECT_THAT(Draw(nullptr, options).text(), HasSubstr("no curves"));
        }
    }
}
