#include "formats/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <system_error>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {

bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

// Whether an unsigned decimal number that no double can hold is too large, rather than too small: by the power of ten
// of its first digit that is not 0.
bool IsTooLarge(std::string_view text) noexcept {
    const std::size_t e = text.find_first_of("eE");
    const std::string_view digits = text.substr(0, e);
    const std::size_t point = digits.find('.') == std::string_view::npos ? digits.size() : digits.find('.');
    const std::size_t first = digits.find_first_not_of("0.");
    if (first == std::string_view::npos) return false;
    const auto power = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);

    std::int64_t exponent = 0;
    bool negative = false;
    for (std::size_t i = e == std::string_view::npos ? text.size() : e + 1; i < text.size(); ++i) {
        if (IsDigit(text[i])) {
            if (exponent < INT64_C(1) << 40) exponent = exponent * 10 + (text[i] - '0'); // beyond any text's length
        } else {
            negative = text[i] == '-';
        }
    }
    return power + (negative ? -exponent : exponent) > 0;
}

} // namespace

void AppendNumber(std::string& text, double number) {
    char digits[32]; // the longest, -2.2250738585072014e-308, has 24
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, number);
    text.append(digits, result.ptr);
}

void AppendShortNumber(std::string& text, double number) {
    char digits[32];
    const std::to_chars_result result =
        std::to_chars(digits, digits + sizeof digits, number, std::chars_format::general, 6);
    text.append(digits, result.ptr);
}

bool ParseNumber(std::string_view text, double& number) noexcept {
    const bool negative = !text.empty() && text.front() == '-';
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
    if (text.empty() || (!IsDigit(text.front()) && text.front() != '.')) return false; // "inf", "nan", "--1"

    double value = 0.0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value);
    if (result.ptr != end) return false;
    if (result.ec == std::errc::result_out_of_range) {
        if (IsTooLarge(text)) return false;
        value = 0.0;
    } else if (result.ec != std::errc()) {
        return false;
    }
    if (!std::isfinite(value)) return false;
    number = negative ? -value : value;
    return true;
}

bool ParseVersion(std::string_view text, unsigned& major, unsigned& minor) noexcept {
    constexpr std::size_t kMostDigits = 6;
    const std::size_t point = std::min(text.find('.'), text.size());
    const auto read = [](std::string_view digits, unsigned& number) {
        if (digits.empty() || digits.size() > kMostDigits) return false;
        number = 0;
        for (const char c : digits) {
            if (!IsDigit(c)) return false;
            number = number * 10 + static_cast<unsigned>(c - '0');
        }
        return true;
    };
    return point < text.size() && read(text.substr(0, point), major) && read(text.substr(point + 1), minor);
}

std::string ExpectedFound(const std::string& expected, const std::string& found) {
    return "Expected " + expected + ", found " + found + '.';
}

std::string TextTooLong(std::size_t length, std::size_t limit) {
    return "A text has " + std::to_string(length) + " bytes; the limit is " + std::to_string(limit) + '.';
}

std::string TooMany(const char* what, std::size_t limit) {
    return std::string("There are too many ") + what + "; the limit is " + std::to_string(limit) + '.';
}

std::string VersionMessage(unsigned major, unsigned minor, unsigned supported) {
    return "The document has version " + std::to_string(major) + '.' + std::to_string(minor)
           + " of the format; version " + std::to_string(supported) + " can be read.";
}

std::string Quoted(std::string_view text) {
    constexpr std::size_t kLongest = 60;
    std::string result = "\"";
    for (char c : text.substr(0, kLongest)) result += c >= ' ' && c <= '~' ? c : '?';
    if (text.size() > kLongest) result += "...";
    return result += '"';
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
