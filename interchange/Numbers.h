#pragma once

// Numbers and texts, the same whatever the locale.

#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

// The shortest text that reads back to the same bits. Precondition: finite.
void AppendNumber(std::string& text, double number);
std::string NumberText(double number);
// Six significant digits, for people.
std::string ShortNumber(double number);

// Reads a text that is a decimal number as a whole: [+-] digits [. digits] [e [+-] digits], with digits on one side of
// the point at least; false for any other text, for infinities, NaN and what is beyond the range of doubles. What is
// too small for a double is a zero of its sign.
bool ParseNumber(std::string_view text, double& number) noexcept;

bool IsUtf8(std::string_view text);

// A foreign text for a message: in double quotes, cut to a readable length, with anything but printable ASCII as '?'.
std::string Quoted(std::string_view text);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
