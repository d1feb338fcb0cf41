#include "FCurveLib/EaseOut.h"

#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

EaseOut::EaseOut() {
    setExpression("easeout()");
}

std::shared_ptr<Interpolator> EaseOut::create() {
    return std::shared_ptr<Interpolator>(new EaseOut);
}

std::shared_ptr<Interpolator> EaseOut::clone() {
    return std::shared_ptr<Interpolator>(new EaseOut(*this));
}

EaseOut::Heights EaseOut::getHeights(const Segment& segment) const {
    const double left = Read::leftKey(segment)->getY();
    const double right = Read::rightKey(segment)->getY();
    const double third = (right - left) / 3.0;
    return {left, right, (right - left) - third, 0.0};
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
