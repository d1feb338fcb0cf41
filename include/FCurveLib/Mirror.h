#pragma once

#include "FCurveLib/Interpolator.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "mirror()": repeats the curve's keyed part to and fro forever, so that it never jumps.
///
///       .     last     .
///     .   .     o    .   .    .
///           . /   .        .
///           o       .
///         first
///
/// The keyed part is reflected at both its ends, without any offset in value: the first repetition after the last key
/// runs backwards, the next forwards, and so on; before the first key likewise. Where it runs backwards, the first
/// derivative is the negative of the keyed part's. The curve has a corner where it turns back, unless it is flat there;
/// the derivatives at such a point are the right-hand ones, only those of the leading segment at the first key the
/// left-hand ones. Everything else is as with Cycle.
class FCURVELIB_API Mirror final : public Interpolator {
public:
    static std::shared_ptr<Interpolator> create();

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;
    double getFirstDerivative(double x, const Segment& segment) const override;
    double getSecondDerivative(double x, const Segment& segment) const override;

private:
    Mirror();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
