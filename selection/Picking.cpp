#include "FCurveLib/Picking.h"

#include "FCurveLib/DisplayProperties.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Rectangle.h"
#include "FCurveLib/ViewLine.h"
#include "model/Read.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

namespace {

using Pixel = Vector2D<double>;

// In pixels; y downward.
struct Box {
    double left;
    double right;
    double top;
    double bottom;

    bool holds(const Pixel& p) const noexcept { return p.x >= left && p.x <= right && p.y >= top && p.y <= bottom; }
    bool isFinite() const noexcept {
        return std::isfinite(right - left) && std::isfinite(bottom - top) && std::isfinite(left) && std::isfinite(top);
    }
};

Segment* Next(Segment& segment) noexcept {
    Keyframe* const key = Read::rightKey(segment);
    return key ? Read::rightSegment(*key) : nullptr;
}

// Calls visit(key, segment to its left) for each key between two frames.
template<class Visit>
void ForEachKey(FCurve& curve, double from, double to, const Visit& visit) {
    for (Segment* segment = &Read::findSegment(curve, from); segment; segment = Next(*segment)) {
        Keyframe* const left = Read::leftKey(*segment);
        if (left && left->getX() > to) return;
        if (left && left->getX() >= from) visit(*left);
    }
}

// Whether handles can be told apart.
bool ShowsHandles(FCurve& curve, const CurveView& view, double spacing) {
    if (!(spacing > 0.0)) return true;
    const double most = view.width / spacing + 1.0;
    const bool mayBeMore = most < static_cast<double>(curve.size());
    return !mayBeMore || !Read::segments(curve).hasMoreThan(static_cast<std::size_t>(most), view.left, view.right);
}

// Calls visit(tangent, tip in pixels) for each handle at a key in view or next to it.
template<class Visit>
void ForEachHandle(FCurve& curve, const CurveView& view, const Visit& visit) {
    const double scale = GetTangentScale(curve);
    const auto visitOne = [&](const Keyframe& key, Segment& segment, bool isIn) {
        const Interpolator* const interpolator = Read::interpolator(segment);
        if (!interpolator || !interpolator->usesTangents()) return;
        const auto tangent = isIn ? segment.getInTangent() : segment.getOutTangent();
        visit(tangent, view.toPixel({key.getX() + scale * tangent->getX(), key.getY() + scale * tangent->getY()}));
    };
    Segment* segment = &Read::findSegment(curve, view.left);
    if (Keyframe* const first = Read::leftKey(*segment)) visitOne(*first, *Read::leftSegment(*first), true);
    for (; segment; segment = Next(*segment)) {
        if (Keyframe* const left = Read::leftKey(*segment)) {
            visitOne(*left, *segment, false);
            if (left->getX() > view.right) return; // the next one on that side
        }
        if (Keyframe* const right = Read::rightKey(*segment)) visitOne(*right, *segment, true);
    }
}

// What a box of the view shows; invalid for one that is too small or too large.
CurveView ViewOf(const CurveView& view, const Box& box) noexcept {
    return {view.toFrame(box.left), view.toFrame(box.right), view.toValue(box.bottom),
            view.toValue(box.top),  box.right - box.left,    box.bottom - box.top};
}

bool Contains(const PickOptions& options, PickOptions::Part part) noexcept {
    return (options.parts & part) != 0;
}

// --- the nearest -----------------------------------------------------------------------------------------------------

// Whatever is at most as far as what was found so far.
class Nearest {
public:
    Nearest(const Pixel& point, double radius) : m_point(point), m_distance(radius) {}

    bool isNear(double distance) const noexcept { return m_found ? distance < m_distance : distance <= m_distance; }
    void find(double distance, HitRecord record) {
        m_found = true;
        m_distance = distance;
        m_record = std::move(record);
    }
    // Of the next curve, which lies above the others.
    void begin() noexcept { m_found = false; }

