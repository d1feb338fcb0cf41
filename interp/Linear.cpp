#include "FCurveLib/Linear.h"

#include "FCurveLib/Constant.h"
#include "interp/TwoPoints.h"
#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;
using Private::TwoPoints;

Linear::Linear() {
    setExpression("linear()");
}

std::shared_ptr<Interpolator> Linear::create() {
    return std::shared_ptr<Interpolator>(new Linear);
}

double Linear::evaluate(double x, const Segment& segment) {
    const Keyframe* left = Read::leftKey(segment);
    const Keyframe* right = Read::rightKey(segment);
    if (!left || !right) return Constant::evaluate(x, segment);
    return left->getY() + (x - left->getX()) * (right->getY() - left->getY()) / (right->getX() - left->getX());
}

double Linear::eval(double x, const Segment& segment) const {
    return evaluate(x, segment);
}

std::shared_ptr<Interpolator> Linear::clone() {
    return std::shared_ptr<Interpolator>(new Linear(*this));
}

void Linear::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    const double a = evaluate(x0, segment);
    const double b = evaluate(x1, segment);
    const bool falls = b <= a;
    minY = falls ? b : a;
    maxY = falls ? a : b;
}

void Linear::computePolyline(const Segment& segment, double x0, double x1, int,
                             std::vector<Vector2D<double>>& points) const {
    TwoPoints(points, x0, evaluate(x0, segment), x1, evaluate(x1, segment));
}

double Linear::getFirstDerivative(double, const Segment& segment) const {
    const Keyframe* left = Read::leftKey(segment);
    const Keyframe* right = Read::rightKey(segment);
    if (!left || !right) return 0.0;
    return (right->getY() - left->getY()) / (right->getX() - left->getX());
}

void Linear::firstDerivPolyline(const Segment& segment, double x0, double x1, int,
                                std::vector<Vector2D<double>>& points) const {
    const double slope = getFirstDerivative(x0, segment);
    TwoPoints(points, x0, slope, x1, slope);
}

double Linear::getSecondDerivative(double, const Segment&) const {
    return 0.0;
}

void Linear::secondDerivPolyline(const Segment&, double x0, double x1, int,
                                 std::vector<Vector2D<double>>& points) const {
    TwoPoints(points, x0, 0.0, x1, 0.0);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
