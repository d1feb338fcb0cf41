#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace fcurvetool {

/// \name Numbers
/// With a point, whatever the locale.
/// @{

/// The shortest text that reads back to the same bits.
std::string ToText(double value);
/// At most the given number of significant digits, without trailing zeros: for people.
std::string ToBriefText(double value, int digits = 10);
/// The number that the whole text is, "+1" included; nothing for anything else, and for what is not finite.
std::optional<double> ParseNumber(std::string_view text);
/// @}

/// \name UTF-8
/// @{

/// Number of code points; a byte that is not part of one counts as one.
std::size_t CountCharacters(std::string_view text);
/// The text with control characters written as \xNN, so that a name from a file cannot steer the terminal.
std::string ToPrintable(std::string_view text);
/// At most the given number of characters, the last one replaced by an ellipsis where something was cut off.
std::string Shorten(std::string_view text, std::size_t characters);
/// @}

/// The text with the letters A to Z in lower case.
std::string LowerCase(std::string text);

/// Whether the pattern matches the whole text: * stands for any run of characters, ? for one byte. Takes time in
/// proportion to the product of both lengths at most.
bool MatchesGlob(std::string_view pattern, std::string_view text);

} // namespace fcurvetool
