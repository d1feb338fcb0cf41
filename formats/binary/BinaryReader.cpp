#include "FCurveLib/ArrayStreamAdaptor.h"
#include "FCurveLib/BinaryFormat.h"
#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/FormatLimits.h"
#include "FCurveLib/IFF.h"
#include "FCurveLib/Stream.h"
#include "FCurveLib/Tangent.h"
#include "formats/Text.h"
#include "formats/binary/Layout.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace BinaryFormat {

namespace {

using ChunkReader = IFFReader<LittleEndianBinaryPolicy>;

std::string InQuotes(const IFFType& type) {
    return '"' + std::string(type.getTypeBytes(), strnlen(type.getTypeBytes(), 4)) + '"';
}

// One block of a document: its type, and where its content starts and ends in the document's bytes.
struct Span {
    IFFType type;
    int begin = 0;
    int end = 0;
};

// The bytes of a document, and what counts for all of it.
class Source {
public:
    // The content of the root block. The stream stands after it afterwards.
    explicit Source(Stream& stream) : m_limits(GetFormatLimits()) {
        IO io;
        const int begin = stream.getPosition();
        const int room = stream.getSize() - begin;
        if (room < kHeaderSize) throw UnexpectedEnd(kHeaderSize, room > 0 ? unsigned(room) : 0, unsigned(begin));
        const ChunkReader root(stream, io);
        if (root.getIFFType() != Block::kDocument)
            throw WrongBlockType("\"Crvs\"", root.getIFFType().getTypeBytes(), unsigned(begin));
        m_origin = static_cast<unsigned>(root.getPayloadBegin());
        m_size = root.getPayloadEnd() - root.getPayloadBegin();
        m_bytes.resize(static_cast<std::size_t>(std::min<std::int64_t>(m_size, room - kHeaderSize)));
        if (m_size > INT_MAX) need(m_size); // more than any stream can hold
        stream.readData(m_bytes.data(), static_cast<int>(m_bytes.size()));
    }

    const char* data() const { return m_bytes.data(); }
    // By the root's header. Fewer bytes may be there: whoever goes on to some of them asks for them.
    int size() const { return static_cast<int>(m_size); }
    int sizeThere() const { return static_cast<int>(m_bytes.size()); }
    int need(std::int64_t size) const {
        if (size > sizeThere()) throw UnexpectedEnd(std::uint64_t(m_size), m_bytes.size(), m_origin);
        return static_cast<int>(size);
    }
    const FormatLimits& limits() const { return m_limits; }
    // In the stream.
    std::uint64_t offsetOf(int position) const { return m_origin + static_cast<unsigned>(position); }

    // Counts an expression that a segment has.
    void use(const std::string& expression, std::uint64_t offset) {
        if (expression.size() > m_limits.expressions - m_expressionBytes)
            throw LimitExceeded(Private::TooMany("bytes in all expressions", m_limits.expressions), offset);
        m_expressionBytes += expression.size();
    }

    // Whether the document may have what this version does not know.
    bool isNewer() const { return m_isNewer; }
    void setNewer() { m_isNewer = true; }

private:
    FormatLimits m_limits;
    std::vector<char> m_bytes;
    std::int64_t m_size = 0;
    std::uint64_t m_origin = 0;
    std::size_t m_expressionBytes = 0;
    bool m_isNewer = false;
};

// Walks the blocks within a block.
class Blocks {
public:
    Blocks(const Source& source, const Span& parent)
        : m_source(source), m_bytes(source.data(), source.sizeThere()), m_next(parent.begin), m_end(parent.end) {}

    // The next block of any type; false at the end.
    bool next(Span& block) {
        const int room = m_end - m_next;
        m_source.need(std::int64_t{m_next} + std::min(room, kHeaderSize));
        if (room == 0) return false;
        if (room < kHeaderSize)
            throw WrongBlockSize("No block has room here", kHeaderSize, unsigned(room), m_source.offsetOf(m_next));
        m_bytes.setPosition(m_next);
        const ChunkReader chunk(m_bytes, m_io);
        if (chunk.getPayloadEnd() > m_end)
            throw WrongBlockSize("The block " + InQuotes(chunk.getIFFType()) + " is longer than the one that holds it",
                                 unsigned(room - kHeaderSize),
                                 std::uint64_t(chunk.getPayloadEnd() - chunk.getPayloadBegin()),
                                 m_source.offsetOf(m_next));
        m_current = m_next;
        block = {chunk.getIFFType(), chunk.getPayloadBegin(), static_cast<int>(chunk.getPayloadEnd())};
        m_next = block.end;
        return true;
    }

