#pragma once

#include "FCurveLib/Forward.h"
#include "FCurveLib/Vector2D.h"

#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// Sets y of each of the points to the curve's value at its x; quickest where these ascend. For a curve that nobody
// edits meanwhile. Where there are many points the values are those of CompiledCurve.
void EvalPoints(const FCurve& curve, Vector2D<double>* points, std::size_t n);

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
