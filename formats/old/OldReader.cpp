#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/FormatLimits.h"
#include "FCurveLib/OldFormat.h"
#include "FCurveLib/Tangent.h"
#include "FCurveLib/TovConversion.h"
#include "FCurveLib/Vector2D.h"
#include "formats/Opening.h"
#include "formats/Text.h"
#include "formats/WordSource.h"
#include "formats/old/Grammar.h"

#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace OldFormat {

using Private::TextSource;
using Private::Word;
using TovConversion::TovKey;

namespace {

const char* ExpressionOf(TovKey::InterpType interp) {
    switch (interp) {
    case TovKey::Linear:
        return "linear()";
    case TovKey::Bezier:
        return "bezier()";
    default:
        return "constant()";
    }
}

struct Errors {
    using UnexpectedWord = OldFormat::UnexpectedWord;
    using BadNumber = OldFormat::BadNumber;
    using LimitExceeded = OldFormat::LimitExceeded;
};

// Tells a target of a curve's keys, one after the other.
class Emission {
public:
    explicit Emission(FormatInterface& target) : m_target(target) { m_target.startSegmentContainer(); }

    void take(const TovKey& key) {
        const double span = m_isFirst ? 0.0 : key.getLocation().x - m_before.getLocation().x;
        startSegment(m_isFirst ? "constant()" : ExpressionOf(m_before.getInterp()), span);
        m_target.startInTangent();
        emitTangent(key.getLeftTangent(), span);
        m_target.finishInTangent();
        m_target.finishSegment();
        m_target.startKeyframe();
        m_target.keyframePosition(key.getLocation().x, key.getLocation().y);
        m_target.keyframeLocked(key.isLocked());
        m_target.finishKeyframe();
        m_before = key;
        m_isFirst = false;
    }
    void finish() {
        startSegment("constant()", 0.0);
        m_target.finishSegment();
        m_target.finishSegmentContainer();
    }

private:
    // Outside the keys the span is 0.
    void startSegment(const char* expression, double span) {
        m_target.startSegment(expression);
        if (m_isFirst) return;
        m_target.startOutTangent();
        emitTangent(m_before.getRightTangent(), span);
        m_target.finishOutTangent();
    }
    void emitTangent(const Vector2D<double>& handle, double span) {
        m_target.tangentType(Tangent::Fixed);
        m_target.tangentWeighted(span > 0.0 && Private::IsWeightedHandle(handle.x, span));
        m_target.tangentWeightLocked(false);
        m_target.tangentVector(handle.x, handle.y);
    }

    FormatInterface& m_target;
    bool m_isFirst = true;
    TovKey m_before;
};

constexpr std::string_view kPunctuation = "{}";
constexpr std::string_view kComment = "//";

class Parser : Private::WordParser<Errors> {
public:
    Parser(Stream& stream, FormatInterface& target) : WordParser(stream, kPunctuation, kComment), m_target(target) {}

    using WordParser::atEnd;

    [[noreturn]] void refuseCurve(std::size_t limit) const {
        raise<LimitExceeded>(Private::TooMany("curves", limit), m_word);
    }

    // Returns whether the target wants further curves.
    bool readCurve() {
        expect("fcurve");
        expect("{");
        if (!at("name")) refuse("\"name\"");
        const std::string name = readName();
        expect("extensions");
        expect("constant");
        expect("constant");
        std::optional<Emission> emission; // where the curve is wanted
        if (m_target.startCurve(name.c_str())) emission.emplace(m_target);
        double lastX = -std::numeric_limits<double>::infinity();
        for (std::size_t keys = 0; at("keyframe"); ++keys) {
            if (keys >= m_limits.keys) raise<LimitExceeded>(Private::TooMany("keys", m_limits.keys), m_word);
            TovKey key;
            readKey(key, lastX);
            lastX = key.getLocation().x;
            if (emission) emission->take(key);
        }
        expect("}");
        if (!emission) return true;
        emission->finish();
        return m_target.finishCurve();
    }

private:
    // Up to the quotation mark before "extensions", which becomes the word.
    std::string readName() {
        m_words.skipSpace();
        TextSource& source = m_words.source();
        m_word = {source.peek() == TextSource::noByte ? "" : std::string(1, static_cast<char>(source.peek())),
                  source.line(), source.column(), false};
        if (source.take() != '"') refuse("a name in quotation marks");
        std::string text;
        for (;;) {
            const int c = source.take();
            if (c == TextSource::noByte) {
                m_word = {"", source.line(), source.column(), false};
                refuse("the end of the name and \"extensions\"");
            }
            if (c == 0) throw UnexpectedWord("A name has a zero byte.", source.line(), source.column());
            text += static_cast<char>(c);
            const std::string_view end = Private::kWordAfterName;
            if (text.size() > m_limits.text) raise<LimitExceeded>("A name is too long.", m_word);
            if (text.size() < end.size() || text.compare(text.size() - end.size(), end.size(), end) != 0) continue;
            std::size_t length = text.size() - end.size();
            while (length > 0 && Private::IsSpace(text[length - 1])) --length;
            if (length == 0 || text[length - 1] != '"') continue;
            m_word = {std::string(end), source.line(), source.column(), false};
            return text.substr(0, length - 1);
        }
    }

    Vector2D<double> readPair() {
        const double x = readNumber();
        return {x, readNumber()};
    }

    // Absent where the kind has no word.
    TovKey::InterpType readInterp() {
        for (std::uint32_t i = 0; i < std::size(Private::kInterpWords); ++i) {
            if (!at(Private::kInterpWords[i])) continue;
            next();
            return static_cast<TovKey::InterpType>(i);
        }
        return TovKey::Unknown;
    }

    void readKey(TovKey& key, double lastX) {
        expect("keyframe");
        expect("{");
        const Word x = m_word;
        key.setLocation(readPair());
        if (!(key.getLocation().x > lastX)) raise<BadNumber>(Private::kKeyOutOfOrder, x);
        expect("interp");
        key.setInterp(readInterp());
        expect("tangents");
        expect("smooth");
        key.setLeftTangent(readPair());
        readInterp();
        key.setRightTangent(readPair());
        readInterp();
        if (at("snapped")) next();
        if (at("locked")) {
            key.setLocked(true);
            next();
        }
        expect("}");
    }

    FormatInterface& m_target;
};

} // namespace

OldReader::OldReader() : Reader(GetFormatType()) {}
OldReader::~OldReader() = default;

void OldReader::readCurves(Stream& stream, FormatInterface& target) {
    Parser parser(stream, target);
    const std::size_t limit = GetFormatLimits().curves;
    target.startCurveContainer();
    std::size_t curves = 0;
    do {
        if (++curves > limit) parser.refuseCurve(limit);
    } while (parser.readCurve() && !parser.atEnd());
    target.finishCurveContainer();
}

void OldReader::readCurve(Stream& stream, FormatInterface& target) {
    Parser(stream, target).readCurve();
}

bool OldReader::canRead(Stream& stream, Stream& header) {
    Private::Opening opening(stream, header);
    Private::WordSource words(opening, kPunctuation, 1024, kComment);
    Word word;
    words.next(word);
    if (word.text != "fcurve") return false;
    words.next(word);
    return word.text == "{";
}

} // namespace OldFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
