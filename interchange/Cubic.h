#pragma once

// Cubic Bezier pieces in the plane of x (frames) and y, as plain numbers.

#include <FCurveLib/Vector2D.h>

#include <functional>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

struct Cubic {
    Vector2D<double> p[4];

    double width() const noexcept { return p[3].x - p[0].x; }
};

// The point at the parameter t in 0..1.
Vector2D<double> PointAt(const Cubic& cubic, double t) noexcept;
// d(x, y)/dt there.
Vector2D<double> VelocityAt(const Cubic& cubic, double t) noexcept;
// The parameter where the cubic is at x, which must not run backwards; by bisection, to the last bits.
double ParameterAt(const Cubic& cubic, double x) noexcept;
// The two pieces on both sides of t, exact but for rounding (de Casteljau).
std::pair<Cubic, Cubic> Cut(const Cubic& cubic, double t) noexcept;

// Whether both handles are a third of the width in x, to the last digits: then x(t) is linear.
bool IsThirds(const Cubic& cubic) noexcept;
// The cubic in x with this one's ends and end slopes: handles of a third. A slope beyond mostSlope is held to it.
Cubic AsThirds(const Cubic& cubic, double mostSlope) noexcept;
// The largest distance in y, at the same x, of a cubic from one whose handles are thirds and whose ends are the same;
// and the x where it is. Looked for at 33 places.
struct Distance {
    double y = 0.0;
    double at = 0.0;
};
Distance MeasureDistance(const Cubic& cubic, const Cubic& thirds) noexcept;

// Halves the cubic in its parameter until each piece fits, or is not wider than minWidth, or was halved 24 times. The
// pieces are appended, from left to right. Returns whether all fit.
bool SplitUntil(const Cubic& cubic, double minWidth, const std::function<bool(const Cubic&)>& fits,
                std::vector<Cubic>& pieces);
// The same for a target whose pieces have handles of a third: the pieces are such ones, each nowhere farther from the
// cubic than the tolerance (in y). Returns the largest distance that was found; it exceeds the tolerance only where
// pieces would be narrower than minWidth.
Distance SplitToThirds(const Cubic& cubic, double tolerance, double minWidth, std::vector<Cubic>& pieces);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
