#pragma once

// The pieces of a document in the format "binary", put together by hand.

#include <cstdint>
#include <cstring>
#include <string>

namespace Test {

inline std::string u16(unsigned number) {
    return {static_cast<char>(number & 255U), static_cast<char>(number >> 8U)};
}
inline std::string u32(std::size_t number) {
    return u16(static_cast<unsigned>(number & 65535U)) + u16(static_cast<unsigned>(number >> 16U));
}
inline std::string f64(double number) {
    std::uint64_t bits;
    std::memcpy(&bits, &number, sizeof bits);
    return u32(bits & 0xFFFFFFFFU) + u32(bits >> 32U);
}

/// A text after its length.
inline std::string sized(const std::string& text) {
    return u32(text.size()) + text;
}
inline std::string block(const std::string& type, const std::string& content) {
    return type + sized(content);
}
inline std::string binaryDocument(const std::string& content, unsigned minor = 0) {
    return block("Crvs", block("Vers", u16(1) + u16(minor)) + content);
}

} // namespace Test
