#include "tools/CurveTracer.h"

#include "FCurveLib/Interpolator.h"
#include "interp/BezierMath.h"
#include "interp/Kinds.h"
#include "interp/Repeat.h"
#include "interp/Repetition.h"
#include "model/NotFinite.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <iterator>
#include <optional>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

using Point = Vector2D<double>; // x in frames or pixels, as told
using Place = ViewPolyline::Place;

// All in pixels.
constexpr double kTolerance = 0.1;      // between a line and its curve
constexpr double kVisibleJump = 0.25;   // lower ones are joined
constexpr double kNarrow = 0.25;        // segments of less width are told by their extents alone
constexpr std::size_t kFewSegments = 4; // of those in a column, for its extremes to stand where they are

constexpr double kStep = 0.1;        // frames between two looks at a formula
constexpr double kFewestLooks = 2.0; // a pixel
constexpr double kMostLooks = 16.0;
// Of two looks in a row, what lies between both in value is within a quarter of a pixel in x; the rest are extremes.
constexpr double kRepetitionLooks = 5.0;
constexpr int kMaxDepth = 8; // halvings between two looks

bool IsFinite(const Point& point) noexcept {
    return std::isfinite(point.y);
}

double Middle(double a, double b) noexcept {
    return a + (b - a) / 2.0;
}

class Tracer {
public:
    Tracer(const FCurve& curve, const SegmentSummaries* summaries, ViewPolyline::Quantity quantity,
           const TraceArea& area, TraceSink& sink)
        : m_curve(curve), m_summaries(summaries), m_quantity(quantity), m_area(area), m_sink(sink),
          m_pixelsPerFrame(area.width / (area.right - area.left)),
          m_budget(static_cast<long>(32.0 * area.width) + 10000) {}

    void run() {
        const SegmentMap& segments = Read::segments(m_curve);
        SegmentMap::Place place = segments.locate(m_area.left);
        if (m_summaries && Read::leftKey(Read::lastSegment(m_curve))) {
            if (!Read::leftKey(*place.segment)) {
                addSegment(*place.segment);
                segments.advance(place);
            }
            if (place.segment && Read::rightKey(*place.segment)) addSummaries(*m_summaries);
            place = segments.locate(m_area.right);
            if (!Read::leftKey(*place.segment) || Read::rightKey(*place.segment)) place.segment = nullptr;
        }
        for (; place.segment; segments.advance(place)) {
            const Keyframe* const left = Read::leftKey(*place.segment);
            if (left && left->getX() > m_area.right) break;
            addSegment(*place.segment);
        }
        finishNarrow();
    }

private:
    double toPixel(double frame) const noexcept {
        return std::clamp((frame - m_area.left) / (m_area.right - m_area.left) * m_area.width, 0.0, m_area.width);
    }
    double toFrame(double pixel) const noexcept {
        return pixel >= m_area.width ? m_area.right : m_area.left + pixel / m_area.width * (m_area.right - m_area.left);
    }
    bool isCoarse() const noexcept { return m_area.pixelsPerValue == 0.0; }
    bool isOutside(double low, double high) const noexcept { return low > m_area.top || high < m_area.bottom; }

    // --- the line ----------------------------------------------------------------------------------------------------

    struct Event {
        enum Type { Add, Jump, Cut } type;
        double x;
        double y; // of a jump: from
        double to;
    };

    void cut() {
        if (m_record) return m_record->push_back({Event::Cut, 0.0, 0.0, 0.0});
        if (m_isOpen) m_sink.cut();
        m_isOpen = false;
    }
    // x in pixels.
    void append(Place place, double x, double y) {
        if (!std::isfinite(y)) return cut();
        if (m_record) return m_record->push_back({Event::Add, x, y, 0.0});
        x = std::max(x, m_last.x); // deliberate: rounding never lets the line run backwards
        m_sink.add(place, x, y);
        m_last = {x, y};
        m_isOpen = true;
    }
    void appendJump(double x, double from, double to) {
        if (m_record) return m_record->push_back({Event::Jump, x, from, to});
        m_sink.jump(std::max(x, m_last.x), from, to);
        cut();
    }
    // Where a segment begins, the line goes on from the one before if both meet.
    void join(double x, double y) {
        if (!m_isOpen || !std::isfinite(y)) return;
        if (std::abs(y - m_last.y) * m_area.pixelsPerValue > kVisibleJump) appendJump(x, m_last.y, y);
    }

