#pragma once

#include "FCurveLib/FCurve.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// A curve of the keys near a segment, four on its left and five on its right, with the shape that the curve has there:
// to try on it what would become of the curve. Its segments have no properties.
std::shared_ptr<FCurve> CopyAround(const Segment& segment);

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
