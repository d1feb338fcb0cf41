#pragma once

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// An axis-aligned box: its lower left corner (x, y), its width and its height.
template<class T>
struct Rectangle {
    T x{};
    T y{};
    T width{};
    T height{};

    constexpr Rectangle() noexcept = default;
    constexpr Rectangle(T x_, T y_, T width_, T height_) noexcept : x(x_), y(y_), width(width_), height(height_) {}

    /// Exact comparison; a NaN field makes two boxes unequal.
    friend constexpr bool operator==(const Rectangle& a, const Rectangle& b) noexcept {
        return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
    }
    friend constexpr bool operator!=(const Rectangle& a, const Rectangle& b) noexcept { return !(a == b); }
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
