#include "draw/Panel.h"

#include "draw/Colours.h"
#include "draw/Label.h"
#include "draw/PartNames.h"

#include <string>
#include <string_view>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

constexpr double kPlainDot = 4.0;

std::string ToPathData(const std::vector<Line>& lines) {
    std::string data;
    for (const Line& line : lines) data += Drawing::ToPathData(line);
    return data;
}

// What is drawn in the frame of a panel.
class FigureDrawing {
public:
    FigureDrawing(Svg& svg, const Scene& scene, const Frame& frame, std::string clip)
        : m_svg(svg), m_scene(scene), m_frame(frame), m_clip(std::move(clip)) {}

    void drawUnknown(const Figure& figure) const {
        for (const UnknownSpan& span : figure.spans) {
            m_svg.open("g", {{"class", "unknown"}, {"fill", kAlarmColour}});
            m_svg.leaf("title", {},
                       span.expression.empty() ? "no interpolator" : "unknown expression: " + span.expression);
            m_svg.leaf("rect", {{"x", span.left},
                                {"y", m_frame.top},
                                {"width", span.right - span.left},
                                {"height", m_frame.bottom - m_frame.top},
                                {"fill-opacity", 0.08}});
            if (span.right - span.left > kLegendSize)
                m_svg.leaf("text",
                           {{"x", (span.left + span.right) / 2.0},
                            {"y", m_frame.top + kLegendSize + 2.0},
                            {"text-anchor", "middle"},
                            {"font-size", kLegendSize},
                            {"font-weight", "bold"}},
                           "?");
            m_svg.close();
        }
    }

    // Wide and pale, so that it shows on both sides of what lies on it.
    void drawBefore(const Figure& figure) const {
        if (figure.before.empty()) return;
        m_svg.open("g", {{"class", "before"},
                         {"stroke", m_scene.looks[figure.look].colour},
                         {"stroke-opacity", 0.3},
                         {"fill", "none"},
                         {"clip-path", "url(#" + m_clip + ")"}});
        m_svg.leaf("path", {{"d", ToPathData(figure.before)}, {"stroke-width", 7.0}, {"stroke-linejoin", "round"}});
        for (const Dot& dot : figure.oldDots)
            m_svg.leaf("circle", {{"cx", dot.at.x},
                                  {"cy", dot.at.y},
                                  {"r", 4.5},
                                  {"fill", "#ffffff"},
                                  {"stroke-width", 1.3},
                                  {"stroke-opacity", 0.6}});
        m_svg.close();
    }

    void drawCurve(const Figure& figure) const {
        const Look& look = m_scene.looks[figure.look];
        m_svg.open("g", {{"class", "curve"}, {"stroke", look.colour}, {"fill", "none"}});
        m_svg.open("g", {{"clip-path", "url(#" + m_clip + ")"}});
        drawLines(figure);
        drawHandles(figure);
        m_svg.close();
        if (look.hasDots && !figure.dots.empty()) {
            m_svg.open("g", {{"class", "keys"},
                             {"fill", look.colour},
                             {"stroke", look.dotRadius == kPlainDot ? "#ffffff" : "none"}});
            for (const Dot& dot : figure.dots) DrawDot(m_svg, dot, look.dotRadius);
            m_svg.close();
        }
        for (const Dot& dot : figure.dots)
            if (m_scene.options.selection && dot.isSelected)
                m_svg.leaf("circle", {{"class", "selected"},
                                      {"cx", dot.at.x},
                                      {"cy", dot.at.y},
                                      {"r", 6.5},
                                      {"stroke", kTextColour},
                                      {"stroke-width", 1.6}});
        std::string exits;
        for (const Exit& exit : figure.exits)
            exits +=
                Drawing::ToPathData(ExitTriangle({exit.x, exit.isUp ? m_frame.top : m_frame.bottom}, exit.isUp)) + "Z";
        if (!exits.empty())
            m_svg.leaf("path", {{"class", "cut"}, {"d", exits}, {"fill", look.colour}, {"stroke", "#ffffff"}});
        m_svg.close();
    }

private:
    void drawLines(const Figure& figure) const {
        const Look& look = m_scene.looks[figure.look];
        if (!figure.jumps.empty())
            m_svg.leaf("path", {{"class", "jump"},
                                {"d", ToPathData(figure.jumps)},
                                {"stroke-width", 1.2},
                                {"stroke-dasharray", "2 3"},
                                {"stroke-opacity", 0.7}});
        if (!figure.outside.empty())
            m_svg.leaf("path", {{"class", "outside"},
                                {"d", ToPathData(figure.outside)},
                                {"stroke-width", 1.6},
                                {"stroke-dasharray", "6 4"},
                                {"stroke-opacity", 0.6}});
        if (!figure.unknown.empty())
            m_svg.leaf("path", {{"class", "unknown"},
                                {"d", ToPathData(figure.unknown)},
                                {"stroke-width", 1.6},
                                {"stroke-dasharray", "1 4"},
                                {"stroke-linecap", "round"}});
        if (!figure.between.empty())
            m_svg.leaf("path", {{"class", "line"},
                                {"d", ToPathData(figure.between)},
                                {"stroke-width", look.isSelected ? 4.0
                                                 : look.hasDots  ? 2.0
                                                                 : 1.5},
                                {"stroke-linejoin", "round"}});
    }

