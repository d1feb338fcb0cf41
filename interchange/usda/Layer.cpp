#include "interchange/usda/Layer.h"

#include "FCurveInterchange/Formats.h"
#include "interchange/CurveReader.h"
#include "interchange/Numbers.h"

#include <FCurveLib/FormatLimits.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Usda {

namespace {

constexpr std::size_t kDeeper = 8; // prims nest deeper than the parts of other formats: times FormatLimits::nesting

constexpr ValueType kTypes[] = {
    {"double", 1, true, ""},        {"float", 1, true, ""},         {"half", 1, true, ""},
    {"timecode", 1, true, ""},      {"bool", 1, false, ""},         {"uchar", 1, false, ""},
    {"int", 1, false, ""},          {"uint", 1, false, ""},         {"int64", 1, false, ""},
    {"uint64", 1, false, ""},       {"double2", 2, true, "xy"},     {"double3", 3, true, "xyz"},
    {"double4", 4, true, "xyzw"},   {"float2", 2, true, "xy"},      {"float3", 3, true, "xyz"},
    {"float4", 4, true, "xyzw"},    {"half2", 2, true, "xy"},       {"half3", 3, true, "xyz"},
    {"half4", 4, true, "xyzw"},     {"int2", 2, false, "xy"},       {"int3", 3, false, "xyz"},
    {"int4", 4, false, "xyzw"},     {"point3d", 3, true, "xyz"},    {"point3f", 3, true, "xyz"},
    {"point3h", 3, true, "xyz"},    {"vector3d", 3, true, "xyz"},   {"vector3f", 3, true, "xyz"},
    {"vector3h", 3, true, "xyz"},   {"normal3d", 3, true, "xyz"},   {"normal3f", 3, true, "xyz"},
    {"normal3h", 3, true, "xyz"},   {"color3d", 3, true, "rgb"},    {"color3f", 3, true, "rgb"},
    {"color3h", 3, true, "rgb"},    {"color4d", 4, true, "rgba"},   {"color4f", 4, true, "rgba"},
    {"color4h", 4, true, "rgba"},   {"texCoord2d", 2, true, "uv"},  {"texCoord2f", 2, true, "uv"},
    {"texCoord2h", 2, true, "uv"},  {"texCoord3d", 3, true, "uvw"}, {"texCoord3f", 3, true, "uvw"},
    {"texCoord3h", 3, true, "uvw"}, {"quatd", 4, true, "wxyz"},     {"quatf", 4, true, "wxyz"},
    {"quath", 4, true, "wxyz"},
};

bool IsLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}
bool IsLineEnd(char c) noexcept {
    return c == '\n' || c == '\r';
}
bool IsOneOf(std::string_view word, std::initializer_list<std::string_view> words) noexcept {
    return std::find(words.begin(), words.end(), word) != words.end();
}

class Parser {
public:
    explicit Parser(std::string_view text) : m_text(text), m_limits(GetFormatLimits()) {
        m_deepest = m_limits.nesting > std::numeric_limits<std::size_t>::max() / kDeeper ? m_limits.nesting
                                                                                         : m_limits.nesting * kDeeper;
    }

    Layer parse() {
        readHeader();
        skip(true);
        if (at('(')) {
            m_layer.metadata.begin = m_at;
            double frames = 0.0;
            bool hasFrames = false;
            bool hasTimeCodes = false;
            readMetadata([&](std::string_view key) {
                if (key == "customLayerData") {
                    readDictionary(m_layer.customData);
                } else if (key == "timeCodesPerSecond") {
                    m_layer.rate = readFinite();
                    hasTimeCodes = true;
                } else if (key == "framesPerSecond") {
                    frames = readFinite();
                    hasFrames = true;
                } else if (key == "startTimeCode") {
                    m_layer.start = readFinite();
                } else if (key == "endTimeCode") {
                    m_layer.end = readFinite();
                } else if (key == "metersPerUnit") {
                    m_layer.metersPerUnit = readFinite();
                } else {
                    return false;
                }
                return true;
            });
            if (!hasTimeCodes && hasFrames) m_layer.rate = frames;
            m_layer.metadata.end = m_at;
        }
        m_layer.prims.push_back({"", {m_at, m_text.size()}, false});
        readStatements(0);
        if (m_at < m_text.size()) refuse("a prim");
        return std::move(m_layer);
    }

private:
    // --- what is wrong -----------------------------------------------------------------------------------------------

