#pragma once

#include "FCurveLib/Interpolator.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "constant_next()": holds the right key's value across the segment, a step at the left key.
class FCURVELIB_API ConstantNext final : public Interpolator {
public:
    static std::shared_ptr<Interpolator> create();

    /// The right key's y; without a right key Constant::evaluate. x does not matter.
    static double evaluate(double x, const Segment& segment);

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;

    /// \name Polylines: always the two end points, whatever the count
    /// @{
    void computePolyline(const Segment& segment, double x0, double x1, int count,
                         std::vector<Vector2D<double>>& points) const override;
    double getFirstDerivative(double x, const Segment& segment) const override;
    void firstDerivPolyline(const Segment& segment, double x0, double x1, int count,
                            std::vector<Vector2D<double>>& points) const override;
    double getSecondDerivative(double x, const Segment& segment) const override;
    void secondDerivPolyline(const Segment& segment, double x0, double x1, int count,
                             std::vector<Vector2D<double>>& points) const override;
    /// @}

private:
    ConstantNext();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
