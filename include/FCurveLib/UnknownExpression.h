#pragma once

#include "FCurveLib/Interpolator.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Stands for an expression text that nobody understood, so that the text survives until it is written again. Value and
/// derivatives are 0 everywhere.
class FCURVELIB_API UnknownExpression final : public Interpolator {
public:
    /// Null counts as the empty text.
    static std::shared_ptr<Interpolator> create(const char* expression);

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;

    /// \name Polylines: always (x0, 0) and (x1, 0), whatever the count
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
    UnknownExpression();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
