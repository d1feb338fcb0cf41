#include "FCurveLib/BinaryFormat.h"
#include "FCurveLib/IFF.h"
#include "FCurveLib/MemoryStream.h"
#include "FCurveLib/Stream.h"
#include "formats/Text.h"
#include "formats/binary/Layout.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace BinaryFormat {

using Private::orEmpty;

namespace {

double finite(double number) {
    if (!std::isfinite(number)) throw NotFinite("A number is not finite.");
    return number;
}

// As a curve keeps its display settings, with six digits: more would be lost in the next document.
double asKept(double number) {
    std::string text;
    Private::appendShortNumber(text, finite(number));
    double kept = 0.0;
    Private::parseNumber(text, kept);
    return kept;
}

// Whether two finite numbers have the same bits: 0 and -0 have not.
bool isSame(double a, double b) {
    return a == b && std::signbit(a) == std::signbit(b);
}

// What has been told about a tangent.
struct TangentData {
    std::uint8_t flags = 0; // those of the file, but for the handle
    std::uint8_t type = 0;
    bool hasHandle = false;
    double x = 0.0;
    double y = 0.0;
};

} // namespace

// The document on one stream, in memory: complete blocks, and the contents of those that are being filled.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): one for each document
class BinaryWriter::Document {
public:
    explicit Document(Stream& stream) : m_stream(&stream) {}

    Stream* stream() const { return m_stream; }

    // Where in the document the calls stand. What a part is told outside of it is ignored.
    enum Part : int { Nothing, Container, CurveHead, Segments, SegmentPart, OutTangent, InTangent, Key, CurveTail };
    int part() const { return m_part; }

    // --- document, container -----------------------------------------------------------------------------------------

    void startContainer() {
        startDocument();
        open(Block::container);
        m_inContainer = true;
        m_part = Container;
    }
    bool canAddContainerProperty() const { return m_part == Container && !m_hasCurves; }
    void finishContainer() {
        if (!m_hasCurves) flushProperties();
        close();
        finishDocument();
    }

    // --- curve -------------------------------------------------------------------------------------------------------

    void startCurve(const char* name) {
        if (m_part == Nothing) startDocument();
        flushProperties(); // the container's
        m_hasCurves = true;
        open(Block::curve);
        m_text.clear();
        appendText(m_text, name);
        leaf(Block::name, m_text);
        m_display = Visible;
        m_tangentScale = 1.0;
        m_part = CurveHead;
    }

    void setDisplay(DisplayFlag flag, bool on) {
        m_display = static_cast<std::uint16_t>(on ? m_display | flag : m_display & ~flag);
    }
    void setGrid(double x, double y, double width, double height) {
        m_grid = {asKept(x), asKept(y), asKept(width), asKept(height)};
        setDisplay(HasGrid, m_grid[2] > 0.0 && m_grid[3] > 0.0);
    }
    void setTangentScale(double scale) {
        m_tangentScale = asKept(scale);
        setDisplay(HasTangentScale, m_tangentScale != 1.0);
    }

    void startSegments() {
        finishHead();
        m_segments.clear();
        m_segmentCount = 0;
        m_expressions.clear();
        m_expressionIndices.clear();
        m_lastExpression = 0;
        m_hasLeftKey = false;
        m_segmentPending = false;
        m_part = Segments;
    }
    void finishSegments() {
        flushSegment();
        m_part = CurveTail;
    }

    void finishCurve() {
        if (m_part == CurveHead) {
            finishHead();
        } else {
            flushSegment();
            counted(Block::expressions, m_expressionIndices.size(), m_expressions);
            counted(Block::segments, m_segmentCount, m_segments);
        }
        close();
        if (m_inContainer) {
            m_part = Container;
        } else {
            finishDocument();
        }
    }

    // --- segments ----------------------------------------------------------------------------------------------------

