#pragma once

#include "FCurveLib/Export.h"
#include "formats/TextSource.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// A word of a text and where it begins. Empty at the end of the text.
struct Word {
    std::string text;
    std::uint64_t line = 0;
    std::uint64_t column = 0;
    bool isTooLong = false; // the text is its beginning
};

// Cuts a text into words at white space, and at punctuation, each character of which is a word of its own.
class WordSource {
public:
    WordSource(Stream& stream, std::string_view punctuation, std::size_t longest)
        : m_source(stream), m_punctuation(punctuation), m_longest(longest) {}

    TextSource& source() noexcept { return m_source; }

    void skipSpace() {
        while (isSpace(m_source.peek())) m_source.take();
    }

    void next(Word& word) { next(word, m_punctuation); }
    // Punctuation does not end this word.
    void nextWhole(Word& word) { next(word, {}); }

    static bool isSpace(int c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

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
        for (int c = m_source.peek(); c != TextSource::kEnd && !isSpace(c); c = m_source.peek()) {
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
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
