#pragma once

// How USD shortens the handles of a segment that would run backwards, and how to write handles that it leaves alone.
// Widths as shares of the segment's span.

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Usda {

struct Widths {
    double left;
    double right;
};

// Legal are widths up to 1, and longer ones inside the ellipse a^2 + b^2 + ab - 2a - 2b + 1 <= 0, beyond which x(t)
// turns; tested with each raised by 1e-6, as evaluators of USD do.
inline bool IsRegressive(const Widths& widths) noexcept {
    if (widths.left <= 1.0 && widths.right <= 1.0) return false;
    const double a = widths.left + 1e-6;
    const double b = widths.right + 1e-6;
    return a * a + b * b + a * b - 2.0 * a - 2.0 * b + 1.0 > 0.0;
}

// The widths by which USD evaluates: regressive ones are brought onto the ellipse in their ratio, less 1e-5.
inline Widths AsEvaluated(const Widths& widths) noexcept {
    if (!IsRegressive(widths)) return widths;
    if (widths.left < 1e-6) return {widths.left, 1.0 - 1e-6};
    if (widths.right < 1e-6) return {1.0 - 1e-6, widths.right};
    const double k = widths.left / widths.right;
    const double right = (std::sqrt(k) + k + 1.0) / (k * k + k + 1.0);
    if (!std::isfinite(right) || k < 1e-12) return {0.0, 1.0 - 1e-6};
    return {std::max(k * right - 1e-5, 0.0), std::max(right - 1e-5, 0.0)};
}

// Widths on or inside the ellipse, so little shorter where they exceed the span that USD's test passes them.
inline Widths WithinTest(const Widths& widths) noexcept {
    constexpr double margin = 4e-6;
    return {widths.left > 1.0 ? widths.left - margin : widths.left,
            widths.right > 1.0 ? widths.right - margin : widths.right};
}

} // namespace Usda

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
