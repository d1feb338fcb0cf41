#pragma once

// Small helpers on texts that the formats share.

#include "FCurveLib/Export.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

inline const char* OrEmpty(const char* text) noexcept {
    return text ? text : "";
}

// --- characters, or -1 at the end of a text
// ---------------------------------------------------------------------------

inline bool IsBlank(int c) noexcept {
    return c == ' ' || c == '\t' || c == '\v' || c == '\f';
}
inline bool IsLineEnd(int c) noexcept {
    return c == '\n' || c == '\r' || c == -1;
}
inline bool IsSpace(int c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// --- numbers
// ----------------------------------------------------------------------------------------------------------

// Appends the shortest text that reads back to the same bits, in the C locale. Precondition: finite.
void AppendNumber(std::string& text, double number);
// Appends the number as an output stream formats a double by default: six significant digits. Precondition: finite.
void AppendShortNumber(std::string& text, double number);

// Reads a text that is a decimal number as a whole: [+-] digits [. digits] [e [+-] digits], digits on one side of the
// point at least. No white space, no "inf", no "nan", no hexadecimal. Numbers too small for a double become a zero of
// their sign; false for those too large, as for any other text.
bool ParseNumber(std::string_view text, double& number) noexcept;

// Reads "1.0" as a whole: two numbers of at most six digits with a point between them.
bool ParseVersion(std::string_view text, unsigned& major, unsigned& minor) noexcept;

// --- messages
// ---------------------------------------------------------------------------------------------------------

constexpr const char* kKeyOutOfOrder = "The key does not come after the one before it.";
constexpr const char* kKeyAtEnd = "The last key is not followed by a segment.";

std::string ExpectedFound(const std::string& expected, const std::string& found);
std::string TextTooLong(std::size_t length, std::size_t limit);
std::string TooMany(const char* what, std::size_t limit);
std::string VersionMessage(unsigned major, unsigned minor, unsigned supported);

// A foreign text for a message to people: in double quotes, cut to a readable length, anything but printable ASCII
// replaced by '?'.
std::string Quoted(std::string_view text);

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
