#include "FCurveLib/Spline.h"

#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

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
    const Keyframe& left = *Read::leftKey(segment);
    const Keyframe& right = *Read::rightKey(segment);
    const Segment* const before = Read::leftSegment(left);
    const Segment* const after = Read::rightSegment(right);
    const Keyframe* const previous = before ? Read::leftKey(*before) : nullptr;
    const Keyframe* const next = after ? Read::rightKey(*after) : nullptr;

    const double third = (right.getX() - left.getX()) / 3.0;
    return {left.getY(), right.getY(), previous ? third * ChordSlope(*previous, right) : 0.0,
            next ? -third * ChordSlope(left, *next) : 0.0};
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
