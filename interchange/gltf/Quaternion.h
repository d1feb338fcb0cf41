#pragma once

// Rotations, and the arcs between them.

#include <algorithm>
#include <array>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

using Quaternion = std::array<double, 4>; // x y z w

inline double Dot(const Quaternion& a, const Quaternion& b) noexcept {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
}
inline Quaternion Sum(double u, const Quaternion& a, double v, const Quaternion& b) noexcept {
    return {u * a[0] + v * b[0], u * a[1] + v * b[1], u * a[2] + v * b[2], u * a[3] + v * b[3]};
}
inline Quaternion Normalised(const Quaternion& q) noexcept {
    const double length = std::sqrt(Dot(q, q));
    return length > 0.0 && std::isfinite(length) ? Sum(1.0 / length, q, 0.0, q) : Quaternion{0.0, 0.0, 0.0, 1.0};
}

// The arc between two rotations, by half its turn.
struct Arc {
    Arc(const Quaternion& a, const Quaternion& b) : from(a), to(b), half(std::acos(std::clamp(Dot(a, b), -1.0, 1.0))) {}

    Quaternion at(double s) const noexcept {
        if (half < 1e-9) return Sum(1.0 - s, from, s, to);
        return Sum(std::sin((1.0 - s) * half) / std::sin(half), from, std::sin(s * half) / std::sin(half), to);
    }
    // d/ds at its ends.
    Quaternion leaving() const noexcept {
        if (half < 1e-9) return Sum(-1.0, from, 1.0, to);
        const double factor = half / std::sin(half);
        return Sum(-std::cos(half) * factor, from, factor, to);
    }
    Quaternion arriving() const noexcept {
        if (half < 1e-9) return Sum(-1.0, from, 1.0, to);
        const double factor = half / std::sin(half);
        return Sum(-factor, from, std::cos(half) * factor, to);
    }

    Quaternion from;
    Quaternion to;
    double half;
};

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
