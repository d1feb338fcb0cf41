#pragma once

#include "FCurveLib/InterpMaker.h"
#include "interp/FormulaProgram.h"

#include <memory>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

using InterpMakers = std::vector<std::shared_ptr<InterpMaker>>;

// The interpolator of a formula's text; throws DefaultFallbackParser::ParseError and its derived classes. Makers are
// asked from back to front.
std::shared_ptr<Interpolator> CompileFormula(std::string_view text, const InterpMakers& makers);

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
