#include "Plot.h"

#include "Failure.h"
#include "Polyline.h"
#include "Svg.h"
#include "Text.h"
#include "Ticks.h"
#include "Trace.h"

#include <FCurveLib/DisplayProperties.h>
#include <FCurveLib/Interpolator.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>
#include <FCurveLib/Selection.h>
#include <FCurveLib/Tangent.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <utility>

namespace fcurvetool {

namespace {

using VEM_FN::FCurveLib::Keyframe;
using VEM_FN::FCurveLib::Tangent;

// Seven colours of the palette that Okabe and Ito made for colour-blind readers (its yellow is too pale on white), then
// the same, darker.
constexpr std::array<std::string_view, 14> kCurveColours = {"#0072b2", "#d55e00", "#009e73", "#cc79a7", "#e69f00",
                                                            "#56b4e9", "#444444", "#00436b", "#7d3700", "#005c43",
                                                            "#7f4465", "#8a5f00", "#27668a", "#9a9a9a"};
constexpr std::string_view kTextColour = "#24292f";
constexpr std::string_view kFaintTextColour = "#5f6670";
constexpr std::string_view kGridColour = "#e9ebee";
constexpr std::string_view kZeroColour = "#c3c8ce";
constexpr std::string_view kAxisColour = "#8c939c";

constexpr double kMargin = 16.0;
constexpr double kTitleSize = 16.0;
constexpr double kTextSize = 12.0;
constexpr double kLegendSize = 13.0;
constexpr double kLegendRow = 21.0;
constexpr std::size_t kMaxLegendRows = 4;
constexpr std::size_t kLongestName = 48;
constexpr double kPanelGap = 16.0;
constexpr double kHeadingHeight = 22.0;
constexpr double kAxisFoot = 44.0; // tick labels and title below the lowest panel
constexpr double kLowestPanel = 48.0;
constexpr double kFarAway = 20000.0; // pixels; renderers do not like coordinates beyond

constexpr double kKeySpacing = 5.0; // pixels between keys on average, below which dots are left out
constexpr double kHandleSpacing = 20.0;
constexpr double kSmallestDot = 1.5;
constexpr double kLargestDot = 4.0;
constexpr std::size_t kMostDots = 5000;
constexpr std::size_t kMostHints = 1000;
constexpr std::size_t kMostCurvesWithHandles = 6;
constexpr double kAway = 9.0; // pixels between a part and its name

struct FrameSpan {
    double first = 0.0;
    double last = 0.0;
    bool empty = true;
};

FrameSpan keyedSpan(const FCurve& curve) {
    FrameSpan span;
    if (curve.size() < 2) return span;
    span.empty = false;
    span.first = curve.begin()->getRightKey()->getX();
    span.last = std::prev(curve.end())->getLeftKey()->getX();
    return span;
}

/// How much of the keys' span is shown outside them, for a curve that goes on there in this way.
double roomAtEnd(const Segment& segment) {
    const auto interpolator = segment.getInterpolator();
    const std::string_view expression = interpolator ? interpolator->getExpression() : "";
    if (expression.empty() || expression.find("constant") == 0 || parseNumber(expression)) return 0.04;
    return expression == "linear()" || expression == "bezier()" ? 0.2 : 0.5;
}

AxisRange chooseFrames(const std::vector<NamedCurve>& curves, const PlotOptions& options) {
    if (options.frames) return makeAxisRange(options.frames->low, options.frames->high, 0.0);
    FrameSpan all;
    double roomBefore = 0.0;
    double roomAfter = 0.0;
    for (const NamedCurve& named : curves) {
        const FrameSpan span = keyedSpan(*named.curve);
        if (span.empty) continue;
        all.first = all.empty ? span.first : std::min(all.first, span.first);
        all.last = all.empty ? span.last : std::max(all.last, span.last);
        all.empty = false;
        roomBefore = std::max(roomBefore, roomAtEnd(*named.curve->begin()));
        roomAfter = std::max(roomAfter, roomAtEnd(*std::prev(named.curve->end())));
    }
    if (all.empty) return {0.0, 100.0};
    if (all.first == all.last) {
        const double around = std::max(10.0, std::fabs(all.first) * 1e-6);
        return makeAxisRange(all.first - around, all.first + around, 0.0);
    }
    AxisRange frames = makeAxisRange(all.first, all.last, 0.0);
    const double span = frames.high - frames.low;
    frames.low -= span * roomBefore;
    frames.high += span * roomAfter;
    return frames;
}

double widestLabel(const Ticks& ticks) {
    double width = 0.0;
    for (const Tick& tick : ticks.marks) width = std::max(width, estimateTextWidth(tick.label, kTextSize));
    return width;
}

/// The lines of an axis title.
std::vector<std::string> axisTitle(Quantity quantity) {
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

/// What the legend below the panels explains.
enum class Mark { Key, Handle, Outside, Jump, SelectedKey };

/// A curve within a panel.
struct PanelCurve {
    std::size_t index; // among all curves
    Trace trace;
};

struct Panel {
    Quantity quantity;
    std::string heading; // empty for none
    std::string_view headingColour;
    std::vector<PanelCurve> curves;
    AxisRange values{-1.0, 1.0};
    Ticks ticks;
    double top = 0.0;
    double height = 0.0;

    double bottom() const { return top + height; }
};

/// Writes names of parts beside them. One that would cover another is left out.
class PartNames {
public:
    explicit PartNames(Svg& svg) : m_svg(svg) {}

    void add(const char* text, const Pixel& at, std::string_view anchor) {
        const double width = estimateTextWidth(text, kTextSize);
        const double left = at.x - (anchor == "start" ? 0.0 : anchor == "end" ? width : width / 2.0);
        const Place place = {left, left + width, at.y};
        for (const Place& other : m_taken)
            if (std::fabs(place.y - other.y) < kTextSize && place.left < other.right && other.left < place.right)
                return;
        m_taken.push_back(place);
        m_svg.leaf("text", {{"x", at.x}, {"y", at.y}, {"text-anchor", anchor}}, text);
    }

private:
    struct Place {
        double left;
        double right;
        double y;
    };

    Svg& m_svg;
    std::vector<Place> m_taken;
};

class Picture {
public:
    Picture(const std::vector<NamedCurve>& curves, const PlotOptions& options)
        : m_curves(curves), m_options(options), m_frames(chooseFrames(curves, options)) {
        makePanels();
        countKeys();
    }

    std::string draw() {
        const std::vector<std::vector<std::size_t>> legend = layLegend();
        const double height = layPanels(legend.size());
        Svg svg(m_options.width, height, m_options.title.empty() ? "Curves" : m_options.title);
        svg.leaf("rect", {{"width", m_options.width}, {"height", height}, {"fill", "#ffffff"}});
        if (!m_options.title.empty()) {
            svg.leaf("text",
                     {{"x", m_left},
                      {"y", kMargin + kTitleSize - 2.0},
                      {"font-size", kTitleSize},
                      {"font-weight", "bold"},
                      {"fill", kTextColour}},
                     fit(m_options.title, kTitleSize, m_options.width - m_left - kMargin));
        }
        drawLegend(svg, legend);
        for (std::size_t i = 0; i < m_panels.size(); ++i) drawPanel(svg, i);
        drawFoot(svg);
        return svg.finish();
    }

private:
    std::string_view colour(std::size_t index) const { return kCurveColours[index % kCurveColours.size()]; }

    /// The text, shortened until it fits.
    static std::string fit(const std::string& text, double size, double width) {
        std::size_t characters = countCharacters(text);
        std::string result = text;
        while (characters > 1 && estimateTextWidth(result, size) > width) result = shorten(text, --characters);
        return result;
    }

    /// \name Lay out
    /// @{

    void makePanels() {
        const auto add = [this](const std::vector<std::size_t>& indices, Quantity quantity) {
            Panel panel{quantity, {}, kTextColour, {}, {-1.0, 1.0}, {}};
            for (const std::size_t index : indices)
                panel.curves.push_back(
                    {index, Trace(*m_curves[index].curve, quantity, m_frames.low, m_frames.high, m_options.width)});
            if (m_options.separate && quantity == Quantity::Value) {
                panel.heading = m_curves[indices.front()].name;
                panel.headingColour = colour(indices.front());
            }
            m_panels.push_back(std::move(panel));
        };
        const auto addAll = [this, &add](const std::vector<std::size_t>& indices) {
            add(indices, Quantity::Value);
            if (m_options.velocity) add(indices, Quantity::Velocity);
            if (m_options.acceleration) add(indices, Quantity::Acceleration);
        };
        std::vector<std::size_t> all;
        for (std::size_t i = 0; i < m_curves.size(); ++i) all.push_back(i);
        if (m_options.separate && !all.empty())
            for (const std::size_t index : all) addAll({index});
        else
            addAll(all);
    }

    /// Decides which curves get dots and handles.
    void countKeys() {
        m_drawKeys.assign(m_curves.size(), m_options.keys != Marks::Off);
        m_drawHandles.assign(m_curves.size(), m_options.handles != Marks::Off);
        m_dotRadius.assign(m_curves.size(), kLargestDot);
        std::size_t total = 0;
        for (std::size_t i = 0; i < m_curves.size(); ++i) {
            std::size_t count = 0;
            double first = m_frames.high;
            double last = m_frames.low;
            forEachKey(i, [&](const Keyframe& key) {
                first = std::min(first, key.getX());
                last = std::max(last, key.getX());
                ++count;
            });
            const double width = (last - first) / (m_frames.high - m_frames.low) * m_options.width;
            const double spacing = count > 1 ? width / static_cast<double>(count - 1) : m_options.width;
            if (spacing < kKeySpacing && m_options.keys == Marks::Auto) m_drawKeys[i] = false;
            if (m_options.handles == Marks::Auto)
                m_drawHandles[i] =
                    spacing >= kHandleSpacing && (m_options.separate || m_curves.size() <= kMostCurvesWithHandles);
            m_dotRadius[i] = std::clamp(spacing * 0.3, kSmallestDot, kLargestDot); // dots never hide the line
            if (m_drawKeys[i]) total += count;
        }
        if (total > kMostDots && m_options.keys == Marks::Auto) m_drawKeys.assign(m_curves.size(), false);
        m_drawHints = total <= kMostHints;
    }

    template<class Visit>
    void forEachKey(std::size_t index, const Visit& visit) const {
        const FCurve& curve = *m_curves[index].curve;
        for (auto it = curve.findSegment(m_frames.low); it != curve.end(); ++it) {
            const auto key = it->getLeftKey();
            if (!key || key->getX() < m_frames.low) continue;
            if (key->getX() > m_frames.high) break;
            visit(*key);
        }
    }

    template<class Visit>
    void forEachHandle(std::size_t index, const Visit& visit) const {
        const double scale = VEM_FN::FCurveLib::GetTangentScale(*m_curves[index].curve);
        forEachKey(index, [&visit, scale](const Keyframe& key) {
            const auto visitOne = [&](const std::shared_ptr<const Segment>& segment,
                                      const std::shared_ptr<const Tangent>& tangent) {
                if (!segment || !tangent) return;
                const auto interpolator = segment->getInterpolator();
                if (interpolator && interpolator->usesTangents())
                    visit(key, Sample{key.getX() + scale * tangent->getX(), key.getY() + scale * tangent->getY()});
            };
            visitOne(key.getLeftSegment(), key.getInTangent());
            visitOne(key.getRightSegment(), key.getOutTangent());
        });
    }

    AxisRange chooseValues(const Panel& panel) const {
        constexpr double kRoom = 0.06;
        constexpr double kRoomForHandles = 0.25;
        if (m_options.values && panel.quantity == Quantity::Value)
            return makeAxisRange(m_options.values->low, m_options.values->high, 0.0);
        Extent extent = kNoExtent;
        for (const PanelCurve& curve : panel.curves) extent.include(curve.trace.extent());
        if (extent.empty()) return {-1.0, 1.0};
        if (panel.quantity == Quantity::Value) {
            const double room = (extent.high - extent.low) * kRoomForHandles;
            const Extent limits = {extent.low - room, extent.high + room};
            for (const PanelCurve& curve : panel.curves) {
                if (!m_drawHandles[curve.index]) continue;
                forEachHandle(curve.index, [&](const Keyframe&, const Sample& end) {
                    extent.include(std::clamp(end.y, limits.low, limits.high));
                });
            }
        }
        return makeAxisRange(extent.low, extent.high, kRoom);
    }

    /// The curves of each row of the legend. One that does not fit stands for "and n more" as the number of curves.
    std::vector<std::vector<std::size_t>> layLegend() const {
        std::vector<std::vector<std::size_t>> rows;
        if (m_options.separate) return rows;
        double x = 0.0;
        const double available = m_options.width - 6.0 * kMargin;
        for (std::size_t i = 0; i < m_curves.size(); ++i) {
            const double width = legendWidth(legendText(i));
            if (rows.empty() || x + width > available) {
                if (rows.size() == kMaxLegendRows) {
                    rows.back().back() = m_curves.size();
                    break;
                }
                rows.emplace_back();
                x = 0.0;
            }
            rows.back().push_back(i);
            x += width;
        }
        return rows;
    }

    std::string legendText(std::size_t index) const {
        std::string text = shorten(m_curves[index].name, kLongestName);
        const std::size_t keys = m_curves[index].curve->size() - 1;
        if (keys == 0)
            text += " (no keys)";
        else if (!m_drawKeys[index] && m_options.keys == Marks::Auto)
            text += " (" + std::to_string(keys) + " keys)";
        return text;
    }

    static double legendWidth(const std::string& text) { return 30.0 + estimateTextWidth(text, kLegendSize) + 18.0; }

    /// Gives every panel its place; returns the picture's height.
    double layPanels(std::size_t legendRows) {
        double top = kMargin;
        if (!m_options.title.empty()) top += kTitleSize + 8.0;
        m_legendTop = top;
        top += kLegendRow * static_cast<double>(legendRows) + (legendRows > 0 ? 6.0 : 0.0);

        const auto weight = [](const Panel& panel) { return panel.quantity == Quantity::Value ? 2.0 : 1.15; };
        double weights = 0.0;
        double fixed = top + kAxisFoot + kMargin / 2.0 - kPanelGap;
        for (const Panel& panel : m_panels) {
            weights += weight(panel);
            fixed += kPanelGap + (panel.heading.empty() ? 0.0 : kHeadingHeight);
        }
        double height = m_options.height;
        if (height == 0.0) {
            const double unit = m_panels.size() == 1 ? 215.0 : m_options.separate ? 95.0 : 145.0;
            height = std::round(fixed + weights * unit);
        }
        const double unit = (height - fixed) / weights;
        for (Panel& panel : m_panels) {
            panel.height = unit * weight(panel);
            if (!panel.heading.empty()) top += kHeadingHeight;
            panel.top = top;
            top += panel.height + kPanelGap;
            if (panel.height < kLowestPanel) {
                const double least = std::ceil(fixed + weights * kLowestPanel / 1.15);
                throw UsageError("--size: a height of " + toBriefText(height) + " is too little here, take at least "
                                 + toBriefText(least));
            }
            panel.values = chooseValues(panel);
            panel.ticks =
                makeTicks(panel.values.low, panel.values.high, std::max(2, static_cast<int>(panel.height / 42.0) + 1));
        }

        double labels = 0.0;
        for (const Panel& panel : m_panels) labels = std::max(labels, widestLabel(panel.ticks));
        std::size_t titleLines = 0;
        for (const Panel& panel : m_panels) titleLines = std::max(titleLines, axisTitle(panel.quantity).size());
        m_left = kMargin + (kTextSize + 2.0) * static_cast<double>(titleLines) + 8.0 + labels + 8.0;
        m_right = m_options.width - kMargin - 8.0;
        if (m_right - m_left < 60.0)
            throw UsageError("--size: a width of " + toBriefText(m_options.width) + " is too little here");
        for (int count = std::max(2, static_cast<int>((m_right - m_left) / 50.0)); count >= 2; --count) {
            m_ticks = makeTicks(m_frames.low, m_frames.high, count);
            if ((widestLabel(m_ticks) + 18.0) * static_cast<double>(m_ticks.marks.size()) < m_right - m_left) break;
        }
        if (!m_ticks.marks.empty()) { // the last label may be wider than the margin
            const double end = toX(m_ticks.marks.back().value);
            const double overhang = end + widestLabel(m_ticks) / 2.0 + 2.0 - m_options.width;
            if (overhang > 0.0) m_right -= overhang * (m_right - m_left) / (end - m_left);
        }
        for (Panel& panel : m_panels)
            for (PanelCurve& curve : panel.curves)
                curve.trace.refine((panel.values.high - panel.values.low) / panel.height);
        return height;
    }
    /// @}

    /// \name Scale
    /// @{
    double toX(double frame) const {
        return m_left + (frame - m_frames.low) / (m_frames.high - m_frames.low) * (m_right - m_left);
    }
    static double toY(const Panel& panel, double value) {
        const double fraction = (value - panel.values.low) / (panel.values.high - panel.values.low);
        return std::clamp(panel.bottom() - fraction * panel.height, -kFarAway, kFarAway + panel.bottom());
    }
    Pixel toPixel(const Panel& panel, const Sample& sample) const { return {toX(sample.x), toY(panel, sample.y)}; }
    /// @}

    /// \name Draw
    /// @{

    void drawLegend(Svg& svg, const std::vector<std::vector<std::size_t>>& rows) const {
        if (rows.empty()) return;
        svg.open("g", {{"class", "legend"}, {"font-size", kLegendSize}, {"fill", kTextColour}});
        double y = m_legendTop + kLegendRow / 2.0;
        for (const auto& row : rows) {
            double x = m_left;
            for (const std::size_t index : row) {
                if (index == m_curves.size()) {
                    const std::size_t more = m_curves.size() - rows.back().front() - rows.back().size() + 1;
                    svg.leaf("text", {{"x", x}, {"y", y + 4.5}, {"fill", kFaintTextColour}},
                             "and " + std::to_string(more) + " more");
                    continue;
                }
                svg.leaf("path", {{"d", toPathData({{x, y}, {x + 22.0, y}})},
                                  {"stroke", colour(index)},
                                  {"stroke-width", 2.5},
                                  {"stroke-linecap", "round"}});
                const std::string text = legendText(index);
                svg.leaf("text", {{"x", x + 29.0}, {"y", y + 4.5}}, text);
                x += legendWidth(text);
            }
            y += kLegendRow;
        }
        svg.close();
    }

    void drawPanel(Svg& svg, std::size_t number) {
        const Panel& panel = m_panels[number];
        const std::string clip = "panel" + std::to_string(number + 1);
        svg.open("g", {{"class", "panel"}});
        svg.open("clipPath", {{"id", clip}});
        svg.leaf("rect", {{"x", m_left}, {"y", panel.top}, {"width", m_right - m_left}, {"height", panel.height}});
        svg.close();
        drawAxes(svg, panel);
        if (panel.curves.empty()) {
            svg.leaf("text",
                     {{"x", (m_left + m_right) / 2.0},
                      {"y", panel.top + panel.height / 2.0 - kTitleSize},
                      {"text-anchor", "middle"},
                      {"font-size", kTitleSize},
                      {"fill", kFaintTextColour}},
                     "no curves");
        }
        for (const PanelCurve& curve : panel.curves) {
            svg.open("g", {{"class", "curve"}, {"stroke", colour(curve.index)}, {"fill", "none"}});
            svg.open("g", {{"clip-path", "url(#" + clip + ")"}});
            drawLines(svg, panel, curve);
            if (panel.quantity == Quantity::Value && m_drawHandles[curve.index]) drawHandles(svg, panel, curve);
            svg.close();
            if (panel.quantity == Quantity::Value && m_drawKeys[curve.index]) drawKeys(svg, panel, curve);
            if (panel.quantity == Quantity::Value && m_options.selection) drawSelectedKeys(svg, panel, curve);
            svg.close();
        }
        if (m_options.parts && number == 0 && !panel.curves.empty()) drawPartNames(svg, panel);
        svg.close();
    }

    /// Names the parts of the panel's first curve: one key and its tangents, and every segment where there is room.
    void drawPartNames(Svg& svg, const Panel& panel) const {
        const std::size_t index = panel.curves.front().index;
        svg.open("g", {{"class", "parts"}, {"font-size", kTextSize}, {"font-style", "italic"}, {"fill", kTextColour}});
        PartNames names(svg);
        nameKey(names, panel, index);
        nameSegments(names, panel, *m_curves[index].curve);
        svg.close();
    }

    void nameKey(PartNames& names, const Panel& panel, std::size_t index) const {
        const Keyframe* const key = keyToName(index);
        if (!key) return;
        const Pixel at = toPixel(panel, {key->getX(), key->getY()});
        const bool hasRoomAbove = at.y - kAway - kTextSize > panel.top;
        names.add("keyframe", {at.x, hasRoomAbove ? at.y - kAway - 3.0 : at.y + kAway + kTextSize}, "middle");
        if (!m_drawHandles[index]) return;
        forEachHandle(index, [&](const Keyframe& owner, const Sample& end) {
            if (&owner != key) return;
            const Pixel tip = toPixel(panel, end);
            const bool isIn = end.x < key->getX();
            names.add(isIn ? "in tangent" : "out tangent", {tip.x + (isIn ? -kAway : kAway), tip.y - kAway / 2.0},
                      isIn ? "end" : "start");
        });
    }

    /// The key whose shorter handle is the longest, for the names of both need room; the first key where no handles are
    /// drawn. Null without keys.
    const Keyframe* keyToName(std::size_t index) const {
        struct Candidate {
            const Keyframe* key = nullptr;
            int handles = 0;
            double shortest = 0.0;
        };
        std::vector<Candidate> candidates;
        forEachKey(index, [&candidates](const Keyframe& key) { candidates.push_back({&key}); });
        if (candidates.empty()) return nullptr;
        if (!m_drawHandles[index]) return candidates.front().key;
        auto candidate = candidates.begin();
        forEachHandle(index, [&candidate](const Keyframe& key, const Sample& end) {
            while (candidate->key != &key) ++candidate; // both walk the keys in order
            const double length = std::fabs(end.x - key.getX());
            candidate->shortest = candidate->handles++ == 0 ? length : std::min(candidate->shortest, length);
        });
        return std::max_element(candidates.begin(), candidates.end(),
                                [](const Candidate& a, const Candidate& b) {
                                    return std::tie(a.handles, a.shortest) < std::tie(b.handles, b.shortest);
                                })
            ->key;
    }

    void nameSegments(PartNames& names, const Panel& panel, const FCurve& curve) const {
        for (const Segment& segment : curve) {
            const auto left = segment.getLeftKey();
            const auto right = segment.getRightKey();
            const char* text = left && right ? "segment" : left ? "trailing segment" : "leading segment";
            const double from = std::max(left ? left->getX() : m_frames.low, m_frames.low);
            const double to = std::min(right ? right->getX() : m_frames.high, m_frames.high);
            if (toX(to) - toX(from) < estimateTextWidth(text, kTextSize) + 2.0 * kAway) continue;
            const double middle = (from + to) / 2.0;
            const Pixel at = toPixel(panel, {middle, curve.eval(middle)});
            // Below the curve, on the side where it leaves room.
            const double rise = toY(panel, curve.eval(from)) - toY(panel, curve.eval(to));
            if (std::fabs(rise) < 4.0 * kAway)
                names.add(text, {at.x, at.y + kAway + kTextSize}, "middle");
            else
                names.add(text, {at.x + (rise > 0.0 ? kAway : -kAway), at.y + kTextSize}, rise > 0.0 ? "start" : "end");
        }
    }

    void drawAxes(Svg& svg, const Panel& panel) const {
        svg.open("g", {{"class", "axes"}, {"font-size", kTextSize}, {"fill", kFaintTextColour}});
        std::string grid;
        for (const Tick& tick : m_ticks.marks) {
            const double x = toX(tick.value);
            grid += toPathData({{x, panel.top}, {x, panel.bottom()}});
        }
        for (const Tick& tick : panel.ticks.marks) {
            const double y = toY(panel, tick.value);
            grid += toPathData({{m_left, y}, {m_right, y}});
            svg.leaf("text", {{"x", m_left - 7.0}, {"y", y + 4.2}, {"text-anchor", "end"}}, tick.label);
        }
        svg.leaf("path", {{"d", grid}, {"stroke", kGridColour}});
        if (panel.values.low < 0.0 && panel.values.high > 0.0) {
            const double y = toY(panel, 0.0);
            svg.leaf("path", {{"d", toPathData({{m_left, y}, {m_right, y}})}, {"stroke", kZeroColour}});
        }
        svg.leaf("path", {{"d", toPathData({{m_left, panel.top}, {m_left, panel.bottom()}, {m_right, panel.bottom()}})},
                          {"stroke", kAxisColour},
                          {"fill", "none"}});
        std::vector<std::string> title = axisTitle(panel.quantity);
        if (panel.ticks.exponent != 0) {
            // The factor belongs to the numbers: it is never cut off, rather the unit is.
            const std::string factor = exponentText(panel.ticks.exponent);
            const bool fits = estimateTextWidth(title.back() + factor, kTextSize) <= panel.height + kPanelGap;
            title.back() = fits ? title.back() + factor : factor;
        }
        for (std::size_t line = 0; line < title.size(); ++line) {
            const double x =
                kMargin + kTextSize * static_cast<double>(line + 1) - 4.0 + 2.0 * static_cast<double>(line);
            const double y = (panel.top + panel.bottom()) / 2.0;
            svg.leaf("text",
                     {{"transform", "translate(" + toFixedText(x, 2) + " " + toFixedText(y, 2) + ") rotate(-90)"},
                      {"text-anchor", "middle"}},
                     fit(title[line], kTextSize, panel.height + kPanelGap));
        }
        if (!panel.heading.empty()) {
            svg.leaf("text",
                     {{"x", m_left},
                      {"y", panel.top - 7.0},
                      {"font-size", kLegendSize},
                      {"font-weight", "bold"},
                      {"fill", panel.headingColour}},
                     fit(panel.heading, kLegendSize, m_right - m_left));
        }
        svg.close();
    }

    void drawLines(Svg& svg, const Panel& panel, const PanelCurve& curve) {
        constexpr double kTolerance = 0.1;
        std::string between;
        std::string outside;
        for (const Stroke& stroke : curve.trace.strokes()) {
            std::vector<Pixel> pixels;
            pixels.reserve(stroke.samples.size());
            for (const Sample& sample : stroke.samples) pixels.push_back(toPixel(panel, sample));
            const auto isAt = [&pixels](const Pixel& pixel) {
                return std::hypot(pixel.x - pixels.front().x, pixel.y - pixels.front().y) < kTolerance;
            };
            if (std::all_of(pixels.begin(), pixels.end(), isAt)) continue;
            (stroke.place == Place::BetweenKeys ? between : outside) += toPathData(simplify(pixels, kTolerance));
        }
        std::string jumps;
        for (const Jump& jump : curve.trace.jumps())
            jumps += toPathData({toPixel(panel, {jump.x, jump.from}), toPixel(panel, {jump.x, jump.to})});
        if (!jumps.empty())
            svg.leaf("path", {{"class", "jump"},
                              {"d", jumps},
                              {"stroke-width", 1.2},
                              {"stroke-dasharray", "2 3"},
                              {"stroke-opacity", 0.7}});
        if (!outside.empty())
            svg.leaf("path", {{"class", "outside"},
                              {"d", outside},
                              {"stroke-width", 1.6},
                              {"stroke-dasharray", "6 4"},
                              {"stroke-opacity", 0.6}});
        if (!between.empty())
            svg.leaf("path", {{"class", "line"},
                              {"d", between},
                              {"stroke-width", isCurveSelected(curve.index) ? 4.0
                                               : m_drawKeys[curve.index]    ? 2.0
                                                                            : 1.5},
                              {"stroke-linejoin", "round"}});
        m_hasJumps |= !jumps.empty();
        m_hasOutside |= !outside.empty();
    }

    void drawHandles(Svg& svg, const Panel& panel, const PanelCurve& curve) {
        std::string lines;
        std::vector<Pixel> ends;
        forEachHandle(curve.index, [&](const Keyframe& key, const Sample& handle) {
            const Pixel start = toPixel(panel, {key.getX(), key.getY()});
            const double scale = panel.height / (panel.values.high - panel.values.low);
            double dx = toX(handle.x) - start.x;
            double dy = (key.getY() - handle.y) * scale;
            const double length = std::max(std::fabs(dx), std::fabs(dy));
            if (length > kFarAway / 2.0) {
                dx *= kFarAway / 2.0 / length;
                dy *= kFarAway / 2.0 / length;
            }
            const Pixel end = {start.x + dx, start.y + dy};
            lines += toPathData({start, end});
            ends.push_back(end);
        });
        if (ends.empty()) return;
        m_hasHandles = true;
        svg.leaf("path", {{"class", "handles"}, {"d", lines}, {"stroke-width", 1.0}, {"stroke-opacity", 0.75}});
        svg.open("g", {{"fill", "#ffffff"}, {"stroke-width", 1.2}});
        for (const Pixel& end : ends)
            svg.leaf("rect",
                     {{"class", "handle"}, {"x", end.x - 2.5}, {"y", end.y - 2.5}, {"width", 5.0}, {"height", 5.0}});
        svg.close();
    }

    void drawKeys(Svg& svg, const Panel& panel, const PanelCurve& curve) {
        const bool isRimmed = m_dotRadius[curve.index] == kLargestDot;
        svg.open("g", {{"class", "keys"}, {"fill", colour(curve.index)}, {"stroke", isRimmed ? "#ffffff" : "none"}});
        forEachKey(curve.index, [&](const Keyframe& key) {
            const Pixel at = toPixel(panel, {key.getX(), key.getY()});
            if (at.y < panel.top - 1.0 || at.y > panel.bottom() + 1.0) return;
            m_hasKeys = true;
            const Svg::Attributes attributes = {
                {"class", "key"}, {"cx", at.x}, {"cy", at.y}, {"r", m_dotRadius[curve.index]}};
            if (!m_drawHints) {
                svg.leaf("circle", attributes);
                return;
            }
            svg.open("circle", attributes);
            svg.leaf("title", {},
                     m_curves[curve.index].name + ": frame " + toBriefText(key.getX()) + ", value "
                         + toBriefText(key.getY()));
            svg.close();
        });
        svg.close();
    }

    bool isCurveSelected(std::size_t index) const {
        return m_options.selection && m_selection.isSelected(*m_curves[index].curve);
    }

    /// Rings around selected keys, whether the keys have dots or not.
    void drawSelectedKeys(Svg& svg, const Panel& panel, const PanelCurve& curve) {
        svg.open("g", {{"class", "selection"}, {"fill", "none"}, {"stroke", kTextColour}, {"stroke-width", 1.6}});
        forEachKey(curve.index, [&](const Keyframe& key) {
            if (!m_selection.isSelected(key)) return;
            const Pixel at = toPixel(panel, {key.getX(), key.getY()});
            if (at.y < panel.top - 1.0 || at.y > panel.bottom() + 1.0) return;
            m_hasSelection = true;
            svg.leaf("circle", {{"class", "selected"}, {"cx", at.x}, {"cy", at.y}, {"r", 6.5}});
        });
        svg.close();
    }

    /// Frames and their title below the lowest panel, and what the marks mean at its right.
    void drawFoot(Svg& svg) const {
        const double bottom = m_panels.back().bottom();
        svg.open("g", {{"class", "frames"}, {"font-size", kTextSize}, {"fill", kFaintTextColour}});
        for (const Tick& tick : m_ticks.marks)
            svg.leaf("text", {{"x", toX(tick.value)}, {"y", bottom + 17.0}, {"text-anchor", "middle"}}, tick.label);
        const std::string title = "frame" + (m_ticks.exponent != 0 ? exponentText(m_ticks.exponent) : "");
        const double y = bottom + 37.0;
        svg.leaf("text", {{"x", m_left}, {"y", y}}, title);
        drawMarkLegend(svg, m_left + estimateTextWidth(title, kTextSize) + 20.0, y);
        svg.close();
    }

    /// What the marks in this picture mean, if there is room for that from left on.
    void drawMarkLegend(Svg& svg, double left, double y) const {
        constexpr double kSampleWidth = 28.0;
        constexpr double kGap = 14.0;
        struct Entry {
            bool isDrawn;
            Mark mark;
            std::string_view text;
        };
        const Entry entries[] = {{m_hasKeys, Mark::Key, "key"},
                                 {m_hasHandles, Mark::Handle, "tangent handle"},
                                 {m_hasOutside, Mark::Outside, "outside the keys"},
                                 {m_hasJumps, Mark::Jump, "jump"},
                                 {m_hasSelection, Mark::SelectedKey, "selected key"}};
        double x = m_right;
        for (const Entry& entry : entries)
            if (entry.isDrawn) x -= estimateTextWidth(entry.text, kTextSize) + kSampleWidth + kGap;
        if (x < left) return;
        for (const Entry& entry : entries) {
            if (!entry.isDrawn) continue;
            x += kGap;
            drawSample(svg, entry.mark, {x, y - 4.0});
            svg.leaf("text", {{"x", x + kSampleWidth}, {"y", y}}, entry.text);
            x += kSampleWidth + estimateTextWidth(entry.text, kTextSize);
        }
    }

    /// A mark as it looks in the panels, 20 pixels wide, from its left end.
    static void drawSample(Svg& svg, Mark mark, const Pixel& at) {
        const std::string line = toPathData({at, {at.x + 20.0, at.y}});
        switch (mark) {
        case Mark::Key:
            svg.leaf("circle", {{"cx", at.x + 14.0}, {"cy", at.y}, {"r", 4.0}});
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
        case Mark::SelectedKey:
            svg.leaf("circle", {{"cx", at.x + 14.0},
                                {"cy", at.y},
                                {"r", 6.5},
                                {"fill", "none"},
                                {"stroke", kTextColour},
                                {"stroke-width", 1.6}});
            break;
        }
    }
    /// @}

    const std::vector<NamedCurve>& m_curves;
    const PlotOptions& m_options;
    AxisRange m_frames;
    Ticks m_ticks;
    std::vector<Panel> m_panels;
    std::vector<bool> m_drawKeys;
    std::vector<bool> m_drawHandles;
    std::vector<double> m_dotRadius;
    bool m_drawHints = false;
    double m_legendTop = 0.0;
    double m_left = 0.0;
    double m_right = 0.0;

    // What the picture turned out to hold.
    bool m_hasKeys = false;
    bool m_hasHandles = false;
    bool m_hasOutside = false;
    bool m_hasJumps = false;
    bool m_hasSelection = false;
    VEM_FN::FCurveLib::Selection m_selection{nullptr}; // what is selected is asked of the parts themselves
};

} // namespace

std::string drawPlot(const std::vector<NamedCurve>& curves, const PlotOptions& options) {
    return Picture(curves, options).draw();
}

} // namespace fcurvetool
