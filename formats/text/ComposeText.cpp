#include "FCurveLib/detail/ComposeText.h"

#include "FCurveLib/CurveEmitter.h"
#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/Vector2D.h"
#include "formats/TangentTypes.h"
#include "formats/Text.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {

bool IsPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
           || std::string_view("_()+-*/.,:;<>=!%&|^?@[]~$'").find(c) != std::string_view::npos;
}

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
    if (!text.empty() && std::all_of(text.begin(), text.end(), IsPlain)) {
        to += text;
        return;
    }
    constexpr const char* digits = "0123456789abcdef";
    to += '"';
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = CharacterLength(text.substr(i));
        const auto byte = static_cast<unsigned char>(text[i]);
        if (length == 0 || byte < 0x20 || byte == 0x7f) {
            to += "\\x";
            to += digits[byte >> 4];
            to += digits[byte & 15];
        } else {
            if (byte == '"' || byte == '\\') to += '\\';
            to += text.substr(i, length);
        }
        i += length == 0 ? 1 : length;
    }
    to += '"';
}

// Composes the document from the calls of an emitter.
class Composer : public FormatInterface {
public:
    explicit Composer(bool writesDisplay) : m_writesDisplay(writesDisplay) {}

    std::string takeText() { return std::move(m_text); }

    void containerProperty(const char* key, const char* value) override { property(m_text, 0, key, value); }

    bool startCurve(const char* name) override {
        m_text += "curve ";
        AppendText(m_text, name);
        m_text += " {\n";
        return true;
    }
    bool finishCurve() override {
        m_text += "}\n";
        return true;
    }
    void curveVisible(bool visible) override { setting("hidden", !visible); }
    void curveLocked(bool locked) override { setting("locked", locked); }
    void curveShowVelocity(bool show) override { setting("velocity", show); }
    void curveShowAcceleration(bool show) override { setting("acceleration", show); }
    void curveShowDiscontinuities(bool show) override { setting("discontinuities", show); }
    void curveGrid(double x, double y, double width, double height) override {
        setting("grid", true, {x, y, width, height});
    }
    void curveTangentScale(double scale) override { setting("tangentscale", scale != 1.0, {scale}); }
    void curveProperty(const char* key, const char* value) override { property(m_text, 1, key, value); }

    void startSegment(const char* expression) override {
        indent(m_text, 1);
        m_text += "segment ";
        AppendText(m_text, expression);
    }
    void finishSegment() override {
        m_tangents += m_segmentProperties;
        m_segmentProperties.clear();
        finishLine(m_text, 1, m_tangents);
    }
    void segmentProperty(const char* key, const char* value) override { property(m_segmentProperties, 2, key, value); }

    void finishInTangent() override { finishTangent("in "); }
    void finishOutTangent() override { finishTangent("out "); }
    void tangentVector(double x, double y) override { m_position = {x, y}; }
    void tangentType(unsigned char type) override { m_type = type; }
    void tangentWeightLocked(bool locked) override { m_locked = locked; }
    void tangentWeighted(bool weighted) override { m_weighted = weighted; }
    void tangentProperty(const char* key, const char* value) override { property(m_properties, 3, key, value); }

    void finishKeyframe() override {
        indent(m_text, 1);
        m_text += "key";
        appendPosition(m_text);
        if (m_locked) m_text += " locked";
        if (m_breakdown) m_text += " breakdown";
        if (m_unified) m_text += " unified";
        finishLine(m_text, 1, m_properties);
    }
    void keyframePosition(double x, double y) override { m_position = {x, y}; }
    void keyframeTangentsUnified(bool unified) override { m_unified = unified; }
    void keyframeBreakdown(bool breakdown) override { m_breakdown = breakdown; }
    void keyframeLocked(bool locked) override { m_locked = locked; }
    void keyframeProperty(const char* key, const char* value) override { property(m_properties, 2, key, value); }

private:
    static void indent(std::string& text, std::size_t depth) { text.append(4 * depth, ' '); }

    static void property(std::string& text, std::size_t depth, const char* key, const char* value) {
        indent(text, depth);
        text += "property ";
        AppendText(text, key);
        text += ' ';
        AppendText(text, value);
        text += '\n';
    }

    // A line that is there only where it is on.
    void setting(const char* word, bool on, std::initializer_list<double> numbers = {}) {
        if (!on || !m_writesDisplay) return;
        indent(m_text, 1);
        m_text += word;
        for (const double number : numbers) {
            m_text += ' ';
            AppendNumber(m_text, number);
        }
        m_text += '\n';
    }

    void appendPosition(std::string& text) const {
        text += ' ';
        AppendNumber(text, m_position.x);
        text += ' ';
        AppendNumber(text, m_position.y);
    }

    void finishTangent(const char* word) {
        indent(m_tangents, 2);
        m_tangents += word;
        m_tangents += kTangentTypes[m_type];
        appendPosition(m_tangents);
        if (m_weighted) m_tangents += " weighted";
        if (m_locked) m_tangents += " weightLocked";
        finishLine(m_tangents, 2, m_properties);
    }

    // Ends a line, with a block if there is something for it, which is taken.
    static void finishLine(std::string& text, std::size_t depth, std::string& content) {
        if (!content.empty()) {
            text += " {\n";
            text += content;
            content.clear();
            indent(text, depth);
            text += '}';
        }
        text += '\n';
    }

    std::string m_text = "fcurvetext 1.0\n";
    bool m_writesDisplay;
    std::string m_tangents; // lines of the segment
    std::string m_segmentProperties;
    std::string m_properties; // of the tangent or key
    Vector2D<double> m_position;
    unsigned char m_type = 0;
    bool m_locked = false; // the weight, or the key
    bool m_weighted = false;
    bool m_breakdown = false;
    bool m_unified = false;
};

} // namespace

std::string ComposeText(const FCurveContainer& curves, bool writesDisplay) {
    Composer composer(writesDisplay);
    EmitCurves(curves, composer);
    return composer.takeText();
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