    template<class Error>
    [[noreturn]] void raise(const std::string& message, std::size_t place) const {
        const Place at = PlaceOf(m_text, place);
        throw Error(message, at.line, at.column);
    }
    std::string found() const {
        if (m_at >= m_text.size()) return "the end of the text";
        if (IsLineEnd(m_text[m_at])) return "the end of the line";
        std::size_t end = m_at + 1;
        if (IsLetter(m_text[m_at]))
            while (end < m_text.size() && (IsLetter(m_text[end]) || IsDigit(m_text[end]))) ++end;
        return Quoted(m_text.substr(m_at, end - m_at));
    }
    [[noreturn]] void refuse(const std::string& expected) const {
        raise<BadDocument>("Expected " + expected + ", found " + found() + '.', m_at);
    }
    [[noreturn]] void refuseUnclosed(const char* what, std::size_t place) const {
        raise<BadDocument>(std::string("The ") + what + " is not closed.", place);
    }
    void count(std::size_t there, std::size_t limit, const char* what) const {
        if (there >= limit)
            raise<TooMuch>(std::string("There are too many ") + what + "; the limit is " + std::to_string(limit) + '.',
                           m_at);
    }
    void checkLength(std::size_t length, std::size_t place) const {
        if (length > m_limits.text)
            raise<TooMuch>("A text has " + std::to_string(length) + " bytes; the limit is "
                               + std::to_string(m_limits.text) + '.',
                           place);
    }
    void remark(Remark::Kind kind, double time, std::string detail = {}) {
        m_layer.remarks.push_back({kind, m_current, time, std::move(detail)});
    }

    // --- characters --------------------------------------------------------------------------------------------------

    bool atEnd() const noexcept { return m_at >= m_text.size(); }
    bool at(char c) const noexcept { return m_at < m_text.size() && m_text[m_at] == c; }
    bool at(std::string_view text) const noexcept { return m_text.substr(m_at, text.size()) == text; }
    bool atLineEnd() const noexcept { return atEnd() || IsLineEnd(m_text[m_at]); }

    // Past blanks and comments, and past line ends if so wished.
    void skip(bool lines) {
        for (; !atEnd(); ++m_at) {
            const char c = m_text[m_at];
            if (c == '#' || at("//")) {
                m_at = std::min(m_text.find_first_of("\n\r", m_at), m_text.size()) - 1;
            } else if (at("/*")) {
                const std::size_t close = m_text.find("*/", m_at + 2);
                if (close == std::string_view::npos) refuseUnclosed("comment", m_at);
                m_at = close + 1;
            } else if (c != ' ' && c != '\t' && !(lines && IsLineEnd(c))) {
                return;
            }
        }
    }
    bool take(char c) {
        if (!at(c)) return false;
        ++m_at;
        return true;
    }
    void expect(char c) {
        if (!take(c)) refuse(std::string(1, '"') + c + '"');
    }

    // Letters, digits, colons; empty where there is none.
    std::string_view word() {
        const std::size_t begin = m_at;
        if (!atEnd() && IsLetter(m_text[m_at]))
            while (!atEnd() && (IsLetter(m_text[m_at]) || IsDigit(m_text[m_at]) || m_text[m_at] == ':')) ++m_at;
        checkLength(m_at - begin, begin);
        return m_text.substr(begin, m_at - begin);
    }
    bool atWord(std::string_view word) const noexcept {
        const std::size_t end = m_at + word.size();
        return at(word) && (end >= m_text.size() || (!IsLetter(m_text[end]) && !IsDigit(m_text[end])));
    }
    bool takeWord(std::string_view word) {
        if (!atWord(word)) return false;
        m_at += word.size();
        return true;
    }

