#include "draw/Layout.h"

#include "draw/Label.h"

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

constexpr double kHeadingHeight = 22.0;
constexpr double kAxisFoot = 24.0; // tick labels below the lowest panel
constexpr double kLowestPanel = 48.0;
constexpr double kNarrowestPanel = 60.0;
constexpr double kFarAway = 20000.0; // pixels; renderers do not like coordinates beyond
constexpr double kLegendLine = 29.0; // the line before a name, and the room between them
constexpr double kLegendGap = 18.0;
constexpr std::size_t kMostLegendRows = 12;

double WidestLabel(const Ticks& ticks) {
    double width = 0.0;
    for (const Tick& tick : ticks.marks) width = std::max(width, EstimateTextWidth(tick.label, kTextSize));
    return width;
}

double NameWidth(const std::string& text) {
    return kLegendLine + EstimateTextWidth(text, kLegendSize) + kLegendGap;
}

double Weight(const PanelScene& panel) {
    return panel.quantity == Quantity::Value ? 2.0 : 1.15;
}

// The widths of the columns when texts are laid out in that many rows, column by column.
std::vector<double> ColumnWidths(const std::vector<std::string>& texts, std::size_t rows) {
    std::vector<double> widths;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i % rows == 0) widths.push_back(0.0);
        widths.back() = std::max(widths.back(), NameWidth(texts[i]));
    }
    return widths;
}

double Sum(const std::vector<double>& numbers) {
    double sum = 0.0;
    for (const double number : numbers) sum += number;
    return sum;
}

} // namespace

double RoundPixel(double pixels) {
    return std::round(pixels * 100.0) / 100.0;
}

double Frame::toX(double frame) const {
    return RoundPixel(left + (frame - frames.low) / (frames.high - frames.low) * (right - left));
}

double Frame::toY(double value) const {
    const double fraction = (value - values.low) / (values.high - values.low);
    return RoundPixel(std::clamp(bottom - fraction * (bottom - top), -kFarAway, kFarAway + bottom));
}

Layout::Layout(const Scene& scene, std::size_t marksRows)
    : width(scene.options.width), height(scene.options.height), left(0.0), right(0.0) {
    double top = kMargin;
    if (!scene.options.title.empty()) top += kTitleSize + 8.0;
    top = layNames(scene, top);
    layPanels(scene, top, marksRows);
    if (hasRoom) layFrames(scene);
}

// Returns the bottom of the legend. Names stand in columns of as few rows as possible; where even the most rows do not
// hold them, they are shortened, and the last ones left out.
double Layout::layNames(const Scene& scene, double top) {
    if (scene.options.separate || scene.looks.empty()) return top;
    const double available = width - 7.0 * kMargin;
    constexpr std::size_t kColumnsAtLeast = 2;
    std::vector<std::string> texts;
    for (const Look& look : scene.looks) {
        const double share = scene.looks.size() <= kMostLegendRows ? available : available / kColumnsAtLeast;
        texts.push_back(Fit(look.caption, kLegendSize, share - kLegendLine - kLegendGap));
    }
    std::size_t rows = 1;
    while (rows < kMostLegendRows && Sum(ColumnWidths(texts, rows)) > available) ++rows;
    while (Sum(ColumnWidths(texts, rows)) > available && texts.size() > 1) {
        texts.pop_back();
        ++unnamed;
    }
    if (unnamed > 0) {
        ++unnamed;
        texts.back() = "and " + std::to_string(unnamed) + " more";
    }
    const std::vector<double> widths = ColumnWidths(texts, rows);
    double x = 0.0;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i > 0 && i % rows == 0) x += widths[i / rows - 1];
        names.push_back({i, texts[i], x, top + kLegendRow * (static_cast<double>(i % rows) + 0.5)});
    }
    return top + kLegendRow * static_cast<double>(rows) + 6.0;
}

void Layout::layPanels(const Scene& scene, double top, std::size_t marksRows) {
    double weights = 0.0;
    double fixed = top + kAxisFoot + kMarksRow * static_cast<double>(marksRows) + kMargin / 2.0 - kPanelGap;
    for (const PanelScene& panel : scene.panels) {
        weights += Weight(panel);
        fixed += kPanelGap + (panel.heading.empty() ? 0.0 : kHeadingHeight);
    }
    if (height == 0.0) {
        const double unit = scene.panels.size() == 1 ? 215.0 : scene.options.separate ? 95.0 : 145.0;
        height = std::round(fixed + weights * unit);
    }
    const double unit = (height - fixed) / weights;
    double labels = 0.0;
    std::size_t titleLines = 0;
    for (const PanelScene& panel : scene.panels) {
        if (!panel.heading.empty()) top += kHeadingHeight;
        const double bottom = top + unit * Weight(panel);
        hasRoom = hasRoom && bottom - top >= kLowestPanel;
        const int count = std::max(2, static_cast<int>((bottom - top) / 42.0) + 1);
        panels.push_back({{scene.frames, panel.values, 0.0, 0.0, top, bottom},
                          MakeTicks(panel.values.low, panel.values.high, count)});
        labels = std::max(labels, WidestLabel(panels.back().ticks));
        titleLines = std::max(titleLines, AxisTitle(panel.quantity).size());
        top = bottom + kPanelGap;
    }
    left = kMargin + (kTextSize + 2.0) * static_cast<double>(titleLines) + 8.0 + labels + 8.0;
    right = width - kMargin - 8.0;
    hasRoom = hasRoom && right - left >= kNarrowestPanel;
    leastWidth = std::max(kSmallestSize, std::ceil(left + kNarrowestPanel + width - right));
    leastHeight = std::max(kSmallestSize, std::ceil(fixed + weights * kLowestPanel / 1.15));
}

void Layout::layFrames(const Scene& scene) {
    for (int count = std::max(2, static_cast<int>((right - left) / 50.0)); count >= 2; --count) {
        ticks = MakeTicks(scene.frames.low, scene.frames.high, count);
        if ((WidestLabel(ticks) + 18.0) * static_cast<double>(ticks.marks.size()) < right - left) break;
    }
    const auto place = [this] {
        for (PanelPlace& panel : panels) {
            panel.frame.left = left;
            panel.frame.right = right;
        }
    };
    place();
    if (ticks.marks.empty()) return;
    const double end = panels.front().frame.toX(ticks.marks.back().value);
    const double overhang = end + WidestLabel(ticks) / 2.0 + 2.0 - width; // the last label may be wider than the margin
    if (overhang > 0.0) right -= overhang * (right - left) / (end - left);
    place();
}

std::vector<std::string> AxisTitle(Quantity quantity) {
    switch (quantity) {
    case Quantity::Value:
        return {"value"};
    case Quantity::Velocity:
        return {"velocity", "value/frame"};
    case Quantity::Acceleration:
        return {"acceleration", "value/frame\u00B2"};
    }
    return {};
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
