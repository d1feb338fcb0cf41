#include "interp/BezierMath.h"

#include <algorithm>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::BezierArgs;
using Private::BezierPlace;

namespace {

// --- numbers of twice the precision (T. J. Dekker, "A floating-point technique for extending the available precision",
// 1971; the error terms by Knuth's two-sum and by a fused multiply-add)

struct Twofold {
    double hi;
    double lo;
};

Twofold Sum(double a, double b) noexcept {
    const double sum = a + b;
    const double part = sum - a;
    return {sum, (a - (sum - part)) + (b - part)};
}

Twofold operator+(const Twofold& a, const Twofold& b) noexcept {
    const Twofold hi = Sum(a.hi, b.hi);
    return Sum(hi.hi, hi.lo + (a.lo + b.lo));
}

Twofold operator*(const Twofold& a, double b) noexcept {
    const double product = a.hi * b;
    return Sum(product, std::fma(a.hi, b, -product) + a.lo * b);
}

// First differences of the control points, the coefficients of x'(t) / 3 and y'(t) / 3 in Bernstein form.
struct Differences {
    double first;
    double middle;
    double last;

    Differences(double rise, double out, double in) noexcept : first(out), middle(rise + in - out), last(-in) {}

    double derivative(const BezierPlace& at) const noexcept {
        return 3.0 * ((middle * 2.0 * at.u + last * at.t) * at.t + first * at.u * at.u);
    }
    double second(const BezierPlace& at) const noexcept {
        return 6.0 * ((middle - first) * at.u + (last - middle) * at.t);
    }
};

Differences DifferencesX(const BezierArgs& p) noexcept {
    return {p.x3 - p.x0, p.outX, p.inX};
}
Differences DifferencesY(const BezierArgs& p) noexcept {
    return {p.y3 - p.y0, p.outY, p.inY};
}

} // namespace

// Finds s, counted from the key that is nearer in the parameter, with
// f(s) = a s^3 + b s^2 + c s - offset = 0.
//
// The step is Laguerre's for a cubic, 3 f / (f' + sqrt(4 f'^2 - 6 f f'')), with a negative radicand taken as 0: like
// Newton's where f' is large, and as fast where f' vanishes. A step that leaves the bracket becomes a bisection, and so
// do all after the twentieth: no guess, and no rounding, can lead astray.
//
// Where rounding may decide f's sign, s is accepted if f' is large enough for that not to matter; where the curve is
// nearly vertical inside the segment it does matter (s is wrong by the cube root of f's error there), and f is computed
// to twice the precision.
BezierPlace Private::RepairBezierPlace(double x, const BezierArgs& p, double guess) noexcept {
    const double width = p.x3 - p.x0;
    const bool right = x - p.x0 > (3.0 * p.outX + 3.0 * (width + p.inX) + width) / 8.0; // beyond x(1/2)
    const double nearHandle = right ? -p.inX : p.outX;
    const double farHandle = right ? p.outX : -p.inX;
    const double offset = right ? p.x3 - x : x - p.x0;
    const double a = 3.0 * (nearHandle + farHandle) - 2.0 * width;
    const double b = 3.0 * (width - farHandle) - 6.0 * nearHandle;
    const double c = 3.0 * nearHandle;

    const auto preciseF = [&](double s) {
        const Twofold span = Sum(p.x3, -p.x0);
        const Twofold A = Sum(nearHandle, farHandle) * 3.0 + span * -2.0;
        const Twofold B = (span + Twofold{-farHandle, 0.0}) * 3.0 + Twofold{nearHandle, 0.0} * -6.0;
        const Twofold C = Twofold{nearHandle, 0.0} * 3.0;
        const Twofold start = right ? Sum(x, -p.x3) : Sum(p.x0, -x);
        return (((A * s + B) * s + C) * s + start).hi;
    };

    double low = 0.0;
    double high = 0.5625; // more than 1/2: rounding may have misjudged which key is nearer
    double s = right ? 1.0 - guess : guess;
    if (!(s > low && s < high)) s = 0.25;

    constexpr int freeSteps = 20;
    constexpr int maxSteps = 79; // twenty steps and 59 bisections reach 2^-60
    for (int step = 0; step < maxSteps; ++step) {
        double f = ((a * s + b) * s + c) * s - offset;
        const double f1 = (3.0 * a * s + 2.0 * b) * s + c;
        const double f2 = 6.0 * a * s + 2.0 * b;
        const double noise = 0x1p-50 * (((std::abs(a) * s + std::abs(b)) * s + std::abs(c)) * s + std::abs(offset));
        if (std::abs(f) <= 4.0 * noise) {
            if (noise <= 0x1p-43 * f1) break;
            f = preciseF(s);
            if (f == 0.0) break;
        }
        (f > 0.0 ? high : low) = s;
        const double move = 3.0 * f / (f1 + std::sqrt(std::max(0.0, 4.0 * f1 * f1 - 6.0 * f * f2)));
        double next = s - move;
        if (step >= freeSteps || !(next > low && next < high)) next = low + (high - low) / 2.0;
        const double moved = std::abs(next - s);
        s = next;
        if (moved <= 0x1p-52 * s || moved <= 0x1p-60) break;
    }
    return right ? BezierPlace{1.0 - s, s} : BezierPlace{s, 1.0 - s};
}

