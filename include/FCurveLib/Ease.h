#pragma once

#include "FCurveLib/BezierInterpBase.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "ease()": leaves the left key flat and arrives at the right key flat.
///
///     y1 = yL, y2 = yR
///
/// A segment that lacks a key is Constant.
class FCURVELIB_API Ease final : public BezierInterpBase {
public:
    static std::shared_ptr<Interpolator> create();

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    void getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2, double& y2,
                       double& x3, double& y3) const override;

private:
    Ease();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
