#include "FCurveLib/ViewLine.h"

#include "FCurveLib/CurveOverview.h"
#include "tools/CurveTracer.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace {

using Pixel = Vector2D<double>;

constexpr double kMargin = 16.0; // pixels above and below the view in which the line is kept
constexpr std::size_t kMostPointsInColumn = 4;
constexpr double kNearEnough = 0.14; // pixels

// Makes strokes of a curve's points: cuts off what is far above or below the view, and leaves at most four points in a
// column.
class LineBuilder final : public Private::TraceSink {
public:
    LineBuilder(const CurveView& view, ViewPolyline& out) : m_view(view), m_out(out), m_lowest(view.height + kMargin) {}

    void add(ViewPolyline::Place place, double x, double y) override {
        const Pixel pixel{x, m_view.toPixelY(y)};
        if (!m_isOpen || place != m_place) m_isInside = false;
        m_place = place;
        if (!m_isOpen) {
            if (isInside(pixel)) beginStroke(pixel);
        } else {
            addStretch(m_last, pixel);
        }
        m_isOpen = true;
        m_last = pixel;
    }

    void jump(double x, double from, double to) override {
        const double start = m_view.toPixelY(from);
        const double end = m_view.toPixelY(to);
        const double low = std::clamp(start, -kMargin, m_lowest);
        const double high = std::clamp(end, -kMargin, m_lowest);
        if (low != high) m_out.jumps.push_back({x, low, high});
    }

    void cut() override { m_isOpen = m_isInside = false; }

    void finish() {
        dropPoint();
        closeColumn();
        dropPoint(); // where the column ended in another place
        std::size_t end = m_out.points.size();
        for (auto stroke = m_out.strokes.rbegin(); stroke != m_out.strokes.rend(); ++stroke) {
            stroke->count = end - stroke->first;
            end = stroke->first;
        }
    }

private:
    bool isInside(const Pixel& pixel) const noexcept { return pixel.y >= -kMargin && pixel.y <= m_lowest; }

    // What of the line from a to b is not too far away.
    void addStretch(const Pixel& a, const Pixel& b) {
        const auto crossing = [&](double edge) {
            return Pixel{a.x + (b.x - a.x) * ((edge - a.y) / (b.y - a.y)), edge};
        };
        if (std::max(a.y, b.y) < -kMargin || std::min(a.y, b.y) > m_lowest) {
            m_isInside = false;
            return;
        }
        if (!m_isInside) beginStroke(isInside(a) ? a : crossing(a.y < -kMargin ? -kMargin : m_lowest));
        if (isInside(b)) {
            push(b);
        } else {
            push(crossing(b.y < -kMargin ? -kMargin : m_lowest));
            m_isInside = false;
        }
    }

    void beginStroke(const Pixel& pixel) {
        dropPoint();
        enterColumn(pixel);
        dropPoint(); // where the last column ended in another place
        m_out.strokes.push_back({m_place, m_out.points.size(), 0});
        m_out.points.push_back(pixel);
        m_isInside = true;
    }
    // A stroke of one point is no line.
    void dropPoint() {
        if (m_out.strokes.empty() || m_out.strokes.back().first + 1 != m_out.points.size()) return;
        m_out.strokes.pop_back();
        m_out.points.pop_back();
        m_columnBegin = std::min(m_columnBegin, m_out.points.size());
        m_strokesBefore = std::min(m_strokesBefore, m_out.strokes.size());
    }
    void push(const Pixel& pixel) {
        if (pixel == m_out.points.back()) return;
        enterColumn(pixel);
        m_out.points.push_back(pixel);
    }

    // --- columns -----------------------------------------------------------------------------------------------------

    void enterColumn(const Pixel& pixel) {
        const double index = std::floor(pixel.x);
        if (index == m_column) return;
        closeColumn();
        m_column = index;
        m_columnBegin = m_out.points.size();
        m_strokesBefore = m_out.strokes.size();
    }

    // A stroke, or what of it lies in the column, with the point before from which it comes.
    struct Part {
        const Pixel* before; // null: it begins here
        std::size_t begin;
        std::size_t end;
    };

    void closeColumn() {
        const std::size_t end = m_out.points.size();
        if (end - m_columnBegin <= kMostPointsInColumn) return;
        std::vector<ViewPolyline::Stroke>& strokes = m_out.strokes;
        std::size_t begun = m_strokesBefore; // the first stroke that begins after the column does
        const bool isNew = begun < strokes.size() && strokes[begun].first == m_columnBegin;
        if (isNew) ++begun;
        const Pixel previous = isNew ? Pixel() : m_out.points[m_columnBegin - 1];
        m_parts.clear();
        m_parts.push_back({isNew ? nullptr : &previous, m_columnBegin, end});
        for (std::size_t i = begun; i < strokes.size(); ++i) {
            m_parts.back().end = strokes[i].first;
            m_parts.push_back({nullptr, strokes[i].first, end});
        }
        m_kept.clear();
        for (const Part& part : m_parts) {
            if (!part.before) m_kept.push_back(part.begin);
            if (!isKept(part.end - 1)) m_kept.push_back(part.end - 1);
        }
        const ViewPolyline::Place place = strokes.back().place;
        if (!keepFarthest()) merge(begun, isNew ? nullptr : &previous);
        std::sort(m_kept.begin(), m_kept.end());
        // What is kept moves to the column's start.
        std::size_t to = m_columnBegin;
        std::size_t stroke = begun;
        for (const std::size_t from : m_kept) {
            for (; stroke < strokes.size() && strokes[stroke].first <= from; ++stroke) strokes[stroke].first = to;
            m_out.points[to++] = m_out.points[from];
        }
        m_out.points.resize(to);
        if (place == strokes.back().place) return;
        // The line goes on as another from the column's second point: what is between it and the first, others cover.
        if (isNew)
            strokes.back().place = place;
        else
            strokes.push_back({place, m_columnBegin + 1, 0});
    }

