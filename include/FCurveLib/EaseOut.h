#pragma once

#include "FCurveLib/ThirdsInterp.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "easeout()": leaves the left key with twice the straight line's slope and arrives at the right key flat.
///
///     y1 = yR - (yR - yL) / 3, y2 = yR
///
/// A segment that lacks a key is Constant.
class FCURVELIB_API EaseOut final : public Private::ThirdsInterp {
public:
    static std::shared_ptr<Interpolator> create();

    std::shared_ptr<Interpolator> clone() override;

private:
    EaseOut();

    Heights getHeights(const Segment& segment) const override;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
