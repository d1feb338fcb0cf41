#include "draw/PartNames.h"

#include "draw/Colours.h"
#include "draw/Label.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string_view>
#include <tuple>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

constexpr double kDotRoom = 5.0; // around the middle of a dot or a handle's tip

struct Box {
    double left;
    double top;
    double right;
    double bottom;
};

bool Overlap(const Box& a, const Box& b) {
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

// Whether the line from a to b meets the box, by clipping it (Liang and Barsky).
bool Meets(const Box& box, const Pixel& a, const Pixel& b) {
    double from = 0.0;
    double to = 1.0;
    const auto clip = [&](double start, double delta, double low, double high) {
        if (delta == 0.0) return low < start && start < high;
        const double enter = ((delta > 0.0 ? low : high) - start) / delta;
        const double leave = ((delta > 0.0 ? high : low) - start) / delta;
        from = std::max(from, enter);
        to = std::min(to, leave);
        return from < to;
    };
    return clip(a.x, b.x - a.x, box.left, box.right) && clip(a.y, b.y - a.y, box.top, box.bottom);
}

class PartNames {
public:
    PartNames(Svg& svg, const std::vector<Figure>& figures, const Frame& frame) : m_svg(svg), m_frame(frame) {
        for (const Figure& figure : figures) {
            for (const auto* const lines :
                 {&figure.between, &figure.outside, &figure.unknown, &figure.jumps, &figure.before})
                m_lines.insert(m_lines.end(), lines->begin(), lines->end());
            for (const Dot& dot : figure.dots) take(dot.at);
            for (const Handle& handle : figure.handles) {
                m_lines.push_back({handle.key, handle.tip});
                take(handle.tip);
            }
        }
    }

    // Writes the name near the first of these points beside which it has room.
    void add(std::string_view name, const std::vector<Pixel>& points) {
        constexpr double kAir = 3.0;
        const double width = EstimateTextWidth(name, kTextSize);
        for (const double away : {4.0, 10.0, 18.0, 28.0}) {
            for (const Pixel& at : points) {
                for (const Pixel& middle : around(at, width, away)) {
                    const Box box = {middle.x - width / 2.0, middle.y - kTextSize / 2.0, middle.x + width / 2.0,
                                     middle.y + kTextSize / 2.0};
                    if (!isFree({box.left - kAir, box.top - 1.0, box.right + kAir, box.bottom + 1.0})) continue;
                    m_boxes.push_back(box);
                    m_svg.leaf("text", {{"x", middle.x}, {"y", box.bottom - 2.5}}, name);
                    return;
                }
            }
        }
    }

private:
    // The middles of texts of that width beside a point.
    static std::vector<Pixel> around(const Pixel& at, double width, double away) {
        const double x = width / 2.0 + away;
        const double y = kTextSize / 2.0 + away;
        const double slanted = width / 2.0 + away / 2.0;
        return {{at.x, at.y - y},           {at.x, at.y + y},           {at.x + x, at.y},
                {at.x - x, at.y},           {at.x + slanted, at.y - y}, {at.x - slanted, at.y - y},
                {at.x + slanted, at.y + y}, {at.x - slanted, at.y + y}};
    }

    void take(const Pixel& at) {
        m_boxes.push_back({at.x - kDotRoom, at.y - kDotRoom, at.x + kDotRoom, at.y + kDotRoom});
    }

    bool isFree(const Box& box) const {
        if (box.left < m_frame.left || box.right > m_frame.right || box.top < m_frame.top
            || box.bottom > m_frame.bottom)
            return false;
        if (std::any_of(m_boxes.begin(), m_boxes.end(), [&](const Box& other) { return Overlap(box, other); }))
            return false;
        return std::none_of(m_lines.begin(), m_lines.end(), [&](const Line& line) {
            for (std::size_t i = 0; i + 1 < line.size(); ++i)
                if (Meets(box, line[i], line[i + 1])) return true;
            return false;
        });
    }

    Svg& m_svg;
    const Frame& m_frame;
    std::vector<Line> m_lines;
    std::vector<Box> m_boxes;
};

// The key whose shorter handle is the longest, for the names of both need room; the first key where no handles are
// drawn. Null without keys.
const Dot* DotToName(const Figure& figure) {
    const Dot* best = nullptr;
    std::tuple<int, double> bestRank(-1, 0.0);
    for (const Dot& dot : figure.dots) {
        int count = 0;
        double shortest = 0.0;
        for (const Handle& handle : figure.handles) {
            if (handle.key.x != dot.at.x) continue;
            const double length = std::fabs(handle.tip.x - handle.key.x);
            shortest = count++ == 0 ? length : std::min(shortest, length);
        }
        if (const std::tuple rank(count, shortest); rank > bestRank) {
            best = &dot;
            bestRank = rank;
        }
    }
    return best;
}

} // namespace

void DrawPartNames(Svg& svg, const Scene& scene, const std::vector<Figure>& figures, const Frame& frame) {
    const Figure& figure = figures.front();
    const FCurve& curve = *scene.looks[figure.look].curve;
    svg.open("g", {{"class", "parts"},
                   {"font-size", kTextSize},
                   {"font-style", "italic"},
                   {"text-anchor", "middle"},
                   {"fill", kTextColour}});
    PartNames names(svg, figures, frame);
    if (const Dot* const dot = DotToName(figure)) {
        for (const Handle& handle : figure.handles)
            if (handle.key.x == dot->at.x) names.add(handle.isIn ? "in tangent" : "out tangent", {handle.tip});
        names.add("keyframe", {dot->at});
    }
    for (const Segment& segment : curve) {
        const auto left = segment.getLeftKey();
        const auto right = segment.getRightKey();
        const double from = std::max(left ? left->getX() : frame.frames.low, frame.frames.low);
        const double to = std::min(right ? right->getX() : frame.frames.high, frame.frames.high);
        if (!(from < to)) continue;
        std::vector<Pixel> points;
        for (const double t : {0.5, 0.4, 0.6, 0.3, 0.7}) {
            const double x = from + (to - from) * t;
            points.push_back(frame.toPixel({x, curve.eval(x)}));
        }
        names.add(left && right ? "segment" : left ? "trailing segment" : "leading segment", points);
    }
    svg.close();
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
