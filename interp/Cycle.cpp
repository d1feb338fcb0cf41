#include "FCurveLib/Cycle.h"

#include "FCurveLib/Constant.h"
#include "interp/Repetition.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Repetition;

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
    const auto repetition = Repetition::Find(segment);
    return repetition ? repetition->evalCycle(x, 0.0) : Constant::evaluate(x, segment);
}

double Cycle::getFirstDerivative(double x, const Segment& segment) const {
    const auto repetition = Repetition::Find(segment);
    return repetition ? repetition->differentiateCycle(x, 1) : 0.0;
}

double Cycle::getSecondDerivative(double x, const Segment& segment) const {
    const auto repetition = Repetition::Find(segment);
    return repetition ? repetition->differentiateCycle(x, 2) : 0.0;
}

void Cycle::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    if (const auto repetition = Repetition::Find(segment)) {
        const Private::Extents extents = repetition->cycleExtents(x0, x1, 0.0);
        minY = extents.low;
        maxY = extents.high;
    } else {
        minY = maxY = Constant::evaluate(x0, segment);
    }
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
