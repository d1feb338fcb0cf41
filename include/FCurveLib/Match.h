#pragma once

#include "FCurveLib/ThirdsInterp.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

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
/// In a segment that lacks a key the curve is flat, at the value that the neighbour has at the key.
///
/// Neighbours that look around themselves
/// --------------------------------------
/// Nothing recurses, because a match never asks an interpolator that might ask back:
///
///  - Match beside match: both take the key's y there and the slope of the chord between the two outer keys, so they
///    join smoothly. Flat instead if either is flat there (MatchIn, MatchOut) or lacks its outer key.
///  - A match before a trailing Cycle continues into the curve's first interior segment: it takes that segment's value
///    and slope at the first key, so that the loop closes without a jump or a corner. CycleOffset: the key's y and that
///    slope. A match after a leading Cycle or CycleOffset does the same with the last interior segment.
///  - If the segment across such a joint is a match, too, its end is found first, by these rules. If that would lead
///    back here, because the curve repeats on both sides, both ends take the first key's y (beside CycleOffset each its
///    key's y) and the slope of the chord across the joint.
///  - Mirror: the key's y, flat, which is the only smooth way to turn back.
///  - A formula is evaluated with these contributions in place of the kinds that it uses. Where that makes an end of a
///    match depend on itself, as "2*mirror()" after it does, or "2*cycle()" where the curve repeats on both sides,
///    there may be no value that joins, and a jump stays.
///  - A host's own kind is shown its segment alone: a copy with the same keys' positions and the same tangents, but
///    without a curve and without other segments. A kind that computes from its own segment joins smoothly.
///
/// A neighbour's value that is not finite counts as the key's y; a slope that is not finite, or vertical (reported as
/// 9999999), as flat.
class FCURVELIB_API Match : public Private::ThirdsInterp {
public:
    static std::shared_ptr<Interpolator> create();

    double eval(double x, const Segment& segment) const override;
    std::shared_ptr<Interpolator> clone() override;
    void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const override;
    void computePolyline(const Segment& segment, double x0, double x1, int count,
                         std::vector<Vector2D<double>>& points) const override;

private:
    friend class MatchIn;
    friend class MatchOut;

    Match();
    Match(const Match& other);

    Heights getHeights(const Segment& segment) const final;

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
