#pragma once

#include "FCurveLib/ThirdsInterp.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "easein()": leaves the left key flat and arrives at the right key with twice the straight line's slope.
///
///     y1 = yL, y2 = yL + (yR - yL) / 3
///
/// A segment that lacks a key is Constant.
class FCURVELIB_API EaseIn final : public Private::ThirdsInterp {
public:
    static std::shared_ptr<Interpolator> create();

    std::shared_ptr<Interpolator> clone() override;

private:
    EaseIn();

    Heights getHeights(const Segment& segment) const override;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
