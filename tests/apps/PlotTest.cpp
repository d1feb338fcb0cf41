#include "Plot.h"

#include "Failure.h"
#include "Picture.h"
#include "Svg.h"
#include "Trace.h"
#include "support/Museum.h"

#include <FCurveLib/FCurveLib.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace fcurvetool;
using namespace VEM_FN::FCurveLib;

namespace {

using Keys = std::vector<std::pair<double, double>>;

/// With smooth tangents.
std::shared_ptr<FCurve> Make(const Keys& keys, const char* between, const char* outside = "constant()") {
    auto curve = FCurve::create();
    for (const auto& [x, y] : keys) {
        curve->insertSegment(*Keyframe::create(x, y), InterpolatorFactory::create(between));
    }
    for (Segment& segment : *curve) {
        segment.getInTangent()->setType(Tangent::Smooth);
        segment.getOutTangent()->setType(Tangent::Smooth);
    }
    curve->begin()->setInterpolator(InterpolatorFactory::create(outside));
    std::prev(curve->end())->setInterpolator(InterpolatorFactory::create(outside));
    return curve;
}

View::Picture Draw(const std::shared_ptr<FCurve>& curve, PlotOptions options = {}) {
    return View::Picture(drawPlot({{curve, "curve"}}, options));
}

struct Drawn {
    const char* name;
    Keys keys;
    const char* between; // the kind of the segments between the keys
    std::size_t gaps;    // in the line between the keys
    const char* outside = "constant()";
};

const Drawn kDrawn[] = {
    {"Linear", {{1, 0}, {10, 4}, {20, -3}}, "linear()", 0},
    {"Bezier", {{1, 0}, {12, 8}, {24, 3}, {60, 0}}, "bezier()", 0, "bezier()"},
    {"FarFromZero", {{100000.25, 1e-12}, {100000.75, 3e-12}, {100001.25, -1e-12}}, "bezier()", 0},
    {"Huge", {{-1e9, 1e12}, {0, -1e12}, {2e9, 5e11}}, "linear()", 0},
    {"Steps", {{1, 2}, {15, 6}, {30, 1}, {45, 4}}, "constant()", 2},
    {"NextSteps", {{1, 2}, {15, 6}, {30, 1}}, "constant_next()", 1},
    {"FormulaWithJumps", {{0, 0}, {35, 5}}, "floor(x / 7)", 4},
    {"FormulaWithoutKeys", {}, "linear()", 0, "10 * sin(x / 5)"},
    {"Steep", {{0, 0}, {50, 1}, {100, 0}}, "exp(-(x - 50) ** 2 * 40)", 0},
    {"Pole", {{0, 1}, {100, -1}}, "1 / (x - 50.3)", 1},
    {"OneKey", {{24, 3.5}}, "linear()", 0},
    {"Flat", {{1, 7}, {100, 7}}, "linear()", 0},
    {"Zero", {{1, 0}, {100, 0}}, "linear()", 0},
};

std::shared_ptr<FCurve> Make(const Drawn& drawn) {
    return Make(drawn.keys, drawn.between, drawn.outside);
}

/// Lowest and highest value within a distance of x, without the segment's other side at a jump.
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

} // namespace

class EveryDrawn : public testing::TestWithParam<Drawn> {};

INSTANTIATE_TEST_SUITE_P(Plot, EveryDrawn, testing::ValuesIn(kDrawn),
                         [](const auto& drawn) { return std::string(drawn.param.name); });

