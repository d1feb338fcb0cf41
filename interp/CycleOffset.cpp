#include "FCurveLib/CycleOffset.h"

#include "FCurveLib/Constant.h"
#include "interp/Repetition.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Repetition;

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
    const auto repetition = Repetition::Find(segment);
    return repetition ? repetition->evalCycle(x, repetition->rise()) : Constant::evaluate(x, segment);
}

double CycleOffset::getFirstDerivative(double x, const Segment& segment) const {
    const auto repetition = Repetition::Find(segment);
    return repetition ? repetition->differentiateCycle(x, 1) : 0.0;
}

double CycleOffset::getSecondDerivative(double x, const Segment& segment) const {
    const auto repetition = Repetition::Find(segment);
    return repetition ? repetition->differentiateCycle(x, 2) : 0.0;
}

void CycleOffset::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    if (const auto repetition = Repetition::Find(segment)) {
        const Private::Extents extents = repetition->cycleExtents(x0, x1, repetition->rise());
        minY = extents.low;
        maxY = extents.high;
    } else {
        minY = maxY = Constant::evaluate(x0, segment);
    }
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