    bool atString() const noexcept { return at('"') || at('\''); }
    std::string string() {
        if (!atString()) refuse("a text in quotes");
        const std::size_t begin = m_at;
        const char quote = m_text[m_at];
        const bool isLong = at(std::string(3, quote));
        m_at += isLong ? 3 : 1;
        std::string result;
        while (isLong ? !at(std::string_view(&m_text[begin], 3)) : !at(quote)) {
            if (atEnd() || (!isLong && IsLineEnd(m_text[m_at]))) refuseUnclosed("text in quotes", begin);
            result += at('\\') ? escaped() : m_text[m_at++];
            if (result.size() > m_limits.text) checkLength(result.size(), begin);
        }
        m_at += isLong ? 3 : 1;
        return result;
    }
    char escaped() {
        ++m_at;
        if (atEnd()) return '\\';
        const char c = m_text[m_at++];
        constexpr std::string_view letters = "ntrabfv";
        constexpr std::string_view meant = "\n\t\r\a\b\f\v";
        const std::size_t known = letters.find(c);
        if (known != std::string_view::npos) return meant[known];
        if (c != 'x') return c;
        unsigned code = 0;
        const char* const begin = m_text.data() + m_at;
        const char* const end = m_text.data() + std::min(m_at + 2, m_text.size());
        m_at += static_cast<std::size_t>(std::from_chars(begin, end, code, 16).ptr - begin);
        return static_cast<char>(code);
    }

    bool atNumber() const noexcept {
        return !atEnd()
               && (IsDigit(m_text[m_at]) || m_text[m_at] == '-' || m_text[m_at] == '.' || atWord("inf")
                   || atWord("nan"));
    }
    // May be infinite or NaN, if it is written so.
    double readNumber() {
        const std::size_t begin = m_at;
        const char* const first = m_text.data() + m_at;
        double number = 0.0;
        if (!atNumber()) refuse("a number");
        const bool negative = at('-');
        if (takeWord(negative ? "-inf" : "inf")) return negative ? -HUGE_VAL : HUGE_VAL;
        if (takeWord(negative ? "-nan" : "nan")) return std::numeric_limits<double>::quiet_NaN();
        const char* const digits = first + (negative ? 1 : 0);
        const char* const end = m_text.data() + m_text.size();
        const bool starts = digits < end && (IsDigit(*digits) || *digits == '.');
        const std::from_chars_result result = std::from_chars(first, end, number);
        if (!starts || result.ec == std::errc::invalid_argument) refuse("a number");
        m_at += static_cast<std::size_t>(result.ptr - first);
        checkLength(m_at - begin, begin);
        if (result.ec == std::errc::result_out_of_range
            && !ParseNumber(m_text.substr(begin, m_at - begin), number)) // too large, or too small
            raise<BadDocument>(Quoted(m_text.substr(begin, m_at - begin)) + " is too large for a number.", begin);
        if (!atEnd() && (IsLetter(m_text[m_at]) || at('.'))) {
            while (!atEnd() && (IsLetter(m_text[m_at]) || IsDigit(m_text[m_at]) || at('.'))) ++m_at;
            raise<BadDocument>(Quoted(m_text.substr(begin, m_at - begin)) + " is not a valid number.", begin);
        }
        return number;
    }
    double readFinite() {
        const std::size_t begin = m_at;
        const double number = readNumber();
        if (!std::isfinite(number)) raise<BadDocument>("Expected a finite number.", begin);
        return number;
    }

    // --- what is passed over -----------------------------------------------------------------------------------------

