#include "FCurveLib/EaseOut.h"

#include "FCurveLib/Constant.h"
#include "interp/ControlPoints.h"
#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::BezierArgs;
using Private::Read;

EaseOut::EaseOut() {
    setExpression("easeout()");
}

std::shared_ptr<Interpolator> EaseOut::create() {
    return std::shared_ptr<Interpolator>(new EaseOut);
}

double EaseOut::eval(double x, const Segment& segment) const {
    if (!Read::hasBothKeys(segment)) return Constant::evaluate(x, segment);
    return Private::EvalEvenBezierY(x, Private::EaseOutArgs(*this, segment));
}

std::shared_ptr<Interpolator> EaseOut::clone() {
    return std::shared_ptr<Interpolator>(new EaseOut(*this));
}

void EaseOut::getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2,
                            double& y2, double& x3, double& y3) const {
    Private::EaseOutArgs(*this, segment).getPoints(x0, y0, x1, y1, x2, y2, x3, y3);
}

BezierArgs Private::EaseOutArgs(const Interpolator&, const Segment& segment) {
    const double rise = Read::rightKey(segment)->getY() - Read::leftKey(segment)->getY();
    return ThirdsArgs(segment, rise - rise / 3.0, 0.0);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
