#pragma once

// The geometry of one cubic Bezier segment, as pure functions on doubles. The part that every evaluation runs through
// is inline; what only unusual segments need is in BezierMath.cpp.

#include "FCurveLib/Tolerance.h"

#include <cmath>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// A segment from P0 = (x0, y0) to P3 = (x3, y3). The inner control points are offsets, P1 = P0 + out and P2 = P3 + in,
// as the tangents hold them: so a segment at frame 10^7 is as exact as one at frame 0.
struct BezierArgs {
    double x0, y0, x3, y3;
    double outX, outY;
    double inX, inY;

    static BezierArgs fromPoints(double x0, double y0, double x1, double y1, double x2, double y2, double x3,
                                 double y3) noexcept {
        return {x0, y0, x3, y3, x1 - x0, y1 - y0, x2 - x3, y2 - y3};
    }
    void getPoints(double& px0, double& py0, double& px1, double& py1, double& px2, double& py2, double& px3,
                   double& py3) const noexcept {
        px0 = x0, py0 = y0, px1 = x0 + outX, py1 = y0 + outY;
        px2 = x3 + inX, py2 = y3 + inY, px3 = x3, py3 = y3;
    }
};

// A place on the segment: t counts from the left key, u from the right one, t + u = 1. Both, because near a key only
// the smaller of them holds all its digits.
struct BezierPlace {
    double t;
    double u;
};

// Reported as the slope where the curve is vertical, with the sign of the direction in which it runs.
constexpr double kVerticalSlope = 9999999.0;

// --- polynomials -----------------------------------------------------------------------------------------------------

// Real roots of a t^2 + b t + c = 0, ascending; returns how many were found (0 to 2), roots[] beyond that count is
// untouched. Roots within the library's tolerance count once. The form q = -(b + sign(b) sqrt(disc)) / 2, t = q / a,
// t = c / q avoids the difference of nearly equal numbers.
inline int SolveQuadratic(double a, double b, double c, double (&roots)[2]) noexcept {
    if (NearZero(a)) {
        if (NearZero(b)) return 0;
        roots[0] = -c / b;
        return 1;
    }
    double disc = b * b - 4.0 * a * c;
    if (NearZero(disc)) disc = 0.0;
    if (disc < 0.0) return 0;
    const double s = b <= 0.0 ? -std::sqrt(disc) : std::sqrt(disc);
    const double q = -0.5 * (b + s);
    roots[0] = q / a;
    if (NearZero(q)) return 1;
    const double other = c / q;
    if (NearEqual(roots[0], other)) return 1;
    roots[1] = other;
    if (roots[1] < roots[0]) std::swap(roots[0], roots[1]);
    return 2;
}

// Real roots of t^3 + a t^2 + b t + c = 0: Cardano's form where there is one, the trigonometric form (Viete) where
// there are three, which then ascend. Returns how many were found (1 to 3), roots that are equal within the library's
// tolerance counting once; roots[] beyond that count is undefined.
inline int SolveCubic(double a, double b, double c, double (&roots)[3]) noexcept {
    const double third = a / 3.0;
    const double q = (a * a - 3.0 * b) / 9.0;
    const double r = (((a * a + a * a) - 9.0 * b) * a + 27.0 * c) / 54.0;
    const double q3 = q * q * q;
    const double r2 = r * r;
    if (q3 <= r2) {
        const double s = std::sqrt(r2 - q3);
        const double A = r <= 0.0 ? std::cbrt(s - r) : -std::cbrt(s + r);
        const double B = NearZero(A) ? 0.0 : q / A;
        roots[0] = A + B - third;
        return 1;
    }
    constexpr double pi = 3.14159265358979323846;
    const double theta = std::acos(r / std::sqrt(q3));
    const double k = -2.0 * std::sqrt(q);
    roots[0] = k * std::cos(theta / 3.0) - third;
    roots[1] = k * std::cos((theta - 2.0 * pi) / 3.0) - third;
    roots[2] = k * std::cos((theta + 2.0 * pi) / 3.0) - third;
    int count = 3;
    if (NearEqual(roots[1], roots[2])) count = 2;
    if (NearEqual(roots[0], roots[1])) {
        --count;
        roots[1] = roots[2];
    }
    return count;
}

