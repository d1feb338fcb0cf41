#include "FCurveLib/Mirror.h"

#include "FCurveLib/Constant.h"
#include "interp/Repetition.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Repetition;

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
    const auto repetition = Repetition::Find(segment);
    return repetition ? repetition->evalMirror(x) : Constant::evaluate(x, segment);
}

double Mirror::getFirstDerivative(double x, const Segment& segment) const {
    const auto repetition = Repetition::Find(segment);
    return repetition ? repetition->differentiateMirror(x, 1) : 0.0;
}

double Mirror::getSecondDerivative(double x, const Segment& segment) const {
    const auto repetition = Repetition::Find(segment);
    return repetition ? repetition->differentiateMirror(x, 2) : 0.0;
}

void Mirror::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    if (const auto repetition = Repetition::Find(segment)) {
        const Private::Extents extents = repetition->mirrorExtents(x0, x1);
        minY = extents.low;
        maxY = extents.high;
    } else {
        minY = maxY = Constant::evaluate(x0, segment);
    }
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