    // --- segments ----------------------------------------------------------------------------------------------------

    static Place placeOf(const Segment& segment) {
        const bool left = Read::leftKey(segment) != nullptr;
        const bool right = Read::rightKey(segment) != nullptr;
        return IsUnknown(segment) ? ViewPolyline::Unknown
               : left == right    ? ViewPolyline::BetweenKeys
               : left             ? ViewPolyline::AfterKeys
                                  : ViewPolyline::BeforeKeys;
    }

    void addSegment(const Segment& segment) {
        const Keyframe* const leftKey = Read::leftKey(segment);
        const Keyframe* const rightKey = Read::rightKey(segment);
        const double left = leftKey ? std::max(leftKey->getX(), m_area.left) : m_area.left;
        const double right = rightKey ? std::min(rightKey->getX(), m_area.right) : m_area.right;
        if (!(left < right)) return;
        if (leftKey && rightKey && (rightKey->getX() - leftKey->getX()) * m_pixelsPerFrame < kNarrow)
            addNarrow(segment);
        else
            addWide(segment, left, right);
    }

    void addWide(const Segment& segment, double left, double right) {
        finishNarrow();
        const Interpolator* const interpolator = Read::interpolator(segment);
        const KindRow& row = KindOf(interpolator);
        const Place place = placeOf(segment);
        const bool hasBoth = Read::hasBothKeys(segment);
        if (isCoarse()) return addCoarseLooks(place, segment, left, right);
        // Where one can see that values near a key are the key's own, every value is asked for.
        const bool isFine = GetEpsilon() * m_pixelsPerFrame > kTolerance / 2.0;
        if (hasBoth ? row.isStraight() : row.beyond == Beyond::Flat || row.beyond == Beyond::Handle) {
            const double start = Look(m_quantity, left, segment, interpolator);
            join(toPixel(left), start);
            append(place, toPixel(left), start);
            append(place, toPixel(right), Look(m_quantity, right, segment, interpolator));
        } else if (hasBoth && row.isBezier() && m_quantity == ViewPolyline::Value && !isFine) {
            addBezier(place, row.args(*interpolator, segment), left, right);
        } else {
            addLooks(place, segment, left, right);
        }
    }

    // --- Bezier segments ---------------------------------------------------------------------------------------------

    Point bezierPixel(const BezierPlace& at, const BezierArgs& args) const {
        return {toPixel(BezierX(at, args)), BezierY(at, args)};
    }

    void addBezier(Place place, const BezierArgs& args, double left, double right) {
        const BezierPlace from = SolveBezier(left, args);
        const BezierPlace to = SolveBezier(right, args);
        const Point a{toPixel(left), BezierY(from, args)};
        const Point b{toPixel(right), BezierY(to, args)};
        join(a.x, a.y);
        append(place, a.x, a.y);
        constexpr int mostThirds = 16;
        addBezierBetween(place, args, from, a, to, b, mostThirds);
        append(place, b.x, b.y);
    }

