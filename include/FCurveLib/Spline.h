#pragma once

#include "FCurveLib/BezierInterpBase.h"

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
class FCURVELIB_API Spline final : public BezierInterpBase {
public:
    static std::shared_ptr<Interpolator> create();

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    void getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2, double& y2,
                       double& x3, double& y3) const override;

private:
    Spline();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
