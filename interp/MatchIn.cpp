#include "FCurveLib/MatchIn.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

MatchIn::MatchIn() {
    setExpression("matchin()");
}

std::shared_ptr<Interpolator> MatchIn::create() {
    return std::shared_ptr<Interpolator>(new MatchIn);
}

std::shared_ptr<Interpolator> MatchIn::clone() {
    return std::shared_ptr<Interpolator>(new MatchIn(*this));
}

double MatchIn::getRightSlope(const Segment&) const {
    return 0.0;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
