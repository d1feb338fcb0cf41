#pragma once

#include "FCurveLib/BezierInterpBase.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// "bezier()": the control points are the keys and the ends of their tangent handles.
///
/// Handles that would make x run backwards (an out handle that reaches past the right key, say) count as shortened
/// along their own direction until it does not; the tangents themselves stay as they are.
///
/// A segment that lacks a key is the straight line through the other key along its tangent (a handle shorter in x than
/// Keyframe::getMinSeparation() counts as that long); its slope is the handle's, its polylines have two points. Without
/// keys the value is 0.
class FCURVELIB_API Bezier final : public BezierInterpBase {
public:
    static std::shared_ptr<Interpolator> create();

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    bool usesTangents() const override;
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
                       double& x3, double& y3) const override;

private:
    Bezier();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
