#include "draw/Figure.h"

#include "FCurveLib/Selection.h"
#include "draw/Label.h"
#include "draw/Simplify.h"
#include "tools/CurveTracer.h"

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

constexpr double kTolerance = 0.1; // pixels between what is drawn and the points it was made from
constexpr double kLongestHandle = 10000.0;

using Place = ViewPolyline::Place;

// The line of a curve, within a panel.
class FramedLine {
public:
    FramedLine(const FCurve& curve, Quantity quantity, const Frame& frame) : m_frame(frame) {
        const CurveView view{frame.frames.low,  frame.frames.high,        frame.values.low,
                             frame.values.high, frame.right - frame.left, frame.bottom - frame.top};
        ViewLine(curve, view, m_line, quantity);
    }

    // The strokes of some places, simplified; what is no longer than a point is left out.
    std::vector<Line> strokes(std::initializer_list<Place> places) const {
        std::vector<Line> lines;
        for (const ViewPolyline::Stroke& stroke : m_line.strokes) {
            if (std::find(places.begin(), places.end(), stroke.place) == places.end()) continue;
            Line pixels;
            pixels.reserve(stroke.count);
            for (std::size_t i = 0; i < stroke.count; ++i) pixels.push_back(toPanel(m_line.points[stroke.first + i]));
            const auto isAtStart = [&pixels](const Pixel& pixel) {
                return std::hypot(pixel.x - pixels.front().x, pixel.y - pixels.front().y) < kTolerance;
            };
            if (!std::all_of(pixels.begin(), pixels.end(), isAtStart)) lines.push_back(Simplify(pixels, kTolerance));
        }
        return lines;
    }

    std::vector<Line> jumps() const {
        std::vector<Line> lines;
        for (const ViewPolyline::Jump& jump : m_line.jumps)
            lines.push_back({toPanel({jump.x, jump.from}), toPanel({jump.x, jump.to})});
        return lines;
    }

private:
    Pixel toPanel(const Vector2D<double>& point) const {
        return {RoundPixel(m_frame.left + point.x), RoundPixel(m_frame.top + point.y)};
    }

    const Frame& m_frame;
    ViewPolyline m_line;
};

template<class MakeHint>
std::vector<Dot> MakeDots(const FCurve& curve, const Frame& frame, const MakeHint& makeHint) {
    const Selection selection(nullptr); // asked of the parts themselves
    std::vector<Dot> dots;
    ForEachKey(curve, frame.frames, [&](const Keyframe& key) {
        const Pixel at = frame.toPixel({key.getX(), key.getY()});
        if (at.y < frame.top - 1.0 || at.y > frame.bottom + 1.0) return;
        dots.push_back(
            {at, makeHint(key), key.isBreakdown(), key.getProperty("fc_lock")[0] != '\0', selection.isSelected(key)});
    });
    return dots;
}

std::vector<Handle> MakeHandles(const FCurve& curve, const Frame& frame) {
    std::vector<Handle> handles;
    ForEachHandle(curve, frame.frames, [&](const Keyframe& key, const Sample& tip, bool isIn) {
        const Pixel start = frame.toPixel({key.getX(), key.getY()});
        double dx = frame.toX(tip.x) - start.x;
        double dy = (key.getY() - tip.y) / frame.valuesPerPixel();
        const double length = std::max(std::fabs(dx), std::fabs(dy));
        if (length > kLongestHandle) {
            dx *= kLongestHandle / length;
            dy *= kLongestHandle / length;
        }
        handles.push_back({start, {start.x + dx, start.y + dy}, isIn});
    });
    return handles;
}

} // namespace