    // Past anything up to the given closing bracket, a line end or ';' outside brackets; the closing bracket and the
    // line end stay.
    void skipStatement(char closing) {
        std::string open;
        for (;;) {
            skip(!open.empty());
            if (atEnd()) {
                if (!open.empty()) refuse(std::string(1, '"') + open.back() + '"');
                return;
            }
            if (open.empty() && (at(closing) || atLineEnd())) return;
            if (open.empty() && take(';')) return;
            skipPart(open);
        }
    }
    // One bracket, whose closing one is kept in `open` or taken from there, or anything else.
    void skipPart(std::string& open) {
        if (atEnd()) refuse(std::string(1, '"') + open.back() + '"');
        const char c = m_text[m_at];
        if (c == '(' || c == '[' || c == '{') {
            if (open.size() >= m_deepest) raise<TooMuch>("Brackets are nested too deeply.", m_at);
            open += c == '(' ? ')' : c == '[' ? ']' : '}';
            ++m_at;
        } else if (c == ')' || c == ']' || c == '}') {
            if (open.empty()) refuse("a value");
            if (open.back() != c) refuse(std::string("\"") + open.back() + '"');
            open.pop_back();
            ++m_at;
        } else {
            skipAtom();
        }
    }
    // A text, asset, path, or a run of other characters.
    void skipAtom() {
        const std::size_t begin = m_at;
        if (atString()) {
            string();
        } else if (at('@')) {
            const std::string_view mark = m_text.substr(m_at, at("@@@") ? 3 : 1);
            m_at = m_text.find(mark, m_at + mark.size());
            if (m_at == std::string_view::npos) refuseUnclosed("asset", begin);
            m_at += mark.size();
        } else if (at('<')) {
            m_at = m_text.find_first_of(">\n\r", m_at);
            if (m_at == std::string_view::npos || m_text[m_at] != '>') refuseUnclosed("path", begin);
            ++m_at;
        } else {
            ++m_at;
            while (!atEnd() && (IsLetter(m_text[m_at]) || IsDigit(m_text[m_at]) || at('.') || at(':'))) ++m_at;
        }
    }
    // One value, on the line where it starts.
    void skipValue() {
        skip(false);
        if (atLineEnd()) refuse("a value");
        if (at(')') || at(']') || at('}') || at(';') || at(',')) refuse("a value");
        std::string open;
        do {
            if (!open.empty()) skip(true);
            skipPart(open);
        } while (!open.empty());
    }

    // --- metadata and custom data ------------------------------------------------------------------------------------

    // In round brackets; known(key) reads the value of a key that it knows, and tells.
    template<class Known>
    void readMetadata(const Known& known) {
        const std::size_t begin = m_at;
        expect('(');
        for (;;) {
            skip(true);
            if (take(')')) return;
            if (atEnd()) refuseUnclosed("metadata", begin);
            const std::string_view key = word();
            skip(false);
            if (!key.empty() && take('=')) {
                skip(false);
                if (known(key)) {
                    skip(false);
                    if (!at(')') && !take(';') && !atLineEnd()) refuse("the end of the line");
                    continue;
                }
            }
            skipStatement(')');
        }
    }

    void readDictionary(Dictionary& entries) {
        const std::size_t begin = m_at;
        expect('{');
        for (;;) {
            skip(true);
            while (take(';') || take(',')) skip(true);
            if (take('}')) return;
            if (atEnd()) refuseUnclosed("dictionary", begin);
            if (word().empty()) refuse("a type");
            if (take('[')) expect(']');
            skip(false);
            std::string key = atString() ? string() : std::string(word());
            if (key.empty()) refuse("a name");
            skip(false);
            expect('=');
            skip(false);
            const std::size_t value = m_at;
            count(entries.size(), m_limits.properties, "properties");
            if (atString()) {
                entries.emplace_back(std::move(key), string());
            } else {
                skipValue();
                checkLength(m_at - value, value);
                entries.emplace_back(std::move(key), m_text.substr(value, m_at - value));
            }
        }
    }

