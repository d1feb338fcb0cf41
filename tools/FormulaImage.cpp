#include "tools/FormulaImage.h"

#include "interp/FormulaTokenizer.h"
#include "interp/Kinds.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

void AppendNumber(std::string& text, double number) {
    char digits[32]; // the shortest text of a double takes 24 characters at most
    text.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

// Reads tokens one after the other; each take function advances only if it succeeds. What follows the last token is
// TokenKind::End for ever.
class TokenReader {
public:
    TokenReader(const std::vector<Token>& tokens, std::size_t start, std::size_t end)
        : m_tokens(tokens), m_at(start), m_end(end) {}

    std::size_t at() const noexcept { return m_at; }
    void moveTo(std::size_t at) noexcept { m_at = at; }
    TokenKind kind(std::size_t ahead = 0) const noexcept {
        return ahead < m_end - m_at ? m_tokens[m_at + ahead].kind : TokenKind::End;
    }
    const Token& token() const noexcept { return m_tokens[m_at]; }
    bool take(TokenKind expected) noexcept {
        if (kind() != expected) return false;
        ++m_at;
        return true;
    }
    bool takeNumber(double& number) noexcept {
        if (kind() != TokenKind::Number) return false;
        number = m_tokens[m_at++].number;
        return true;
    }
    bool takeSigned(double& number) noexcept {
        const std::size_t start = m_at;
        const bool negative = take(TokenKind::Minus);
        if (takeNumber(number)) {
            if (negative) number = -number;
            return true;
        }
        m_at = start;
        return false;
    }

private:
    const std::vector<Token>& m_tokens;
    std::size_t m_at;
    std::size_t m_end;
};

// --- the argument: x, or a function that reads the curve -------------------------------------------------------------

struct Atom {
    bool readsCurve = false;
    std::string_view name;
};

bool TakeAtom(TokenReader& reader, Atom& atom) {
    if (reader.kind() != TokenKind::Name) return false;
    const std::string_view name = reader.token().text;
    const bool call = reader.kind(1) == TokenKind::Open;
    if (name == "x" && !call) {
        atom = {false, name};
        reader.moveTo(reader.at() + 1);
        return true;
    }
    if (call && reader.kind(2) != TokenKind::Close) return false;
    const KindRow* const kind = FindKind(name);
    if (!kind || !kind->repeats()) return false;
    atom = {true, name};
    reader.moveTo(reader.at() + (call ? 3 : 1));
    return true;
}

// An atom seen through a map: (atom - offset) / scale.
struct Unmapped {
    Atom atom;
    AffineMap map;
};

// (a - n), (a + n), (n - a)
bool TakeMoved(TokenReader& reader, Unmapped& found) {
    const std::size_t start = reader.at();
    double number = 0.0;
    if (reader.take(TokenKind::Open)) {
        if (TakeAtom(reader, found.atom)) {
            const bool minus = reader.kind() == TokenKind::Minus;
            if ((reader.take(TokenKind::Minus) || reader.take(TokenKind::Plus)) && reader.takeNumber(number)
                && reader.take(TokenKind::Close)) {
                found.map = {1.0, minus ? number : -number};
                return true;
            }
        } else if (reader.takeSigned(number) && reader.take(TokenKind::Minus) && TakeAtom(reader, found.atom)
                   && reader.take(TokenKind::Close)) {
            found.map = {-1.0, number};
            return true;
        }
    }
    reader.moveTo(start);
    return false;
}

// An atom, or what AppendUnmapped writes for one.
bool TakeUnmapped(TokenReader& reader, Unmapped& found) {
    if (TakeAtom(reader, found.atom)) {
        found.map = {};
        return true;
    }
    if (TakeMoved(reader, found)) return true;
    const std::size_t start = reader.at();
    double scale = 0.0;
    if (reader.take(TokenKind::Open)) {
        found.map = {};
        if ((TakeAtom(reader, found.atom) || TakeMoved(reader, found)) && reader.take(TokenKind::Divide)
            && reader.takeSigned(scale) && reader.take(TokenKind::Close) && scale != 0.0) {
            found.map.scale *= scale;
            return true;
        }
    }
    reader.moveTo(start);
    return false;
}

void AppendUnmapped(std::string& text, const Unmapped& what, bool insideCall) {
    const auto [scale, offset] = what.map;
    const bool divides = std::abs(scale) != 1.0;
    const bool moves = offset != 0.0 || scale < 0.0;
    if (divides || (insideCall && !moves)) text += '(';
    if (moves) {
        text += '(';
        if (scale < 0.0) {
            AppendNumber(text, offset + 0.0); // + 0.0: no "-0"
            text += '-';
        }
    }
    text += what.atom.name;
    if (what.atom.readsCurve) text += "()";
    if (moves) {
        if (scale > 0.0) {
            text += offset < 0.0 ? '+' : '-';
            AppendNumber(text, std::abs(offset));
        }
        text += ')';
    }
    if (divides) {
        text += '/';
        AppendNumber(text, std::abs(scale));
    }
    if (divides || (insideCall && !moves)) text += ')';
}

// --- the value: scale * (formula) + offset ---------------------------------------------------------------------------

// The position after the parenthesis that closes the one at the reader; the reader's end if none does.
std::size_t AfterParentheses(TokenReader reader) {
    std::size_t depth = 0;
    for (; reader.kind() != TokenKind::End; reader.moveTo(reader.at() + 1)) {
        if (reader.kind() == TokenKind::Open) ++depth;
        if (reader.kind() == TokenKind::Close && --depth == 0) return reader.at() + 1;
    }
    return reader.at();
}

// Finds what AppendMapped writes around a formula: the map, and the tokens of the formula without its parentheses.
// The identity and all tokens, where there is no such map.
AffineMap FindMap(const std::vector<Token>& tokens, std::size_t& start, std::size_t& end) {
    TokenReader reader(tokens, 0, tokens.size());
    AffineMap map;
    double number = 0.0;
    if (reader.takeSigned(number)) {
        if (reader.take(TokenKind::Times))
            map.scale = number;
        else if (reader.take(TokenKind::Minus))
            map = {-1.0, number};
        else
            return {};
    } else if (reader.take(TokenKind::Minus)) {
        map.scale = -1.0;
    }
    if (map.scale == 0.0 || reader.kind() != TokenKind::Open) return {};
    const std::size_t open = reader.at();
    const std::size_t after = AfterParentheses(reader);
    reader.moveTo(after);
    if (map.offset == 0.0) {
        const bool minus = reader.kind() == TokenKind::Minus;
        if ((reader.take(TokenKind::Plus) || reader.take(TokenKind::Minus)) && !reader.takeNumber(number)) return {};
        if (reader.at() != after) map.offset = minus ? -number : number;
    }
    if (reader.kind() != TokenKind::End || map.isIdentity()) return {};
    start = open + 1;
    end = after - 1;
    return map;
}

void AppendMapped(std::string& text, const std::string& formula, const AffineMap& map) {
    if (map.isIdentity()) {
        text += formula;
        return;
    }
    if (map.scale == -1.0 && map.offset != 0.0) {
        AppendNumber(text, map.offset);
        text += "-(" + formula + ')';
        return;
    }
    if (map.scale == -1.0) {
        text += '-';
    } else if (map.scale != 1.0) {
        AppendNumber(text, map.scale);
        text += '*';
    }
    text += '(' + formula + ')';
    if (map.offset != 0.0) {
        text += map.offset < 0.0 ? '-' : '+';
        AppendNumber(text, std::abs(map.offset));
    }
}

// The map that does first, then second.
AffineMap Combine(const AffineMap& first, const AffineMap& second) noexcept {
    return {second.scale * first.scale, second.scale * first.offset + second.offset};
}

} // namespace

