#include "FCurveLib/Stream.h"
#include "FCurveLib/XMLFormat.h"
#include "formats/PartCollector.h"
#include "formats/TangentTypes.h"
#include "formats/Text.h"
#include "formats/xml/Escapes.h"
#include "formats/xml/Vocabulary.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace XMLFormat {

using Private::AppendNumber;
using Private::AppendShortNumber;
using Private::CurveHead;
using Private::KeyPart;
using Private::PropertyList;
using Private::SegmentPart;
using Private::TangentPart;

namespace {

// A document as text in memory, in pieces that need not move when it grows.
class XMLComposer : public Private::PartCollector {
public:
    using PartCollector::PartCollector;

private:
    void beginDocument() override {
        m_pieces.clear();
        m_size = 0;
        m_out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        open(0, Tag::kRoot);
        attribute("version", (std::to_string(kMajor) + '.' + std::to_string(kMinor)).c_str());
        m_out += ">\n";
    }
    void beginContainer(const PropertyList& properties) override {
        open(1, Tag::kContainer);
        m_out += ">\n";
        elements(2, properties);
    }
    void endContainer() override { close(1, Tag::kContainer); }
    void endDocument() override {
        close(0, Tag::kRoot);
        nextPiece();
        for (const std::string& piece : m_pieces) stream().writeData(piece.data(), static_cast<int>(piece.size()));
        m_pieces.clear();
    }

    void beginCurve(const CurveHead& head, bool hasSegments) override {
        open(depth(), Tag::kCurve);
        attribute("name", head.name.c_str());
        if (!head.visible) attribute("visible", "false");
        flag("locked", head.locked);
        flag("velocity", head.velocity);
        flag("acceleration", head.acceleration);
        flag("discontinuities", head.discontinuities);
        if (head.hasGrid) {
            std::string numbers;
            for (const double number : head.grid) {
                if (!numbers.empty()) numbers += ' ';
                AppendShortNumber(numbers, number);
            }
            attribute("grid", numbers.c_str());
        }
        if (head.tangentScale != 1.0) {
            std::string scale;
            AppendShortNumber(scale, head.tangentScale);
            attribute("tangentScale", scale.c_str());
        }
        if (!hasSegments && head.properties.empty()) {
            m_out += "/>\n";
            m_curveIsOpen = false;
            return;
        }
        m_out += ">\n";
        m_curveIsOpen = true;
        elements(depth() + 1, head.properties);
    }
    void endCurve(bool) override {
        if (m_curveIsOpen) close(depth(), Tag::kCurve);
    }

    void writeSegment(const SegmentPart& segment, const KeyPart* key) override {
        const std::size_t inCurve = depth() + 1;
        open(inCurve, Tag::kSegment);
        attribute("interpolator", segment.expression.c_str());
        if (segment.properties.empty() && !segment.out.isGiven && !segment.in.isGiven) {
            m_out += "/>\n";
        } else {
            m_out += ">\n";
            elements(inCurve + 1, segment.properties);
            tangent(segment.out, Tag::kOut);
            tangent(segment.in, Tag::kIn);
            close(inCurve, Tag::kSegment);
        }
        if (!key) return;
        open(inCurve, Tag::kKey);
        position(key->x, key->y);
        flag("locked", key->locked);
        flag("breakdown", key->breakdown);
        flag("unified", key->unified);
        finish(inCurve, Tag::kKey, key->properties);
    }

    void tangent(const TangentPart& tangent, const char* tag) {
        if (!tangent.isGiven) return;
        open(depth() + 2, tag);
        if (tangent.hasHandle) position(tangent.x, tangent.y);
        if (tangent.type != 0) attribute("type", Private::kTangentTypes[tangent.type]);
        flag("weighted", tangent.weighted);
        flag("weightLocked", tangent.weightLocked);
        finish(depth() + 2, tag, tangent.properties);
    }

    std::exception_ptr errorOf(Refusal why, const std::string& message) const override {
        switch (why) {
        case Refusal::NotFinite:
            return std::make_exception_ptr(NotFinite(message));
        case Refusal::Call:
            return std::make_exception_ptr(RefusedCall(message));
        default:
            return std::make_exception_ptr(LimitExceeded(message));
        }
    }

    // --- text --------------------------------------------------------------------------------------------------------

    // How many elements enclose a curve.
    std::size_t depth() const { return inContainer() ? 2 : 1; }

    void open(std::size_t depth, const char* tag) {
        if (depth >= limits().nesting) refuse(Refusal::Limit, "The elements are nested too deeply.");
        if (m_out.size() >= pieceSize) nextPiece();
        m_out.append(2 * depth, ' ');
        m_out += '<';
        m_out += tag;
    }
    void close(std::size_t depth, const char* tag) {
        m_out.append(2 * depth, ' ');
        m_out += "</";
        m_out += tag;
        m_out += ">\n";
    }
    // The rest of an element with an open tag, whose only children are properties.
    void finish(std::size_t depth, const char* tag, const PropertyList& properties) {
        m_out += properties.empty() ? "/>\n" : ">\n";
        elements(depth + 1, properties);
        if (!properties.empty()) close(depth, tag);
    }
    void elements(std::size_t depth, const PropertyList& properties) {
        for (const auto& [key, value] : properties) {
            open(depth, Tag::kProperty);
            attribute("key", key.c_str());
            attribute("value", value.c_str());
            m_out += "/>\n";
        }
    }
    void attribute(const char* name, const char* value) {
        m_out += ' ';
        m_out += name;
        m_out += "=\"";
        AppendEscaped(m_out, value);
        m_out += '"';
    }
    void flag(const char* name, bool on) {
        if (on) attribute(name, "true");
    }
    void position(double x, double y) {
        m_out += " x=\"";
        AppendNumber(m_out, x);
        m_out += "\" y=\"";
        AppendNumber(m_out, y);
        m_out += '"';
    }

    void nextPiece() {
        m_size += m_out.size();
        checkSize(m_size);
        m_pieces.push_back(std::move(m_out));
        m_out.clear();
    }

    static constexpr std::size_t pieceSize = std::size_t{1} << 20U;

    std::vector<std::string> m_pieces;
    std::size_t m_size = 0; // of them all
    std::string m_out;      // the last piece
    bool m_curveIsOpen = false;
};

} // namespace

XMLWriter::XMLWriter() : DocumentWriter(GetFormatType()) {}
XMLWriter::~XMLWriter() = default;

std::unique_ptr<FormatInterface> XMLWriter::createDocument(Stream& stream) const {
    return std::make_unique<XMLComposer>(stream);
}

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