    void startSegment(const char* expression) {
        flushSegment();
        m_expression = indexOf(expression);
        m_out = {};
        m_in = {};
        m_segmentProperties.clear();
        m_outProperties.clear();
        m_inProperties.clear();
        m_segmentPending = true;
        m_hasKey = false;
        m_part = SegmentPart;
    }
    void startTangent(Part part) {
        m_part = part;
        tangent() = {};
        tangentProperties().clear();
    }
    TangentData& tangent() { return m_part == InTangent ? m_in : m_out; }
    void setTangentFlag(TangentFlag flag, bool on) {
        tangent().flags = static_cast<std::uint8_t>(on ? tangent().flags | flag : tangent().flags & ~flag);
    }
    void finish(Part next) { m_part = next; }

    bool canStartKey() const { return m_part == Segments && m_segmentPending; }
    void startKey() {
        m_keyX = 0.0;
        m_keyY = 0.0;
        m_keyFlags = 0;
        m_keyProperties.clear();
        m_part = Key;
    }
    void setKey(double x, double y) {
        m_keyX = finite(x);
        m_keyY = finite(y);
    }
    void setKeyFlag(SegmentFlag flag, bool on) {
        m_keyFlags = static_cast<std::uint16_t>(on ? m_keyFlags | flag : m_keyFlags & ~flag);
    }
    void finishKey() {
        m_hasKey = true;
        m_part = Segments;
        flushSegment();
    }

    // --- properties --------------------------------------------------------------------------------------------------

    // Texts, and how many pairs of them there are.
    struct Properties {
        std::string bytes;
        std::uint32_t count = 0;
        void clear() {
            bytes.clear();
            count = 0;
        }
    };

    // Of the container or the curve.
    Properties& headProperties() { return m_headProperties; }
    Properties& segmentProperties() { return m_segmentProperties; }
    Properties& tangentProperties() { return m_part == InTangent ? m_inProperties : m_outProperties; }
    Properties& keyProperties() { return m_keyProperties; }

    void add(Properties& properties, const char* key, const char* value) {
        appendText(properties.bytes, orEmpty(key));
        appendText(properties.bytes, orEmpty(value));
        ++properties.count;
    }

private:
    // --- blocks ------------------------------------------------------------------------------------------------------

