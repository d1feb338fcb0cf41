#include "interchange/Numbers.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

void AppendNumber(std::string& text, double number) {
    char digits[32]; // the longest, -2.2250738585072014e-308, has 24
    text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

std::string NumberText(double number) {
    std::string text;
    AppendNumber(text, number);
    return text;
}

std::string ShortNumber(double number) {
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, number, std::chars_format::general, 6).ptr};
}

bool ParseNumber(std::string_view text, double& number) noexcept {
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
    if (text.empty() || !((text.front() >= '0' && text.front() <= '9') || text.front() == '.')) return false;
    double value = 0.0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value);
    if (result.ptr != end) return false;
    if (result.ec == std::errc::result_out_of_range) {
        // Too small where its exponent is negative, or where it is a fraction of many zeros.
        const std::size_t e = text.find_first_of("eE");
        const bool isSmall =
            e == std::string_view::npos ? text.find_first_not_of('0') == text.find('.') : text.substr(e + 1, 1) == "-";
        if (!isSmall) return false;
        value = 0.0;
    } else if (result.ec != std::errc() || !std::isfinite(value)) {
        return false;
    }
    number = negative ? -value : value;
    return true;
}

bool IsUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const std::size_t length = byte < 0x80 ? 1 : byte >= 0xC2 && byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        if ((byte >= 0x80 && byte < 0xC2) || byte > 0xF4 || length > text.size() - i) return false;
        for (std::size_t k = 1; k < length; ++k)
            if ((static_cast<unsigned char>(text[i + k]) & 0xC0U) != 0x80) return false;
        i += length;
    }
    return true;
}

std::string Quoted(std::string_view text) {
    constexpr std::size_t kLongest = 40;
    std::string result = "\"";
    for (const char c : text.substr(0, kLongest)) result += c >= ' ' && c <= '~' ? c : '?';
    return result + (text.size() > kLongest ? "...\"" : "\"");
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