// Dots and lines, measured by the labels on the axes, are the curve's.
TEST_P(EveryDrawn, IsDrawnWhereTheLabelsSay) {
    const auto curve = Make(GetParam());
    const View::Picture picture = Draw(curve);
    ASSERT_EQ(picture.panels().size(), 1U);
    const auto& [panel, frames, values] = picture.panels().front();

    const Keys& keys = GetParam().keys;
    const auto dots = panel->find("circle", "key");
    ASSERT_EQ(dots.size(), keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        EXPECT_NEAR(dots[i]->number("cx"), frames.toPixel(keys[i].first), 0.1);
        EXPECT_NEAR(dots[i]->number("cy"), values.toPixel(keys[i].second), 0.1);
    }

    const auto clip = panel->find("rect").front();
    const double top = clip->number("y");
    const double bottom = top + clip->number("height");
    std::size_t points = 0;
    for (const char* kind : {"line", "outside"}) {
        for (const View::Element* path : panel->find("path", kind)) {
            for (const auto& stroke : View::ReadPath((*path)["d"])) {
                const double middle = frames.toValue((stroke.front().x + stroke.back().x) / 2.0);
                const bool isOutside = !keys.empty() && (middle < keys.front().first || middle > keys.back().first);
                EXPECT_EQ(isOutside, std::string(kind) == "outside") << "stroke around frame " << middle;
                for (std::size_t i = 0; i + 1 < stroke.size(); ++i) {
                    for (const double t : {0.25, 0.5, 0.75}) { // between two points, where a coarse line would be off
                        const double x = stroke[i].x + t * (stroke[i + 1].x - stroke[i].x);
                        const double y = stroke[i].y + t * (stroke[i + 1].y - stroke[i].y);
                        if (y < top || y > bottom) continue;
                        ++points;
                        const auto [low, high] =
                            Around(*curve, frames.toValue(x), std::fabs(frames.unitsPerPixel) * 0.2);
                        EXPECT_LE(values.toPixel(high) - 0.4, y) << "at pixel " << x;
                        EXPECT_GE(values.toPixel(low) + 0.4, y) << "at pixel " << x;
                    }
                }
            }
        }
    }
    EXPECT_GT(points, 0U);
}

TEST_P(EveryDrawn, BreaksWhereItJumps) {
    const auto curve = Make(GetParam());
    const View::Picture picture = Draw(curve);
    const auto lines = picture.panels().front().element->find("path", "line");
    std::size_t strokes = 0;
    for (const View::Element* line : lines) strokes += View::ReadPath((*line)["d"]).size();
    EXPECT_EQ(strokes, lines.empty() ? 0U : GetParam().gaps + 1);
}

TEST_P(EveryDrawn, StandsEveryOption) {
    PlotOptions options;
    options.velocity = options.acceleration = options.separate = true;
    options.keys = options.handles = Marks::On;
    const auto curve = Make(GetParam());
    EXPECT_EQ(Draw(curve, options).panels().size(), 3U);
    options.frames = Interval{1e6, 1e6 + 0.5};
    options.values = Interval{-1e308, 1e308};
    EXPECT_EQ(Draw(curve, options).root().find("circle", "key").size(), 0U);
    options.width = 200;
    options.height = 320;
    EXPECT_EQ(Draw(curve, options).panels().size(), 3U);
}

class EveryMuseumPiece : public testing::TestWithParam<Test::Exhibit> {};

INSTANTIATE_TEST_SUITE_P(Plot, EveryMuseumPiece, testing::ValuesIn(Test::Museum()), Test::ExhibitName());

// A sound document with the right dots and nothing that renderers cannot digest, whatever the curve.
TEST_P(EveryMuseumPiece, GivesASoundPicture) {
    const auto curve = GetParam().make();
    for (const bool isSeparate : {false, true}) {
        PlotOptions options;
        options.velocity = options.acceleration = true;
        options.separate = isSeparate;
        options.keys = options.handles = Marks::On;
        const std::string svg = drawPlot({{curve, "curve"}}, options);
        const View::Picture picture(svg);
        EXPECT_LT(picture.size(), 500000U + 400U * curve->size());
        EXPECT_EQ(picture.root().find("circle", "key").size(), curve->size() - 1);
        for (const View::Element* path : picture.root().find("path")) {
            for (const auto& stroke : View::ReadPath((*path)["d"])) {
                for (const auto& [x, y] : stroke) {
                    ASSERT_TRUE(std::isfinite(x) && std::isfinite(y));
                    ASSERT_LT(std::max(std::fabs(x), std::fabs(y)), 1e5);
                }
            }
        }
    }
}

