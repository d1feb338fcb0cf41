#pragma once

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A point or an offset: x (for curves: frames), then y (the curve's own unit).
template<class T>
struct Vector2D {
    T x{};
    T y{};

    constexpr Vector2D() noexcept = default;
    constexpr Vector2D(T x_, T y_) noexcept : x(x_), y(y_) {}

    /// Exact comparison; a NaN coordinate makes two vectors unequal.
    friend constexpr bool operator==(const Vector2D& a, const Vector2D& b) noexcept { return a.x == b.x && a.y == b.y; }
    friend constexpr bool operator!=(const Vector2D& a, const Vector2D& b) noexcept { return !(a == b); }

    friend constexpr Vector2D operator+(const Vector2D& a, const Vector2D& b) noexcept {
        return {a.x + b.x, a.y + b.y};
    }
    friend constexpr Vector2D operator-(const Vector2D& a, const Vector2D& b) noexcept {
        return {a.x - b.x, a.y - b.y};
    }
    friend constexpr Vector2D operator-(const Vector2D& a) noexcept { return {-a.x, -a.y}; }
    friend constexpr Vector2D operator*(T s, const Vector2D& a) noexcept { return {s * a.x, s * a.y}; }
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
