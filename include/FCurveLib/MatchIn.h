#pragma once

#include "FCurveLib/Match.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "matchin()": as Match, but arrives at the right key flat.
class FCURVELIB_API MatchIn final : public Match {
public:
    static std::shared_ptr<Interpolator> create();

    std::shared_ptr<Interpolator> clone() override;

private:
    MatchIn();

    double getRightSlope(const Segment& segment) const override;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
