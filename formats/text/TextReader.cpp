#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/FormatLimits.h"
#include "FCurveLib/TextFormat.h"
#include "formats/Opening.h"
#include "formats/TangentTypes.h"
#include "formats/Text.h"
#include "formats/TextSource.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace TextFormat {

using Private::IsBlank;
using Private::IsLineEnd;
using Private::TextSource;

namespace {

constexpr unsigned kMajor = 1;
constexpr unsigned kMinor = 0;
constexpr const char* kMagic = "fcurvetext";
constexpr std::size_t kMostWords = 64; // of a line; no statement has nearly as many

struct Word {
    std::string text;
    bool isQuoted = false;
    std::uint64_t line = 0;
    std::uint64_t column = 0;

    bool is(std::string_view keyword) const { return !isQuoted && text == keyword; }
};

// The lines that say something, one after the other, as words.
class Lines {
public:
    Lines(Stream& stream, const FormatLimits& limits) : m_source(stream), m_limits(limits) {}

    // False at the end of the text.
    bool next() {
        m_words.clear();
        m_read = 0;
        for (;;) {
            const int c = m_source.peek();
            if (IsBlank(c)) {
                m_source.take();
            } else if (c == TextSource::noByte) {
                return !m_words.empty();
            } else if (IsLineEnd(c)) {
                m_source.take();
                if (!m_words.empty()) return true;
            } else if (c == '#') {
                while (!IsLineEnd(m_source.peek())) m_source.take();
            } else {
                readWord();
            }
        }
    }

    // --- the words of the line that were not read yet ----------------------------------------------------------------

    bool atEnd() const { return m_read == m_words.size(); }
    bool at(std::string_view keyword) const { return !atEnd() && m_words[m_read].is(keyword); }
    bool skip(std::string_view keyword) {
        if (!at(keyword)) return false;
        ++m_read;
        return true;
    }
    const Word& take(const char* expected) {
        if (atEnd() || at("{") || at("}")) refuse(expected);
        return m_words[m_read++];
    }
    // The next one; empty at the end of the line.
    Word word() const { return atEnd() ? Word() : m_words[m_read]; }
    const std::string& text(const char* expected) { return take(expected).text; }
    double number() {
        const Word& word = take("a number");
        double result = 0.0;
        if (word.isQuoted || !Private::ParseNumber(word.text, result)) {
            throw BadNumber(Private::ExpectedFound("a number", Private::Quoted(word.text)), word.line, word.column);
        }
        return result;
    }
    // The line ends here, or opens a block: whether it does.
    bool opens() {
        const bool result = skip("{");
        finish();
        return result;
    }
    void finish() {
        if (!atEnd()) refuse("the end of the line");
    }

    [[noreturn]] void refuse(const std::string& expected) const {
        if (!atEnd()) {
            const Word& word = m_words[m_read];
            throw UnexpectedWord(Private::ExpectedFound(expected, Private::Quoted(word.text)), word.line, word.column);
        }
        const bool isText = m_words.empty();
        throw UnexpectedWord(Private::ExpectedFound(expected, isText ? "the end of the text" : "the end of the line"),
                             isText ? m_source.line() : m_words.back().line,
                             isText ? m_source.column() : m_words.back().column + m_words.back().text.size());
    }

    [[noreturn]] void exceed(const std::string& message) const {
        throw LimitExceeded(message, m_source.line(), m_source.column());
    }

private:
    void readWord() {
        if (m_words.size() >= kMostWords) exceed("There are too many words in this line.");
        Word word;
        word.line = m_source.line();
        word.column = m_source.column();
        int c = m_source.peek();
        if (c == '{' || c == '}') {
            word.text += static_cast<char>(m_source.take());
        } else if (c == '"') {
            readQuoted(word);
        } else {
            for (; !IsBlank(c) && !IsLineEnd(c) && c != '{' && c != '}' && c != '"' && c != '#'; c = m_source.peek())
                append(word, m_source.take());
        }
        m_words.push_back(std::move(word));
    }

    void readQuoted(Word& word) {
        word.isQuoted = true;
        m_source.take();
        for (;;) {
            if (IsLineEnd(m_source.peek())) {
                throw BadText("A text in quotation marks does not end in its line.", word.line, word.column);
            }
            const int c = m_source.take();
            if (c == '"') return;
            append(word, c == '\\' ? readEscape() : c);
        }
    }

