#include "draw/Legend.h"

#include "draw/Colours.h"
#include "draw/Label.h"
#include "draw/Panel.h"

#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

constexpr double kSampleWidth = 28.0; // of a mark, with the room before its text
constexpr double kGap = 14.0;

std::string_view TextOf(Mark mark) {
    switch (mark) {
    case Mark::Key:
        return "key";
    case Mark::Breakdown:
        return "breakdown key";
    case Mark::LockedKey:
        return "locked key";
    case Mark::SelectedKey:
        return "selected key";
    case Mark::Handle:
        return "tangent handle";
    case Mark::Outside:
        return "outside the keys";
    case Mark::Jump:
        return "jump";
    case Mark::Before:
        return "before";
    case Mark::Unknown:
        return "unknown expression";
    case Mark::Cut:
        return "values cut off";
    }
    return {};
}

double EntryWidth(Mark mark) {
    return kGap + kSampleWidth + EstimateTextWidth(TextOf(mark), kTextSize);
}

std::string FramesTitle(const Layout& layout) {
    return "frame" + (layout.ticks.exponent != 0 ? ExponentText(layout.ticks.exponent) : "");
}

// The marks of each row, all rows right of the frames' title.
std::vector<std::vector<Mark>> LayMarks(const Layout& layout, const std::set<Mark>& marks) {
    const double available = layout.right - layout.left - EstimateTextWidth(FramesTitle(layout), kTextSize);
    std::vector<std::vector<Mark>> rows(1);
    double width = 0.0;
    for (const Mark mark : marks) {
        if (width + EntryWidth(mark) > available && !rows.back().empty()) {
            rows.emplace_back();
            width = 0.0;
        }
        rows.back().push_back(mark);
        width += EntryWidth(mark);
    }
    return rows;
}

// A mark as it looks in the panels, 20 pixels wide, from its left end.
void DrawSample(Svg& svg, Mark mark, const Pixel& at) {
    const std::string line = ToPathData({at, {at.x + 20.0, at.y}});
    const Pixel middle = {at.x + 14.0, at.y};
    switch (mark) {
    case Mark::Key:
    case Mark::Breakdown:
    case Mark::LockedKey:
        DrawDot(svg, {middle, "", mark == Mark::Breakdown, mark == Mark::LockedKey, false}, 4.0);
        break;
    case Mark::SelectedKey:
        svg.leaf("circle", {{"cx", middle.x},
                            {"cy", middle.y},
                            {"r", 6.5},
                            {"fill", "none"},
                            {"stroke", kTextColour},
                            {"stroke-width", 1.6}});
        break;
    case Mark::Handle:
        svg.leaf("path", {{"d", line}, {"stroke", kFaintTextColour}});
        svg.leaf("rect", {{"x", at.x + 17.5},
                          {"y", at.y - 2.5},
                          {"width", 5.0},
                          {"height", 5.0},
                          {"fill", "#ffffff"},
                          {"stroke", kFaintTextColour}});
        break;
    case Mark::Outside:
    case Mark::Jump:
        svg.leaf("path", {{"d", line},
                          {"stroke", kFaintTextColour},
                          {"stroke-width", mark == Mark::Outside ? 1.6 : 1.2},
                          {"stroke-dasharray", mark == Mark::Outside ? "6 4" : "2 3"}});
        break;
    case Mark::Before:
        svg.leaf("path", {{"d", line}, {"stroke", kFaintTextColour}, {"stroke-width", 7.0}, {"stroke-opacity", 0.3}});
        break;
    case Mark::Unknown:
        svg.leaf("rect", {{"x", at.x + 6.0},
                          {"y", at.y - 8.0},
                          {"width", 16.0},
                          {"height", 16.0},
                          {"fill", kAlarmColour},
                          {"fill-opacity", 0.12}});
        svg.leaf("text",
                 {{"x", middle.x},
                  {"y", at.y + 4.5},
                  {"text-anchor", "middle"},
                  {"font-weight", "bold"},
                  {"fill", kAlarmColour}},
                 "?");
        break;
    case Mark::Cut:
        svg.leaf("path", {{"d", ToPathData(ExitTriangle({middle.x, at.y - 4.0}, true)) + "Z"}});
        break;
    }
}

} // namespace

void DrawNames(Svg& svg, const Scene& scene, const Layout& layout) {
    if (layout.names.empty()) return;
    svg.open("g", {{"class", "legend"}, {"font-size", kLegendSize}, {"fill", kTextColour}});
    for (const LegendName& name : layout.names) {
        const double x = layout.left + name.x;
        const bool isLast = &name == &layout.names.back();
        if (isLast && layout.unnamed > 0) {
            svg.leaf("text", {{"x", x}, {"y", name.y + 4.5}, {"fill", kFaintTextColour}}, name.text);
            break;
        }
        svg.leaf("path", {{"d", ToPathData({{x, name.y}, {x + 22.0, name.y}})},
                          {"stroke", scene.looks[name.look].colour},
                          {"stroke-width", 2.5},
                          {"stroke-linecap", "round"}});
        svg.leaf("text", {{"x", x + 29.0}, {"y", name.y + 4.5}}, name.text);
    }
    svg.close();
}

std::size_t CountMarksRows(const Layout& layout, const std::set<Mark>& marks) {
    return LayMarks(layout, marks).size();
}

void DrawFoot(Svg& svg, const Layout& layout, const std::set<Mark>& marks) {
    const Frame& frame = layout.panels.back().frame;
    svg.open("g", {{"class", "frames"}, {"font-size", kTextSize}, {"fill", kFaintTextColour}});
    for (const Tick& tick : layout.ticks.marks)
        svg.leaf("text", {{"x", frame.toX(tick.value)}, {"y", frame.bottom + 17.0}, {"text-anchor", "middle"}},
                 tick.label);
    double y = frame.bottom + 37.0;
    svg.leaf("text", {{"x", layout.left}, {"y", y}}, FramesTitle(layout));
    svg.close();
    svg.open("g", {{"class", "marks"}, {"font-size", kTextSize}, {"fill", kFaintTextColour}});
    for (const std::vector<Mark>& row : LayMarks(layout, marks)) {
        double x = layout.right;
        for (const Mark mark : row) x -= EntryWidth(mark);
        for (const Mark mark : row) {
            x += kGap;
            DrawSample(svg, mark, {x, y - 4.0});
            svg.leaf("text", {{"x", x + kSampleWidth}, {"y", y}}, TextOf(mark));
            x += EntryWidth(mark) - kGap;
        }
        y += kMarksRow;
    }
    svg.close();
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
