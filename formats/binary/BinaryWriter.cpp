#include "FCurveLib/BinaryFormat.h"
#include "FCurveLib/IFF.h"
#include "FCurveLib/MemoryStream.h"
#include "FCurveLib/Stream.h"
#include "formats/PartCollector.h"
#include "formats/Text.h"
#include "formats/binary/Layout.h"

#include <cmath>
#include <string>
#include <string_view>
#include <unordered_map>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace BinaryFormat {

using Private::CurveHead;
using Private::KeyPart;
using Private::PropertyList;
using Private::SegmentPart;
using Private::TangentPart;

namespace {

// Whether two finite numbers have the same bits: 0 and -0 have not.
bool IsSame(double a, double b) {
    return a == b && std::signbit(a) == std::signbit(b);
}

// A document in memory: complete blocks, and the contents of the two that grow while segments come.
class Document : public Private::PartCollector {
public:
    using PartCollector::PartCollector;

private:
    // --- document, container, curve ----------------------------------------------------------------------------------

    void beginDocument() override {
        m_bytes.clear();
        m_open.clear();
        m_segments.clear();
        m_expressions.clear();
        m_expressionBytes = 0;
        open(Block::kDocument);
        char version[4];
        m_io.store(m_io.store(version, static_cast<std::uint16_t>(kMajor)), static_cast<std::uint16_t>(kMinor));
        leaf(Block::kVersion, {version, sizeof version});
    }
    void beginContainer(const PropertyList& properties) override {
        open(Block::kContainer);
        propertyBlock(properties);
    }
    void endContainer() override { close(); }
    void endDocument() override {
        close();
        stream().writeData(m_bytes.getData(), m_bytes.getSize());
        m_bytes.clear();
    }

    void beginCurve(const CurveHead& head, bool) override {
        open(Block::kCurve);
        std::string content;
        appendText(content, head.name);
        leaf(Block::kName, content);

        unsigned flags = 0;
        if (head.visible) flags |= Visible;
        if (head.locked) flags |= Locked;
        if (head.velocity) flags |= Velocity;
        if (head.acceleration) flags |= Acceleration;
        if (head.discontinuities) flags |= Discontinuities;
        if (head.hasGrid) flags |= HasGrid;
        if (head.tangentScale != 1.0) flags |= HasTangentScale;
        char show[2 + 5 * 8];
        char* at = m_io.store(show, static_cast<std::uint16_t>(flags));
        if (head.hasGrid)
            for (const double number : head.grid) at = m_io.store(at, number);
        if (flags & HasTangentScale) at = m_io.store(at, head.tangentScale);
        leaf(Block::kDisplay, {show, static_cast<std::size_t>(at - show)});
        propertyBlock(head.properties);

        m_segmentCount = 0;
        m_expressionIndices.clear();
        m_lastIndex = 0;
        m_lastText = nullptr;
        m_hasLeftKey = false;
    }
    void endCurve(bool hasSegments) override {
        if (hasSegments) {
            counted(Block::kExpressions, m_expressionIndices.size(), m_expressions);
            counted(Block::kSegments, m_segmentCount, m_segments);
        }
        close();
    }

    std::exception_ptr errorOf(Refusal why, const std::string& message) const override {
        switch (why) {
        case Refusal::NotFinite:
            return std::make_exception_ptr(NotFinite(message));
        case Refusal::Limit:
            return std::make_exception_ptr(LimitExceeded(message));
        case Refusal::Size:
            return std::make_exception_ptr(DocumentTooLarge(message));
        default:
            return std::make_exception_ptr(RefusedCall(message));
        }
    }

    // --- blocks ------------------------------------------------------------------------------------------------------

    // Makes sure that so many more bytes leave the document within what its stream can hold.
    void need(std::size_t count) {
        checkSize(static_cast<std::size_t>(m_bytes.getSize()) + m_expressions.size() + m_segments.size() + count);
    }

    void open(const char* type) {
        need(kHeaderSize);
        m_open.emplace_back(m_bytes, m_io, type);
    }
    void close() {
        m_open.back().patchSize();
        m_open.pop_back();
    }
    void leaf(const char* type, std::string_view content) {
        need(kHeaderSize + content.size());
        const IFFWriter block(m_bytes, m_io, type);
        m_bytes.writeData(content.data(), static_cast<int>(content.size()));
        block.patchSize();
    }
    // A block that starts with a count. Takes the content over.
    void counted(const char* type, std::size_t count, std::string& content) {
        std::string taken;
        taken.swap(content);
        need(kHeaderSize + 4 + taken.size());
        const IFFWriter block(m_bytes, m_io, type);
        m_io.writeUInt32(m_bytes, static_cast<std::uint32_t>(count));
        m_bytes.writeData(taken.data(), static_cast<int>(taken.size()));
        block.patchSize();
    }
    void propertyBlock(const PropertyList& properties) {
        if (properties.empty()) return;
        std::string content;
        append(content, properties);
        leaf(Block::kProperties, content);
    }

    // --- records -----------------------------------------------------------------------------------------------------