    void drawHandles(const Figure& figure) const {
        if (figure.handles.empty()) return;
        std::string lines;
        for (const Handle& handle : figure.handles) lines += Drawing::ToPathData({handle.key, handle.tip});
        m_svg.leaf("path", {{"class", "handles"}, {"d", lines}, {"stroke-width", 1.0}, {"stroke-opacity", 0.75}});
        m_svg.open("g", {{"fill", "#ffffff"}, {"stroke-width", 1.2}});
        for (const Handle& handle : figure.handles)
            m_svg.leaf("rect", {{"class", "handle"},
                                {"x", handle.tip.x - 2.5},
                                {"y", handle.tip.y - 2.5},
                                {"width", 5.0},
                                {"height", 5.0}});
        m_svg.close();
    }

    Svg& m_svg;
    const Scene& m_scene;
    const Frame& m_frame;
    std::string m_clip; // the identifier
};

class Panel {
public:
    Panel(Svg& svg, const Scene& scene, const Layout& layout, std::size_t number)
        : m_svg(svg), m_scene(scene), m_layout(layout), m_panel(scene.panels[number]),
          m_ticks(layout.panels[number].ticks), m_frame(layout.panels[number].frame),
          m_clip("panel" + std::to_string(number + 1)) {}

    void draw(const std::vector<Figure>& figures, bool namesParts) const {
        m_svg.open("g", {{"class", "panel"}});
        m_svg.open("clipPath", {{"id", m_clip}});
        m_svg.leaf("rect", {{"x", m_frame.left},
                            {"y", m_frame.top},
                            {"width", m_frame.right - m_frame.left},
                            {"height", m_frame.bottom - m_frame.top}});
        m_svg.close();
        drawAxes();
        if (figures.empty())
            m_svg.leaf("text",
                       {{"x", (m_frame.left + m_frame.right) / 2.0},
                        {"y", (m_frame.top + m_frame.bottom) / 2.0 - kTitleSize},
                        {"text-anchor", "middle"},
                        {"font-size", kTitleSize},
                        {"fill", kFaintTextColour}},
                       "no curves");
        const FigureDrawing drawing(m_svg, m_scene, m_frame, m_clip);
        for (const Figure& figure : figures) drawing.drawUnknown(figure);
        for (const Figure& figure : figures) drawing.drawBefore(figure);
        for (const Figure& figure : figures) drawing.drawCurve(figure);
        if (namesParts && !figures.empty()) DrawPartNames(m_svg, m_scene, figures, m_frame);
        m_svg.close();
    }

private:
    void drawAxes() const {
        m_svg.open("g", {{"class", "axes"}, {"font-size", kTextSize}, {"fill", kFaintTextColour}});
        std::string grid;
        for (const Tick& tick : m_layout.ticks.marks) {
            const double x = m_frame.toX(tick.value);
            grid += Drawing::ToPathData({{x, m_frame.top}, {x, m_frame.bottom}});
        }
        for (const Tick& tick : m_ticks.marks) {
            const double y = m_frame.toY(tick.value);
            grid += Drawing::ToPathData({{m_frame.left, y}, {m_frame.right, y}});
            m_svg.leaf("text", {{"x", m_frame.left - 7.0}, {"y", y + 4.2}, {"text-anchor", "end"}}, tick.label);
        }
        m_svg.leaf("path", {{"d", grid}, {"stroke", kGridColour}});
        if (m_frame.values.low < 0.0 && m_frame.values.high > 0.0) {
            const double y = m_frame.toY(0.0);
            m_svg.leaf("path",
                       {{"d", Drawing::ToPathData({{m_frame.left, y}, {m_frame.right, y}})}, {"stroke", kZeroColour}});
        }
        m_svg.leaf("path", {{"d", Drawing::ToPathData({{m_frame.left, m_frame.top},
                                                       {m_frame.left, m_frame.bottom},
                                                       {m_frame.right, m_frame.bottom}})},
                            {"stroke", kAxisColour},
                            {"fill", "none"}});
        drawTitle();
        if (!m_panel.heading.empty())
            m_svg.leaf("text",
                       {{"x", m_frame.left},
                        {"y", m_frame.top - 7.0},
                        {"font-size", kLegendSize},
                        {"font-weight", "bold"},
                        {"fill", m_scene.looks[m_panel.curves.front().look].colour}},
                       Fit(m_panel.heading, kLegendSize, m_frame.right - m_frame.left));
        m_svg.close();
    }

