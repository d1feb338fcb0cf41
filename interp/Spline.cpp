#include "FCurveLib/Spline.h"

#include "FCurveLib/Constant.h"
#include "interp/ControlPoints.h"
#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::BezierArgs;
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

double Spline::eval(double x, const Segment& segment) const {
    if (!Read::hasBothKeys(segment)) return Constant::evaluate(x, segment);
    return Private::EvalEvenBezierY(x, Private::SplineArgs(*this, segment));
}

std::shared_ptr<Interpolator> Spline::clone() {
    return std::shared_ptr<Interpolator>(new Spline(*this));
}

void Spline::getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2,
                           double& y2, double& x3, double& y3) const {
    Private::SplineArgs(*this, segment).getPoints(x0, y0, x1, y1, x2, y2, x3, y3);
}

// Handles of a third stay between the keys, so they never need shortening.
BezierArgs Private::SplineArgs(const Interpolator&, const Segment& segment) {
    const Keyframe& left = *Read::leftKey(segment);
    const Keyframe& right = *Read::rightKey(segment);
    const Segment* const before = Read::leftSegment(left);
    const Segment* const after = Read::rightSegment(right);
    const Keyframe* const previous = before ? Read::leftKey(*before) : nullptr;
    const Keyframe* const next = after ? Read::rightKey(*after) : nullptr;

    const double third = (right.getX() - left.getX()) / 3.0;
    return ThirdsArgs(segment, previous ? third * ChordSlope(*previous, right) : 0.0,
                      next ? -third * ChordSlope(left, *next) : 0.0);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