Figure::Figure(const Scene& scene, const PanelScene& panel, const PanelCurve& curve, const Frame& frame)
    : look(curve.look) {
    const Look& source = scene.looks[look];
    const FramedLine line(*source.curve, panel.quantity, frame);
    between = line.strokes({ViewPolyline::BetweenKeys});
    outside = line.strokes({ViewPolyline::BeforeKeys, ViewPolyline::AfterKeys});
    unknown = line.strokes({ViewPolyline::Unknown});
    jumps = line.jumps();
    findExits(frame);
    if (source.before)
        before = FramedLine(*source.before, panel.quantity, frame)
                     .strokes({ViewPolyline::BeforeKeys, ViewPolyline::BetweenKeys, ViewPolyline::AfterKeys,
                               ViewPolyline::Unknown});
    findSpans(*source.curve, frame);
    if (panel.quantity != Quantity::Value) return;
    if (source.hasHandles) handles = MakeHandles(*source.curve, frame);
    const auto makeHint = [&](const Keyframe& key) {
        return scene.hasHints
                   ? source.name + ": frame " + ToBriefText(key.getX()) + ", value " + ToBriefText(key.getY())
                   : std::string();
    };
    if (source.hasDots || scene.options.selection) dots = MakeDots(*source.curve, frame, makeHint);
    if (source.before && source.hasOldDots)
        oldDots = MakeDots(*source.before, frame, [](const Keyframe&) { return std::string(); });
}

void Figure::findExits(const Frame& frame) {
    constexpr double kBeyond = 2.0;
    constexpr double kApart = 12.0;
    const auto add = [this](double x, bool isUp) {
        const bool isTaken = std::any_of(exits.begin(), exits.end(), [&](const Exit& other) {
            return other.isUp == isUp && std::fabs(other.x - x) < kApart;
        });
        if (!isTaken) exits.push_back({x, isUp});
    };
    for (const auto* const lines : {&between, &outside}) {
        for (const Line& line : *lines) {
            for (std::size_t i = 0; i + 1 < line.size(); ++i) {
                const Pixel& a = line[i];
                const Pixel& b = line[i + 1];
                for (const bool isUp : {true, false}) {
                    const double edge = isUp ? frame.top : frame.bottom;
                    const double from = isUp ? edge - a.y : a.y - edge; // above 0: outside
                    const double to = isUp ? edge - b.y : b.y - edge;
                    if ((from > 0.0) == (to > 0.0) || std::max(from, to) < kBeyond) continue;
                    add(a.x + (b.x - a.x) * from / (from - to), isUp);
                }
            }
        }
    }
}

void Figure::findSpans(const FCurve& curve, const Frame& frame) {
    for (auto it = curve.findSegment(frame.frames.low); it != curve.end(); ++it) {
        const auto leftKey = it->getLeftKey();
        const auto rightKey = it->getRightKey();
        if (leftKey && leftKey->getX() > frame.frames.high) break;
        if (!IsUnknown(*it)) continue;
        const double left = leftKey ? std::max(frame.left, frame.toX(leftKey->getX())) : frame.left;
        const double right = rightKey ? std::min(frame.right, frame.toX(rightKey->getX())) : frame.right;
        const auto interpolator = it->getInterpolator();
        const std::string expression = interpolator ? interpolator->getExpression() : "";
        if (!spans.empty() && spans.back().expression == expression && left - spans.back().right < 1.0)
            spans.back().right = right;
        else
            spans.push_back({left, right, expression});
    }
}

void Figure::tellMarks(const Look& source, std::set<Mark>& marks) const {
    for (const Dot& dot : dots) {
        if (dot.isSelected) marks.insert(Mark::SelectedKey);
        if (!source.hasDots) continue;
        marks.insert(dot.isBreakdown ? Mark::Breakdown : Mark::Key);
        if (dot.isLocked) marks.insert(Mark::LockedKey);
    }
    if (!handles.empty()) marks.insert(Mark::Handle);
    if (!outside.empty()) marks.insert(Mark::Outside);
    if (!jumps.empty()) marks.insert(Mark::Jump);
    if (!before.empty()) marks.insert(Mark::Before);
    if (!spans.empty()) marks.insert(Mark::Unknown);
    if (!exits.empty()) marks.insert(Mark::Cut);
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