    // Makes sure that so many more bytes leave the document within what its stream can hold.
    void need(std::size_t count) const {
        const std::size_t held = static_cast<std::size_t>(m_bytes.getSize()) + m_headProperties.bytes.size()
                                 + m_expressions.size() + m_segments.size() + m_segmentProperties.bytes.size()
                                 + m_outProperties.bytes.size() + m_inProperties.bytes.size()
                                 + m_keyProperties.bytes.size();
        if (held > m_room || count > m_room - held)
            throw DocumentTooLarge("The document would be longer than the 2147483647 bytes that a stream can hold.");
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
    // A block that begins with a count. Takes the content over.
    void counted(const char* type, std::size_t count, std::string& content) {
        std::string taken;
        taken.swap(content);
        need(kHeaderSize + 4 + taken.size());
        const IFFWriter block(m_bytes, m_io, type);
        m_io.writeUInt32(m_bytes, static_cast<std::uint32_t>(count));
        m_bytes.writeData(taken.data(), static_cast<int>(taken.size()));
        block.patchSize();
    }

    void startDocument() {
        m_bytes.clear();
        m_open.clear();
        m_headProperties.clear();
        m_inContainer = false;
        m_hasCurves = false;
        m_room = static_cast<std::size_t>(INT_MAX - m_stream->getPosition());
        open(Block::document);
        char version[4];
        m_io.store(m_io.store(version, static_cast<std::uint16_t>(kMajor)), static_cast<std::uint16_t>(kMinor));
        leaf(Block::version, {version, sizeof version});
    }
    void finishDocument() {
        close();
        m_part = Nothing;
        m_stream->writeData(m_bytes.getData(), m_bytes.getSize());
        m_bytes.clear();
    }

    void flushProperties() {
        if (m_headProperties.count > 0) counted(Block::properties, m_headProperties.count, m_headProperties.bytes);
        m_headProperties.clear();
    }

    void finishHead() {
        char bytes[2 + 5 * 8];
        char* at = m_io.store(bytes, m_display);
        if (m_display & HasGrid)
            for (double number : m_grid) at = m_io.store(at, number);
        if (m_display & HasTangentScale) at = m_io.store(at, m_tangentScale);
        leaf(Block::display, {bytes, static_cast<std::size_t>(at - bytes)});
        flushProperties();
    }

    // --- records -----------------------------------------------------------------------------------------------------

    void appendText(std::string& to, std::string_view text) {
        need(4 + text.size());
        char length[4];
        m_io.store(length, static_cast<std::uint32_t>(text.size()));
        to.append(length, sizeof length);
        to.append(text);
    }
    // Takes the properties over.
    void append(std::string& to, Properties& properties) {
        char count[4];
        m_io.store(count, properties.count);
        to.append(count, sizeof count);
        to.append(properties.bytes);
        properties.clear();
    }

    std::uint32_t indexOf(const char* expression) {
        m_text = orEmpty(expression);
        if (m_expressionIndices.empty() || m_text != *m_lastText) {
            const auto [entry, isNew] =
                m_expressionIndices.emplace(m_text, static_cast<std::uint32_t>(m_expressionIndices.size()));
            if (isNew) appendText(m_expressions, m_text);
            m_lastText = &entry->first;
            m_lastIndex = entry->second;
        }
        return m_lastIndex;
    }

    // Writes the pending segment, now that its right key is known.
    void flushSegment() {
        if (!m_segmentPending) return;
        m_segmentPending = false;

        std::uint16_t flags = 0;
        if (m_expression != m_lastExpression) flags |= HasExpression;
        const bool hasBothKeys = m_hasLeftKey && m_hasKey;
        const double out = flatHandle(false, hasBothKeys, m_leftX, m_keyX);
        const double in = flatHandle(true, hasBothKeys, m_leftX, m_keyX);
        const std::uint8_t outFlags = flagsOf(m_out, m_outProperties, out);
        const std::uint8_t inFlags = flagsOf(m_in, m_inProperties, in);
        if (outFlags != HandleIsFlat) flags |= HasOutTangent;
        if (inFlags != HandleIsFlat) flags |= HasInTangent;
        if (m_segmentProperties.count > 0) flags |= HasSegmentProperties;
        if (m_hasKey) {
            flags |= HasKey | m_keyFlags;
            if (m_keyProperties.count > 0) flags |= HasKeyProperties;
        }

        char bytes[6];
        char* at = m_io.store(bytes, flags);
        if (flags & HasExpression) at = m_io.store(at, m_expression);
        m_segments.append(bytes, at);
        if (flags & HasOutTangent) appendTangent(m_out, m_outProperties, outFlags);
        if (flags & HasInTangent) appendTangent(m_in, m_inProperties, inFlags);
        if (flags & HasSegmentProperties) append(m_segments, m_segmentProperties);
        if (m_hasKey) {
            char key[16];
            m_io.store(m_io.store(key, m_keyX), m_keyY);
            m_segments.append(key, sizeof key);
            if (flags & HasKeyProperties) append(m_segments, m_keyProperties);
            m_leftX = m_keyX;
        }
        m_hasLeftKey = m_hasKey;
        m_lastExpression = m_expression;
        ++m_segmentCount;
        need(0);
    }

    static std::uint8_t flagsOf(const TangentData& tangent, const Properties& properties, double flatX) {
        std::uint8_t flags = tangent.flags;
        if (tangent.type != 0) flags |= HasType;
        if (tangent.hasHandle) flags |= isSame(tangent.x, flatX) && isSame(tangent.y, 0.0) ? HandleIsFlat : HasHandle;
        if (properties.count > 0) flags |= HasTangentProperties;
        return flags;
    }

    void appendTangent(const TangentData& tangent, Properties& properties, std::uint8_t flags) {
        char bytes[18];
        char* at = m_io.store(bytes, flags);
        if (flags & HasType) at = m_io.store(at, tangent.type);
        if (flags & HasHandle) at = m_io.store(m_io.store(at, tangent.x), tangent.y);
        m_segments.append(bytes, at);
        if (flags & HasTangentProperties) append(m_segments, properties);
    }

    Stream* m_stream;
    IO m_io;
    Part m_part = Nothing;
    bool m_inContainer = false;
    bool m_hasCurves = false;
    std::size_t m_room = 0;                                  // of the stream, behind its position
    MemoryStream m_bytes;                                    // blocks
    std::vector<IFFWriter<LittleEndianBinaryPolicy>> m_open; // those without their size, the innermost last

    Properties m_headProperties;
    std::uint16_t m_display = Visible;
    std::array<double, 4> m_grid{};
    double m_tangentScale = 1.0;

    std::string m_segments;
    std::uint32_t m_segmentCount = 0;
    std::string m_expressions;
    std::unordered_map<std::string, std::uint32_t> m_expressionIndices;
    const std::string* m_lastText = nullptr; // what was looked up last
    std::uint32_t m_lastIndex = 0;
    std::string m_text;

    // The segment that waits for its right key, and what stands on its sides.
    bool m_segmentPending = false;
    std::uint32_t m_expression = 0;
    std::uint32_t m_lastExpression = 0; // of the segment before
    TangentData m_out;
    TangentData m_in;
    Properties m_segmentProperties;
    Properties m_outProperties;
    Properties m_inProperties;
    bool m_hasLeftKey = false;
    double m_leftX = 0.0;
    bool m_hasKey = false;
    double m_keyX = 0.0;
    double m_keyY = 0.0;
    std::uint16_t m_keyFlags = 0;
    Properties m_keyProperties;
};

BinaryWriter::BinaryWriter() : Writer(GetFormatType()) {}
BinaryWriter::~BinaryWriter() = default;

// Links nest: a document that is put aside goes on where it was.
void BinaryWriter::newStream(Stream* stream) {
    if (!stream) {
        m_documents.clear();
        return;
    }
    const auto known = std::find_if(m_documents.begin(), m_documents.end(),
                                    [stream](const auto& document) { return document->stream() == stream; });
    if (known == m_documents.end()) {
        m_documents.push_back(std::make_unique<Document>(*stream));
    } else {
        m_documents.erase(known + 1, m_documents.end());
    }
}

bool BinaryWriter::at(int part) const noexcept {
    return document() && document()->part() == part;
}
bool BinaryWriter::atTangent() const noexcept {
    return at(Document::OutTangent) || at(Document::InTangent);
}

// --- container -------------------------------------------------------------------------------------------------------

void BinaryWriter::startCurveContainer() {
    if (at(Document::Nothing)) document()->startContainer();
}
void BinaryWriter::finishCurveContainer() {
    if (at(Document::Container)) document()->finishContainer();
}
void BinaryWriter::containerProperty(const char* key, const char* value) {
    if (document() && document()->canAddContainerProperty()) document()->add(document()->headProperties(), key, value);
}

// --- curve -----------------------------------------------------------------------------------------------------------

bool BinaryWriter::startCurve(const char* name) {
    if (!at(Document::Nothing) && !at(Document::Container)) return false;
    document()->startCurve(orEmpty(name));
    return true;
}
bool BinaryWriter::finishCurve() {
    if (at(Document::CurveHead) || at(Document::Segments) || at(Document::CurveTail)) document()->finishCurve();
    return true;
}
void BinaryWriter::curveVisible(bool visible) {
    if (at(Document::CurveHead)) document()->setDisplay(Visible, visible);
}
void BinaryWriter::curveLocked(bool locked) {
    if (at(Document::CurveHead)) document()->setDisplay(Locked, locked);
}
void BinaryWriter::curveShowVelocity(bool show) {
    if (at(Document::CurveHead)) document()->setDisplay(Velocity, show);
}
void BinaryWriter::curveShowAcceleration(bool show) {
    if (at(Document::CurveHead)) document()->setDisplay(Acceleration, show);
}
void BinaryWriter::curveShowDiscontinuities(bool show) {
    if (at(Document::CurveHead)) document()->setDisplay(Discontinuities, show);
}
void BinaryWriter::curveGrid(double x, double y, double width, double height) {
    if (at(Document::CurveHead)) document()->setGrid(x, y, width, height);
}
void BinaryWriter::curveTangentScale(double scale) {
    if (at(Document::CurveHead)) document()->setTangentScale(scale);
}
void BinaryWriter::curveProperty(const char* key, const char* value) {
    if (at(Document::CurveHead)) document()->add(document()->headProperties(), key, value);
}

// --- segments --------------------------------------------------------------------------------------------------------

void BinaryWriter::startSegmentContainer() {
    if (at(Document::CurveHead)) document()->startSegments();
}
void BinaryWriter::finishSegmentContainer() {
    if (at(Document::Segments)) document()->finishSegments();
}
void BinaryWriter::startSegment(const char* expression) {
    if (at(Document::Segments)) document()->startSegment(expression);
}
void BinaryWriter::finishSegment() {
    if (at(Document::SegmentPart)) document()->finish(Document::Segments);
}
void BinaryWriter::segmentProperty(const char* key, const char* value) {
    if (at(Document::SegmentPart)) document()->add(document()->segmentProperties(), key, value);
}

// --- tangents --------------------------------------------------------------------------------------------------------

void BinaryWriter::startInTangent() {
    if (at(Document::SegmentPart)) document()->startTangent(Document::InTangent);
}
void BinaryWriter::finishInTangent() {
    if (at(Document::InTangent)) document()->finish(Document::SegmentPart);
}
void BinaryWriter::startOutTangent() {
    if (at(Document::SegmentPart)) document()->startTangent(Document::OutTangent);
}
void BinaryWriter::finishOutTangent() {
    if (at(Document::OutTangent)) document()->finish(Document::SegmentPart);
}
void BinaryWriter::tangentVector(double x, double y) {
    if (!atTangent()) return;
    TangentData& tangent = document()->tangent();
    tangent.x = finite(x);
    tangent.y = finite(y);
    tangent.hasHandle = true;
}
void BinaryWriter::tangentType(unsigned char type) {
    if (atTangent()) document()->tangent().type = type;
}
void BinaryWriter::tangentWeightLocked(bool locked) {
    if (atTangent()) document()->setTangentFlag(WeightLocked, locked);
}
void BinaryWriter::tangentWeighted(bool weighted) {
    if (atTangent()) document()->setTangentFlag(Weighted, weighted);
}
void BinaryWriter::tangentProperty(const char* key, const char* value) {
    if (atTangent()) document()->add(document()->tangentProperties(), key, value);
}

// --- keyframes -------------------------------------------------------------------------------------------------------

void BinaryWriter::startKeyframe() {
    if (document() && document()->canStartKey()) document()->startKey();
}
void BinaryWriter::finishKeyframe() {
    if (at(Document::Key)) document()->finishKey();
}
void BinaryWriter::keyframePosition(double x, double y) {
    if (at(Document::Key)) document()->setKey(x, y);
}
void BinaryWriter::keyframeTangentsUnified(bool unified) {
    if (at(Document::Key)) document()->setKeyFlag(KeyUnified, unified);
}
void BinaryWriter::keyframeBreakdown(bool breakdown) {
    if (at(Document::Key)) document()->setKeyFlag(KeyBreakdown, breakdown);
}
void BinaryWriter::keyframeLocked(bool locked) {
    if (at(Document::Key)) document()->setKeyFlag(KeyLocked, locked);
}
void BinaryWriter::keyframeProperty(const char* key, const char* value) {
    if (at(Document::Key)) document()->add(document()->keyProperties(), key, value);
}

} // namespace BinaryFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