    // Keeps what the contract promises where four points are too few: the first and the last, the highest and the
    // lowest. All strokes become one.
    void merge(std::size_t begun, const Pixel* previous) {
        std::vector<ViewPolyline::Stroke>& strokes = m_out.strokes;
        const bool isOnePlace = strokes.back().place == strokes[begun - 1].place;
        strokes.resize(begun);
        while (!m_out.jumps.empty() && m_out.jumps.back().x >= m_column) m_out.jumps.pop_back();
        const auto begin = m_out.points.begin() + static_cast<std::ptrdiff_t>(m_columnBegin);
        const auto isHigher = [](const Pixel& a, const Pixel& b) { return a.y < b.y; };
        const auto extremes = std::minmax_element(begin, m_out.points.end(), isHigher);
        // The line may as well go on from an extreme as from a last point that is next to it.
        const auto last = std::max(extremes.first, extremes.second);
        const auto isNextTo = [&](const Pixel& pixel) { return squaredDistance(pixel, *last, *last) <= 0.1 * 0.1; };
        const bool endsThere = last != begin && std::all_of(last, m_out.points.end(), isNextTo);
        const auto end = static_cast<std::size_t>((endsThere ? last + 1 : m_out.points.end()) - m_out.points.begin());
        const auto keep = [&](const Pixel* before) {
            m_parts.assign(1, {before, m_columnBegin, end});
            m_kept = {end - 1};
            if (!before) m_kept.push_back(m_columnBegin);
            for (const auto extreme : {extremes.first, extremes.second}) {
                const auto i = static_cast<std::size_t>(extreme - m_out.points.begin());
                if (!isKept(i)) m_kept.push_back(i);
            }
            keepFarthest();
            return findFarthest().first;
        };
        // Where all are close without the first point, it is not needed either.
        constexpr double closeEnough = 0.2;
        const double farthest = keep(nullptr);
        if (!isOnePlace || !previous || farthest <= kNearEnough * kNearEnough) return;
        if (const double other = keep(previous); other > closeEnough * closeEnough || other > farthest) keep(nullptr);
    }

    // Keeps what is farthest from the line through the points that are kept. Whether so many are enough.
    bool keepFarthest() {
        constexpr double near = 0.02;
        std::pair<double, std::size_t> farthest = findFarthest();
        while (farthest.first > near * near && m_kept.size() < kMostPointsInColumn) {
            m_kept.push_back(farthest.second);
            farthest = findFarthest();
        }
        return farthest.first <= kNearEnough * kNearEnough && m_kept.size() <= kMostPointsInColumn;
    }

    bool isKept(std::size_t i) const { return std::find(m_kept.begin(), m_kept.end(), i) != m_kept.end(); }

    // The point that is farthest from the line through those that are kept, and the square of how far.
    std::pair<double, std::size_t> findFarthest() const {
        std::pair<double, std::size_t> farthest{0.0, m_columnBegin};
        for (const Part& part : m_parts) {
            const Pixel* a = part.before;
            for (std::size_t from = part.begin; from < part.end;) {
                std::size_t to = from; // the next one that is kept
                while (!isKept(to)) ++to;
                const Pixel* const b = &m_out.points[to];
                for (std::size_t i = from; i < to; ++i) {
                    const double off = squaredDistance(m_out.points[i], *a, *b);
                    if (off > farthest.first) farthest = {off, i};
                }
                a = b;
                from = to + 1;
            }
        }
        return farthest;
    }

    static double squaredDistance(const Pixel& p, const Pixel& a, const Pixel& b) noexcept {
        const Pixel d = b - a;
        const double square = d.x * d.x + d.y * d.y;
        const double t = square > 0.0 ? std::clamp(((p.x - a.x) * d.x + (p.y - a.y) * d.y) / square, 0.0, 1.0) : 0.0;
        const Pixel off = p - a - t * d;
        return off.x * off.x + off.y * off.y;
    }

    const CurveView& m_view;
    ViewPolyline& m_out;
    double m_lowest; // pixel at which the line is cut off below the view
    Pixel m_last;
    ViewPolyline::Place m_place = ViewPolyline::BetweenKeys;
    bool m_isOpen = false;   // whether the curve goes on from the last point
    bool m_isInside = false; // whether the last stroke does

    double m_column = -1.0;
    std::size_t m_columnBegin = 0;   // its first point
    std::size_t m_strokesBefore = 0; // how many strokes had begun
    std::vector<Part> m_parts;       // these two: of the column that is closed
    std::vector<std::size_t> m_kept;
};

void MakeLine(const FCurve& curve, const Private::SegmentSummaries* summaries, ViewPolyline::Quantity quantity,
              const CurveView& view, ViewPolyline& out) {
    out.clear();
    if (!view.isValid()) return;
    const double margin = kMargin / view.pixelsPerValue();
    LineBuilder builder(view, out);
    Private::TraceCurve(
        curve, summaries, quantity,
        {view.left, view.right, view.width, view.bottom - margin, view.top + margin, view.pixelsPerValue()}, builder);
    builder.finish();
}

} // namespace

void ViewLine(const FCurve& curve, const CurveView& view, ViewPolyline& out, ViewPolyline::Quantity quantity) {
    MakeLine(curve, nullptr, quantity, view, out);
}

void ViewLine(CurveOverview& overview, const CurveView& view, ViewPolyline& out) {
    MakeLine(*overview.getCurve(), &overview.update(), ViewPolyline::Value, view, out);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
