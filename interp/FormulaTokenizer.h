#pragma once

#include <cstddef>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// Deliberate: not the functions of the C library, whose answers depend on the locale.
constexpr bool IsSpace(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}
constexpr bool IsNameStart(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
constexpr bool IsNamePart(char c) noexcept {
    return IsNameStart(c) || IsDigit(c);
}

enum class TokenKind {
    End,
    Error,
    Number,
    Name,
    String,
    Open,
    Close,
    Comma,
    Plus,
    Minus,
    Times,
    Divide,
    Modulo,
    Power
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::string_view text; // as written; of a string, between the quotes
    double number = 0.0;   // of a number
    std::size_t begin = 0; // where it stands, in bytes from the text's begin
    std::size_t end = 0;
};

// Cuts a formula's text into tokens.
class FormulaTokenizer {
public:
    explicit FormulaTokenizer(std::string_view text) noexcept : m_text(text) {}

    // The next token; End again and again at the end. After an Error nothing useful follows.
    Token next() noexcept;

private:
    Token take(TokenKind kind, std::size_t length) noexcept;
    Token takeNumber() noexcept;
    Token takeString() noexcept;

    std::string_view m_text;
    std::size_t m_position = 0;
};

// What messages call a token: "a name" or, for one whose text never varies, that text in double quotes.
const char* Describe(TokenKind kind) noexcept;

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
