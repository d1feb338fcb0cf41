#include "FCurveLib/Constant.h"

#include "interp/DefaultInterpolator.h"
#include "interp/TwoPoints.h"
#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;
using Private::TwoPoints;

Constant::Constant() {
    setExpression("constant()");
}

std::shared_ptr<Interpolator> Private::DefaultInterpolator() {
    return Constant::create();
}

std::shared_ptr<Interpolator> Constant::create() {
    return std::shared_ptr<Interpolator>(new Constant);
}

double Constant::evaluate(double, const Segment& segment) {
    if (const Keyframe* left = Read::leftKey(segment)) return left->getY();
    if (const Keyframe* right = Read::rightKey(segment)) return right->getY();
    return 0.0;
}

double Constant::eval(double x, const Segment& segment) const {
    return evaluate(x, segment);
}

std::shared_ptr<Interpolator> Constant::clone() {
    return std::shared_ptr<Interpolator>(new Constant(*this));
}

void Constant::getRangeExtents(const Segment& segment, double x0, double, double& minY, double& maxY) const {
    minY = maxY = evaluate(x0, segment);
}

void Constant::computePolyline(const Segment& segment, double x0, double x1, int,
                               std::vector<Vector2D<double>>& points) const {
    const double y = evaluate(x0, segment);
    TwoPoints(points, x0, y, x1, y);
}

double Constant::getFirstDerivative(double, const Segment&) const {
    return 0.0;
}

void Constant::firstDerivPolyline(const Segment&, double x0, double x1, int,
                                  std::vector<Vector2D<double>>& points) const {
    TwoPoints(points, x0, 0.0, x1, 0.0);
}

double Constant::getSecondDerivative(double, const Segment&) const {
    return 0.0;
}

void Constant::secondDerivPolyline(const Segment&, double x0, double x1, int,
                                   std::vector<Vector2D<double>>& points) const {
    TwoPoints(points, x0, 0.0, x1, 0.0);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
