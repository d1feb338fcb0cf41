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

template<class Number>
void Append(std::string& to, Number number) {
    char bytes[sizeof(Number)];
    IO().store(bytes, number);
    to.append(bytes, sizeof bytes);
}
void AppendText(std::string& to, const std::string& text) {
    Append(to, static_cast<std::uint32_t>(text.size()));
    to += text;
}

// The expressions of a curve, each with an index.
class Expressions {
public:
    void clear() {
        m_texts.clear();
        m_indices.clear();
        m_lastText = nullptr;
    }
    std::size_t size() const { return m_indices.size(); }
    std::string& texts() { return m_texts; } // one after the other, each after its length

    std::uint32_t indexOf(const std::string& expression) {
        if (!m_lastText || expression != *m_lastText) {
            const auto [entry, isNew] = m_indices.emplace(expression, static_cast<std::uint32_t>(m_indices.size()));
            if (isNew) AppendText(m_texts, expression);
            m_lastText = &entry->first;
            m_lastIndex = entry->second;
        }
        return m_lastIndex;
    }

private:
    std::string m_texts;
    std::unordered_map<std::string, std::uint32_t> m_indices;
    const std::string* m_lastText = nullptr; // what was looked up last
    std::uint32_t m_lastIndex = 0;
};

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
        AppendText(content, head.name);
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
        m_expressions.clear();
        m_lastIndex = 0;
        m_hasLeftKey = false;
    }
    void endCurve(bool hasSegments) override {
        if (hasSegments) {
            counted(Block::kExpressions, m_expressions.size(), m_expressions.texts());
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
        checkSize(static_cast<std::size_t>(m_bytes.getSize()) + m_expressions.texts().size() + m_segments.size()
                  + count);
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
        appendProperties(content, properties);
        leaf(Block::kProperties, content);
    }

    // --- records -----------------------------------------------------------------------------------------------------

    void appendProperties(std::string& to, const PropertyList& properties) {
        Append(to, static_cast<std::uint32_t>(properties.size()));
        for (const auto& [key, value] : properties) {
            AppendText(to, key);
            AppendText(to, value);
            if (to.size() > megabyte) need(to.size());
        }
    }

    std::uint32_t indexOf(const std::string& expression) {
        if (expression.size() > limits().expressions - m_expressionBytes)
            refuse(Refusal::Limit, Private::TooMany("bytes in all expressions", limits().expressions));
        m_expressionBytes += expression.size();
        return m_expressions.indexOf(expression);
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

        Append(m_segments, static_cast<std::uint16_t>(flags));
        if (flags & HasExpression) Append(m_segments, expression);
        if (flags & HasOutTangent) appendTangent(segment.out, out);
        if (flags & HasInTangent) appendTangent(segment.in, in);
        if (flags & HasSegmentProperties) appendProperties(m_segments, segment.properties);
        if (key) {
            Append(m_segments, key->x);
            Append(m_segments, key->y);
            if (flags & HasKeyProperties) appendProperties(m_segments, key->properties);
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
        Append(m_segments, static_cast<std::uint8_t>(flags));
        if (flags & HasType) Append(m_segments, static_cast<std::uint8_t>(tangent.type));
        if (flags & HasHandle) {
            Append(m_segments, tangent.x);
            Append(m_segments, tangent.y);
        }
        if (flags & HasTangentProperties) appendProperties(m_segments, tangent.properties);
    }

    static constexpr std::size_t megabyte = std::size_t{1} << 20U;

    IO m_io;
    MemoryStream m_bytes;                                    // blocks
    std::vector<IFFWriter<LittleEndianBinaryPolicy>> m_open; // those without their size, the innermost last

    std::string m_segments;
    std::uint32_t m_segmentCount = 0;
    Expressions m_expressions;
    std::size_t m_expressionBytes = 0; // of all segments
    std::uint32_t m_lastIndex = 0;     // of the segment before
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
