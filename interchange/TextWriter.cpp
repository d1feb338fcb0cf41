#include "interchange/CoreWriters.h"
#include "interchange/Numbers.h"

#include <FCurveLib/DisplayProperties.h>
#include <FCurveLib/Interpolator.h>
#include <FCurveLib/Rectangle.h>
#include <FCurveLib/Segment.h>
#include <FCurveLib/TextFormat.h>

#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

bool IsPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
           || std::string_view("_()+-*/.,:;<>=!%&|^?@[]~$'").find(c) != std::string_view::npos;
}

// A text as one word of the format: as it is, or in quotation marks.
void AppendWord(std::string& out, std::string_view word) {
    bool isSafe = !word.empty();
    for (const char c : word) isSafe = isSafe && IsPlain(c);
    if (isSafe) {
        out += word;
        return;
    }
    static constexpr char digits[] = "0123456789abcdef";
    out += '"';
    for (const char c : word) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < 0x20 || byte == 0x7f) {
            out += "\\x";
            out += digits[byte / 16];
            out += digits[byte % 16];
        } else {
            out += c;
        }
    }
    out += '"';
}

class TextDocument {
public:
    explicit TextDocument(const FCurveContainer& curves) {
        m_text = "fcurvetext 1.0\n";
        properties(curves, "");
        for (const FCurve& one : curves) curve(one);
    }

    std::string take() { return std::move(m_text); }

private:
    template<class Part>
    static bool hasProperties(const Part& part) {
        for (auto i = part.beginProperties(); i != part.endProperties(); ++i)
            if (!IsEditorKeyString(i->first.c_str())) return true;
        return false;
    }

    template<class Part>
    void properties(const Part& part, const char* indent) {
        for (auto i = part.beginProperties(); i != part.endProperties(); ++i) {
            if (IsEditorKeyString(i->first.c_str())) continue;
            m_text += indent;
            m_text += "property ";
            AppendWord(m_text, i->first);
            m_text += ' ';
            AppendWord(m_text, i->second);
            m_text += '\n';
        }
    }

    // Ends the line; with a block where the part has properties.
    template<class Part>
    void propertyBlock(const Part& part, const char* indent) {
        if (!hasProperties(part)) {
            m_text += '\n';
            return;
        }
        m_text += " {\n";
        properties(part, (std::string(indent) + "    ").c_str());
        m_text += indent;
        m_text += "}\n";
    }

    void number(double value) {
        m_text += ' ';
        AppendNumber(m_text, value);
    }

    void curve(const FCurve& curve) {
        m_text += "curve ";
        AppendWord(m_text, curve.getName());
        m_text += " {\n";
        if (!IsVisible(curve)) m_text += "    hidden\n";
        if (IsLocked(curve)) m_text += "    locked\n";
        if (IsVelocityVisible(curve)) m_text += "    velocity\n";
        if (IsAccelerationVisible(curve)) m_text += "    acceleration\n";
        if (IsDiscontinuityVisible(curve)) m_text += "    discontinuities\n";
        if (HasGridSettings(curve)) {
            Rectangle<double> grid;
            GetGridSettings(curve, grid);
            m_text += "    grid";
            for (const double value : {grid.x, grid.y, grid.width, grid.height}) number(value);
            m_text += '\n';
        }
        if (GetTangentScale(curve) != 1.0) {
            m_text += "    tangentscale";
            number(GetTangentScale(curve));
            m_text += '\n';
        }
        properties(curve, "    ");
        for (const Segment& one : curve) {
            segment(one);
            if (const auto right = one.getRightKey()) key(*right);
        }
        m_text += "}\n";
    }

    void segment(const Segment& segment) {
        const auto interpolator = segment.getInterpolator();
        m_text += "    segment ";
        // As the core's writers say an absent one, and one without expression.
        const char* const expression = interpolator ? interpolator->getExpression() : "0";
        AppendWord(m_text, *expression ? expression : "constant()");
        m_text += " {\n";
        tangent("out", *segment.getOutTangent());
        tangent("in", *segment.getInTangent());
        properties(segment, "        ");
        m_text += "    }\n";
    }

    void tangent(const char* side, const Tangent& tangent) {
        static constexpr const char* types[] = {"fixed",           "flat",    "linear", "smooth",
                                                "smoothContinued", "clamped", "plateau"};
        m_text += "        ";
        m_text += side;
        m_text += ' ';
        m_text += types[tangent.getType()];
        number(tangent.getX());
        number(tangent.getY());
        if (tangent.isWeighted()) m_text += " weighted";
        if (tangent.isWeightLocked()) m_text += " weightLocked";
        propertyBlock(tangent, "        ");
    }

    void key(const Keyframe& key) {
        m_text += "    key";
        number(key.getX());
        number(key.getY());
        if (*key.getProperty("fc_lock")) m_text += " locked";
        if (key.isBreakdown()) m_text += " breakdown";
        if (key.isTangentsUnified()) m_text += " unified";
        propertyBlock(key, "    ");
    }

    std::string m_text;
};

} // namespace

TextWriter::TextWriter() : CurveWriter(TextFormat::GetFormatType()) {}

std::string TextWriter::compose(const FCurveContainer& curves, Notes&) const {
    return TextDocument(curves).take();
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
