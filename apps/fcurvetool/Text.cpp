#include "Text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace fcurvetool {

namespace {

using NumberBuffer = std::array<char, 64>;

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

} // namespace

std::string ToText(double value) {
    if (std::isnan(value)) return "nan"; // whatever its sign
    NumberBuffer buffer;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), result.ptr);
}

std::string ToBriefText(double value, int digits) {
    if (std::isnan(value)) return "nan";
    NumberBuffer buffer;
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, digits);
    return std::string(buffer.data(), result.ptr);
}

std::optional<double> ParseNumber(std::string_view text) {
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') return std::nullopt;
    }
    double value = 0.0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::size_t CountCharacters(std::string_view text) {
    std::size_t count = 0;
    for (const char byte : text) count += IsContinuation(byte) ? 0 : 1;
    return count;
}

std::string ToPrintable(std::string_view text) {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        // U+0080 to U+009F, control characters of two bytes, start with 0xC2.
        const bool isC1 = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0x80
                          && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        const unsigned control = isC1 ? static_cast<unsigned char>(text[i + 1]) : byte;
        if (isC1 || byte < 0x20 || byte == 0x7F) {
            result += "\\x";
            result += kDigits[control / 16];
            result += kDigits[control % 16];
            i += isC1 ? 1 : 0;
        } else {
            result += text[i];
        }
    }
    return result;
}

std::string Shorten(std::string_view text, std::size_t characters) {
    if (CountCharacters(text) <= characters) return std::string(text);
    std::size_t end = 0;
    for (std::size_t kept = 0; end < text.size(); ++end) {
        if (!IsContinuation(text[end]) && kept++ == characters - 1) break;
    }
    std::string result(text.substr(0, end));
    result += "\u2026";
    return result;
}

std::string LowerCase(std::string text) {
    for (char& byte : text)
        if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
    return text;
}

bool MatchesGlob(std::string_view pattern, std::string_view text) {
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t star = std::string_view::npos; // the last star met, and where the text went on after it
    std::size_t resume = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = t;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            t = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == std::string_view::npos;
}

} // namespace fcurvetool
