#pragma once

#include "FCurveLib/Interpolator.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "cycle()": repeats the curve's keyed part forever. Meant for the segments before the first and after the last key.
///
///          .      o      .      .
///        . .    / |    . .    . .
///      .   .  /   |  .   .  .   .
///    .     o      o      .      .
///        first  last
///
/// The end of a period and the start of the next are one point, taken from the start. Derivatives and extents are those
/// of the keyed part; extents take no longer over many periods than over two. An infinite x gives NaN. Between two keys
/// the value is the left key's y, deliberately: a cycle is only meaningful at an open end. docs/interpolators.md has
/// the details.
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
