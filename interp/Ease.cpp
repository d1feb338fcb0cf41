#include "FCurveLib/Ease.h"

#include "FCurveLib/Constant.h"
#include "interp/ControlPoints.h"
#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::BezierArgs;
using Private::Read;

Ease::Ease() {
    setExpression("ease()");
}

std::shared_ptr<Interpolator> Ease::create() {
    return std::shared_ptr<Interpolator>(new Ease);
}

double Ease::eval(double x, const Segment& segment) const {
    if (!Read::hasBothKeys(segment)) return Constant::evaluate(x, segment);
    return Private::EvalEvenBezierY(x, Private::EaseArgs(*this, segment));
}

std::shared_ptr<Interpolator> Ease::clone() {
    return std::shared_ptr<Interpolator>(new Ease(*this));
}

void Ease::getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2, double& y2,
                         double& x3, double& y3) const {
    Private::EaseArgs(*this, segment).getPoints(x0, y0, x1, y1, x2, y2, x3, y3);
}

BezierArgs Private::EaseArgs(const Interpolator&, const Segment& segment) {
    return ThirdsArgs(segment, 0.0, 0.0);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
