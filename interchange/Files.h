#pragma once

// Files beside a document, or into which one is written.

#include <optional>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

// The bytes of the file; throws what FileStream throws.
std::string ReadFile(const std::string& path);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