double Private::BezierX(const BezierPlace& at, const BezierArgs& p) noexcept {
    // The value's form, with the axes exchanged.
    return BezierY(at, {p.y0, p.x0, p.y3, p.x3, p.outY, p.outX, p.inY, p.inX});
}

double Private::BezierSlope(const BezierPlace& at, const BezierArgs& p) noexcept {
    const double dx = DifferencesX(p).derivative(at);
    const double dy = DifferencesY(p).derivative(at);
    if (NearZero(dx)) return dy < 0.0 ? -kVerticalSlope : kVerticalSlope;
    if (NearZero(dy)) return 0.0;
    return dy / dx;
}

double Private::BezierSecond(const BezierPlace& at, const BezierArgs& p) noexcept {
    const Differences x = DifferencesX(p);
    const Differences y = DifferencesY(p);
    const double dx = x.derivative(at);
    const double turn = dx * y.second(at) - y.derivative(at) * x.second(at);
    if (NearZero(dx)) return turn < 0.0 ? -kVerticalSlope : turn > 0.0 ? kVerticalSlope : 0.0;
    return turn / (dx * dx * dx);
}

void Private::BezierExtents(const BezierPlace& from, const BezierPlace& to, const BezierArgs& p, double& minY,
                            double& maxY) noexcept {
    const double y0 = BezierY(from, p);
    const double y1 = BezierY(to, p);
    minY = std::min(y0, y1);
    maxY = std::max(y0, y1);

    // y'(t) / 3 = a t^2 - 2 m t + first, scaled to coefficients of at most 1, without any absolute tolerance: curves of
    // 1e-12 have extremes too.
    Differences d = DifferencesY(p);
    const double scale = std::max({std::abs(d.first), std::abs(d.middle), std::abs(d.last)});
    if (!(scale > 0.0)) return;
    d.first /= scale;
    d.middle /= scale;
    d.last /= scale;
    const double disc = d.middle * d.middle - d.first * d.last;
    if (!(disc >= 0.0)) return;
    const double a = d.first - 2.0 * d.middle + d.last;
    const double m = d.first - d.middle;
    const double z = m + std::copysign(std::sqrt(disc), m);
    for (const double t : {z / a, d.first / z}) {
        if (!(t > std::min(from.t, to.t) && t < std::max(from.t, to.t))) continue;
        const double y = BezierY({t, 1.0 - t}, p);
        // Evaluation next to the extreme may round beyond the value at it.
        const double rounding = 0x1p-51 * (std::abs(y) + scale);
        minY = std::min(minY, y - rounding);
        maxY = std::max(maxY, y + rounding);
    }
}

// With handle lengths h and k (in x) and the keys w apart, x'(t) / 3 = h u^2 + 2 (w - h - k) u t + k t^2 has no sign
// change as long as (h + k - w)^2 <= h k. Where k stays within w, that limits h to the larger root of
// h^2 + (k - 2 w) h + (w - k)^2 = 0.
void Private::ShortenBezierHandles(BezierArgs& p) noexcept {
    const double width = p.x3 - p.x0;
    const auto limit = [width](double other) {
        const double root = (2.0 * width - other + std::sqrt(other * (4.0 * width - 3.0 * other))) / 2.0;
        return root * (1.0 - 0x1p-50); // so that its rounding leaves no fold
    };
    const auto shorten = [](double& x, double& y, double length) {
        y *= length / std::abs(x);
        x = std::copysign(length, x);
    };

    // Handles that point away from the segment have no length at which x(t) would not begin backwards.
    if (p.outX < 0.0) p.outX = p.outY = 0.0;
    if (p.inX > 0.0) p.inX = p.inY = 0.0;
    const double out = p.outX;
    const double in = -p.inX;
    if (out >= width && in >= width) {
        if (out > width) shorten(p.outX, p.outY, width);
        if (in > width) shorten(p.inX, p.inY, width);
    } else if (out > width) {
        if (const double length = limit(in); out > length) shorten(p.outX, p.outY, length);
    } else if (in > width) {
        if (const double length = limit(out); in > length) shorten(p.inX, p.inY, length);
    }
}

void Private::MakeBezierMonotonic(double x0, double y0, double& x1, double& y1, double& x2, double& y2, double x3,
                                  double y3) noexcept {
    const BezierArgs given = BezierArgs::fromPoints(x0, y0, x1, y1, x2, y2, x3, y3);
    BezierArgs p = given;
    MakeBezierMonotonic(p);
    const double width = x3 - x0;
    // Rounded towards the key: a length that the sum rounded up could fold again.
    if (p.outX != given.outX) {
        x1 = p.outX == width ? x3 : x0 + p.outX;
        if (x1 - x0 > p.outX) x1 = std::nextafter(x1, x0);
        y1 = y0 + p.outY;
    }
    if (p.inX != given.inX) {
        x2 = -p.inX == width ? x0 : x3 + p.inX;
        if (x2 - x3 < p.inX) x2 = std::nextafter(x2, x3);
        y2 = y3 + p.inY;
    }
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
