#pragma once

// The value of a Bezier segment in long double, with the parameter found by bisection.

#include "interp/BezierMath.h" // internal: mathematics
#include "support/Random.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace Test {

using VEM_FN::FCurveLib::Private::BezierArgs;

using Exact = long double;

struct Oracle {
    explicit Oracle(const BezierArgs& args) : p(args), width(Exact(p.x3) - p.x0), rise(Exact(p.y3) - p.y0) {
        for (int i = 0; i <= 256; ++i) {
            const Exact y = offsetY(i / Exact(256));
            low = std::min(low, y);
            high = std::max(high, y);
        }
    }

    static Exact bernstein(Exact t, Exact b1, Exact b2, Exact b3) {
        const Exact u = 1 - t;
        return 3 * u * u * t * b1 + 3 * u * t * t * b2 + t * t * t * b3;
    }
    Exact offsetX(Exact t) const { return bernstein(t, p.outX, width + p.inX, width); }
    Exact offsetY(Exact t) const { return bernstein(t, p.outY, rise + p.inY, rise); }
    Exact range() const { return high - low; }

    // The t at which the offset from the left key is reached.
    Exact t(Exact offset) const {
        Exact from = 0;
        Exact to = 1;
        for (int i = 0; i < LDBL_MANT_DIG + 8; ++i) {
            const Exact middle = (from + to) / 2;
            (offsetX(middle) < offset ? from : to) = middle;
        }
        return (from + to) / 2;
    }

    Exact y(double x) const { return p.y0 + offsetY(t(Exact(x) - p.x0)); }

    // By how much the oracle's own rounding may move its answer: much where the curve is vertical.
    Exact doubt(double x) const {
        const Exact offset = Exact(x) - p.x0;
        const Exact noise = 8 * LDBL_EPSILON * width;
        return std::abs(offsetY(t(offset + noise)) - offsetY(t(offset - noise)));
    }

    BezierArgs p;
    Exact width;
    Exact rise;
    Exact low = 0;
    Exact high = 0;
};

/// Calls check(args) for segments of all sizes whose handles let the closed form of the parameter lose its digits, or
/// leave it none; and for ordinary ones.
template<class Check>
void ForEachHardSegment(Random& random, const Check& check) {
    for (const double width : {1e-3, 0.02, 1.0, 24.0, 1e3, 1e6})
        for (const double start : {0.0, 17.3, 1e5, 1e7}) {
            const auto handles = [&](double out, double in) {
                check(BezierArgs{start, 0, start + width, 1, out, random.between(-1, 1), -in, random.between(-1, 1)});
            };
            const auto parts = [&](double out, double in) {
                const double exactWidth = start + width - start;
                handles(exactWidth * out, exactWidth * in);
            };
            for (int i = 0; i < 6; ++i) parts(random.between(0, 1), random.between(0, 1));
            // Near thirds.
            for (double off = 1e-3; off > 0.9e-12; off /= 10.0) {
                parts((1.0 + off * random.between(-1, 1)) / 3.0, (1.0 + off * random.between(-1, 1)) / 3.0);
                parts((1.0 + off) / 3.0, 1.0 / 3.0);
            }
            // Two thirds in all, rounded.
            for (int i = 0; i < 3; ++i) {
                const double out = random.between(0.05, 0.6) * width;
                const double in = 2.0 / 3.0 * width - out;
                handles(std::round(out * 1e6) / 1e6, std::round(in * 1e6) / 1e6);
                handles(static_cast<float>(out), static_cast<float>(in));
            }
            for (const double out : {0.0, 1e-12, 1e-7, 1e-3, 0.999, 1.0 - 1e-9, 1.0})
                for (const double in : {0.0, 1e-9, 1e-5, 0.5, 1.0}) parts(out, in);
        }
}

} // namespace Test