    // --- prims -------------------------------------------------------------------------------------------------------

    void readHeader() {
        if (at("PXR-USDC")) raise<BadDocument>("The file is a binary layer; text layers can be read.", 0);
        if (at("\xef\xbb\xbf")) m_at = 3;
        if (!at("#usda ")) refuse("\"#usda 1.0\"");
        m_at += 6;
        const std::size_t begin = m_at;
        m_at = std::min(m_text.find_first_of("\n\r", m_at), m_text.size());
        std::string_view version = m_text.substr(begin, m_at - begin);
        while (!version.empty() && (version.back() == ' ' || version.back() == '\t')) version.remove_suffix(1);
        m_layer.header = m_at;
        unsigned numbers[3] = {};
        const char* next = version.data();
        const char* const end = next + version.size();
        int parts = 0;
        for (; parts < 3; ++parts) {
            const std::from_chars_result result = std::from_chars(next, end, numbers[parts]);
            if (result.ec != std::errc()) refuseVersion(version, begin);
            next = result.ptr;
            if (next == end || *next != '.') break;
            ++next;
        }
        if (next != end || parts == 0 || numbers[0] != 1 || numbers[1] > 3) refuseVersion(version, begin);
    }
    [[noreturn]] void refuseVersion(std::string_view version, std::size_t place) const {
        raise<BadDocument>("The layer has version " + Quoted(version) + "; versions 1.0 to 1.3 can be read.", place);
    }

    // Up to the brace that closes the prim, or the end of the text.
    void readStatements(std::size_t prim) {
        for (;;) {
            skip(true);
            if (atEnd() || at('}')) return;
            if (take(';')) continue;
            if (at('(')) {
                skipValue();
                continue;
            }
            const std::size_t begin = m_at;
            const std::string_view first = word();
            if (IsOneOf(first, {"def", "over", "class"})) {
                readPrim(prim);
            } else if (IsOneOf(first, {"rel", "reorder", "add", "append", "prepend", "delete"})) {
                skipStatement('}');
            } else if (first.empty() || prim == 0) {
                m_at = begin;
                refuse(prim == 0 ? "a prim" : "a statement");
            } else if (first == "variantSet") {
                readVariants(prim);
            } else {
                readAttribute(prim, first, begin);
            }
        }
    }

    void readBody(std::size_t parent, const std::string& name, bool isVariant) {
        const std::size_t begin = m_at;
        expect('{');
        if (++m_depth > m_deepest) raise<TooMuch>("Prims are nested too deeply.", begin);
        const Prim& above = m_layer.prims[parent];
        const char* const separator = above.path.empty() || isVariant ? "" : "/";
        Prim prim{above.path + separator + name, {m_at, 0}, above.isInVariant || isVariant};
        checkLength(prim.path.size(), begin);
        const std::size_t index = m_layer.prims.size();
        m_layer.prims.push_back(std::move(prim));
        readStatements(index);
        if (!at('}')) refuseUnclosed("prim", begin);
        m_layer.prims[index].body.end = m_at;
        ++m_at;
        --m_depth;
    }

    void readPrim(std::size_t parent) {
        skip(true);
        while (!atString()) { // the type, which may be of several words
            if (word().empty() && !take('.')) refuse("the name of a prim in quotes");
            skip(true);
        }
        const std::string name = string();
        skip(true);
        if (at('(')) readMetadata([](std::string_view) { return false; });
        skip(true);
        readBody(parent, name, false);
    }

    void readVariants(std::size_t prim) {
        skip(false);
        const std::string set = string();
        skip(true);
        expect('=');
        skip(true);
        const std::size_t begin = m_at;
        expect('{');
        if (++m_depth > m_deepest) raise<TooMuch>("Prims are nested too deeply.", begin);
        for (;;) {
            skip(true);
            if (take('}')) break;
            if (atEnd()) refuseUnclosed("set of variants", begin);
            const std::string variant = string();
            skip(true);
            if (at('(')) readMetadata([](std::string_view) { return false; });
            skip(true);
            std::string name = "{";
            name.append(set).append("=").append(variant).append("}");
            readBody(prim, name, true);
        }
        --m_depth;
    }

