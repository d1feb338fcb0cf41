#pragma once

#include "FCurveLib/Interpolator.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Base of the kinds whose segments are cubic Bezier curves in the plane of x (frames) and y. A kind says only where
/// its four control points come from.
///
///              P1 o-----                   The curve leaves P0 towards P1 and reaches P3 from P2.
///                /    . ' ' .
///               /  .          ' o P3 (right key)
///              / .             /
///     (left key) P0      -----o P2
///
/// Between the keys, value and derivatives are exact but for rounding. A place within GetEpsilon() of a key, or beyond
/// it, is that key, deliberately: a computed frame, 0.1 + 0.2, meets the key at 0.3. NaN gives NaN. Without both keys
/// the curve is Constant. Where it is vertical (|dx/dt| <= 1e-07), the first derivative is 9999999, or -9999999 if y
/// falls; else where |dy/dt| <= 1e-07, it is 0.
class FCURVELIB_API BezierInterpBase : public Interpolator {
public:
    double eval(double x, const Segment& segment) const override;

    /// Exact: looks at both ends and at each extreme between them. The bounds may come in either order.
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;

    /// \name Polylines
    /// Count points on the curve, denser where it turns faster: the first at x0, the last at x1, the others at equal
    /// distances in the curve's parameter. None for a count below 1, the one at x0 for a count of 1. A segment that
    /// lacks a key is straight: two points, whatever the count.
    /// @{
    void computePolyline(const Segment& segment, double x0, double x1, int count,
                         std::vector<Vector2D<double>>& points) const override;
    double getFirstDerivative(double x, const Segment& segment) const override;
    void firstDerivPolyline(const Segment& segment, double x0, double x1, int count,
                            std::vector<Vector2D<double>>& points) const override;
    /// Exact. Where the curve is vertical: 9999999 with the sign in which the slope would change, 0 for a straight
    /// line.
    double getSecondDerivative(double x, const Segment& segment) const override;
    void secondDerivPolyline(const Segment& segment, double x0, double x1, int count,
                             std::vector<Vector2D<double>>& points) const override;
    /// @}

    /// The control points P0 = (x0, y0) to P3 = (x3, y3); P0 and P3 are the keys. Precondition: the segment has both
    /// keys. Implementations keep x0 <= x1 <= x3 and x0 <= x2 <= x3, or otherwise see to it that x never runs backwards
    /// along the curve.
    virtual void getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2,
                               double& y2, double& x3, double& y3) const = 0;

protected:
    BezierInterpBase();
    BezierInterpBase(const BezierInterpBase& other);
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
