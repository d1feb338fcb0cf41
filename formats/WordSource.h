#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatLimits.h"
#include "formats/Text.h"
#include "formats/TextSource.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// A word of a text and where it starts. Empty at the end of the text.
struct Word {
    std::string text;
    std::uint64_t line = 0;
    std::uint64_t column = 0;
    bool isTooLong = false; // the text is its start
};

// Cuts a text into words at white space, and at punctuation, each character of which is a word of its own. A word that
// starts as a comment does ends with its line, and is none.
class WordSource {
public:
    WordSource(Stream& stream, std::string_view punctuation, std::size_t longest, std::string_view comment = {})
        : m_source(stream), m_punctuation(punctuation), m_longest(longest), m_comment(comment) {}

    TextSource& source() noexcept { return m_source; }

    void skipSpace() {
        while (IsSpace(m_source.peek())) m_source.take();
    }

    void next(Word& word) {
        next(word, m_punctuation);
        while (!m_comment.empty() && word.text.compare(0, m_comment.size(), m_comment) == 0) {
            while (!IsLineEnd(m_source.peek())) m_source.take();
            next(word, m_punctuation);
        }
    }
    // Punctuation does not end this word.
    void nextWhole(Word& word) { next(word, {}); }

private:
    void next(Word& word, std::string_view punctuation) {
        skipSpace();
        word.text.clear();
        word.line = m_source.line();
        word.column = m_source.column();
        word.isTooLong = false;
        const auto isPunctuation = [&](int c) {
            return punctuation.find(static_cast<char>(c)) != std::string_view::npos;
        };
        for (int c = m_source.peek(); c != TextSource::noByte && !IsSpace(c); c = m_source.peek()) {
            if (isPunctuation(c) && !word.text.empty()) return;
            if (word.text.size() >= m_longest) {
                word.isTooLong = true;
                return;
            }
            word.text += static_cast<char>(m_source.take());
            if (isPunctuation(c)) return;
        }
    }

    TextSource m_source;
    std::string_view m_punctuation;
    std::size_t m_longest;
    std::string_view m_comment;
};

// What parsers of words have in common. Errors names the format's exceptions UnexpectedWord, BadNumber, LimitExceeded.
template<class Errors>
class WordParser {
protected:
    WordParser(Stream& stream, std::string_view punctuation, std::string_view comment = {})
        : m_limits(GetFormatLimits()), m_words(stream, punctuation, m_limits.text, comment) {
        next();
    }

    bool atEnd() const { return m_word.text.empty(); }
    bool at(std::string_view word) const { return m_word.text == word; }
    void next() {
        m_words.next(m_word);
        check();
    }
    void nextWhole() {
        m_words.nextWhole(m_word);
        check();
    }

    template<class Error>
    [[noreturn]] static void raise(const std::string& message, const Word& word) {
        throw Error(message, word.line, word.column);
    }
    [[noreturn]] void refuse(const std::string& expected) const {
        raise<typename Errors::UnexpectedWord>(
            ExpectedFound(expected, atEnd() ? "the end of the text" : Quoted(m_word.text)), m_word);
    }

    void expect(const char* word) {
        if (!at(word)) refuse(Quoted(word));
        next();
    }
    double readNumber() {
        double number = 0.0;
        if (!ParseNumber(m_word.text, number)) {
            if (atEnd() || at("}")) refuse("a number");
            raise<typename Errors::BadNumber>(ExpectedFound("a number", Quoted(m_word.text)), m_word);
        }
        next();
        return number;
    }

    const FormatLimits m_limits;
    WordSource m_words;
    Word m_word; // the next one

private:
    void check() const {
        if (m_word.isTooLong) raise<typename Errors::LimitExceeded>("A word is too long.", m_word);
        if (m_word.text.find('\0') != std::string::npos) refuse("text without a zero byte");
    }
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