    void drawTitle() const {
        std::vector<std::string> title = AxisTitle(m_panel.quantity);
        const double room = m_frame.bottom - m_frame.top + kPanelGap;
        if (m_ticks.exponent != 0) {
            // The factor belongs to the numbers: it is never cut off, rather the unit is.
            const std::string factor = ExponentText(m_ticks.exponent);
            const bool fits = EstimateTextWidth(title.back() + factor, kTextSize) <= room;
            title.back() = fits ? title.back() + factor : factor;
        }
        for (std::size_t line = 0; line < title.size(); ++line) {
            const double x =
                kMargin + kTextSize * static_cast<double>(line + 1) - 4.0 + 2.0 * static_cast<double>(line);
            const double y = (m_frame.top + m_frame.bottom) / 2.0;
            m_svg.leaf("text",
                       {{"transform", "translate(" + ToFixedText(x, 2) + " " + ToFixedText(y, 2) + ") rotate(-90)"},
                        {"text-anchor", "middle"}},
                       Fit(title[line], kTextSize, room));
        }
    }

    Svg& m_svg;
    const Scene& m_scene;
    const Layout& m_layout;
    const PanelScene& m_panel;
    const Ticks& m_ticks;
    const Frame& m_frame;
    std::string m_clip;
};

} // namespace

void DrawPanel(Svg& svg, const Scene& scene, const Layout& layout, std::size_t number,
               const std::vector<Figure>& figures) {
    Panel(svg, scene, layout, number).draw(figures, scene.options.parts && number == 0);
}

void DrawDot(Svg& svg, const Dot& dot, double radius) {
    svg.open("g", {{"class", dot.isBreakdown ? "key breakdown" : "key"}});
    if (!dot.hint.empty()) svg.leaf("title", {}, dot.hint);
    if (dot.isBreakdown) {
        const double half = radius * 1.5;
        const Pixel& at = dot.at;
        svg.leaf("path",
                 {{"d", ToPathData({{at.x, at.y - half}, {at.x + half, at.y}, {at.x, at.y + half}, {at.x - half, at.y}})
                            + "Z"}});
    } else {
        svg.leaf("circle", {{"cx", dot.at.x}, {"cy", dot.at.y}, {"r", radius}});
    }
    if (dot.isLocked && radius >= 3.0)
        svg.leaf("rect", {{"class", "locked"},
                          {"x", dot.at.x - 2.8},
                          {"y", dot.at.y - 0.9},
                          {"width", 5.6},
                          {"height", 1.8},
                          {"fill", "#ffffff"},
                          {"stroke", "none"}});
    svg.close();
}

Line ExitTriangle(const Pixel& tip, bool isUp) {
    const double base = tip.y + (isUp ? 7.0 : -7.0);
    return {tip, {tip.x + 5.0, base}, {tip.x - 5.0, base}};
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