    // Between two places the curve leaves the chord by s (1 - s) (p + (q - p) s), a cubic that the values at the two
    // thirds tell; so it leaves it by max(|p|, |q|) / 4 at most.
    void addBezierBetween(Place place, const BezierArgs& args, const BezierPlace& from, const Point& a,
                          const BezierPlace& to, const Point& b, int depth) {
        constexpr double third = 1.0 / 3.0;
        const auto between = [&](double s) {
            return BezierPlace{from.t + s * (to.t - from.t), from.u + s * (to.u - from.u)};
        };
        const BezierPlace first = between(third);
        const BezierPlace second = between(2.0 * third);
        const Point c = bezierPixel(first, args);
        const Point d = bezierPixel(second, args);
        const Point off1{c.x - (a.x + third * (b.x - a.x)), c.y - (a.y + third * (b.y - a.y))};
        const Point off2{d.x - (b.x - third * (b.x - a.x)), d.y - (b.y - third * (b.y - a.y))};
        const auto bound = [](double o1, double o2) {
            return 1.125 * std::max(std::abs(2.0 * o1 - o2), std::abs(2.0 * o2 - o1));
        };
        const double offX = bound(off1.x, off2.x);
        const double offY = bound(off1.y, off2.y);
        const double pixelsY = offY * m_area.pixelsPerValue;
        if (!(offX * offX + pixelsY * pixelsY > kTolerance * kTolerance)) return;
        // However steep: no point is farther from the chord than both ends from each other in x, if the control points
        // show that no value is outside the chord's.
        const double rise = b.y - a.y;
        const auto isBetween = [&](double y) { return y >= std::min(a.y, b.y) && y <= std::max(a.y, b.y); };
        if (b.x - a.x <= kTolerance && isBetween(a.y + (rise + 4.5 * (2.0 * off1.y - off2.y)) / 3.0)
            && isBetween(b.y - (rise - 4.5 * (2.0 * off2.y - off1.y)) / 3.0))
            return;
        if (depth == 0 || !std::isfinite(pixelsY) || isOutside(std::min(a.y, b.y) - offY, std::max(a.y, b.y) + offY))
            return;
        addBezierBetween(place, args, from, a, first, c, depth - 1);
        append(place, c.x, c.y);
        addBezierBetween(place, args, first, c, second, d, depth - 1);
        append(place, d.x, d.y);
        addBezierBetween(place, args, second, d, to, b, depth - 1);
    }

    // --- segments that are looked at
    // -----------------------------------------------------------------------------------

    struct Looked {
        Place place;
        const Segment& segment;
        const Interpolator* interpolator;
    };

    Point look(const Looked& at, double x) const { return {x, Look(m_quantity, x, at.segment, at.interpolator)}; }
    void append(const Looked& at, const Point& point) { append(at.place, toPixel(point.x), point.y); }

    void addCoarseLooks(Place place, const Segment& segment, double left, double right) {
        const Looked at{place, segment, Read::interpolator(segment)};
        const double count = std::clamp(std::ceil((right - left) * m_pixelsPerFrame / 2.0), 4.0, 1e5);
        for (double i = 0.0; i < count; ++i) append(at, look(at, left + (right - left) * (i / count)));
        append(at, look(at, right));
    }

    void addLooks(Place place, const Segment& segment, double left, double right) {
        const Looked at{place, segment, Read::interpolator(segment)};
        const Point start = look(at, left);
        join(toPixel(left), start.y);
        append(at, start);
        const bool repeats =
            m_quantity == ViewPolyline::Value && !Read::hasBothKeys(segment) && KindOf(segment).repeats();
        const auto repetition = repeats ? Repetition::find(segment) : std::nullopt;
        if (repetition)
            addRepetition(at, *repetition, start, right);
        else
            lookBetween(at, start, right, std::clamp(1.0 / (m_pixelsPerFrame * kStep), kFewestLooks, kMostLooks));
    }

    // Appends what lies after a, which is appended, up to an x. Returns the last point.
    Point lookBetween(const Looked& at, Point a, double right, double looks) {
        const double left = a.x;
        const double count = std::max(std::ceil((right - left) * m_pixelsPerFrame * looks), 1.0);
        for (double i = 1.0; i <= count; ++i) {
            const Point b = look(at, i == count ? right : left + (right - left) * (i / count));
            refine(at, a, b, 0);
            append(at, b);
            a = b;
        }
        return a;
    }