    const Pixel& point() const noexcept { return m_point; }
    double distanceTo(const Pixel& p) const noexcept { return std::hypot(p.x - m_point.x, p.y - m_point.y); }
    double distance() const noexcept { return m_distance; }
    const HitRecord& record() const noexcept { return m_record; }

private:
    Pixel m_point;
    double m_distance;
    bool m_found = false;
    HitRecord m_record;
};

void FindKey(FCurve& curve, const CurveView& view, Nearest& nearest) {
    const Pixel& point = nearest.point();
    // A little farther, as conversion rounds.
    const double reach = nearest.distance() + 1e-6 * (1.0 + std::abs(point.x));
    Keyframe* found = nullptr;
    double distance = 0.0;
    ForEachKey(curve, view.toFrame(point.x - reach), view.toFrame(point.x + reach), [&](Keyframe& key) {
        const double off = nearest.distanceTo(view.toPixel(key.get()));
        if (found ? off < distance : nearest.isNear(off)) {
            found = &key;
            distance = off;
        }
    });
    if (found) nearest.find(distance, HitRecord(found->getShared()));
}

void FindHandle(FCurve& curve, const CurveView& view, Nearest& nearest) {
    ForEachHandle(curve, view, [&](const std::shared_ptr<Tangent>& tangent, const Pixel& tip) {
        const double off = nearest.distanceTo(tip);
        if (nearest.isNear(off)) nearest.find(off, HitRecord(tangent, true));
    });
}

// The point of a stretch that is nearest to p.
Pixel NearestOn(const Pixel& a, const Pixel& b, const Pixel& p) noexcept {
    const Pixel d = b - a;
    const double square = d.x * d.x + d.y * d.y;
    const double t = square > 0.0 ? ((p.x - a.x) * d.x + (p.y - a.y) * d.y) / square : 0.0;
    return a + std::clamp(t, 0.0, 1.0) * d;
}

void FindLine(FCurve& curve, const CurveView& view, bool findsSegment, ViewPolyline& line, Nearest& nearest) {
    const double reach = nearest.distance() + 1.0;
    const Pixel& point = nearest.point();
    const Box box{point.x - reach, point.x + reach, point.y - reach, point.y + reach};
    const CurveView around = ViewOf(view, box);
    ViewLine(curve, around, line);
    const Pixel centre{reach, reach};
    bool found = false;
    double distance = 0.0;
    double frame = 0.0;
    for (const ViewPolyline::Stroke& stroke : line.strokes) {
        for (std::size_t i = stroke.first; i + 1 < stroke.first + stroke.count; ++i) {
            const Pixel at = NearestOn(line.points[i], line.points[i + 1], centre);
            const double off = std::hypot(at.x - centre.x, at.y - centre.y);
            if (found ? off < distance : nearest.isNear(off)) {
                found = true;
                distance = off;
                frame = around.toFrame(at.x);
            }
        }
    }
    if (!found) return;
    nearest.find(distance,
                 findsSegment ? HitRecord(Read::findSegment(curve, frame).getShared()) : HitRecord(curve.getShared()));
}

} // namespace

HitRecord Pick(FCurveContainer& curves, const CurveView& view, const Vector2D<double>& point, double radius,
               const PickOptions& options) {
    if (!view.isValid() || !(radius >= 0.0) || !std::isfinite(radius) || !std::isfinite(point.x + point.y)) return {};
    const auto findBy = [&](const auto& find) {
        Nearest nearest(point, radius);
        for (FCurve& curve : curves) {
            if (!IsVisible(curve)) continue;
            nearest.begin();
            find(curve, nearest);
        }
        return nearest.record();
    };
    HitRecord hit;
    if (Contains(options, PickOptions::Keys))
        hit = findBy([&](FCurve& curve, Nearest& nearest) { FindKey(curve, view, nearest); });
    if (hit.getType() == HitRecord::NONE && Contains(options, PickOptions::Handles))
        hit = findBy([&](FCurve& curve, Nearest& nearest) {
            if (ShowsHandles(curve, view, options.handleSpacing)) FindHandle(curve, view, nearest);
        });
    const bool findsSegment = Contains(options, PickOptions::Segments);
    if (hit.getType() == HitRecord::NONE && (findsSegment || Contains(options, PickOptions::Curves))) {
        ViewPolyline line;
        hit = findBy([&](FCurve& curve, Nearest& nearest) { FindLine(curve, view, findsSegment, line, nearest); });
    }
    return hit;
}

ConstHitRecord Pick(const FCurveContainer& curves, const CurveView& view, const Vector2D<double>& point, double radius,
                    const PickOptions& options) {
    return Pick(const_cast<FCurveContainer&>(curves), view, point, radius, options); // which edits nothing
}

// --- the marquee -----------------------------------------------------------------------------------------------------