    // The next block of a known type; blocks of unknown ones are passed over.
    bool nextKnown(Span& block) {
        while (next(block))
            if (isKnown(block.type)) return true;
        return false;
    }

    [[noreturn]] void refuse(const Span& block, const char* expected) const {
        throw WrongBlockType(expected, block.type.getTypeBytes(), m_source.offsetOf(m_current));
    }

    // Where the walk is: at the end, after all blocks.
    std::uint64_t offset() const { return m_source.offsetOf(m_next); }

private:
    static bool isKnown(const IFFType& type) {
        for (const char* known : {Block::kVersion, Block::kContainer, Block::kCurve, Block::kName, Block::kDisplay,
                                  Block::kProperties, Block::kExpressions, Block::kSegments, Block::kDocument})
            if (type == known) return true;
        return false;
    }

    const Source& m_source;
    IO m_io;
    ArrayStreamAdaptor m_bytes;
    int m_next;
    int m_end;
    int m_current = 0;
};

// Reads the numbers and texts of one block.
class Cursor {
public:
    Cursor(const Source& source, const Span& block)
        : m_source(&source), m_type(block.type), m_at(source.data() + block.begin),
          m_end(source.data() + source.need(block.end)) {}

    std::uint64_t offset() const { return m_source->offsetOf(static_cast<int>(m_at - m_source->data())); }
    std::size_t room() const { return static_cast<std::size_t>(m_end - m_at); }
    const Source& source() const { return *m_source; }

    const char* take(std::size_t count) {
        if (count > room())
            throw WrongBlockSize("The block " + InQuotes(m_type) + " ends too early", count, room(), offset());
        const char* const taken = m_at;
        m_at += count;
        return taken;
    }

    template<class Number>
    Number number() {
        Number result;
        IO().load(take(sizeof(Number)), result);
        return result;
    }

    double finite() {
        const std::uint64_t begin = offset();
        const double result = number<double>();
        if (!std::isfinite(result)) throw BadValue("A number is not finite.", begin);
        return result;
    }

    std::string_view textView() {
        const std::uint64_t begin = offset();
        const std::size_t length = number<std::uint32_t>();
        if (length > m_source->limits().text)
            throw LimitExceeded(Private::TextTooLong(length, m_source->limits().text), begin);
        const char* const text = take(length);
        if (length > 0 && std::memchr(text, '\0', length)) throw BadValue("A text has a zero byte.", begin);
        return {text, length};
    }

    // A count of things that take so many bytes each at least.
    std::uint32_t count(std::size_t limit, std::size_t least, const char* things) {
        const std::uint64_t begin = offset();
        const auto result = number<std::uint32_t>();
        if (result > limit) throw LimitExceeded(Private::TooMany(things, limit), begin);
        if (result > room() / least)
            throw WrongBlockSize(std::to_string(result) + ' ' + things + " need more room",
                                 result * std::uint64_t{least}, room(), begin);
        return result;
    }

    template<class Flags>
    Flags flags(Flags known) {
        const std::uint64_t begin = offset();
        const auto result = number<Flags>();
        if ((result & ~known) && !m_source->isNewer())
            throw BadValue("A flag is set that this version of the format does not have.", begin);
        return result;
    }

    // The block has nothing further.
    void finish() const {
        if (room() > 0 && !m_source->isNewer())
            throw WrongBlockSize("The block " + InQuotes(m_type) + " has extra bytes after its content", 0, room(),
                                 offset());
    }

private:
    const Source* m_source;
    IFFType m_type;
    const char* m_at;
    const char* m_end;
};

using PropertyCall = void (FormatInterface::*)(const char* key, const char* value);

// Hands texts to a target, which wants them with a zero byte at the end.
class Deliverer {
public:
    Deliverer(const Source& source, FormatInterface& target) : m_source(source), m_target(target) {}