    // Appends what lies strictly between a, which is appended, and b, which will be.
    void refine(const Looked& at, const Point& a, const Point& b, int depth) {
        const double x = Middle(a.x, b.x);
        if (!(a.x < x && x < b.x) || --m_budget < 0) return;
        const Point m = look(at, x);
        if (!IsFinite(a) && !IsFinite(b) && !IsFinite(m)) return;
        if (IsFinite(a) != IsFinite(b) && depth >= 2) {
            if (IsFinite(a))
                addEnd(at, a, b);
            else
                addStart(at, a, b);
            return;
        }
        if (IsFinite(a) && IsFinite(b) && IsFinite(m)) {
            if (isOutside(std::min({a.y, b.y, m.y}), std::max({a.y, b.y, m.y}))) return;
            const double rise = std::abs(b.y - a.y) * m_area.pixelsPerValue;
            const double off = std::abs(m.y - Middle(a.y, b.y)) * m_area.pixelsPerValue;
            if (off <= kTolerance && (rise <= 4.0 || depth >= 2)) return;
            if (depth == kMaxDepth) {
                if (rise > 1.0) addSteep(at, a, b);
                return;
            }
        } else if (depth == kMaxDepth) {
            if (!IsFinite(m)) cut();
            return;
        }
        refine(at, a, m, depth + 1);
        append(at, m);
        refine(at, m, b, depth + 1);
    }

    // The last finite point between a finite one and one that is not, in either order.
    Point lastFinite(const Looked& at, Point inside, Point outside) {
        constexpr int halvings = 24;
        for (int i = 0; i < halvings; ++i) {
            const Point m = look(at, Middle(inside.x, outside.x));
            (IsFinite(m) ? inside : outside) = m;
        }
        m_budget -= halvings;
        return inside;
    }
    void addEnd(const Looked& at, const Point& a, const Point& b) {
        const Point last = lastFinite(at, a, b);
        refine(at, a, last, 3);
        append(at, last);
        cut();
    }
    void addStart(const Looked& at, const Point& a, const Point& b) {
        cut();
        const Point first = lastFinite(at, b, a);
        append(at, first);
        refine(at, first, b, 3);
    }

    // Tells a jump from a steep slope: halving the stretch again and again makes a slope small.
    void addSteep(const Looked& at, const Point& a, const Point& b) {
        Point low = a;
        Point high = b;
        constexpr int halvings = 60;
        for (int i = 0; i < halvings; ++i) {
            const double x = Middle(low.x, high.x);
            if (!(low.x < x && x < high.x)) break;
            const Point m = look(at, x);
            --m_budget;
            if (!IsFinite(m)) {
                append(at, low);
                cut();
                append(at, high);
                return;
            }
            (std::abs(m.y - low.y) > std::abs(high.y - m.y) ? high : low) = m;
        }
        if (std::abs(high.y - low.y) < 0.25 * std::abs(b.y - a.y)) return;
        append(at, low);
        appendJump(toPixel(low.x), low.y, high.y);
        append(at, high);
    }

    // --- repetitions
    // ---------------------------------------------------------------------------------------------------

    // What Repeat.h asks, from summaries.
    struct Repeated {
        const FCurve& curve;
        const SegmentSummaries& summaries;
        const Repetition& repetition;
        ValueRange whole;

        double begin() const noexcept { return repetition.begin(); }
        double end() const noexcept { return repetition.end(); }
        void fold(ValueRange& extents, double from, double to, double shift) const {
            ValueRange part = whole;
            if (from > begin() || to < end()) {
                double low = kInfinity;
                double high = -kInfinity;
                summaries.foldExtents(curve, from, to, low, high);
                if (!(low <= high)) return;
                part = {low, high};
            }
            extents.fold(part.low + shift);
            extents.fold(part.high + shift);
        }
    };

