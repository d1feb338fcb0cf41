#pragma once

#include "Svg.h"

#include <vector>

namespace fcurvetool {

/// Drops the points without which the line through the others still passes all of them within the tolerance.
std::vector<Pixel> simplify(const std::vector<Pixel>& points, double tolerance);

} // namespace fcurvetool
