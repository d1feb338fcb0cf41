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
        m_isWanted = m_target.startCurve(name.c_str());
        m_isFirst = true;
        if (m_isWanted) m_target.startSegmentContainer();
        for (std::size_t keys = 0; at("keyframe"); ++keys) {
            if (keys >= m_limits.keys) raise<LimitExceeded>(Private::TooMany("keys", m_limits.keys), m_word);
            TovKey key;
            readKey(key);
            if (m_isWanted) emitKey(key);
            m_before = key;
            m_isFirst = false;
        }
        expect("}");
        if (!m_isWanted) return true;
        emitLast();
        m_target.finishSegmentContainer();
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

    void readKey(TovKey& key) {
        expect("keyframe");
        expect("{");
        const Word x = m_word;
        key.setLocation(readPair());
        if (!m_isFirst && !(key.getLocation().x > m_before.getLocation().x)) {
            raise<BadNumber>(Private::kKeyOutOfOrder, x);
        }
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

    // --- what the target hears ---------------------------------------------------------------------------------------

    void emitTangent(const Vector2D<double>& handle, bool hasSpan, double span) {
        m_target.tangentType(Tangent::Fixed);
        m_target.tangentWeighted(hasSpan && Private::IsWeightedHandle(handle.x, span));
        m_target.tangentWeightLocked(false);
        m_target.tangentVector(handle.x, handle.y);
    }
    void emitKey(const TovKey& key) {
        const double span = key.getLocation().x - m_before.getLocation().x;
        m_target.startSegment(m_isFirst ? "constant()" : ExpressionOf(m_before.getInterp()));
        if (!m_isFirst) {
            m_target.startOutTangent();
            emitTangent(m_before.getRightTangent(), true, span);
            m_target.finishOutTangent();
        }
        m_target.startInTangent();
        emitTangent(key.getLeftTangent(), !m_isFirst, span);
        m_target.finishInTangent();
        m_target.finishSegment();
        m_target.startKeyframe();
        m_target.keyframePosition(key.getLocation().x, key.getLocation().y);
        m_target.keyframeLocked(key.isLocked());
        m_target.finishKeyframe();
    }
    void emitLast() {
        m_target.startSegment("constant()");
        if (!m_isFirst) {
            m_target.startOutTangent();
            emitTangent(m_before.getRightTangent(), false, 0.0);
            m_target.finishOutTangent();
        }
        m_target.finishSegment();
    }

    FormatInterface& m_target;
    bool m_isWanted = true;
    bool m_isFirst = true;
    TovKey m_before;
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
