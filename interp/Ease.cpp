#include "FCurveLib/Ease.h"

#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

Ease::Ease() {
    setExpression("ease()");
}

std::shared_ptr<Interpolator> Ease::create() {
    return std::shared_ptr<Interpolator>(new Ease);
}

std::shared_ptr<Interpolator> Ease::clone() {
    return std::shared_ptr<Interpolator>(new Ease(*this));
}

Ease::Heights Ease::getHeights(const Segment& segment) const {
    const double left = Read::leftKey(segment)->getY();
    const double right = Read::rightKey(segment)->getY();
    return {left, right, 0.0, 0.0};
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