    // A period may be narrower than a pixel: which extremes the looks did not meet, those of each column tell.
    void addRepetition(const Looked& at, const Repetition& repetition, Point a, double right) {
        SegmentSummaries made;
        if (!m_summaries) made.update(m_curve, -kInfinity, kInfinity);
        const SegmentSummaries& summaries = m_summaries ? *m_summaries : made;
        Repeated repeated{m_curve, summaries, repetition, {}};
        double low = kInfinity;
        double high = -kInfinity;
        summaries.foldExtents(m_curve, repeated.begin(), repeated.end(), low, high);
        if (low <= high) repeated.whole = {low, high};
        const bool mirrors = KindOf(at.interpolator).kind == Kind::Mirror;
        const double offset = KindOf(at.interpolator).kind == Kind::CycleOffset ? repetition.rise() : 0.0;
        std::vector<Event> events;
        for (double column = std::floor(toPixel(a.x)) + 1.0; a.x < right; ++column) {
            const double end = std::min(toFrame(column), right);
            if (!(end > a.x)) continue; // rounded
            events.clear();
            m_record = &events;
            const Point b = lookBetween(at, a, end, kRepetitionLooks);
            m_record = nullptr;
            ValueRange extents;
            if (mirrors)
                FoldMirror(repeated, a.x, end, extents);
            else
                FoldCycle(repeated, a.x, end, offset, extents);
            if (std::isfinite(a.y)) events.insert(events.begin(), {Event::Add, toPixel(a.x), a.y, 0.0});
            addExtreme(events, extents.low, std::less<>());
            addExtreme(events, extents.high, std::greater<>());
            replay(at.place, events);
            a = b;
        }
    }

    // An extreme that no look met lies next to the look that came nearest.
    template<class Exceeds>
    void addExtreme(std::vector<Event>& events, double extreme, const Exceeds& exceeds) const {
        const auto isLess = [&](const Event& e, const Event& f) {
            if (e.type != Event::Add || f.type != Event::Add) return f.type == Event::Add && e.type != Event::Add;
            return exceeds(f.y, e.y);
        };
        const auto nearest = std::max_element(events.begin(), events.end(), isLess);
        if (nearest == events.end() || nearest->type != Event::Add || !exceeds(extreme, nearest->y)) return;
        if (std::abs(extreme - nearest->y) * m_area.pixelsPerValue <= kTolerance) return;
        if (std::next(nearest) != events.end()) {
            events.insert(std::next(nearest), {Event::Add, nearest->x, extreme, 0.0});
        } else if (nearest != events.begin()) { // the last one begins the next column
            const double x = Middle(std::prev(nearest)->x, nearest->x);
            events.insert(nearest, {Event::Add, x, extreme, 0.0});
        }
    }

    void replay(Place place, const std::vector<Event>& events) {
        for (const Event& event : events) {
            if (event.type == Event::Add)
                append(place, event.x, event.y);
            else if (event.type == Event::Jump)
                appendJump(event.x, event.y, event.to);
            else
                cut();
        }
    }

    // --- narrow segments
    // -----------------------------------------------------------------------------------------------

    // What is seen of the narrow segments that begin in one pixel column.
    struct Column {
        double index;
        Point first; // in pixels
        Point last;
        Point low;
        Point high;
        std::size_t segments;
    };

    // The last narrow segment: where it ends, in pixels. It may be seen in two columns.
    struct Straddler {
        double end = -kInfinity;
        double low = kInfinity;
        double high = -kInfinity;
    };

    void addNarrow(const Segment& segment) {
        const SegmentSummary summary =
            m_quantity == ViewPolyline::Value ? Summarise(segment) : summariseSlopes(segment);
        addToColumn(summary, Read::rightKey(segment)->getX());
        m_lastNarrow = &segment;
        m_lastNarrowX = summary.x;
    }

    // Looks at a derivative between two keys. An extreme lies near the vertex of the parabola through the three looks
    // around it.
    SegmentSummary summariseSlopes(const Segment& segment) const {
        constexpr std::size_t pieces = 8;
        const Looked at{ViewPolyline::BetweenKeys, segment, Read::interpolator(segment)};
        const double left = Read::leftKey(segment)->getX();
        const double step = (Read::rightKey(segment)->getX() - left) / pieces;
        SegmentSummary summary{left, 0.0, kInfinity, -kInfinity};
        const auto fold = [&summary](double y) {
            if (!std::isfinite(y)) return;
            summary.low = std::min(summary.low, y);
            summary.high = std::max(summary.high, y);
        };
        std::array<Point, pieces + 1> looks;
        for (std::size_t i = 0; i <= pieces; ++i) {
            looks[i] = look(at, left + step * static_cast<double>(i));
            fold(looks[i].y);
        }
        for (std::size_t i = 1; i < pieces; ++i) {
            const double before = looks[i].y - looks[i - 1].y;
            const double after = looks[i + 1].y - looks[i].y;
            if (before * after < 0.0) fold(look(at, looks[i].x + step * 0.5 * (before + after) / (before - after)).y);
        }
        summary.y = looks[0].y;
        return summary;
    }

