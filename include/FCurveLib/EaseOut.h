#pragma once

#include "FCurveLib/BezierInterpBase.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "easeout()": leaves the left key with twice the straight line's slope and arrives at the right key flat.
///
///     y1 = yR - (yR - yL) / 3, y2 = yR
///
/// A segment that lacks a key is Constant.
class FCURVELIB_API EaseOut final : public BezierInterpBase {
public:
    static std::shared_ptr<Interpolator> create();

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    void getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2, double& y2,
                       double& x3, double& y3) const override;

private:
    EaseOut();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