// --- the parameter at an abscissa ------------------------------------------------------------------------------------

// The root t in [0, 1] of x(t) = x in closed form, for a segment whose left key is at 0 and whose right key is at x3.
// Ill-conditioned where the cubic is nearly a quadratic, that is near handles of a third: its error grows as the square
// of b / a, until the wrong root is taken and clamped to the other key. FindBezierPlace checks it.
inline double ClosedFormBezierT(double x, double x1, double x2, double x3) noexcept {
    constexpr double lowest = -1e-7;
    constexpr double highest = 1.0000001;

    const double a = 3.0 * x1 - 3.0 * x2 + x3;
    const double b = -6.0 * x1 + 3.0 * x2;
    const double c = 3.0 * x1;
    const double d = -x;
    double roots[3] = {0.0, 0.0, 0.0};
    double t = 0.0;
    int count = 0;
    if (NearZero(a)) {
        double two[2] = {0.0, 0.0};
        count = SolveQuadratic(b, c, d, two);
        roots[0] = two[0];
        roots[1] = two[1];
    } else {
        count = SolveCubic(b / a, c / a, d / a, roots);
    }
    if (count == 3) {
        t = roots[1];
        if (t < lowest)
            t = roots[2];
        else if (t > highest)
            t = roots[0];
    } else {
        t = roots[0];
        if (count == 2 && (t < lowest || t > highest)) t = roots[1];
    }
    return t < 0.0 ? 0.0 : t > 1.0 ? 1.0 : t;
}

// The exact place for an x between the keys, from a guess: a bracketed Newton iteration. See BezierMath.cpp.
BezierPlace RepairBezierPlace(double x, const BezierArgs& p, double guess) noexcept;

// The place at an x strictly between the keys where handles of a third make t run evenly with x.
inline BezierPlace EvenPlace(double x, const BezierArgs& p) noexcept {
    const double width = p.x3 - p.x0;
    return {(x - p.x0) / width, (p.x3 - x) / width};
}

// The place at an x strictly between the keys. With handles of a third t runs evenly with x. Otherwise the closed
// form's answer stands if x(t) meets x so closely that t can be wrong by 2^-41 at most, counting the rounding of x(t)
// itself; that bounds the value's error by about 4e-12 of the value range (a cubic of range 1 has a slope of at most 9
// in t). Otherwise it is repaired.
inline BezierPlace FindBezierPlace(double x, const BezierArgs& p) noexcept {
    const double width = p.x3 - p.x0;
    if (3.0 * p.outX == width && 3.0 * p.inX == -width) return EvenPlace(x, p);
    const double t = ClosedFormBezierT(x - p.x0, p.outX, width + p.inX, width);

    // Seen from the nearer key, so that short and vertical handles are as exact on the right as on the left.
    const double u = 1.0 - t;
    const bool right = t > 0.5;
    const double s = right ? u : t;
    const double r = right ? t : u;
    const double nearHandle = right ? -p.inX : p.outX;
    const double farHandle = right ? p.outX : -p.inX;
    const double offset = right ? p.x3 - x : x - p.x0;
    const double far = width - farHandle;

    const double nearTerm = 3.0 * r * r * nearHandle;
    const double reached = ((3.0 * r * far + s * width) * s + nearTerm) * s;
    const double magnitude = ((3.0 * r * std::abs(far) + s * width) * s + nearTerm) * s;
    const double speed = nearTerm + 3.0 * s * (2.0 * r * (far - nearHandle) + s * farHandle);
    if (std::abs(reached - offset) + 0x1p-51 * magnitude <= 0x1p-41 * speed) return {t, u};
    return RepairBezierPlace(x, p, t);
}

