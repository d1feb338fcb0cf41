#pragma once

// What curves are over a stretch between two places, where one segment each is all there is; and what sums, blends and
// compositions of these are.

#include "FCurveLib/FCurve.h"
#include "interp/BezierMath.h"

#include <optional>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

enum class Form { Flat, Line, Cubic };

// Flat and line have handles of a third, too. The control points are those of the stretch, which x0 and x3 bound.
struct Span {
    Form form;
    BezierArgs args;
};

Span LineSpan(double from, double to, double y0, double y3) noexcept; // or a flat one
Span CutSpan(const Span& span, double from, double to);

// The curve between two places that lie in one segment; which one, the middle says. Nothing for formulas, repetitions
// and the like.
std::optional<Span> SpanOf(const FCurve& curve, double from, double to);

// fa a + fb b over one stretch, where that is a shape.
std::optional<Span> SumOf(const Span& a, double fa, const Span& b, double fb) noexcept;
// a + w (b - a).
std::optional<Span> BlendOf(const Span& a, const Span& b, const Span& w) noexcept;
// y(by(x)); y covers all values of by.
std::optional<Span> ComposeOf(const Span& y, const Span& by);

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
