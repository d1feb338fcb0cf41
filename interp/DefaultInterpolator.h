#pragma once

#include "FCurveLib/Forward.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// A new interpolator for a segment that nobody gave one: what an empty curve starts with.
std::shared_ptr<Interpolator> DefaultInterpolator();

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
