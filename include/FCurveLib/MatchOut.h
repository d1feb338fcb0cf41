#pragma once

#include "FCurveLib/Match.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "matchout()": as Match, but leaves the left key flat.
class FCURVELIB_API MatchOut final : public Match {
public:
    static std::shared_ptr<Interpolator> create();

    std::shared_ptr<Interpolator> clone() override;

private:
    MatchOut();

    double getLeftSlope(const Segment& segment) const override;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
