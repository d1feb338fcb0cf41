#pragma once

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \name The library's one tolerance
/// Comparisons of doubles go through these functions. Every comparison with NaN is false. Thread-safe.
/// @{

/// 1e-07, an absolute tolerance.
constexpr double GetEpsilon() noexcept {
    return 1e-07;
}

/// True exactly when -tolerance <= a - b <= tolerance, both bounds included.
///
/// The difference is the one that doubles give: NearEqual(1.0, 1.0 + 1e-07) is false, because the sum rounds up.
constexpr bool Near(double a, double b, double tolerance) noexcept {
    return -tolerance <= (a - b) && (a - b) <= tolerance;
}

/// Near with GetEpsilon().
constexpr bool NearEqual(double a, double b) noexcept {
    return Near(a, b, GetEpsilon());
}

/// True exactly when -1e-07 <= v <= 1e-07.
constexpr bool NearZero(double v) noexcept {
    return -GetEpsilon() <= v && v <= GetEpsilon();
}

/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