namespace {

// Whether a stretch meets a box.
bool Meets(const Pixel& a, const Pixel& b, const Box& box) noexcept {
    double from = 0.0;
    double to = 1.0;
    const auto cut = [&](double start, double step, double low, double high) {
        if (step == 0.0) return start >= low && start <= high;
        const auto [enter, leave] = std::minmax({(low - start) / step, (high - start) / step});
        from = std::max(from, enter);
        to = std::min(to, leave);
        return from <= to;
    };
    return cut(a.x, b.x - a.x, box.left, box.right) && cut(a.y, b.y - a.y, box.top, box.bottom);
}

// The parts of one curve within a box.
class Marquee {
public:
    Marquee(const CurveView& view, const Box& box, const PickOptions& options, std::vector<HitRecord>& out)
        : m_view(view), m_box(box), m_options(options), m_out(out), m_from(view.toFrame(box.left)),
          m_to(view.toFrame(box.right)) {}

    void find(FCurve& curve) {
        const bool segments = Contains(m_options, PickOptions::Segments);
        if (Contains(m_options, PickOptions::Curves) && meets(curve, m_from, m_to))
            m_out.emplace_back(curve.getShared());
        const bool keys = Contains(m_options, PickOptions::Keys);
        const bool handles =
            Contains(m_options, PickOptions::Handles) && ShowsHandles(curve, m_view, m_options.handleSpacing);
        if (!segments && !keys && !handles) return;
        m_tangents.clear();
        if (handles)
            ForEachHandle(curve, m_view, [&](const std::shared_ptr<Tangent>& tangent, const Pixel& tip) {
                if (m_box.holds(tip)) m_tangents.push_back(tangent.get());
            });
        // Handles may reach into the box from any key in view, or the next one on either side.
        const double from = handles ? std::min(m_from, m_view.left) : m_from;
        const double to = handles ? std::max(m_to, m_view.right) : m_to;
        Segment* segment = &Read::findSegment(curve, from);
        if (Keyframe* const first = Read::leftKey(*segment)) segment = Read::leftSegment(*first);
        for (bool isLast = false; segment && !isLast; segment = Next(*segment)) {
            const Keyframe* const left = Read::leftKey(*segment);
            Keyframe* const right = Read::rightKey(*segment);
            isLast = left && left->getX() > to;
            if (segments && meets(curve, left ? left->getX() : m_from, right ? right->getX() : m_to))
                m_out.emplace_back(segment->getShared());
            if (handles) {
                add(segment->getOutTangent());
                add(segment->getInTangent());
            }
            if (keys && right && m_box.holds(m_view.toPixel(right->get()))) m_out.emplace_back(right->getShared());
        }
    }

private:
    void add(const std::shared_ptr<Tangent>& tangent) {
        if (std::find(m_tangents.begin(), m_tangents.end(), tangent.get()) != m_tangents.end())
            m_out.emplace_back(tangent, true);
    }

    // Whether the curve's line between two frames meets the box.
    bool meets(const FCurve& curve, double from, double to) {
        const Box part{std::max(m_box.left, m_view.toPixelX(from)), std::min(m_box.right, m_view.toPixelX(to)),
                       m_box.top, m_box.bottom};
        if (!(part.left <= part.right)) return false;
        constexpr double margin = 1.0; // so that the view is one, however thin the box
        ViewLine(curve,
                 ViewOf(m_view, {part.left - margin, part.right + margin, part.top - margin, part.bottom + margin}),
                 m_line);
        const Box inside{margin, margin + part.right - part.left, margin, margin + part.bottom - part.top};
        for (const ViewPolyline::Stroke& stroke : m_line.strokes)
            for (std::size_t i = stroke.first; i + 1 < stroke.first + stroke.count; ++i)
                if (Meets(m_line.points[i], m_line.points[i + 1], inside)) return true;
        return false;
    }

    const CurveView& m_view;
    const Box& m_box;
    const PickOptions& m_options;
    std::vector<HitRecord>& m_out;
    double m_from; // frames
    double m_to;
    std::vector<const Tangent*> m_tangents; // of the curve, in the box
    ViewPolyline m_line;
};

} // namespace

void PickRectangle(FCurveContainer& curves, const CurveView& view, const Rectangle<double>& rectangle,
                   std::vector<HitRecord>& out, const PickOptions& options) {
    out.clear();
    const auto [left, right] = std::minmax({rectangle.x, rectangle.x + rectangle.width});
    const auto [top, bottom] = std::minmax({rectangle.y, rectangle.y + rectangle.height});
    const Box box{left, right, top, bottom};
    if (!view.isValid() || !box.isFinite()) return;
    Marquee marquee(view, box, options, out);
    for (FCurve& curve : curves)
        if (IsVisible(curve)) marquee.find(curve);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
