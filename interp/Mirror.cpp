#include "FCurveLib/Mirror.h"

#include "interp/Repetition.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Kind;

Mirror::Mirror() {
    setExpression("mirror()");
}

std::shared_ptr<Interpolator> Mirror::create() {
    return std::shared_ptr<Interpolator>(new Mirror);
}

std::shared_ptr<Interpolator> Mirror::clone() {
    return std::shared_ptr<Interpolator>(new Mirror(*this));
}

double Mirror::eval(double x, const Segment& segment) const {
    return Private::EvalRepeated(Kind::Mirror, x, segment);
}

double Mirror::getFirstDerivative(double x, const Segment& segment) const {
    return Private::DifferentiateRepeated(Kind::Mirror, x, segment, 1);
}

double Mirror::getSecondDerivative(double x, const Segment& segment) const {
    return Private::DifferentiateRepeated(Kind::Mirror, x, segment, 2);
}

void Mirror::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    Private::RepeatedExtents(Kind::Mirror, segment, x0, x1, minY, maxY);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