// Whether x is at a key, within the library's tolerance, or beyond it. A frame that was computed and rounded, 0.1 +
// 0.2, so meets its key.
inline bool IsAtLeftKey(double x, const BezierArgs& p) noexcept {
    return x - p.x0 <= GetEpsilon();
}
inline bool IsAtRightKey(double x, const BezierArgs& p) noexcept {
    return p.x3 - x <= GetEpsilon();
}

// The place at x: the key's where x is at one or beyond it, NaN for NaN.
inline BezierPlace SolveBezier(double x, const BezierArgs& p) noexcept {
    if (IsAtLeftKey(x, p)) return {0.0, 1.0};
    if (IsAtRightKey(x, p)) return {1.0, 0.0};
    return std::isnan(x) ? BezierPlace{x, x} : FindBezierPlace(x, p);
}
// Its parameter, for control abscissae x0 to x3.
inline double SolveBezierT(double x, double x0, double x1, double x2, double x3) noexcept {
    return SolveBezier(x, BezierArgs::fromPoints(x0, 0.0, x1, 0.0, x2, 0.0, x3, 0.0)).t;
}

// --- value and derivatives -------------------------------------------------------------------------------------------

// The value at a place: the Bernstein form on offsets from the nearer key, so that a flat segment is flat, and a key's
// value comes out, to the last bit.
inline double BezierY(const BezierPlace& at, const BezierArgs& p) noexcept {
    const bool right = at.t > 0.5;
    const double s = right ? at.u : at.t;
    const double r = right ? at.t : at.u;
    const double base = right ? p.y3 : p.y0;
    const double rise = right ? p.y0 - p.y3 : p.y3 - p.y0;
    const double nearHandle = right ? p.inY : p.outY;
    const double far = rise + (right ? p.outY : p.inY);
    return base + ((3.0 * r * far + s * rise) * s + 3.0 * r * r * nearHandle) * s;
}

// The curve's value at x; the key's at a key and beyond it; NaN for NaN.
inline double EvalBezierY(double x, const BezierArgs& p) noexcept {
    if (IsAtLeftKey(x, p)) return p.y0;
    if (IsAtRightKey(x, p)) return p.y3;
    return std::isnan(x) ? x : BezierY(FindBezierPlace(x, p), p);
}

// The same for handles of a third.
inline double EvalEvenBezierY(double x, const BezierArgs& p) noexcept {
    if (IsAtLeftKey(x, p)) return p.y0;
    if (IsAtRightKey(x, p)) return p.y3;
    return std::isnan(x) ? x : BezierY(EvenPlace(x, p), p);
}

// The abscissa at a place.
double BezierX(const BezierPlace& at, const BezierArgs& p) noexcept;

// dy/dx at a place: y'(t) / x'(t). Vertical (|x'| <= 1e-07): 9999999, or -9999999 where y falls. Else flat
// (|y'| <= 1e-07): 0.
double BezierSlope(const BezierPlace& at, const BezierArgs& p) noexcept;

// d2y/dx2 at a place: (x' y'' - y' x'') / x'^3. Vertical: 9999999 with the sign of x' y'' - y' x'', 0 if that is 0.
double BezierSecond(const BezierPlace& at, const BezierArgs& p) noexcept;

// Lowest and highest value between two places: the ends, and the roots of y'(t) between them.
void BezierExtents(const BezierPlace& from, const BezierPlace& to, const BezierArgs& p, double& minY,
                   double& maxY) noexcept;

// --- folds -----------------------------------------------------------------------------------------------------------

void ShortenBezierHandles(BezierArgs& p) noexcept;

// Shortens handles along their own direction until x(t) no longer runs backwards. Does nothing while both handles stay
// between the keys: then x'(t) is positive, however they cross.
inline void MakeBezierMonotonic(BezierArgs& p) noexcept {
    const double width = p.x3 - p.x0;
    if (!(p.outX >= 0.0 && p.outX <= width && p.inX <= 0.0 && -p.inX <= width)) ShortenBezierHandles(p);
}
void MakeBezierMonotonic(double x0, double y0, double& x1, double& y1, double& x2, double& y2, double x3,
                         double y3) noexcept;

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