    // --- attributes --------------------------------------------------------------------------------------------------

    void readAttribute(std::size_t prim, std::string_view type, std::size_t begin) {
        while (IsOneOf(type, {"custom", "uniform", "varying", "config"})) {
            skip(false);
            type = word();
        }
        if (type == "rel") {
            skipStatement('}');
            return;
        }
        if (type.empty()) refuse("a type");
        const bool isArray = take('[');
        if (isArray) expect(']');
        skip(false);
        const std::size_t place = m_at;
        const std::string_view name = word();
        if (name.empty()) refuse("the name of an attribute");
        const std::string_view suffix = take('.') ? word() : std::string_view();
        m_current = m_layer.prims[prim].path + '/' + std::string(name);
        skip(false);

        const ValueType* const known = isArray ? nullptr : FindType(type);
        if (suffix == "spline") {
            if (!known || known->components != 1 || !known->isContinuous)
                raise<BadDocument>("A spline cannot have the type " + Quoted(type) + '.', place);
            expect('=');
            skip(true);
            Attribute& attribute = attributeOf(prim, name, type);
            attribute.spline = readSpline();
            attribute.splineText = {begin, m_at};
            attribute.end = m_at;
        } else if (suffix == "timeSamples" && known) {
            expect('=');
            skip(true);
            Attribute& attribute = attributeOf(prim, name, type);
            attribute.samples = readSamples(known->components);
            attribute.samplesText = {begin, m_at};
            attribute.end = m_at;
        } else {
            if (suffix == "timeSamples") remark(Remark::SkippedType, 0.0, std::string(type) + (isArray ? "[]" : ""));
            readPlain(prim, name, type, suffix.empty() && known);
            return;
        }
        skip(false);
        if (!take(';') && !atLineEnd() && !at('}')) refuse("the end of the line");
    }

    // A value, a connection, a bare declaration: only its custom data matter.
    void readPlain(std::size_t prim, std::string_view name, std::string_view type, bool isKept) {
        if (take('=')) skipValue();
        std::size_t end = m_at;
        skip(false);
        Dictionary customData;
        if (at('(')) {
            readMetadata([&](std::string_view key) {
                if (key != "customData") return false;
                readDictionary(customData);
                return true;
            });
            end = m_at;
        }
        if (isKept) {
            Attribute& attribute = attributeOf(prim, name, type);
            attribute.end = end;
            if (!customData.empty()) attribute.customData = std::move(customData);
        }
        skipStatement('}');
    }

    Attribute& attributeOf(std::size_t prim, std::string_view name, std::string_view type) {
        const auto [entry, isNew] = m_attributes.try_emplace(m_current, m_layer.attributes.size());
        if (isNew) {
            count(m_layer.attributes.size(), m_limits.curves, "attributes");
            Attribute attribute;
            attribute.prim = prim;
            attribute.name = name;
            attribute.type = type;
            m_layer.attributes.push_back(std::move(attribute));
        }
        return m_layer.attributes[entry->second];
    }

