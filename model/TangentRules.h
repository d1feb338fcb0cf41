#pragma once

// The rules of tangents, as pure functions on plain numbers.

#include "FCurveLib/Vector2D.h"

#include <cstdint>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// A tangent and the points around it; null where there is no such key.
struct TangentSite {
    const Vector2D<double>* left = nullptr;   // the segment's left key
    const Vector2D<double>* right = nullptr;  // the segment's right key
    const Vector2D<double>* own = nullptr;    // the tangent's key: right for an in tangent, left for an out tangent
    const Vector2D<double>* before = nullptr; // the key before own
    const Vector2D<double>* after = nullptr;  // the key after own
    Vector2D<double> handle;
    std::uint8_t type = 0;
    bool isIn = false;
    bool weighted = false;
    bool weightLocked = false;

    double side() const noexcept { return isIn ? -1.0 : 1.0; }
    bool hasBothKeys() const noexcept { return left && right; }
    // Only where hasBothKeys(), which the analyzer sometimes loses sight of.
    // NOLINTNEXTLINE(clang-analyzer-core.NullDereference)
    double third() const noexcept { return (right->x - left->x) / 3; }
};

// A proposed handle within the limits: x of an unweighted handle is a third of the span, its slope stays.
Vector2D<double> LimitedHandle(const TangentSite& site, double x, double y) noexcept;

// The handle that the tangent's type computes from the keys.
Vector2D<double> AutomaticHandle(const TangentSite& site) noexcept;

// What a handle proposed by a public setter becomes.
Vector2D<double> EditedHandle(const TangentSite& site, double x, double y) noexcept;

// The handle in line with another one through the key, with the site's own weight.
Vector2D<double> AlignedHandle(const TangentSite& site, const Vector2D<double>& opposite) noexcept;

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