    int readEscape() {
        const std::uint64_t line = m_source.line();
        const std::uint64_t column = m_source.column();
        const int c = m_source.take();
        switch (c) {
        case '"':
        case '\\':
            return c;
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        case 'x': {
            char digits[2];
            for (char& digit : digits) digit = static_cast<char>(m_source.take());
            unsigned byte = 0;
            const auto result = std::from_chars(digits, digits + 2, byte, 16);
            if (result.ec == std::errc() && result.ptr == digits + 2) return static_cast<int>(byte);
            break;
        }
        default:
            break;
        }
        throw BadText("A backslash is not followed by one of \" \\ n r t, or x and two hexadecimal digits.", line,
                      column);
    }

    void append(Word& word, int c) {
        if (c == 0) throw BadText("A text has a zero byte.", word.line, word.column);
        if (word.text.size() >= m_limits.text) throw LimitExceeded("A text is too long.", word.line, word.column);
        word.text += static_cast<char>(c);
    }

    TextSource m_source;
    const FormatLimits& m_limits;
    std::vector<Word> m_words;
    std::size_t m_read = 0;
};

using PropertyCall = void (FormatInterface::*)(const char* key, const char* value);

class Parser {
public:
    Parser(Stream& stream, FormatInterface& target)
        : m_target(target), m_limits(GetFormatLimits()), m_lines(stream, m_limits) {
        readVersion();
        m_more = m_lines.next();
    }

    // --- container ---------------------------------------------------------------------------------------------------

    void readContainerProperties(bool isWanted) {
        for (std::size_t count = 0; m_more && !m_lines.at("curve"); m_more = m_lines.next()) {
            if (m_lines.at("property")) {
                readProperty(isWanted ? &FormatInterface::containerProperty : nullptr, count);
            } else {
                skipUnknown("\"property\" or \"curve\"");
            }
        }
    }

    // Another curve follows.
    bool atCurve() {
        while (m_more && !m_lines.at("curve")) {
            skipUnknown("\"curve\"");
            m_more = m_lines.next();
        }
        return m_more;
    }
    [[noreturn]] void refuse(const char* expected) const { m_lines.refuse(expected); }
    void countCurve() {
        if (++m_curves > m_limits.curves) m_lines.exceed(Private::TooMany("curves", m_limits.curves));
    }

    // --- curve -------------------------------------------------------------------------------------------------------

    // Returns whether the target wants further curves.
    bool readCurve() {
        m_lines.skip("curve");
        const std::string name = m_lines.text("the curve's name");
        if (!m_lines.opens()) m_lines.refuse("\"{\"");
        if (!m_target.startCurve(name.c_str())) {
            skipBlock();
            m_more = m_lines.next();
            return true;
        }
        readHead();
        m_target.startSegmentContainer();
        readSegments();
        m_target.finishSegmentContainer();
        m_more = m_lines.next();
        return m_target.finishCurve();
    }

private:
    void readVersion() {
        if (!m_lines.next() || !m_lines.skip(kMagic)) m_lines.refuse("\"fcurvetext\" and a version");
        const Word version = m_lines.take("a version such as 1.0");
        unsigned major = 0;
        unsigned minor = 0;
        if (version.isQuoted || !Private::ParseVersion(version.text, major, minor)) {
            throw UnexpectedWord(Private::ExpectedFound("a version such as 1.0", Private::Quoted(version.text)),
                                 version.line, version.column);
        }
        if (major != kMajor)
            throw UnsupportedVersion(Private::VersionMessage(major, minor, kMajor), version.line, version.column);
        m_isNewer = minor > kMinor;
        m_lines.finish();
    }

    // A statement that this version does not know, with its block.
    void skipUnknown(const char* expected) {
        if (!m_isNewer || m_lines.at("}") || m_lines.at("{")) m_lines.refuse(expected);
        while (!m_lines.atEnd() && !m_lines.at("{")) m_lines.take(expected);
        if (m_lines.opens()) skipBlock();
    }
    // To the line of the brace that closes the block.
    void skipBlock() {
        for (std::size_t depth = 1;;) {
            if (!m_lines.next()) m_lines.refuse("\"}\"");
            if (m_lines.skip("}")) {
                m_lines.finish();
                if (--depth == 0) return;
                continue;
            }
            while (!m_lines.atEnd() && !m_lines.at("{")) m_lines.take("\"{\" or the end of the line");
            if (m_lines.opens() && ++depth > m_limits.nesting) m_lines.exceed("The blocks are nested too deeply.");
        }
    }

