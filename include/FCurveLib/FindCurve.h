#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \name Curve of a name
/// The first curve of the container that has exactly this name; empty where none has. Null counts as the empty name.
/// Linear in the number of curves.
/// @{
FCURVELIB_API std::shared_ptr<FCurve> FindCurve(FCurveContainer& container, const char* name);
FCURVELIB_API std::shared_ptr<const FCurve> FindCurve(const FCurveContainer& container, const char* name);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
