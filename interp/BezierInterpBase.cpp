#include "FCurveLib/BezierInterpBase.h"

#include "FCurveLib/Constant.h"
#include "interp/BezierSampling.h"
#include "interp/ControlPoints.h"
#include "interp/TwoPoints.h"
#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::BezierArgs;
using Private::Read;
using Private::TwoPoints;

BezierArgs Private::StatedArgs(const Interpolator& interpolator, const Segment& segment) {
    double x0 = 0.0, y0 = 0.0, x1 = 0.0, y1 = 0.0, x2 = 0.0, y2 = 0.0, x3 = 0.0, y3 = 0.0;
    static_cast<const BezierInterpBase&>(interpolator).getBezierArgs(segment, x0, y0, x1, y1, x2, y2, x3, y3);
    return BezierArgs::fromPoints(x0, y0, x1, y1, x2, y2, x3, y3);
}

BezierArgs Private::ThirdsArgs(const Segment& segment, double out, double in) noexcept {
    const Vector2D<double>& left = Read::leftKey(segment)->get();
    const Vector2D<double>& right = Read::rightKey(segment)->get();
    const double third = (right.x - left.x) / 3.0;
    return {left.x, left.y, right.x, right.y, third, out, -third, in};
}

BezierInterpBase::BezierInterpBase() = default;
BezierInterpBase::BezierInterpBase(const BezierInterpBase& other) = default;

double BezierInterpBase::eval(double x, const Segment& segment) const {
    if (!Read::hasBothKeys(segment)) return Constant::evaluate(x, segment);
    return Private::EvalBezierY(x, ArgsOf(*this, segment));
}

void BezierInterpBase::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    if (Read::hasBothKeys(segment))
        Private::BezierRangeExtents(ArgsOf(*this, segment), x0, x1, minY, maxY);
    else
        minY = maxY = Constant::evaluate(x0, segment);
}

void BezierInterpBase::computePolyline(const Segment& segment, double x0, double x1, int count,
                                       std::vector<Vector2D<double>>& points) const {
    if (Read::hasBothKeys(segment)) {
        Private::SampleBezier(ArgsOf(*this, segment), x0, x1, count, points, Private::BezierY);
    } else {
        const double y = Constant::evaluate(x0, segment);
        TwoPoints(points, x0, y, x1, y);
    }
}

double BezierInterpBase::getFirstDerivative(double x, const Segment& segment) const {
    if (!Read::hasBothKeys(segment)) return 0.0;
    const BezierArgs args = ArgsOf(*this, segment);
    return Private::BezierSlope(Private::SolveBezier(x, args), args);
}

void BezierInterpBase::firstDerivPolyline(const Segment& segment, double x0, double x1, int count,
                                          std::vector<Vector2D<double>>& points) const {
    if (Read::hasBothKeys(segment))
        Private::SampleBezier(ArgsOf(*this, segment), x0, x1, count, points, Private::BezierSlope);
    else
        TwoPoints(points, x0, 0.0, x1, 0.0);
}

double BezierInterpBase::getSecondDerivative(double x, const Segment& segment) const {
    if (!Read::hasBothKeys(segment)) return 0.0;
    const BezierArgs args = ArgsOf(*this, segment);
    return Private::BezierSecond(Private::SolveBezier(x, args), args);
}

void BezierInterpBase::secondDerivPolyline(const Segment& segment, double x0, double x1, int count,
                                           std::vector<Vector2D<double>>& points) const {
    if (Read::hasBothKeys(segment))
        Private::SampleBezier(ArgsOf(*this, segment), x0, x1, count, points, Private::BezierSecond);
    else
        TwoPoints(points, x0, 0.0, x1, 0.0);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
