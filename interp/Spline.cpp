#include "FCurveLib/Spline.h"

#include "model/Access.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Access;

namespace {

double ChordSlope(const Keyframe& a, const Keyframe& b) noexcept {
    return (b.getY() - a.getY()) / (b.getX() - a.getX());
}

} // namespace

Spline::Spline() {
    setExpression("spline()");
}

std::shared_ptr<Interpolator> Spline::create() {
    return std::shared_ptr<Interpolator>(new Spline);
}

std::shared_ptr<Interpolator> Spline::clone() {
    return std::shared_ptr<Interpolator>(new Spline(*this));
}

// Handles of a third stay between the keys, so they never need shortening.
Spline::Heights Spline::getHeights(const Segment& segment) const {
    const Keyframe& left = *Access::leftKey(segment);
    const Keyframe& right = *Access::rightKey(segment);
    const Segment* const before = Access::leftSegment(left);
    const Segment* const after = Access::rightSegment(right);
    const Keyframe* const previous = before ? Access::leftKey(*before) : nullptr;
    const Keyframe* const next = after ? Access::rightKey(*after) : nullptr;

    const double third = (right.getX() - left.getX()) / 3.0;
    return {left.getY(), right.getY(), previous ? third * ChordSlope(*previous, right) : 0.0,
            next ? -third * ChordSlope(left, *next) : 0.0};
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
