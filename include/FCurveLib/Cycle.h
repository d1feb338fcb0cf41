#pragma once

#include "FCurveLib/Interpolator.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "cycle()": repeats the curve's keyed part for ever. Meant for the segments before the first and after the last key.
///
///          .      o      .      .
///        . .    / |    . .    . .
///      .   .  /   |  .   .  .   .
///    .     o      o      .      .
///        first  last
///
/// The value at x is the curve's inside its keyed part at x - n * (last - first), where n is the whole number that
/// takes x there: EvalInInterior, so a cycle never feeds on itself. The end of a period and the start of the next are
/// one point, taken from the start: at the last key the value is that of the first.
///
/// The derivatives are those of the keyed part, at a joint between two periods those of the start. Only the leading
/// segment, where it ends at the first key, has those of the keyed part's end.
///
/// Extents hold what the repeated segments' own extents say, over any range in either order, in a time that depends on
/// the number of keys but not on the number of periods. NaN bounds give NaN.
///
/// However far x is, n does not overflow, and the place within the period is as exact as x itself. An infinite x gives
/// NaN, as NaN does.
///
/// Without keys the value is 0; between two keys it is the left key's y, a constant, deliberately: a cycle is only
/// meaningful at an open end; on a curve of one key it is that key's y.
class FCURVELIB_API Cycle final : public Interpolator {
public:
    static std::shared_ptr<Interpolator> create();

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;
    double getFirstDerivative(double x, const Segment& segment) const override;
    double getSecondDerivative(double x, const Segment& segment) const override;

private:
    Cycle();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
