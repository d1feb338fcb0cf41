#include "FCurveLib/CycleOffset.h"

#include "interp/Repetition.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Kind;

CycleOffset::CycleOffset() {
    setExpression("cycle_offset()");
}

std::shared_ptr<Interpolator> CycleOffset::create() {
    return std::shared_ptr<Interpolator>(new CycleOffset);
}

std::shared_ptr<Interpolator> CycleOffset::clone() {
    return std::shared_ptr<Interpolator>(new CycleOffset(*this));
}

double CycleOffset::eval(double x, const Segment& segment) const {
    return Private::EvalRepeated(Kind::CycleOffset, x, segment);
}

double CycleOffset::getFirstDerivative(double x, const Segment& segment) const {
    return Private::DifferentiateRepeated(Kind::CycleOffset, x, segment, 1);
}

double CycleOffset::getSecondDerivative(double x, const Segment& segment) const {
    return Private::DifferentiateRepeated(Kind::CycleOffset, x, segment, 2);
}

void CycleOffset::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    Private::RepeatedExtents(Kind::CycleOffset, segment, x0, x1, minY, maxY);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
