#include "formats/text/TextComposer.h"

#include "formats/TangentTypes.h"
#include "formats/Text.h"

#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

// The number of bytes of the UTF-8 character at the start, 0 where it is none.
std::size_t CharacterLength(std::string_view text) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    if (first < 0x80) return 1;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4 || text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if (byte(i) < 0x80 || byte(i) > 0xbf) return 0;
    const unsigned char second = byte(1);
    const bool isValid = !(first == 0xe0 && second < 0xa0) && !(first == 0xed && second > 0x9f)
                         && !(first == 0xf0 && second < 0x90) && !(first == 0xf4 && second > 0x8f);
    return isValid ? length : 0;
}

// A word, in quotation marks where it cannot stand alone.
void AppendText(std::string& to, std::string_view text) {
    const bool isPlain = !text.empty() && text.find_first_of("\"\\{}# \t\v\f\r\n") == text.npos;
    constexpr const char* digits = "0123456789abcdef";
    std::string quoted;
    bool isEscaped = false;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = CharacterLength(text.substr(i));
        const auto byte = static_cast<unsigned char>(text[i]);
        if (length == 0 || byte < 0x20 || byte == 0x7f) {
            isEscaped = true;
            quoted += "\\x";
            quoted += digits[byte >> 4];
            quoted += digits[byte & 15];
        } else {
            if (byte == '"' || byte == '\\') quoted += '\\';
            quoted += text.substr(i, length);
        }
        i += length == 0 ? 1 : length;
    }
    if (isPlain && !isEscaped) {
        to += text;
        return;
    }
    to += '"';
    to += quoted;
    to += '"';
}

} // namespace

TextComposer::TextComposer() : m_text("fcurvetext 1.0\n") {}
TextComposer::~TextComposer() = default;

void TextComposer::indent(std::size_t depth) {
    m_text.append(4 * depth, ' ');
}

void TextComposer::property(std::string& text, std::size_t depth, const char* key, const char* value) {
    text.append(4 * depth, ' ');
    text += "property ";
    AppendText(text, key);
    text += ' ';
    AppendText(text, value);
    text += '\n';
}

void TextComposer::containerProperty(const char* key, const char* value) {
    property(m_text, 0, key, value);
}

bool TextComposer::startCurve(const char* name) {
    m_text += "curve ";
    AppendText(m_text, name);
    m_text += " {\n";
    return true;
}
bool TextComposer::finishCurve() {
    m_text += "}\n";
    return true;
}
void TextComposer::curveProperty(const char* key, const char* value) {
    property(m_text, 1, key, value);
}

// --- segments --------------------------------------------------------------------------------------------------------

void TextComposer::startSegment(const char* expression) {
    indent(1);
    m_text += "segment ";
    AppendText(m_text, expression);
}
void TextComposer::finishSegment() {
    block(m_body, 1);
}
void TextComposer::segmentProperty(const char* key, const char* value) {
    property(m_body, 2, key, value);
}

// Ends a line, with a block if there is something for it.
void TextComposer::block(std::string& lines, std::size_t depth) {
    if (lines.empty()) {
        m_text += '\n';
        return;
    }
    m_text += " {\n";
    m_text += lines;
    indent(depth);
    m_text += "}\n";
    lines.clear();
}

void TextComposer::startInTangent() {
    m_properties.clear();
}
void TextComposer::startOutTangent() {
    m_properties.clear();
}
void TextComposer::finishInTangent() {
    finishTangent("in ");
}
void TextComposer::finishOutTangent() {
    finishTangent("out ");
}
void TextComposer::finishTangent(const char* word) {
    m_body.append(8, ' ');
    m_body += word;
    m_body += kTangentTypes[m_type];
    m_body += ' ';
    AppendNumber(m_body, m_position.x);
    m_body += ' ';
    AppendNumber(m_body, m_position.y);
    if (m_weighted) m_body += " weighted";
    if (m_locked) m_body += " weightLocked";
    m_body += m_properties.empty() ? "\n" : " {\n" + m_properties + "        }\n";
}
void TextComposer::tangentVector(double x, double y) {
    m_position = {x, y};
}
void TextComposer::tangentType(unsigned char type) {
    m_type = type;
}
void TextComposer::tangentWeightLocked(bool locked) {
    m_locked = locked;
}
void TextComposer::tangentWeighted(bool weighted) {
    m_weighted = weighted;
}
void TextComposer::tangentProperty(const char* key, const char* value) {
    property(m_properties, 3, key, value);
}

// --- keyframes -------------------------------------------------------------------------------------------------------

void TextComposer::startKeyframe() {
    m_properties.clear();
}
void TextComposer::finishKeyframe() {
    indent(1);
    m_text += "key ";
    AppendNumber(m_text, m_position.x);
    m_text += ' ';
    AppendNumber(m_text, m_position.y);
    if (m_locked) m_text += " locked";
    if (m_breakdown) m_text += " breakdown";
    if (m_unified) m_text += " unified";
    block(m_properties, 1);
}
void TextComposer::keyframePosition(double x, double y) {
    m_position = {x, y};
}
void TextComposer::keyframeTangentsUnified(bool unified) {
    m_unified = unified;
}
void TextComposer::keyframeBreakdown(bool breakdown) {
    m_breakdown = breakdown;
}
void TextComposer::keyframeLocked(bool locked) {
    m_locked = locked;
}
void TextComposer::keyframeProperty(const char* key, const char* value) {
    property(m_properties, 2, key, value);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
