#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

// In quotes, as JSON has it. What is no UTF-8 is replaced.
std::string JsonText(const std::string& text);

// Where a parser, which does not say it, is when it comes to the first bracket within so many others, or to the
// object's member of that number, from 1, in the text's order. Precondition: the text is valid JSON up to there.
std::size_t OffsetOfDepth(std::string_view text, std::size_t depth) noexcept;
std::size_t OffsetOfMember(std::string_view text, std::size_t number) noexcept;

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
