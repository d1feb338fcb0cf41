#pragma once

#include "FCurveLib/Interpolator.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "cycle_offset()": repeats the curve's keyed part forever, each repetition lifted by the rise of the keyed part, so
/// that they join without a jump.
///
///                          .
///                 last   .
///                  o . .
///         first  /
///           o - '
///         .
///     . .
///
/// The value at x is that of Cycle, plus n times the offset: the value at the last key less the value at the first,
/// each as the interior segment next to that key computes it. Everything else is as with Cycle.
class FCURVELIB_API CycleOffset final : public Interpolator {
public:
    static std::shared_ptr<Interpolator> create();

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;
    double getFirstDerivative(double x, const Segment& segment) const override;
    double getSecondDerivative(double x, const Segment& segment) const override;

private:
    CycleOffset();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