    FormatInterface& target() { return m_target; }

    void properties(Cursor& from, PropertyCall call) {
        for (std::uint32_t left = countProperties(from); left > 0; --left) {
            m_key = from.textView();
            m_value = from.textView();
            (m_target.*call)(m_key.c_str(), m_value.c_str());
        }
    }
    static void skipProperties(Cursor& from) {
        for (std::uint32_t left = 2 * countProperties(from); left > 0; --left) from.textView();
    }

    void propertyBlock(const Span& block, PropertyCall call) {
        Cursor cursor(m_source, block);
        properties(cursor, call);
        cursor.finish();
    }

private:
    static std::uint32_t countProperties(Cursor& from) {
        return from.count(std::min<std::size_t>(from.source().limits().properties, INT32_MAX), 8, "properties");
    }

    const Source& m_source;
    FormatInterface& m_target;
    std::string m_key;
    std::string m_value;
};

// --- segments --------------------------------------------------------------------------------------------------------

struct TangentRecord {
    std::uint8_t flags = HandleIsFlat;
    std::uint8_t type = 0;
    double x = 0.0;
    double y = 0.0;
    Cursor properties; // where they start, if there are any

    explicit TangentRecord(const Cursor& at) : properties(at) {}

    void read(Cursor& from) {
        const std::uint64_t begin = from.offset();
        flags = from.flags<std::uint8_t>(AllTangentFlags);
        if ((flags & HasHandle) && (flags & HandleIsFlat)) throw BadValue("A tangent has two handles.", begin);
        if (flags & HasType) readType(from);
        if (flags & HasHandle) {
            x = from.finite();
            y = from.finite();
        }
        properties = from;
        if (flags & HasTangentProperties) Deliverer::skipProperties(from);
    }

    void readType(Cursor& from) {
        const std::uint64_t begin = from.offset();
        type = from.number<std::uint8_t>();
        if (type <= Tangent::Plateau) return;
        if (!from.source().isNewer()) throw BadValue(std::to_string(type) + " is not a tangent type.", begin);
        type = Tangent::Fixed; // the handle stays as the later version computed it
    }

