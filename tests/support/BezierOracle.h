#pragma once

// The value of a Bezier segment in long double, with the parameter found by bisection.

#include "interp/BezierMath.h" // internal: mathematics

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

} // namespace Test