TEST(Plot, RingsSelectedKeysOnlyWhenAsked) {
    const auto curve = Make({{0, 0}, {10, 4}, {20, -3}, {30, 1}}, "linear()");
    for (const int index : {1, 3}) GetIndexedKeyframe(*curve, index)->setProperty("fc_sel", "1");
    PlotOptions options;
    const auto draw = [&] { return View::ParseXml(drawPlot({{curve, "curve"}}, options)); };
    EXPECT_EQ(draw().find("circle", "selected").size(), 0U);
    options.selection = true;
    options.keys = Marks::Off;
    const View::Element picture = draw();
    ASSERT_EQ(picture.find("circle", "selected").size(), 2U);
    EXPECT_EQ(picture.find("circle", "key").size(), 0U);
    curve->setProperty("fc_sel", "1");
    const View::Element selected = draw();
    ASSERT_FALSE(picture.find("path", "line").empty());
    EXPECT_GT(selected.find("path", "line").front()->number("stroke-width"),
              picture.find("path", "line").front()->number("stroke-width"));
}

TEST(Plot, NoCurvesGivePicture) {
    const View::Picture picture(drawPlot({}, {}));
    ASSERT_EQ(picture.panels().size(), 1U);
    EXPECT_NE(picture.allText().find("no curves"), std::string::npos);
}

TEST(Plot, HandlesStandOnlyWhereTangentsShape) {
    const auto curve = Make({{0, 0}, {10, 5}, {20, 0}}, "bezier()");
    std::prev(curve->end(), 2)->setInterpolator(InterpolatorFactory::create("linear()"));
    PlotOptions options;
    const View::Picture picture = Draw(curve);
    const auto& [panel, frames, values] = picture.panels().front();
    const auto ends = panel->find("rect", "handle");
    ASSERT_EQ(ends.size(), 2U); // of the first segment: out of key 0, into key 1
    const auto out = curve->begin()->getRightKey()->getOutTangent();
    EXPECT_NEAR(ends[0]->number("x") + 2.5, frames.toPixel(0 + out->getX()), 0.1);
    EXPECT_NEAR(ends[0]->number("y") + 2.5, values.toPixel(0 + out->getY()), 0.1);
    options.handles = Marks::Off;
    EXPECT_TRUE(Draw(curve, options).root().find("rect", "handle").empty());
}

TEST(Plot, DerivativesShareTheFrames) {
    PlotOptions options;
    options.velocity = options.acceleration = true;
    const View::Picture picture = Draw(Make({{0, 0}, {10, 20}, {20, 0}}, "linear()"), options);
    ASSERT_EQ(picture.panels().size(), 3U);
    const auto lines = View::ReadPath((*picture.panels()[1].element->find("path", "line").front())["d"]);
    ASSERT_EQ(lines.size(), 2U); // up at 2 per frame, down at 2 per frame
    EXPECT_NEAR(picture.panels()[1].values.toValue(lines[0].front().y), 2.0, 0.02);
    EXPECT_NEAR(picture.panels()[1].values.toValue(lines[1].front().y), -2.0, 0.02);
    EXPECT_NEAR(picture.panels()[1].frames.toValue(lines[1].front().x), 10.0, 0.02);
    EXPECT_EQ(picture.panels()[1].element->find("path", "jump").size(), 1U);
}

TEST(Plot, VerticalTangentDoesNotFlattenTheVelocity) {
    const auto curve = ::Test::MakeCurve({{0, 0}, {10, 5, Vector2D<double>(0, -4)}, {20, 0, {}, {}, "constant()"}});
    ASSERT_GT(std::fabs(GetFirstDerivativeLeft(*curve, 10.0)), 1e6);
    PlotOptions options;
    options.velocity = true;
    const View::Picture picture = Draw(curve, options);
    EXPECT_LT(std::fabs(picture.panels()[1].values.unitsPerPixel), 0.5);
}

