#include "FCurveLib/Extents.h"

#include "FCurveLib/DisplayProperties.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Selection.h"
#include "model/Read.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;
using Box = Rectangle<double>;

namespace {

// The least length for which origin + length, as doubles add, reaches the end: a box must not end short of its extreme
// value because a difference was rounded down. Never below 0.
double LengthTo(double origin, double end) noexcept {
    double length = end - origin;
    while (origin + length < end) length = std::nextafter(length, std::numeric_limits<double>::infinity());
    return length;
}

// The union of the boxes added so far. The first one is taken as it is, so that a point stays a point.
class Union {
public:
    void add(const Box& box) noexcept {
        if (m_empty) {
            m_box = box;
            m_empty = false;
            return;
        }
        const double x = std::min(m_box.x, box.x);
        const double y = std::min(m_box.y, box.y);
        const double right = std::max(m_box.x + m_box.width, box.x + box.width);
        const double top = std::max(m_box.y + m_box.height, box.y + box.height);
        m_box = {x, y, LengthTo(x, right), LengthTo(y, top)};
    }
    void add(const Keyframe& key) noexcept { add(Box(key.getX(), key.getY(), 0.0, 0.0)); }

    bool get(Box& box) const noexcept {
        if (!m_empty) box = m_box;
        return !m_empty;
    }

private:
    Box m_box;
    bool m_empty = true;
};

// The handle at the given key.
Box HandleBox(const Tangent& tangent, const Keyframe& key) noexcept {
    const Vector2D<double>& handle = tangent.get();
    return {handle.x < 0.0 ? key.getX() + handle.x : key.getX(), handle.y < 0.0 ? key.getY() + handle.y : key.getY(),
            std::abs(handle.x), std::abs(handle.y)};
}

void AddSegment(const Segment& segment, Union& sum) {
    const Keyframe* left = Read::leftKey(segment);
    const Keyframe* right = Read::rightKey(segment);
    if (left) sum.add(*left);
    if (right) sum.add(*right);
    if (!left || !right) return;

    double low = std::min(left->getY(), right->getY());
    double high = std::max(left->getY(), right->getY());
    double least = 0.0; // a segment without interpolator has the value 0
    double most = 0.0;
    const Interpolator* interpolator = Read::interpolator(segment);
    if (interpolator) interpolator->getRangeExtents(segment, left->getX(), right->getX(), least, most);
    if (std::isfinite(least)) low = std::min(low, least);
    if (std::isfinite(most)) high = std::max(high, most);
    sum.add(Box(left->getX(), low, LengthTo(left->getX(), right->getX()), LengthTo(low, high)));
}

void AddHandles(const Segment& segment, Union& sum) {
    const Interpolator* interpolator = Read::interpolator(segment);
    if (!interpolator || !interpolator->usesTangents()) return;
    if (const Keyframe* left = Read::leftKey(segment)) sum.add(HandleBox(*Read::outTangent(segment), *left));
    if (const Keyframe* right = Read::rightKey(segment)) sum.add(HandleBox(*Read::inTangent(segment), *right));
}

} // namespace

void GetTangentExtents(const Tangent& tangent, Box& extents) {
    const auto key = tangent.getOwningKeyframe();
    extents = key ? HandleBox(tangent, *key) : Box();
}

void GetSegmentExtents(const Segment& segment, Box& extents) {
    Union sum;
    AddSegment(segment, sum);
    extents = Box();
    sum.get(extents);
}

bool GetInteriorExtents(const FCurve& curve, Box& extents) {
    Union sum;
    if (curve.size() == 2) sum.add(*Read::rightKey(Read::firstSegment(curve)));
    for (const Segment& segment : curve)
        if (Read::leftKey(segment) && Read::rightKey(segment)) AddSegment(segment, sum);
    return sum.get(extents);
}

bool GetFCurveAndPartsExtents(const FCurve& curve, const Selection& selection, Box& extents) {
    Union sum;
    Box interior;
    if (GetInteriorExtents(curve, interior)) sum.add(interior);
    if (selection.isSelected(curve))
        for (const Segment& segment : curve) AddHandles(segment, sum);
    return sum.get(extents);
}

bool GetVisibleExtents(const FCurveContainer& curves, const Selection& selection, Box& extents) {
    Union sum;
    Box box;
    for (const FCurve& curve : curves)
        if (curve.size() > 1 && IsVisible(curve) && GetFCurveAndPartsExtents(curve, selection, box)) sum.add(box);
    return sum.get(extents);
}

bool GetSelectedExtents(const Selection& selection, Box& extents) {
    Union sum;
    Box box;
    for (auto it = selection.begin(); it != selection.end(); ++it) {
        switch (it->getType()) {
        case ConstHitRecord::CURVE:
            if (GetInteriorExtents(*it->getCurve(), box)) sum.add(box);
            break;
        case ConstHitRecord::SEGMENT:
            AddSegment(*it->getSegment(), sum);
            break;
        case ConstHitRecord::KEYFRAME:
            sum.add(*it->getKeyframe());
            break;
        case ConstHitRecord::TANGENT:
        case ConstHitRecord::TANGENT_UNFLAGGED:
            if (const auto key = it->getTangent()->getOwningKeyframe()) sum.add(HandleBox(*it->getTangent(), *key));
            break;
        case ConstHitRecord::NONE:
            break;
        }
    }
    return sum.get(extents);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
