#include "draw/Label.h"

#include <array>
#include <charconv>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

// Digits of the largest double before its point, a few decimals, sign and point.
using NumberBuffer = std::array<char, 340>;

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

} // namespace

std::string ToBriefText(double value) {
    NumberBuffer buffer;
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, 10);
    return std::string(buffer.data(), result.ptr);
}

std::string ToFixedText(double value, int decimals) {
    NumberBuffer buffer;
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals);
    std::string text(buffer.data(), result.ptr);
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') text.pop_back();
    }
    if (text == "-0") text = "0";
    return text;
}

std::size_t CountCharacters(std::string_view text) {
    std::size_t count = 0;
    for (const char byte : text) count += IsContinuation(byte) ? 0 : 1;
    return count;
}

double EstimateTextWidth(std::string_view text, double fontSize) {
    double width = 0.0;
    for (const char byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        if (code >= 0x80 && code < 0xC0) continue;
        if (code >= 0xE3) {
            width += 1.0; // the ideographs and symbols beyond U+3000
        } else if (byte == 'm' || byte == 'w' || byte == 'M' || byte == 'W' || byte == '@' || byte == '%') {
            width += 0.95;
        } else if (byte >= 'A' && byte <= 'Z') {
            width += 0.73;
        } else if (byte == ' ' || byte == '.' || byte == ',' || byte == ':' || byte == 'i' || byte == 'l' || byte == 'j'
                   || byte == '(' || byte == ')' || byte == '\'') {
            width += 0.36;
        } else {
            width += 0.63;
        }
    }
    return width * fontSize;
}

std::string Fit(std::string_view text, double fontSize, double width) {
    if (EstimateTextWidth(text, fontSize) <= width) return std::string(text);
    const double room = width - EstimateTextWidth("\u2026", fontSize);
    while (!text.empty() && EstimateTextWidth(text, fontSize) > room) {
        while (text.size() > 1 && IsContinuation(text.back())) text.remove_suffix(1);
        text.remove_suffix(1);
    }
    return std::string(text) + "\u2026";
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