    void deliver(Deliverer& to) {
        FormatInterface& target = to.target();
        target.tangentType(type);
        target.tangentWeighted((flags & Weighted) != 0);
        target.tangentWeightLocked((flags & WeightLocked) != 0);
        if (flags & (HasHandle | HandleIsFlat)) target.tangentVector(x, y);
        if (flags & HasTangentProperties) to.properties(properties, &FormatInterface::tangentProperty);
    }
};

std::vector<std::string> ReadExpressions(const Source& source, const Span& block) {
    Cursor cursor(source, block);
    const std::size_t limit = source.limits().keys < SIZE_MAX ? source.limits().keys + 1 : SIZE_MAX;
    std::vector<std::string> expressions(cursor.count(limit, 4, "expressions"));
    for (std::string& expression : expressions) expression = cursor.textView();
    cursor.finish();
    return expressions;
}

void ReadSegments(Source& source, const Span& block, const std::vector<std::string>& expressions, Deliverer& to) {
    FormatInterface& target = to.target();
    Cursor cursor(source, block);
    const std::size_t limit = source.limits().keys < SIZE_MAX ? source.limits().keys + 1 : SIZE_MAX;
    const std::uint32_t count = cursor.count(limit, 2, "segments");
    target.startSegmentContainer();
    std::size_t expression = 0;
    bool hasLeftKey = false;
    double leftX = -HUGE_VAL;
    for (std::uint32_t i = 0; i < count; ++i) {
        // The whole record first: flat handles reach as far as the key after them says.
        const std::uint64_t begin = cursor.offset();
        const auto flags = cursor.flags<std::uint16_t>(AllSegmentFlags);
        if (flags & HasExpression) expression = cursor.number<std::uint32_t>();
        if (expression >= expressions.size())
            throw BadValue("A segment has the expression number " + std::to_string(expression) + " of "
                               + std::to_string(expressions.size()) + '.',
                           begin);
        TangentRecord out(cursor);
        TangentRecord in(cursor);
        if (flags & HasOutTangent) out.read(cursor);
        if (flags & HasInTangent) in.read(cursor);
        Cursor segmentProperties = cursor;
        if (flags & HasSegmentProperties) Deliverer::skipProperties(cursor);
        const bool hasKey = (flags & HasKey) != 0;
        double x = 0.0;
        double y = 0.0;
        if (hasKey == (i + 1 == count))
            throw BadValue(hasKey ? Private::kKeyAtEnd : "A segment that is not the last one ends at no key.", begin);
        if (hasKey) {
            const std::uint64_t position = cursor.offset();
            x = cursor.finite();
            if (!(x > leftX)) throw BadValue(Private::kKeyOutOfOrder, position);
            y = cursor.finite();
        } else if (flags & (KeyLocked | KeyBreakdown | KeyUnified | HasKeyProperties)) {
            throw BadValue("A segment without a key has flags of one.", begin);
        }
        Cursor keyProperties = cursor;
        if (flags & HasKeyProperties) Deliverer::skipProperties(cursor);
        if (flags & HasExtension) cursor.take(cursor.number<std::uint32_t>());

        if (out.flags & HandleIsFlat) out.x = FlatHandle(false, hasLeftKey && hasKey, leftX, x);
        if (in.flags & HandleIsFlat) in.x = FlatHandle(true, hasLeftKey && hasKey, leftX, x);

        source.use(expressions[expression], begin);
        target.startSegment(expressions[expression].c_str());
        if (flags & HasSegmentProperties) to.properties(segmentProperties, &FormatInterface::segmentProperty);
        target.startOutTangent();
        out.deliver(to);
        target.finishOutTangent();
        target.startInTangent();
        in.deliver(to);
        target.finishInTangent();
        target.finishSegment();
        if (hasKey) {
            target.startKeyframe();
            target.keyframePosition(x, y);
            target.keyframeLocked((flags & KeyLocked) != 0);
            target.keyframeBreakdown((flags & KeyBreakdown) != 0);
            target.keyframeTangentsUnified((flags & KeyUnified) != 0);
            if (flags & HasKeyProperties) to.properties(keyProperties, &FormatInterface::keyframeProperty);
            target.finishKeyframe();
        }
        hasLeftKey = hasKey;
        leftX = x;
    }
    cursor.finish();
    target.finishSegmentContainer();
}

// --- curves ----------------------------------------------------------------------------------------------------------

void ReadDisplay(const Source& source, const Span& block, FormatInterface& target) {
    Cursor cursor(source, block);
    const auto flags = cursor.flags<std::uint16_t>(AllDisplayFlags);
    target.curveVisible((flags & Visible) != 0);
    target.curveLocked((flags & Locked) != 0);
    target.curveShowVelocity((flags & Velocity) != 0);
    target.curveShowAcceleration((flags & Acceleration) != 0);
    target.curveShowDiscontinuities((flags & Discontinuities) != 0);
    if (flags & HasGrid) {
        double grid[4];
        for (double& number : grid) number = cursor.finite();
        target.curveGrid(grid[0], grid[1], grid[2], grid[3]);
    }
    target.curveTangentScale(flags & HasTangentScale ? cursor.finite() : 1.0);
    cursor.finish();
}

// Returns what the target says about further curves.
bool ReadCurveBlock(Source& source, const Span& curve, FormatInterface& target) {
    Blocks blocks(source, curve);
    Span block;
    if (!blocks.nextKnown(block)) throw MissingBlock("A curve ends without a block \"Name\".", blocks.offset());
    if (block.type != Block::kName) blocks.refuse(block, "\"Name\"");
    Cursor cursor(source, block);
    const std::string name(cursor.textView());
    cursor.finish();
    if (!target.startCurve(name.c_str())) return true;

    Deliverer to(source, target);
    std::vector<std::string> expressions;
    constexpr const char* order[] = {Block::kDisplay, Block::kProperties, Block::kExpressions, Block::kSegments};
    constexpr const char* expected[] = {"\"Show\", \"Prop\", \"Expr\", \"Segs\" or the end",
                                        "\"Prop\", \"Expr\", \"Segs\" or the end", "\"Expr\", \"Segs\" or the end",
                                        "\"Segs\" or the end", "the end"};
    std::size_t place = 0;
    while (blocks.nextKnown(block)) {
        const std::size_t first = place;
        while (place < std::size(order) && block.type != order[place]) ++place;
        switch (place++) {
        case 0:
            ReadDisplay(source, block, target);
            break;
        case 1:
            to.propertyBlock(block, &FormatInterface::curveProperty);
            break;
        case 2:
            expressions = ReadExpressions(source, block);
            break;
        case 3:
            ReadSegments(source, block, expressions, to);
            break;
        default:
            blocks.refuse(block, expected[first]);
        }
    }
    return target.finishCurve();
}

void ReadContainerBlock(Source& source, const Span& container, FormatInterface& target) {
    target.startCurveContainer();
    Blocks blocks(source, container);
    Span block;
    std::size_t curves = 0;
    for (bool isFirst = true; blocks.nextKnown(block); isFirst = false) {
        if (isFirst && block.type == Block::kProperties) {
            Deliverer(source, target).propertyBlock(block, &FormatInterface::containerProperty);
            continue;
        }
        if (block.type != Block::kCurve)
            blocks.refuse(block, isFirst ? "\"Prop\", \"Curv\" or the end" : "\"Curv\" or the end");
        if (++curves > source.limits().curves)
            throw LimitExceeded(Private::TooMany("curves", source.limits().curves),
                                source.offsetOf(block.begin - kHeaderSize));
        if (!ReadCurveBlock(source, block, target)) break;
    }
    target.finishCurveContainer();
}

// The document's one block after its version.
Span ReadHead(Source& source, Blocks& blocks, const char* expected) {
    Span block;
    if (!blocks.next(block)) throw MissingBlock("The document ends without a block \"Vers\".", blocks.offset());
    if (block.type != Block::kVersion) blocks.refuse(block, "\"Vers\"");
    Cursor cursor(source, block);
    const std::uint64_t begin = cursor.offset();
    const unsigned major = cursor.number<std::uint16_t>();
    const unsigned minor = cursor.number<std::uint16_t>();
    if (major != kMajor) throw UnsupportedVersion(major, minor, begin);
    if (minor > kMinor) source.setNewer();
    cursor.finish();
    if (!blocks.nextKnown(block))
        throw MissingBlock(std::string("The document ends without ") + expected + '.', blocks.offset());
    return block;
}

void ExpectEnd(Blocks& blocks) {
    Span block;
    if (blocks.nextKnown(block)) blocks.refuse(block, "the end");
}

Span ContentOf(const Source& source) {
    return {Block::kDocument, 0, source.size()};
}

} // namespace