TEST(Plot, ManyKeysGiveSmallPictures) {
    auto curve = FCurve::create();
    const auto linear = InterpolatorFactory::create("linear()");
    double y = 0.0;
    double lowest = 0.0;
    unsigned noise = 1;
    for (int i = 0; i < 100000; ++i) {
        noise = noise * 1664525U + 1013904223U;
        y += static_cast<double>(noise >> 16U) / 32768.0 - 1.0;
        lowest = std::min(lowest, y);
        curve->insertSegment(*Keyframe::create(i, y), linear);
    }
    PlotOptions options;
    options.velocity = true;
    const View::Picture picture = Draw(curve, options);
    EXPECT_LT(picture.size(), 200000U);
    EXPECT_TRUE(picture.root().find("circle", "key").empty());
    EXPECT_NE(picture.allText().find("100000 keys"), std::string::npos);
    // What is left out must not show: the line still reaches the extremes.
    double lowestPixel = 0.0;
    for (const auto& stroke : View::ReadPath((*picture.panels()[0].element->find("path", "line").front())["d"]))
        for (const auto& point : stroke) lowestPixel = std::max(lowestPixel, point.y);
    EXPECT_NEAR(lowestPixel, picture.panels()[0].values.toPixel(lowest), 0.2);
}

// Below a curve of many short segments there is no room for all names. No label leaves the picture.
TEST(Plot, NamesOfPartsAndFramesAreReadable) {
    Keys zigzag;
    for (int i = 0; i <= 7; ++i) zigzag.emplace_back(86400000.0 + i / 7.0, i % 2 * 10.0);
    PlotOptions options;
    options.parts = true;
    const View::Picture picture = Draw(Make(zigzag, "bezier()", "bezier()"), options);
    const auto names = picture.root().find("g", "parts").front()->find("text");
    const auto spanOf = [](const View::Element& text) {
        const double width = estimateTextWidth(text.text, 12.0);
        const std::string& anchor = text["text-anchor"];
        const double left = text.number("x") - (anchor == "start" ? 0.0 : anchor == "end" ? width : width / 2.0);
        return Extent{left, left + width};
    };
    std::set<std::string> kinds;
    for (std::size_t i = 0; i < names.size(); ++i) {
        kinds.insert(names[i]->text);
        for (std::size_t j = 0; j < i; ++j) {
            const bool isBeside = std::fabs(names[i]->number("y") - names[j]->number("y")) >= 12.0;
            const Extent a = spanOf(*names[i]);
            const Extent b = spanOf(*names[j]);
            EXPECT_TRUE(isBeside || a.high <= b.low || b.high <= a.low) << names[i]->text << ", " << names[j]->text;
        }
    }
    EXPECT_THAT(kinds, testing::IsSupersetOf({"keyframe", "in tangent", "out tangent", "segment"}));
    for (const View::Element* label : picture.root().find("g", "frames").front()->find("text")) {
        EXPECT_LE(spanOf(*label).high, options.width) << label->text;
    }
}

TEST(Plot, TextIsEscaped) {
    PlotOptions options;
    options.title = "<script>\"&\x01";
    const View::Picture picture(drawPlot({{Make({{0, 0}, {1, 1}}, "linear()"), "</text>&\xFF"}}, options));
    EXPECT_NE(picture.allText().find("<script>\"&\uFFFD"), std::string::npos);
    EXPECT_NE(picture.allText().find("</text>&\uFFFD"), std::string::npos);
}

TEST(Plot, LegendNamesEveryCurveOrSaysHowManyMore) {
    std::vector<NamedCurve> curves;
    for (int i = 0; i < 60; ++i) curves.push_back({Make({{0, 0}, {1, 1}}, "linear()"), "joint" + std::to_string(i)});
    const View::Picture picture(drawPlot(curves, {}));
    std::size_t named = 0;
    std::size_t more = 0;
    for (const View::Element* text : picture.root().find("g", "legend").front()->find("text")) {
        if (text->text.rfind("joint", 0) == 0) ++named;
        if (text->text.rfind("and ", 0) == 0) more = std::stoul(text->text.substr(4));
    }
    EXPECT_GT(named, 5U);
    EXPECT_EQ(named + more, curves.size());
}

TEST(Plot, SizeWithoutRoomIsRefused) {
    PlotOptions options;
    options.height = 120;
    options.velocity = options.acceleration = true;
    EXPECT_THROW(drawPlot({{Make({{0, 0}, {1, 1}}, "linear()"), "a"}}, options), UsageError);
}
