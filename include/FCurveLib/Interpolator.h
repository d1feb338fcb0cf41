#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Vector2D.h"

#include <memory>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Says how a curve runs over one segment: value, derivatives, polyline, extents.
///
/// An interpolator holds no state of any curve: all that it computes it takes from the segment passed into each call,
/// so one instance may serve many segments and any number of threads. Its expression text is how files store it and how
/// InterpolatorFactory makes it again.
///
/// A host derives its own kinds by implementing eval and clone; every other operation has a numeric default.
class FCURVELIB_API Interpolator {
public:
    Interpolator();
    virtual ~Interpolator();
    Interpolator& operator=(const Interpolator&) = delete;

    /// The curve's value at x (in frames) within the segment. The built-in kinds compute with keys and handles of up to
    /// 1e300; beyond, differences may overflow, and values, derivatives and points become infinite or NaN.
    virtual double eval(double x, const Segment& segment) const = 0;

    /// A new, independent copy of the same kind with the same expression.
    virtual std::shared_ptr<Interpolator> clone() = 0;

    /// Whether the shape depends on the segment's tangents. Default false.
    virtual bool usesTangents() const;

    /// Lowest and highest value between x0 and x1. The default looks at both ends and, if x0 <= x1, at x0, x0 + 0.1,
    /// x0 + 0.2 ... up to x1: deliberately a fixed step in frames, whatever the span. So it may miss an extremum
    /// between two looks, and it takes time in proportion to x1 - x0; where the step is too small to move x, it looks
    /// at the ends only.
    virtual void getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const;

    /// \name Polylines of the curve, its first and its second derivative between x0 and x1
    /// Empty the vector, then fill it with (x, y), (x, dy/dx) or (x, d2y/dx2). The defaults give count points at equal
    /// distances in x, none for a count below 1 and the one at x0 for a count of 1. Kinds whose shape needs fewer
    /// points ignore the count.
    /// @{
    virtual void computePolyline(const Segment& segment, double x0, double x1, int count,
                                 std::vector<Vector2D<double>>& points) const;
    virtual double getFirstDerivative(double x, const Segment& segment) const;
    virtual void firstDerivPolyline(const Segment& segment, double x0, double x1, int count,
                                    std::vector<Vector2D<double>>& points) const;
    /// The default derivatives are central differences over max(|x|, 0.1) times the cube root of the machine epsilon to
    /// either side; the stencil never leaves the segment: near a key it is shortened and re-centred. 0 where it has no
    /// width.
    virtual double getSecondDerivative(double x, const Segment& segment) const;
    virtual void secondDerivPolyline(const Segment& segment, double x0, double x1, int count,
                                     std::vector<Vector2D<double>>& points) const;
    /// @}

    /// \name Expression
    /// The text by which files store this interpolator; never null. The instances that InterpolatorFactory shares keep
    /// theirs: setting one does nothing there. Clone such an instance first.
    /// @{
    const char* getExpression() const noexcept { return m_expression.c_str(); }
    void setExpression(const char* expression);
    /// @}

protected:
    Interpolator(const Interpolator& other);

private:
    friend class InterpolatorFactory;

    std::string m_expression;
    bool m_isShared = false; // the expression stays
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
