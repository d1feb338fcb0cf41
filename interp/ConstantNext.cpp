#include "FCurveLib/ConstantNext.h"

#include "FCurveLib/Constant.h"
#include "interp/TwoPoints.h"
#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;
using Private::TwoPoints;

ConstantNext::ConstantNext() {
    setExpression("constant_next()");
}

std::shared_ptr<Interpolator> ConstantNext::create() {
    return std::shared_ptr<Interpolator>(new ConstantNext);
}

double ConstantNext::evaluate(double x, const Segment& segment) {
    if (const Keyframe* right = Read::rightKey(segment)) return right->getY();
    return Constant::evaluate(x, segment);
}

double ConstantNext::eval(double x, const Segment& segment) const {
    return evaluate(x, segment);
}

std::shared_ptr<Interpolator> ConstantNext::clone() {
    return std::shared_ptr<Interpolator>(new ConstantNext(*this));
}

void ConstantNext::getRangeExtents(const Segment& segment, double x0, double, double& minY, double& maxY) const {
    minY = maxY = evaluate(x0, segment);
}

void ConstantNext::computePolyline(const Segment& segment, double x0, double x1, int,
                                   std::vector<Vector2D<double>>& points) const {
    const double y = evaluate(x0, segment);
    TwoPoints(points, x0, y, x1, y);
}

double ConstantNext::getFirstDerivative(double, const Segment&) const {
    return 0.0;
}

void ConstantNext::firstDerivPolyline(const Segment&, double x0, double x1, int,
                                      std::vector<Vector2D<double>>& points) const {
    TwoPoints(points, x0, 0.0, x1, 0.0);
}

double ConstantNext::getSecondDerivative(double, const Segment&) const {
    return 0.0;
}

void ConstantNext::secondDerivPolyline(const Segment&, double x0, double x1, int,
                                       std::vector<Vector2D<double>>& points) const {
    TwoPoints(points, x0, 0.0, x1, 0.0);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
