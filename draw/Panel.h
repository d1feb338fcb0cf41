#pragma once

#include "draw/Figure.h"
#include "draw/Svg.h"

#include <cstddef>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

// Draws the panel of that number: grid and axis of values, then the figures.
void DrawPanel(Svg& svg, const Scene& scene, const Layout& layout, std::size_t number,
               const std::vector<Figure>& figures);

// A key's dot, as the panels and the explanation of marks show it.
void DrawDot(Svg& svg, const Dot& dot, double radius);

// A triangle with its tip at that point.
Line ExitTriangle(const Pixel& tip, bool isUp);

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
