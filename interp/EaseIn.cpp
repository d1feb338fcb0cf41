#include "FCurveLib/EaseIn.h"

#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

EaseIn::EaseIn() {
    setExpression("easein()");
}

std::shared_ptr<Interpolator> EaseIn::create() {
    return std::shared_ptr<Interpolator>(new EaseIn);
}

std::shared_ptr<Interpolator> EaseIn::clone() {
    return std::shared_ptr<Interpolator>(new EaseIn(*this));
}

EaseIn::Heights EaseIn::getHeights(const Segment& segment) const {
    const double left = Read::leftKey(segment)->getY();
    const double right = Read::rightKey(segment)->getY();
    const double third = (right - left) / 3.0;
    return {left, right, 0.0, third - (right - left)};
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