BinaryReader::BinaryReader() : Reader(GetFormatType()) {}
BinaryReader::~BinaryReader() = default;

void BinaryReader::readCurves(Stream& stream, FormatInterface& target) {
    Source source(stream);
    Blocks blocks(source, ContentOf(source));
    const Span block = ReadHead(source, blocks, "\"Cont\" or \"Curv\"");
    if (block.type == Block::kContainer) {
        ReadContainerBlock(source, block, target);
    } else if (block.type == Block::kCurve) {
        target.startCurveContainer();
        ReadCurveBlock(source, block, target);
        target.finishCurveContainer();
    } else {
        blocks.refuse(block, "\"Cont\" or \"Curv\"");
    }
    ExpectEnd(blocks);
}

void BinaryReader::readCurve(Stream& stream, FormatInterface& target) {
    Source source(stream);
    Blocks blocks(source, ContentOf(source));
    const Span block = ReadHead(source, blocks, "a single \"Curv\"");
    if (block.type != Block::kCurve) blocks.refuse(block, "a single \"Curv\"");
    ReadCurveBlock(source, block, target);
    ExpectEnd(blocks);
}

bool BinaryReader::canRead(Stream&, Stream& header) {
    char bytes[20];
    header.readData(bytes, sizeof bytes);
    return IFFType::fromBytes(bytes) == Block::kDocument && IFFType::fromBytes(bytes + kHeaderSize) == Block::kVersion;
}

} // namespace BinaryFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
