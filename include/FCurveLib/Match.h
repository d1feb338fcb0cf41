#pragma once

#include "FCurveLib/BezierInterpBase.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {
struct BezierArgs;
BezierArgs MatchArgs(const Interpolator& interpolator, const Segment& segment);
} // namespace Private

/// "match()": joins the segments on both sides without a jump or a corner.
///
///     ---- before ----.                    .---- after ----
///                      '-.____ match ____-'
///
/// The curve leaves the left key with the value and the slope that the segment before it has there, and arrives at the
/// right key with those of the segment after it, whatever their kinds: so its ends need not be at the keys' own y. A
/// segment without interpolator has the value 0 there. Where a side has no neighbour (a segment outside any curve), the
/// end is the key, flat.
///
/// In a segment that lacks a key the curve is flat, at the value that the neighbour has at the key. A match never asks
/// a neighbour that might ask back, so nothing recurses: docs/interpolators.md tells what it makes of other matches,
/// cycles, formulas and hosts' own kinds beside it.
class FCURVELIB_API Match : public BezierInterpBase {
public:
    static std::shared_ptr<Interpolator> create();

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;
    void computePolyline(const Segment& segment, double x0, double x1, int count,
                         std::vector<Vector2D<double>>& points) const override;
    void getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2, double& y2,
                       double& x3, double& y3) const override;

private:
    friend class MatchIn;
    friend class MatchOut;
    friend Private::BezierArgs Private::MatchArgs(const Interpolator& interpolator, const Segment& segment);

    Match();
    Match(const Match& other);

    /// \name The curve at the keys
    /// Preconditions: the segment has the key on that side.
    /// @{
    virtual double getLeftValue(const Segment& segment) const;
    virtual double getRightValue(const Segment& segment) const;
    virtual double getLeftSlope(const Segment& segment) const;
    virtual double getRightSlope(const Segment& segment) const;
    /// The ends of the handles, as offsets from the curve's ends.
    void getLeftTangent(const Segment& segment, double& x, double& y) const;
    void getRightTangent(const Segment& segment, double& x, double& y) const;
    /// @}
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
