#pragma once

// The kernel with one double a lane: for single values, and for processors that Highway does not know.

#include "playback/Lanes.h"

#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace Scalar {

struct Tag {};
using V = double;
using M = bool;

constexpr std::size_t Lanes(Tag) noexcept {
    return 1;
}
constexpr V Set(Tag, double value) noexcept {
    return value;
}
inline V LoadU(Tag, const double* from) noexcept {
    return *from;
}
inline void StoreU(V value, Tag, double* to) noexcept {
    *to = value;
}
constexpr V IfThenElse(M mask, V yes, V no) noexcept {
    return mask ? yes : no;
}
constexpr M And(M a, M b) noexcept {
    return a && b;
}
constexpr M Or(M a, M b) noexcept {
    return a || b;
}
constexpr bool AllTrue(Tag, M mask) noexcept {
    return mask;
}
inline V Abs(V value) noexcept {
    return std::abs(value);
}
inline V Sqrt(V value) noexcept {
    return std::sqrt(value);
}

#include "playback/Kernel-inl.h"

} // namespace Scalar

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
