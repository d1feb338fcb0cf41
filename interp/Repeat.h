#pragma once

// How the ends of a curve repeat its keyed part, for whatever holds that: a curve, or its compiled numbers. A Part has
//
//     begin(), end()                      x of the first and of the last key, end above begin
//     eval(x)                             the value at an x between them
//     differentiate(x, fromRight, order)  a derivative there, at a key that of the segment on the given side
//     fold(extents, from, to, shift)      widens extents by the values from one x to a later one, shifted

#include "interp/ValueRange.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

constexpr double kMostDistance = std::numeric_limits<double>::max();

// distance = n * span + rest, with n whole and 0 <= rest <= span.
struct Period {
    double n;
    double rest;

    // Precondition: the distance is finite, the span positive.
    Period(double distance, double span) noexcept
        : n(std::clamp(std::floor(distance / span), -kMostDistance, kMostDistance)), rest(distance) {
        constexpr double exact = 0x1p53;
        if (std::abs(n) >= exact) {
            rest = std::fmod(distance, span);
            if (rest < 0.0) rest += span;
        } else if (n != 0.0) {
            // The remainder of a whole quotient is a double, so the fused operation gives it without any rounding. It
            // is negative where the division rounded up to n: there the period begins.
            rest = std::max(0.0, std::fma(-n, span, distance));
        } else if (distance < 0.0) { // so near to zero that the quotient underflowed
            n = -1.0;
            rest = span;
        }
    }
};

// From the first key to x, which is finite; between keys at opposite ends of the doubles it may overflow.
template<class Part>
double DistanceTo(const Part& part, double x) noexcept {
    return std::clamp(x - part.begin(), -kMostDistance, kMostDistance);
}
template<class Part>
double SpanOf(const Part& part) noexcept {
    return part.end() - part.begin();
}

// --- cycle: forwards again and again, period n lifted by n * offset --------------------------------------------------

template<class Part>
double EvalCycle(const Part& part, double x, double offset) {
    if (!std::isfinite(x)) return std::numeric_limits<double>::quiet_NaN();
    const Period period(DistanceTo(part, x), SpanOf(part));
    return part.eval(part.begin() + period.rest) + period.n * offset;
}

// leading: seen from the segment before the first key.
template<class Part>
double DifferentiateCycle(const Part& part, bool leading, double x, int order) {
    if (!std::isfinite(x)) return std::numeric_limits<double>::quiet_NaN();
    if (leading && x == part.begin()) return part.differentiate(part.end(), false, order);
    return part.differentiate(part.begin() + Period(DistanceTo(part, x), SpanOf(part)).rest, true, order);
}

template<class Part>
void FoldCycle(const Part& part, double x0, double x1, double offset, ValueRange& extents) {
    if (std::isnan(x0) || std::isnan(x1)) return;
    const Period from(DistanceTo(part, std::min(x0, x1)), SpanOf(part));
    const Period to(DistanceTo(part, std::max(x0, x1)), SpanOf(part));
    if (from.n == to.n && from.rest <= to.rest) {
        part.fold(extents, part.begin() + from.rest, part.begin() + to.rest, from.n * offset);
        return;
    }
    part.fold(extents, part.begin() + from.rest, part.end(), from.n * offset);
    part.fold(extents, part.begin(), part.begin() + to.rest, to.n * offset);
    if (to.n - from.n != 1.0) { // whole periods between, of which the first and the last reach farthest
        part.fold(extents, part.begin(), part.end(), (from.n + 1.0) * offset);
        part.fold(extents, part.begin(), part.end(), (to.n - 1.0) * offset);
    }
}

// --- mirror: to and fro ----------------------------------------------------------------------------------------------
// Symmetric about the first key. Measured from there in either direction, each two spans begin with the keyed part
// forwards and end with it backwards.

template<class Part>
double EvalMirror(const Part& part, double x) {
    if (!std::isfinite(x)) return std::numeric_limits<double>::quiet_NaN();
    const double span = SpanOf(part);
    const double rest = Period(std::abs(DistanceTo(part, x)), 2.0 * span).rest;
    return part.eval(rest < span ? part.begin() + rest : part.end() - (rest - span));
}

template<class Part>
double DifferentiateMirror(const Part& part, bool leading, double x, int order) {
    if (!std::isfinite(x)) return std::numeric_limits<double>::quiet_NaN();
    const double span = SpanOf(part);
    const bool before = x < part.begin() || (leading && x == part.begin());
    // What lies to the right of x lies nearer to the first key if x is before it.
    const bool fromNearer = x < part.begin();
    const double rest = Period(std::abs(DistanceTo(part, x)), 2.0 * span).rest;
    const bool backwards = fromNearer ? rest > span || rest == 0.0 : rest >= span;
    const double at = !backwards ? part.begin() + rest : rest == 0.0 ? part.begin() : part.end() - (rest - span);
    const double derivative = part.differentiate(at, backwards == fromNearer, order);
    return order == 1 && backwards != before ? -derivative : derivative;
}

template<class Part>
void FoldMirror(const Part& part, double x0, double x1, ValueRange& extents) {
    if (std::isnan(x0) || std::isnan(x1)) return;
    const double span = SpanOf(part);
    const double from = DistanceTo(part, std::min(x0, x1));
    const double length = DistanceTo(part, std::max(x0, x1)) - from;
    if (!(length < 2.0 * span)) {
        part.fold(extents, part.begin(), part.end(), 0.0);
        return;
    }
    const double begin = Period(from, 2.0 * span).rest;
    const double end = begin + length;
    for (int piece = 0; piece < 4; ++piece) {
        const double left = std::max(begin - piece * span, 0.0);
        const double right = std::min(end - piece * span, span);
        if (left > right) continue;
        if (piece % 2 == 0)
            part.fold(extents, part.begin() + left, part.begin() + right, 0.0);
        else
            part.fold(extents, part.end() - right, part.end() - left, 0.0);
    }
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
