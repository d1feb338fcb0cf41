#pragma once

// Cubic Bezier pieces in the plane of x (frames) and y, as plain numbers.

#include <FCurveLib/Vector2D.h>

#include <cmath>
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
// and the x where it is. Looked for at 33 places, up to the first where it is more than `enough`.
struct Distance {
    double y = 0.0;
    double at = 0.0;
};
Distance MeasureDistance(const Cubic& cubic, const Cubic& thirds, double enough = HUGE_VAL) noexcept;
// The largest distance in y of the cubic from its chord, at the same x: exact. Precondition: width() is not 0.
double DistanceFromChord(const Cubic& cubic) noexcept;

// The inner corners of a polyline from end to end that is nowhere farther from the cubic than the tolerance (in y), but
// where its lines would be narrower than minWidth, or where the distance is beyond all numbers. Of few lines: each is
// about as long as it may be; of some 10^4 at most.
void AppendCorners(const Cubic& cubic, double tolerance, double minWidth, std::vector<Vector2D<double>>& corners);
// Halves the cubic in its parameter into pieces whose handles reach a third, each nowhere farther from it than the
// tolerance (in y); they are appended, from left to right. Returns the largest distance that was found; it exceeds the
// tolerance only where pieces would be narrower than minWidth, or were halved 24 times.
Distance SplitToThirds(const Cubic& cubic, double tolerance, double minWidth, std::vector<Cubic>& pieces);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