    template<class Number>
    void append(std::string& to, Number number) const {
        char bytes[sizeof(Number)];
        m_io.store(bytes, number);
        to.append(bytes, sizeof bytes);
    }
    void appendText(std::string& to, const std::string& text) const {
        append(to, static_cast<std::uint32_t>(text.size()));
        to += text;
    }
    void append(std::string& to, const PropertyList& properties) {
        append(to, static_cast<std::uint32_t>(properties.size()));
        for (const auto& [key, value] : properties) {
            appendText(to, key);
            appendText(to, value);
            if (to.size() > megabyte) need(to.size());
        }
    }

    std::uint32_t indexOf(const std::string& expression) {
        if (expression.size() > limits().expressions - m_expressionBytes)
            refuse(Refusal::Limit, Private::TooMany("bytes in all expressions", limits().expressions));
        m_expressionBytes += expression.size();
        if (!m_lastText || expression != *m_lastText) {
            const auto [entry, isNew] =
                m_expressionIndices.emplace(expression, static_cast<std::uint32_t>(m_expressionIndices.size()));
            if (isNew) appendText(m_expressions, expression);
            m_lastText = &entry->first;
            m_index = entry->second;
        }
        return m_index;
    }

    void writeSegment(const SegmentPart& segment, const KeyPart* key) override {
        unsigned flags = 0;
        const std::uint32_t expression = indexOf(segment.expression);
        if (expression != m_lastIndex) flags |= HasExpression;
        m_lastIndex = expression;
        const bool hasBothKeys = m_hasLeftKey && key;
        const double rightX = key ? key->x : 0.0;
        const unsigned out = flagsOf(segment.out, FlatHandle(false, hasBothKeys, m_leftX, rightX));
        const unsigned in = flagsOf(segment.in, FlatHandle(true, hasBothKeys, m_leftX, rightX));
        if (out != HandleIsFlat) flags |= HasOutTangent;
        if (in != HandleIsFlat) flags |= HasInTangent;
        if (!segment.properties.empty()) flags |= HasSegmentProperties;
        if (key) {
            flags |= HasKey;
            if (key->locked) flags |= KeyLocked;
            if (key->breakdown) flags |= KeyBreakdown;
            if (key->unified) flags |= KeyUnified;
            if (!key->properties.empty()) flags |= HasKeyProperties;
        }

        append(m_segments, static_cast<std::uint16_t>(flags));
        if (flags & HasExpression) append(m_segments, expression);
        if (flags & HasOutTangent) appendTangent(segment.out, out);
        if (flags & HasInTangent) appendTangent(segment.in, in);
        if (flags & HasSegmentProperties) append(m_segments, segment.properties);
        if (key) {
            append(m_segments, key->x);
            append(m_segments, key->y);
            if (flags & HasKeyProperties) append(m_segments, key->properties);
            m_leftX = key->x;
        }
        m_hasLeftKey = key != nullptr;
        ++m_segmentCount;
        need(0);
    }

    static unsigned flagsOf(const TangentPart& tangent, double flatX) {
        unsigned flags = 0;
        if (tangent.weighted) flags |= Weighted;
        if (tangent.weightLocked) flags |= WeightLocked;
        if (tangent.type != 0) flags |= HasType;
        if (tangent.hasHandle) flags |= IsSame(tangent.x, flatX) && IsSame(tangent.y, 0.0) ? HandleIsFlat : HasHandle;
        if (!tangent.properties.empty()) flags |= HasTangentProperties;
        return flags;
    }
    void appendTangent(const TangentPart& tangent, unsigned flags) {
        append(m_segments, static_cast<std::uint8_t>(flags));
        if (flags & HasType) append(m_segments, static_cast<std::uint8_t>(tangent.type));
        if (flags & HasHandle) {
            append(m_segments, tangent.x);
            append(m_segments, tangent.y);
        }
        if (flags & HasTangentProperties) append(m_segments, tangent.properties);
    }

    static constexpr std::size_t megabyte = std::size_t{1} << 20U;

    IO m_io;
    MemoryStream m_bytes;                                    // blocks
    std::vector<IFFWriter<LittleEndianBinaryPolicy>> m_open; // those without their size, the innermost last

    std::string m_segments;
    std::uint32_t m_segmentCount = 0;
    std::string m_expressions;
    std::size_t m_expressionBytes = 0; // of all segments
    std::unordered_map<std::string, std::uint32_t> m_expressionIndices;
    const std::string* m_lastText = nullptr; // what was looked up last
    std::uint32_t m_index = 0;               // and its index
    std::uint32_t m_lastIndex = 0;           // of the segment before
    bool m_hasLeftKey = false;
    double m_leftX = 0.0;
};

} // namespace

BinaryWriter::BinaryWriter() : DocumentWriter(GetFormatType()) {}
BinaryWriter::~BinaryWriter() = default;

std::unique_ptr<FormatInterface> BinaryWriter::createDocument(Stream& stream) const {
    return std::make_unique<Document>(stream);
}

} // namespace BinaryFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
