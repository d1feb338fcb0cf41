#include "interp/FormulaTokenizer.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

Token FormulaTokenizer::take(TokenKind kind, std::size_t length) noexcept {
    const std::size_t begin = m_position;
    m_position += length;
    return {kind, m_text.substr(begin, length), 0.0, begin, m_position};
}

Token FormulaTokenizer::takeNumber() noexcept {
    double number = 0.0;
    const char* const begin = m_text.data() + m_position;
    const auto [end, error] = std::from_chars(begin, m_text.data() + m_text.size(), number);
    const auto length = static_cast<std::size_t>(end - begin);
    if (error != std::errc()) return take(TokenKind::Error, std::max<std::size_t>(length, 1));
    Token token = take(TokenKind::Number, length);
    token.number = number;
    return token;
}

Token FormulaTokenizer::takeString() noexcept {
    const std::size_t close = m_text.find('"', m_position + 1);
    if (close == std::string_view::npos) return take(TokenKind::Error, m_text.size() - m_position);
    Token token = take(TokenKind::String, close + 1 - m_position);
    token.text = token.text.substr(1, token.text.size() - 2);
    return token;
}

Token FormulaTokenizer::next() noexcept {
    const auto peek = [this](std::size_t ahead) {
        return ahead < m_text.size() - m_position ? m_text[m_position + ahead] : '\0';
    };
    while (m_position < m_text.size() && IsSpace(m_text[m_position])) ++m_position;
    if (m_position == m_text.size()) return take(TokenKind::End, 0);

    const char first = peek(0);
    if (IsDigit(first) || (first == '.' && IsDigit(peek(1)))) return takeNumber();
    if (IsNameStart(first)) {
        const auto end =
            std::find_if_not(m_text.begin() + static_cast<std::ptrdiff_t>(m_position), m_text.end(), IsNamePart);
        return take(TokenKind::Name, static_cast<std::size_t>(end - m_text.begin()) - m_position);
    }
    switch (first) {
    case '"':
        return takeString();
    case '(':
        return take(TokenKind::Open, 1);
    case ')':
        return take(TokenKind::Close, 1);
    case ',':
        return take(TokenKind::Comma, 1);
    case '+':
        return take(TokenKind::Plus, 1);
    case '-':
        return take(TokenKind::Minus, 1);
    case '*':
        return peek(1) == '*' ? take(TokenKind::Power, 2) : take(TokenKind::Times, 1);
    case '/':
        return take(TokenKind::Divide, 1);
    case '%':
        return take(TokenKind::Modulo, 1);
    default:
        return take(TokenKind::Error, 1);
    }
}

const char* Describe(TokenKind kind) noexcept {
    switch (kind) {
    case TokenKind::End:
        return "an end of the expression";
    case TokenKind::Error:
        return "an error";
    case TokenKind::Number:
        return "a number";
    case TokenKind::Name:
        return "a name";
    case TokenKind::String:
        return "a string";
    case TokenKind::Open:
        return "\"(\"";
    case TokenKind::Close:
        return "\")\"";
    case TokenKind::Comma:
        return "\",\"";
    case TokenKind::Plus:
        return "\"+\"";
    case TokenKind::Minus:
        return "\"-\"";
    case TokenKind::Times:
        return "\"*\"";
    case TokenKind::Divide:
        return "\"/\"";
    case TokenKind::Modulo:
        return "\"%\"";
    case TokenKind::Power:
        return "\"**\"";
    }
    return "";
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