std::string FormulaImage(std::string_view formula, const AffineMap& x, const AffineMap& y) {
    std::vector<Token> tokens;
    FormulaTokenizer tokenizer(formula);
    for (Token token = tokenizer.next(); token.kind != TokenKind::End; token = tokenizer.next()) {
        if (token.kind == TokenKind::Error) return {};
        tokens.push_back(token);
    }

    std::size_t start = 0;
    std::size_t end = tokens.size();
    const AffineMap value = Combine(FindMap(tokens, start, end), y);

    // Everything else, white space included, stays as it was written.
    std::string inner;
    std::size_t written = start < end ? tokens[start].begin : 0;
    TokenReader reader(tokens, start, end);
    while (reader.kind() != TokenKind::End) {
        const std::size_t at = reader.at();
        Unmapped found;
        if (TakeUnmapped(reader, found)) {
            inner += formula.substr(written, tokens[at].begin - written);
            found.map = Combine(found.map, found.atom.readsCurve ? y : x);
            // After a name, "(x-5)" is the argument of a call, and its parentheses must stay.
            AppendUnmapped(inner, found, at > start && tokens[at - 1].kind == TokenKind::Name);
        } else {
            inner += formula.substr(written, tokens[at].end - written);
            reader.moveTo(at + 1);
        }
        written = tokens[reader.at() - 1].end;
    }

    std::string image;
    AppendMapped(image, inner, value);
    return image;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
