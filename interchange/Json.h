#pragma once

#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

// In quotes, as JSON has it. What is no UTF-8 is replaced.
std::string JsonText(const std::string& text);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
