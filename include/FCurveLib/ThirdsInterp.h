#pragma once

#include "FCurveLib/BezierInterpBase.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

struct BezierArgs;

/// Base of the Bezier kinds whose handles always reach a third of the segment in x: then the parameter runs evenly with
/// x, and y is a cubic polynomial of x. A kind says only where its handles point in y.
class FCURVELIB_API ThirdsInterp : public BezierInterpBase {
public:
    double eval(double x, const Segment& segment) const override;
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;
    void computePolyline(const Segment& segment, double x0, double x1, int count,
                         std::vector<Vector2D<double>>& points) const override;
    double getFirstDerivative(double x, const Segment& segment) const override;
    void firstDerivPolyline(const Segment& segment, double x0, double x1, int count,
                            std::vector<Vector2D<double>>& points) const override;
    double getSecondDerivative(double x, const Segment& segment) const override;
    void secondDerivPolyline(const Segment& segment, double x0, double x1, int count,
                             std::vector<Vector2D<double>>& points) const override;
    void getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2, double& y2,
                       double& x3, double& y3) const final;

protected:
    /// The heights of the segment's ends, and of the handles above their ends: offsets, because at great heights
    /// absolute ones lose their digits.
    struct Heights {
        double left;
        double right;
        double out;
        double in;
    };

    ThirdsInterp();
    ThirdsInterp(const ThirdsInterp& other);

private:
    /// The control points with all their digits, which getBezierArgs loses far from 0.
    friend BezierArgs ThirdsArgs(const Interpolator& thirds, const Segment& segment);

    /// Precondition: the segment has both keys.
    virtual Heights getHeights(const Segment& segment) const = 0;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
