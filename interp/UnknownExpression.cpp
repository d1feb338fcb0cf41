#include "FCurveLib/UnknownExpression.h"

#include "interp/TwoPoints.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::TwoPoints;

UnknownExpression::UnknownExpression() = default;

std::shared_ptr<Interpolator> UnknownExpression::create(const char* expression) {
    std::shared_ptr<Interpolator> result(new UnknownExpression);
    result->setExpression(expression);
    return result;
}

double UnknownExpression::eval(double, const Segment&) const {
    return 0.0;
}

std::shared_ptr<Interpolator> UnknownExpression::clone() {
    return create(getExpression());
}

void UnknownExpression::getRangeExtents(const Segment&, double, double, double& minY, double& maxY) const {
    minY = maxY = 0.0;
}

void UnknownExpression::computePolyline(const Segment&, double x0, double x1, int,
                                        std::vector<Vector2D<double>>& points) const {
    TwoPoints(points, x0, 0.0, x1, 0.0);
}

double UnknownExpression::getFirstDerivative(double, const Segment&) const {
    return 0.0;
}

void UnknownExpression::firstDerivPolyline(const Segment&, double x0, double x1, int,
                                           std::vector<Vector2D<double>>& points) const {
    TwoPoints(points, x0, 0.0, x1, 0.0);
}

double UnknownExpression::getSecondDerivative(double, const Segment&) const {
    return 0.0;
}

void UnknownExpression::secondDerivPolyline(const Segment&, double x0, double x1, int,
                                            std::vector<Vector2D<double>>& points) const {
    TwoPoints(points, x0, 0.0, x1, 0.0);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
