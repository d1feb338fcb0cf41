#include "formats/xml/Escapes.h"

#include <cstddef>
#include <cstring>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace XMLFormat {

namespace {

bool IsContinuation(unsigned char c) {
    return (c & 0xC0U) == 0x80U;
}

// Length in bytes of the UTF-8 character at the start of a text that starts with a byte above 0x7F; 0 if it is none
// or not allowed in XML. The text ends with a zero byte, which continues no character.
std::size_t CharacterLength(const unsigned char* c) {
    if (c[0] < 0xC2) return 0; // a continuation, or longer than necessary
    if (!IsContinuation(c[1])) return 0;
    if (c[0] < 0xE0) return 2;
    if (!IsContinuation(c[2])) return 0;
    if (c[0] < 0xF0) {
        if (c[0] == 0xE0 && c[1] < 0xA0) return 0;                                // longer than necessary
        if (c[0] == 0xED && c[1] > 0x9F) return 0;                                // half of a surrogate pair
        return c[0] == 0xEF && c[1] == 0xBF && c[2] >= 0xBE ? std::size_t{0} : 3; // U+FFFE, U+FFFF
    }
    if (!IsContinuation(c[3])) return 0;
    if (c[0] == 0xF0 && c[1] < 0x90) return 0;
    if (c[0] > 0xF4 || (c[0] == 0xF4 && c[1] > 0x8F)) return 0; // beyond U+10FFFF
    return 4;
}

const char* Special(unsigned char c) {
    switch (c) {
    case '"':
        return "&quot;";
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '\t': // as they stand, XML makes blanks of these three
        return "&#9;";
    case '\n':
        return "&#10;";
    case '\r':
        return "&#13;";
    case '\\':
        return "\\\\";
    default:
        return nullptr;
    }
}

void AppendByte(std::string& out, unsigned char c) {
    constexpr char digits[] = "0123456789ABCDEF";
    out += "\\x";
    out += digits[c >> 4U];
    out += digits[c & 15U];
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

} // namespace

void AppendEscaped(std::string& out, const char* text) {
    const auto* c = reinterpret_cast<const unsigned char*>(text);
    const auto* plain = c; // start of what is copied as it stands
    const auto copyPlain = [&] { out.append(reinterpret_cast<const char*>(plain), reinterpret_cast<const char*>(c)); };
    while (*c) {
        if (*c >= 0x80) {
            if (const std::size_t length = CharacterLength(c)) {
                c += length;
                continue;
            }
        } else if (*c >= ' ' && !Special(*c)) {
            ++c;
            continue;
        }
        copyPlain();
        if (const char* replacement = *c < 0x80 ? Special(*c) : nullptr) {
            out += replacement;
        } else {
            AppendByte(out, *c);
        }
        plain = ++c;
    }
    copyPlain();
}

bool Unescape(const char* value, std::string& result) {
    result.clear();
    for (;;) {
        const std::size_t plain = std::strcspn(value, "\\");
        result.append(value, plain);
        value += plain;
        if (!*value) return true;
        if (value[1] == '\\') {
            result += '\\';
            value += 2;
            continue;
        }
        const int high = value[1] == 'x' ? HexDigit(value[2]) : -1;
        const int low = high < 0 ? -1 : HexDigit(value[3]);
        if (low < 0 || (high == 0 && low == 0)) return false;
        result += static_cast<char>(high * 16 + low);
        value += 4;
    }
}

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
