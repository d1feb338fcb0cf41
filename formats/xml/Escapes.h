#pragma once

// How texts travel in attributes.

#include "FCurveLib/Export.h"

#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace XMLFormat {

// Appends a text as an attribute's value. XML 1.0 has no room for all that a text may hold, so a backslash escapes:
// "\xHH" is the byte HH, used for each byte that belongs to no character which XML allows (control characters, U+FFFE
// and U+FFFF, anything that is not UTF-8), and "\\" is the backslash itself.
void AppendEscaped(std::string& out, const char* text);

// The reverse, into result (markup is Expat's). False for a backslash that escapes nothing and for a zero byte.
bool Unescape(const char* value, std::string& result);

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