    // The next line of a block; false for the one that closes it.
    bool nextInBlock() {
        if (!m_lines.next()) m_lines.refuse("\"}\"");
        if (!m_lines.skip("}")) return true;
        m_lines.finish();
        return false;
    }

    void readProperty(PropertyCall call, std::size_t& count) {
        if (++count > m_limits.properties) m_lines.exceed(Private::TooMany("properties", m_limits.properties));
        m_lines.skip("property");
        const std::string key = m_lines.text("the property's name");
        const std::string value = m_lines.text("the property's value");
        m_lines.finish();
        if (call) (m_target.*call)(key.c_str(), value.c_str());
    }
    void readProperties(PropertyCall call) {
        for (std::size_t count = 0; nextInBlock();) {
            if (m_lines.at("property")) {
                readProperty(call, count);
            } else {
                skipUnknown("\"property\" or \"}\"");
            }
        }
    }

    // Up to the first line about segments or keys, or the one that closes the curve: that is read already.
    void readHead() {
        std::size_t properties = 0;
        while ((m_inCurve = nextInBlock()) && !m_lines.at("segment") && !m_lines.at("key") && !m_lines.at("default")) {
            if (m_lines.at("property")) {
                readProperty(&FormatInterface::curveProperty, properties);
            } else if (m_lines.skip("hidden")) {
                m_target.curveVisible(false);
                m_lines.finish();
            } else if (m_lines.skip("locked")) {
                m_target.curveLocked(true);
                m_lines.finish();
            } else if (m_lines.skip("velocity")) {
                m_target.curveShowVelocity(true);
                m_lines.finish();
            } else if (m_lines.skip("acceleration")) {
                m_target.curveShowAcceleration(true);
                m_lines.finish();
            } else if (m_lines.skip("discontinuities")) {
                m_target.curveShowDiscontinuities(true);
                m_lines.finish();
            } else if (m_lines.skip("grid")) {
                double grid[4];
                for (double& number : grid) number = m_lines.number();
                m_target.curveGrid(grid[0], grid[1], grid[2], grid[3]);
                m_lines.finish();
            } else if (m_lines.skip("tangentscale")) {
                m_target.curveTangentScale(m_lines.number());
                m_lines.finish();
            } else {
                skipUnknown("a setting of the curve, \"segment\", \"key\" or \"}\"");
            }
        }
    }

    void readSegments() {
        std::string between = "linear()";
        bool hasSegment = false; // since the last key
        m_lastX = -HUGE_VAL;
        std::size_t keys = 0;
        for (; m_inCurve; m_inCurve = nextInBlock()) {
            if (m_lines.at("key")) {
                if (++keys > m_limits.keys) m_lines.exceed(Private::TooMany("keys", m_limits.keys));
                if (!hasSegment) plainSegment(keys == 1 ? "constant()" : between);
                readKey();
                hasSegment = false;
            } else if (m_lines.at("segment") && !hasSegment) {
                readSegment();
                hasSegment = true;
            } else if (m_lines.skip("default")) {
                between = m_lines.text("an interpolator, such as bezier()");
                m_lines.finish();
            } else {
                skipUnknown(hasSegment ? "\"key\" or \"}\"" : "\"segment\", \"key\" or \"}\"");
            }
        }
        if (!hasSegment) plainSegment("constant()");
    }

    void startSegment(const std::string& expression) {
        if (expression.size() > m_limits.expressions - m_expressionBytes)
            m_lines.exceed(Private::TooMany("bytes in all expressions", m_limits.expressions));
        m_expressionBytes += expression.size();
        m_target.startSegment(expression.c_str());
    }
    void plainSegment(const std::string& expression) {
        startSegment(expression);
        m_target.finishSegment();
    }

