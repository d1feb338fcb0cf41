#include "FCurveLib/MatchOut.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

MatchOut::MatchOut() {
    setExpression("matchout()");
}

std::shared_ptr<Interpolator> MatchOut::create() {
    return std::shared_ptr<Interpolator>(new MatchOut);
}

std::shared_ptr<Interpolator> MatchOut::clone() {
    return std::shared_ptr<Interpolator>(new MatchOut(*this));
}

double MatchOut::getLeftSlope(const Segment&) const {
    return 0.0;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
