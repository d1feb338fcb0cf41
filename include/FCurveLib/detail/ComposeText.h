#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

/// The document of these curves in the format "text", with or without their display settings; a key's lock is always
/// written.
FCURVELIB_API std::string ComposeText(const FCurveContainer& curves, bool writesDisplay);

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