    void readSegment() {
        m_lines.skip("segment");
        startSegment(m_lines.text("an interpolator, such as bezier()"));
        if (m_lines.opens()) {
            std::size_t properties = 0;
            bool hasOut = false;
            bool hasIn = false;
            while (nextInBlock()) {
                if (m_lines.at("property")) {
                    readProperty(&FormatInterface::segmentProperty, properties);
                } else if (!hasOut && m_lines.skip("out")) {
                    hasOut = true;
                    m_target.startOutTangent();
                    readTangent();
                    m_target.finishOutTangent();
                } else if (!hasIn && m_lines.skip("in")) {
                    hasIn = true;
                    m_target.startInTangent();
                    readTangent();
                    m_target.finishInTangent();
                } else {
                    skipUnknown("\"out\", \"in\", \"property\" or \"}\"");
                }
            }
        }
        m_target.finishSegment();
    }

    void readTangent() {
        const Word word = m_lines.word();
        std::size_t type = Private::TangentTypeOf(word.isQuoted ? "" : word.text);
        if (type == std::size(Private::kTangentTypes)) {
            double number = 0.0;
            const bool isLater = m_isNewer && !word.isQuoted && !Private::ParseNumber(word.text, number);
            if (!isLater) m_lines.refuse("the tangent's type, such as \"fixed\"");
            type = 0; // the handle stays as the later version computed it
        }
        m_lines.take("the tangent's type");
        m_target.tangentType(static_cast<unsigned char>(type));
        if (!m_lines.atEnd() && !m_lines.at("weighted") && !m_lines.at("weightLocked") && !m_lines.at("{")) {
            const double x = m_lines.number();
            m_target.tangentVector(x, m_lines.number());
        }
        if (m_lines.skip("weighted")) m_target.tangentWeighted(true);
        if (m_lines.skip("weightLocked")) m_target.tangentWeightLocked(true);
        if (m_lines.opens()) readProperties(&FormatInterface::tangentProperty);
    }

    void readKey() {
        m_lines.skip("key");
        const Word at = m_lines.word();
        const double x = m_lines.number();
        if (!(x > m_lastX)) throw BadNumber(Private::kKeyOutOfOrder, at.line, at.column);
        m_lastX = x;
        m_target.startKeyframe();
        m_target.keyframePosition(x, m_lines.number());
        if (m_lines.skip("locked")) m_target.keyframeLocked(true);
        if (m_lines.skip("breakdown")) m_target.keyframeBreakdown(true);
        if (m_lines.skip("unified")) m_target.keyframeTangentsUnified(true);
        if (m_lines.opens()) readProperties(&FormatInterface::keyframeProperty);
        m_target.finishKeyframe();
    }

    FormatInterface& m_target;
    const FormatLimits m_limits;
    Lines m_lines;
    bool m_isNewer = false;
    bool m_more = false; // whether a line of the container is there to be looked at
    bool m_inCurve = false;
    double m_lastX = 0.0;
    std::size_t m_curves = 0;
    std::size_t m_expressionBytes = 0;
};

} // namespace

TextReader::TextReader() : Reader(GetFormatType()) {}
TextReader::~TextReader() = default;

void TextReader::readCurves(Stream& stream, FormatInterface& target) {
    Parser parser(stream, target);
    target.startCurveContainer();
    parser.readContainerProperties(true);
    while (parser.atCurve()) {
        parser.countCurve();
        if (!parser.readCurve()) break;
    }
    target.finishCurveContainer();
}

void TextReader::readCurve(Stream& stream, FormatInterface& target) {
    Parser parser(stream, target);
    parser.readContainerProperties(false);
    if (!parser.atCurve()) parser.refuse("\"curve\"");
    parser.readCurve();
    if (parser.atCurve()) parser.refuse("the end of the text after a single curve");
}

bool TextReader::canRead(Stream& stream, Stream& header) {
    Private::Opening opening(stream, header);
    TextSource source(opening);
    while (Private::IsSpace(source.peek()) || source.peek() == '#') {
        if (source.take() != '#') continue;
        while (!IsLineEnd(source.peek())) source.take();
    }
    for (const char* c = kMagic; *c; ++c)
        if (source.take() != *c) return false;
    return source.peek() == ' ' || source.peek() == '\t';
}

} // namespace TextFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