    static double startOf(const SegmentSummary& segment, double low) noexcept {
        return std::isfinite(segment.y) ? segment.y : low;
    }
    void addToColumn(const SegmentSummary& segment, double endX) {
        if (!(segment.low <= segment.high)) return;
        const Point start{toPixel(segment.x), startOf(segment, segment.low)};
        const double end = toPixel(endX);
        addToColumn(start, start, segment.low, segment.high, Middle(start.x, end), 1);
        m_straddler = {end, segment.low, segment.high};
    }

    // Segments of one column: where the first and the last begin, and their extents, about an x.
    void addToColumn(const Point& first, const Point& last, double low, double high, double middle,
                     std::size_t segments) {
        if (m_column && !(first.x < m_column->index + 1.0)) flushColumn();
        if (!m_column) {
            const double index = std::floor(first.x);
            m_column = Column{index, first, last, {middle, low}, {middle, high}, 0};
            if (m_straddler.end > index) {
                foldLow({index, m_straddler.low});
                foldHigh({index, m_straddler.high});
            }
        }
        m_column->last = last;
        m_column->segments += segments;
        // What a segment ends with begins the next one.
        foldLow({middle, low});
        if (first.y == m_column->low.y) m_column->low.x = first.x;
        foldHigh({middle, high});
        if (first.y == m_column->high.y) m_column->high.x = first.x;
    }
    void foldLow(const Point& point) {
        if (point.y < m_column->low.y) m_column->low = point;
    }
    void foldHigh(const Point& point) {
        if (point.y > m_column->high.y) m_column->high = point;
    }

    void flushColumn() {
        if (!m_column) return;
        Column column = *m_column;
        m_column.reset();
        // Where many are, nobody knows which one the extremes are of.
        if (column.segments > kFewSegments) column.low.x = column.high.x = Middle(column.first.x, column.last.x);
        constexpr Place place = ViewPolyline::BetweenKeys;
        if (!m_isNarrow) join(column.first.x, column.first.y);
        m_isNarrow = true;
        append(place, column.first.x, column.first.y);
        const double slack = isCoarse() ? 0.0 : kTolerance / m_area.pixelsPerValue;
        const bool hasLow = column.low.y < std::min(column.first.y, column.last.y) - slack;
        const bool hasHigh = column.high.y > std::max(column.first.y, column.last.y) + slack;
        const bool isLowFirst =
            column.low.x < column.high.x || (column.low.x == column.high.x && column.first.y <= column.last.y);
        const auto appendExtremes = [&](bool areAfterLast) {
            for (const bool isLow : {isLowFirst, !isLowFirst}) {
                const Point& extreme = isLow ? column.low : column.high;
                if ((isLow ? hasLow : hasHigh) && (extreme.x > column.last.x) == areAfterLast)
                    append(place, extreme.x, extreme.y);
            }
        };
        appendExtremes(false);
        append(place, column.last.x, column.last.y);
        appendExtremes(true);
    }

    // After a run of narrow segments.
    void finishNarrow() {
        flushColumn();
        if (!m_isNarrow) return;
        m_isNarrow = false;
        const Straddler straddler = std::exchange(m_straddler, {});
        const Segment& last = m_lastNarrow ? *m_lastNarrow : Read::findSegment(m_curve, m_lastNarrowX);
        if (!Read::hasBothKeys(last)) return;
        const double end = Read::rightKey(last)->getX();
        const double y = Look(m_quantity, end, last, Read::interpolator(last));
        const double border = std::floor(straddler.end);
        if (m_last.x < border) {
            if (straddler.low < std::min(m_last.y, y)) append(ViewPolyline::BetweenKeys, border, straddler.low);
            if (straddler.high > std::max(m_last.y, y)) append(ViewPolyline::BetweenKeys, border, straddler.high);
        }
        append(ViewPolyline::BetweenKeys, toPixel(end), y);
    }

