#pragma once

#include "FCurveLib/ThirdsInterp.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "spline()": a smooth curve through the keys. At each key it runs parallel to the chord between the two neighbours of
/// that key, so that spline segments side by side join without a corner; at the first and the last key of the curve it
/// is flat.
///
///     y1 = yL + (yR - yP) / (xR - xP) * w / 3     P, the key before the left one
///     y2 = yR - (yN - yL) / (xN - xL) * w / 3     N, the key after the right one; w = xR - xL
///
/// Only the positions of the keys matter, whatever the kinds of the neighbouring segments. A segment that lacks a key
/// is Constant.
class FCURVELIB_API Spline final : public Private::ThirdsInterp {
public:
    static std::shared_ptr<Interpolator> create();

    std::shared_ptr<Interpolator> clone() override;

private:
    Spline();

    Heights getHeights(const Segment& segment) const override;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
