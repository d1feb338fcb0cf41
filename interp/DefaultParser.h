#pragma once

#include "FCurveLib/FallbackExpressionParser.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// A new parser of the kind that InterpolatorFactory uses when the host sets none.
std::unique_ptr<FallbackExpressionParser> MakeDefaultParser();

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
