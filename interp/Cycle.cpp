#include "FCurveLib/Cycle.h"

#include "interp/Repetition.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Kind;

Cycle::Cycle() {
    setExpression("cycle()");
}

std::shared_ptr<Interpolator> Cycle::create() {
    return std::shared_ptr<Interpolator>(new Cycle);
}

std::shared_ptr<Interpolator> Cycle::clone() {
    return std::shared_ptr<Interpolator>(new Cycle(*this));
}

double Cycle::eval(double x, const Segment& segment) const {
    return Private::EvalRepeated(Kind::Cycle, x, segment);
}

double Cycle::getFirstDerivative(double x, const Segment& segment) const {
    return Private::DifferentiateRepeated(Kind::Cycle, x, segment, 1);
}

double Cycle::getSecondDerivative(double x, const Segment& segment) const {
    return Private::DifferentiateRepeated(Kind::Cycle, x, segment, 2);
}

void Cycle::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    Private::RepeatedExtents(Kind::Cycle, segment, x0, x1, minY, maxY);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
