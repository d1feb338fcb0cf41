#include "FCurveLib/EaseIn.h"

#include "FCurveLib/Constant.h"
#include "interp/ControlPoints.h"
#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::BezierArgs;
using Private::Read;

EaseIn::EaseIn() {
    setExpression("easein()");
}

std::shared_ptr<Interpolator> EaseIn::create() {
    return std::shared_ptr<Interpolator>(new EaseIn);
}

double EaseIn::eval(double x, const Segment& segment) const {
    if (!Read::hasBothKeys(segment)) return Constant::evaluate(x, segment);
    return Private::EvalEvenBezierY(x, Private::EaseInArgs(*this, segment));
}

std::shared_ptr<Interpolator> EaseIn::clone() {
    return std::shared_ptr<Interpolator>(new EaseIn(*this));
}

void EaseIn::getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2,
                           double& y2, double& x3, double& y3) const {
    Private::EaseInArgs(*this, segment).getPoints(x0, y0, x1, y1, x2, y2, x3, y3);
}

BezierArgs Private::EaseInArgs(const Interpolator&, const Segment& segment) {
    const double rise = Read::rightKey(segment)->getY() - Read::leftKey(segment)->getY();
    return ThirdsArgs(segment, 0.0, rise / 3.0 - rise);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
