#pragma once

#include "FCurveLib/Interpolator.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "linear()": the straight line through the segment's two keys, extended beyond them. Keys at the same x are not
/// guarded: value and slope are then infinite or NaN, as the division gives.
class FCURVELIB_API Linear final : public Interpolator {
public:
    static std::shared_ptr<Interpolator> create();

    /// The line's value at x; without both keys Constant::evaluate.
    static double evaluate(double x, const Segment& segment);

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;

    /// \name Polylines: always the two end points, whatever the count
    /// @{
    void computePolyline(const Segment& segment, double x0, double x1, int count,
                         std::vector<Vector2D<double>>& points) const override;
    /// The line's slope, whatever x; 0 without both keys.
    double getFirstDerivative(double x, const Segment& segment) const override;
    void firstDerivPolyline(const Segment& segment, double x0, double x1, int count,
                            std::vector<Vector2D<double>>& points) const override;
    double getSecondDerivative(double x, const Segment& segment) const override;
    void secondDerivPolyline(const Segment& segment, double x0, double x1, int count,
                             std::vector<Vector2D<double>>& points) const override;
    /// @}

private:
    Linear();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