    Samples readSamples(std::size_t components) {
        Samples samples;
        const std::size_t begin = m_at;
        expect('{');
        for (;;) {
            skip(true);
            if (take('}')) return samples;
            if (atEnd()) refuseUnclosed("list of samples", begin);
            count(samples.times.size(), m_limits.keys, "samples");
            const double time = readNumber();
            skip(true);
            expect(':');
            skip(true);
            const bool isNone = takeWord("None");
            double values[4] = {};
            if (!isNone) readValue(values, components);
            const bool isFinite = std::all_of(values, values + components, [](double v) { return std::isfinite(v); });
            if (isFinite && std::isfinite(time)) {
                samples.times.push_back(time);
                samples.isNone.push_back(isNone);
                samples.values.insert(samples.values.end(), values, values + components);
            } else {
                remark(Remark::NotFinite, std::isfinite(time) ? time : 0.0);
            }
            skip(true);
            if (!take(',') && !at('}')) refuse("\",\"");
        }
    }
    void readValue(double* values, std::size_t components) {
        if (components > 1) expect('(');
        for (std::size_t i = 0; i < components; ++i) {
            if (components > 1) {
                skip(true);
                if (i > 0) {
                    expect(',');
                    skip(true);
                }
            }
            values[i] = takeWord("true") ? 1.0 : takeWord("false") ? 0.0 : readNumber();
        }
        if (components == 1) return;
        skip(true);
        if (take(',')) skip(true);
        expect(')');
    }

    // --- splines -----------------------------------------------------------------------------------------------------

    SplineData readSpline() {
        SplineData spline;
        const std::size_t begin = m_at;
        expect('{');
        for (;;) {
            skip(true);
            if (take('}')) return spline;
            if (atEnd()) refuseUnclosed("spline", begin);
            if (takeWord("bezier")) {
                spline.isHermite = false;
            } else if (takeWord("hermite")) {
                spline.isHermite = true;
            } else if (takeWord("pre")) {
                spline.pre = readEnd();
            } else if (takeWord("post")) {
                spline.post = readEnd();
            } else if (takeWord("loop")) {
                spline.loop = readLoop();
            } else if (atNumber()) {
                count(spline.knots.size(), m_limits.keys, "knots");
                readKnot(spline);
            } else {
                refuse("a knot");
            }
            const std::size_t end = m_at;
            skip(true);
            if (take(',') || at('}')) continue;
            m_at = end;
            skip(false);
            refuse("\",\"");
        }
    }

    void readColon() {
        skip(false);
        expect(':');
        skip(false);
    }

    SplineEnd readEnd() {
        SplineEnd end;
        readColon();
        if (takeWord("none")) {
            end.kind = SplineEnd::None;
        } else if (takeWord("held")) {
            end.kind = SplineEnd::Held;
        } else if (takeWord("linear")) {
            end.kind = SplineEnd::Linear;
        } else if (takeWord("sloped")) {
            end.kind = SplineEnd::Sloped;
            skip(false);
            expect('(');
            end.slope = readInBrackets();
        } else if (takeWord("loop")) {
            skip(false);
            if (takeWord("repeat")) {
                end.kind = SplineEnd::Repeat;
            } else if (takeWord("reset")) {
                end.kind = SplineEnd::Reset;
            } else if (takeWord("oscillate")) {
                end.kind = SplineEnd::Oscillate;
            } else {
                refuse("\"repeat\", \"reset\" or \"oscillate\"");
            }
            skip(false);
            if (take('(')) end.boundary = readInBrackets();
        } else {
            refuse("\"none\", \"held\", \"linear\", \"sloped\" or \"loop\"");
        }
        return end;
    }
    double readInBrackets() {
        skip(false);
        const double number = readFinite();
        skip(false);
        expect(')');
        return number;
    }

    InnerLoop readLoop() {
        InnerLoop loop;
        readColon();
        expect('(');
        double* const numbers[] = {&loop.start, &loop.end, &loop.before, &loop.after, &loop.offset};
        for (std::size_t i = 0; i < 5; ++i) {
            skip(false);
            if (i > 0) {
                expect(',');
                skip(false);
            }
            const std::size_t place = m_at;
            *numbers[i] = readFinite();
            const bool isCount = i == 2 || i == 3;
            if (isCount && *numbers[i] != std::floor(*numbers[i]))
                raise<BadDocument>("The number of repetitions is not whole.", place);
        }
        skip(false);
        expect(')');
        return loop;
    }

