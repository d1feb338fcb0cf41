#pragma once

#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