    void addSummaries(const SegmentSummaries& summaries) {
        const auto endsBefore = [](const SegmentSummaries::Block& block, double x) { return block.endX() <= x; };
        const auto& blocks = summaries.blocks();
        for (auto block = std::lower_bound(blocks.begin(), blocks.end(), m_area.left, endsBefore);
             block != blocks.end(); ++block) {
            const SegmentSummary* const segments = block->segments.data();
            for (const SegmentSummaries::Group& group : block->groups) {
                if (group.endX <= m_area.left) continue;
                if (segments[group.begin].x > m_area.right) return;
                if (group.widest * m_pixelsPerFrame < kNarrow)
                    addNarrowGroup(group, segments);
                else
                    addGroup(group, segments[group.begin].x);
            }
        }
    }

    // Looks at the segments themselves. Nothing is taken for granted of a curve that nobody told of changes.
    void addGroup(const SegmentSummaries::Group& group, double begin) {
        for (const Segment* segment = &Read::findSegment(m_curve, begin); segment && Read::hasBothKeys(*segment);
             segment = Read::nextSegment(*segment)) {
            if (Read::leftKey(*segment)->getX() > m_area.right) return;
            addSegment(*segment);
            if (Read::rightKey(*segment)->getX() >= group.endX) return;
        }
    }

    void addNarrowGroup(const SegmentSummaries::Group& group, const SegmentSummary* segments) {
        m_lastNarrow = nullptr;
        const SegmentSummary& first = segments[group.begin];
        const SegmentSummary& last = segments[group.end - 1];
        const double begin = toPixel(first.x);
        const double end = toPixel(last.x);
        const std::size_t count = group.end - group.begin;
        if (count > kFewSegments && first.x >= m_area.left && last.x < m_area.right
            && std::floor(begin) == std::floor(end)) {
            if (group.low <= group.high)
                addToColumn({begin, startOf(first, group.low)}, {end, startOf(last, group.low)}, group.low, group.high,
                            begin, count);
            m_straddler = {toPixel(group.endX), last.low, last.high};
            m_lastNarrowX = last.x;
            return;
        }
        for (std::size_t i = group.begin; i < group.end && segments[i].x < m_area.right; ++i) {
            const SegmentSummary& segment = segments[i];
            const double endX = i + 1 < group.end ? segments[i + 1].x : group.endX;
            if (endX <= m_area.left) continue;
            addToColumn(segment, endX);
            m_lastNarrowX = segment.x;
        }
    }

    const FCurve& m_curve;
    const SegmentSummaries* m_summaries;
    ViewPolyline::Quantity m_quantity;
    const TraceArea& m_area;
    TraceSink& m_sink;
    double m_pixelsPerFrame;
    long m_budget; // how often one may still look closer

    Point m_last{0.0, 0.0};                 // x in pixels
    bool m_isOpen = false;                  // whether the line goes on from there
    std::vector<Event>* m_record = nullptr; // where the line goes meanwhile

    std::optional<Column> m_column;
    Straddler m_straddler;
    bool m_isNarrow = false;               // within a run of narrow segments
    const Segment* m_lastNarrow = nullptr; // null: the one that starts at m_lastNarrowX
    double m_lastNarrowX = 0.0;
};

} // namespace

bool IsUnknown(const Segment& segment) {
    const Kind kind = KindOf(segment).kind;
    return kind == Kind::Unknown || kind == Kind::Absent;
}

double Look(ViewPolyline::Quantity quantity, double x, const Segment& segment, const Interpolator* interpolator) {
    if (!interpolator) return 0.0;
    if (quantity == ViewPolyline::Value) return interpolator->eval(x, segment);
    const double slope = quantity == ViewPolyline::Velocity ? interpolator->getFirstDerivative(x, segment)
                                                            : interpolator->getSecondDerivative(x, segment);
    return std::abs(slope) == kVerticalSlope ? std::copysign(kInfinity, slope) : slope;
}

void TraceCurve(const FCurve& curve, const SegmentSummaries* summaries, ViewPolyline::Quantity quantity,
                const TraceArea& area, TraceSink& sink) {
    Tracer(curve, summaries, quantity, area, sink).run();
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
