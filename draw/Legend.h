#pragma once

#include "draw/Figure.h"
#include "draw/Svg.h"

#include <cstddef>
#include <set>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

// The names of the curves above the panels, each beside its line.
void DrawNames(Svg& svg, const Scene& scene, const Layout& layout);

// The rows that the explanation of these marks takes below the panels, at least one: the frames' title stands there
// too.
std::size_t CountMarksRows(const Layout& layout, const std::set<Mark>& marks);

// Labels and title of the frames below the lowest panel, and what the marks mean.
void DrawFoot(Svg& svg, const Layout& layout, const std::set<Mark>& marks);

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
