#pragma once

#include "draw/Svg.h"

#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

/// Drops the points without which the line through the others still passes all of them within the tolerance.
std::vector<Pixel> Simplify(const std::vector<Pixel>& points, double tolerance);

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
