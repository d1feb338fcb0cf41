#pragma once

#include "draw/Figure.h"
#include "draw/Svg.h"

#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

// Writes the names of the first figure's parts beside them: one key and its tangents, and every segment where there is
// room. A name covers no line, dot, handle or other name of the panel; one that finds no such place is left out.
void DrawPartNames(Svg& svg, const Scene& scene, const std::vector<Figure>& figures, const Frame& frame);

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