    void readKnot(SplineData& spline) {
        SplineKnot knot;
        knot.time = readNumber();
        readColon();
        knot.value = readNumber();
        skip(false);
        if (take('&')) {
            skip(false);
            knot.isDual = true;
            knot.preValue = knot.value;
            knot.value = readNumber();
            skip(false);
        }
        if (!knot.isDual) knot.preValue = knot.value;
        if (take(';')) readParameters(knot);
        if (std::isfinite(knot.time) && std::isfinite(knot.value) && std::isfinite(knot.preValue)) {
            spline.knots.push_back(std::move(knot));
        } else {
            remark(Remark::NotFinite, std::isfinite(knot.time) ? knot.time : 0.0);
        }
    }

    void readParameters(SplineKnot& knot) {
        for (;;) {
            skip(true);
            if (at(',') || at('}')) return;
            if (takeWord("pre")) {
                skip(false);
                knot.pre = readSlope(knot.time);
            } else if (takeWord("post")) {
                skip(false);
                if (takeWord("none")) {
                    knot.mode = Mode::None;
                } else if (takeWord("held")) {
                    knot.mode = Mode::Held;
                } else if (takeWord("linear")) {
                    knot.mode = Mode::Linear;
                } else if (takeWord("curve")) {
                    knot.mode = Mode::Curve;
                } else if (!at('(')) {
                    refuse("\"none\", \"held\", \"linear\" or \"curve\"");
                }
                skip(false);
                if (at('(')) knot.post = readSlope(knot.time);
            } else if (at('{')) {
                readDictionary(knot.customData);
            } else {
                refuse("\"pre\", \"post\" or \"{\"");
            }
            const std::size_t end = m_at;
            skip(false);
            if (take(';')) continue;
            if (at(',') || at('}')) return;
            if (!atLineEnd()) refuse("\";\" or \",\"");
            skip(true); // a line end separates as well
            if (at(',') || at('}') || !(atWord("pre") || atWord("post") || at('{'))) {
                m_at = end;
                return;
            }
        }
    }

    Slope readSlope(double time) {
        Slope result;
        expect('(');
        skip(false);
        result.slope = readNumber();
        skip(false);
        if (take(',')) {
            skip(false);
            if (atNumber()) {
                result.width = result.slope;
                result.slope = readNumber();
                skip(false);
                if (take(',')) skipAlgorithm(time);
            } else {
                skipAlgorithm(time);
            }
        }
        skip(false);
        expect(')');
        if (!std::isfinite(result.slope)) {
            remark(Remark::NotFinite, time);
            return {};
        }
        if (!(result.width >= 0.0) || !std::isfinite(result.width)) {
            remark(Remark::Width, time);
            result.width = 0.0;
        }
        return result;
    }
    void skipAlgorithm(double time) {
        skip(false);
        const std::string_view algorithm = word();
        if (algorithm.empty()) refuse("a number");
        if (algorithm != "custom") remark(Remark::Algorithm, time, std::string(algorithm));
    }

    std::string_view m_text;
    FormatLimits m_limits;
    std::size_t m_deepest;
    std::size_t m_at = 0;
    std::size_t m_depth = 0;
    Layer m_layer;
    std::string m_current; // path of the attribute that is read
    std::unordered_map<std::string, std::size_t> m_attributes;
};

} // namespace

const ValueType* FindType(std::string_view name) {
    const auto* const found =
        std::find_if(std::begin(kTypes), std::end(kTypes), [name](const ValueType& type) { return name == type.name; });
    return found == std::end(kTypes) ? nullptr : found;
}

std::string Layer::pathOf(const Attribute& attribute) const {
    return prims[attribute.prim].path + '/' + attribute.name;
}

Layer ParseLayer(std::string_view text) {
    return Parser(text).parse();
}

bool StartsLayer(std::string_view text) noexcept {
    if (text.substr(0, 3) == "\xef\xbb\xbf") text.remove_prefix(3);
    return text.substr(0, 6) == "#usda ";
}

} // namespace Usda

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
