#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/FormatLimits.h"
#include "FCurveLib/Stream.h"
#include "FCurveLib/XMLFormat.h"
#include "formats/Opening.h"
#include "formats/TangentTypes.h"
#include "formats/Text.h"
#include "formats/TextSource.h"
#include "formats/xml/BoundedMemory.h"
#include "formats/xml/Escapes.h"
#include "formats/xml/Vocabulary.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <exception>
#include <iterator>
#include <limits>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace XMLFormat {

using Private::ParseNumber;
using Private::Quoted;

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16U; // bytes that are fed to Expat at once

// Of XML, which knows fewer than C.
bool IsXMLSpace(int c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// One document on its way from a stream to a FormatInterface.
class Document {
public:
    Document(Stream& stream, FormatInterface& target, bool wantsContainer)
        : m_stream(stream), m_target(target), m_wantsContainer(wantsContainer) {
        const BoundedMemory::Use use(m_memory);
        m_expat = XML_ParserCreate_MM(nullptr, &BoundedMemory::suite(), nullptr);
        if (!m_expat) throw std::bad_alloc();
        XML_SetUserData(m_expat, this);
        XML_SetElementHandler(m_expat, &onStart, &onEnd);
        XML_SetCharacterDataHandler(m_expat, &onText);
        XML_SetStartDoctypeDeclHandler(m_expat, &onDoctype);
    }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document() {
        const BoundedMemory::Use use(m_memory);
        XML_ParserFree(m_expat);
    }

    void read();

private:
    enum class Node { Root, Container, Curve, Segment, Tangent, Key, Property, Unknown };
    enum class Run { Nothing, Segment, Key }; // what came last in the current curve

    struct Open {
        Node node;
        std::size_t properties = 0;
    };

    class Attributes;

    // --- Expat's side. No exception may pass through it: the first one is kept, and everything after it ignored.
    template<class Call>
    void guard(const Call& call) noexcept {
        if (m_error || m_enough) return;
        try {
            call();
        } catch (...) {
            m_error = std::current_exception();
            XML_StopParser(m_expat, XML_FALSE);
        }
    }
    static void XMLCALL onStart(void* self, const XML_Char* tag, const XML_Char** attributes) {
        auto* document = static_cast<Document*>(self);
        document->guard([=] { document->start(tag, attributes); });
    }
    static void XMLCALL onEnd(void* self, const XML_Char*) {
        auto* document = static_cast<Document*>(self);
        document->guard([=] { document->end(); });
    }
    static void XMLCALL onText(void* self, const XML_Char* text, int length) {
        auto* document = static_cast<Document*>(self);
        document->guard([=] { document->text({text, static_cast<std::size_t>(length)}); });
    }
    static void XMLCALL onDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
        auto* document = static_cast<Document*>(self);
        document->guard([=] { document->raise<DoctypeRefused>("A document with a DOCTYPE is not read."); });
    }

    template<class Error>
    [[noreturn]] void raise(const std::string& message, const char* name = "") const {
        throw Error(message, line(), column(), name);
    }
    [[noreturn]] void raiseNoMemory() const {
        if (!m_memory.isExhausted()) throw std::bad_alloc();
        raise<LimitExceeded>("The document needs too much memory.");
    }
    std::uint64_t line() const { return XML_GetCurrentLineNumber(m_expat); }
    std::uint64_t column() const { return XML_GetCurrentColumnNumber(m_expat) + 1; }

    void start(const char* tag, const char** attributes);
    void end();
    void text(std::string_view text) const;

    Node startAny(const char* tag, Attributes& attributes);
    Node startRoot(Attributes& attributes);
    Node startCurve(Attributes& attributes);
    Node startSegment(Attributes& attributes);
    Node startTangent(Attributes& attributes, bool isIn);
    Node startKey(Attributes& attributes);
    Node startProperty(Attributes& attributes);
    void finishCurve();

    void count(std::size_t& counted, std::size_t limit, const char* what) const {
        if (counted >= limit) raise<LimitExceeded>(Private::TooMany(what, limit));
        ++counted;
    }

    Stream& m_stream;
    FormatInterface& m_target;
    const bool m_wantsContainer;
    const FormatLimits m_limits = GetFormatLimits();
    // Expat collects a tag as a whole before anybody can look at its attributes. A property has two texts, and markup
    // takes at most six bytes for one of theirs ("&quot;").
    const std::size_t m_longestTag =
        12 * std::min(m_limits.text, std::numeric_limits<std::size_t>::max() / 256) + kPiece;
    BoundedMemory m_memory{8 * m_longestTag}; // Expat takes about 6 to grow its buffer and to copy the texts
    XML_Parser m_expat = nullptr;
    std::exception_ptr m_error;
    bool m_enough = false; // the target wants no more

    std::vector<Open> m_open;
    bool m_isLater = false; // the document has a later minor version: what is unknown is skipped
    bool m_hasContent = false;
    std::size_t m_curves = 0;

    // The current curve.
    FormatInterface m_nobody;
    FormatInterface* m_out = nullptr; // m_nobody for a curve that the target does not want
    Run m_run = Run::Nothing;
    std::size_t m_keys = 0;
    double m_lastX = 0.0;
    bool m_hasTangent[2] = {}; // out, in: of the current segment
    bool m_isIn = false;       // the current tangent
};

// --- attributes ------------------------------------------------------------------------------------------------------

// The attributes of one element, each asked for once by its name.
class Document::Attributes {
public:
    Attributes(const Document& document, const char** list) : m_document(document), m_list(list) {
        for (; list[m_count]; m_count += 2) {
        }
        m_count /= 2;
    }

    const char* find(const char* name) {
        for (std::size_t i = 0; i < m_count; ++i) {
            if (std::strcmp(m_list[2 * i], name) != 0) continue;
            m_asked[m_found++] = m_list[2 * i];
            return m_list[2 * i + 1];
        }
        return nullptr;
    }

    const char* require(const char* name) {
        const char* value = find(name);
        if (!value) m_document.raise<BadAttribute>(std::string("The attribute ") + name + " is missing.", name);
        return value;
    }

    // A text without its escapes.
    const char* text(const char* name, std::string& buffer) {
        const char* value = require(name);
        if (!Unescape(value, buffer))
            bad(name, value, R"(a text in which a backslash starts "\\" or "\x01" to "\xFF")");
        if (buffer.size() > m_document.m_limits.text) {
            m_document.raise<LimitExceeded>(std::string("The attribute ") + name + " is too long.", name);
        }
        return buffer.c_str();
    }

    bool flag(const char* name, bool absent = false) {
        const char* value = find(name);
        if (!value) return absent;
        if (std::strcmp(value, "true") == 0 || std::strcmp(value, "1") == 0) return true;
        if (std::strcmp(value, "false") == 0 || std::strcmp(value, "0") == 0) return false;
        bad(name, value, "\"true\" or \"false\"");
    }

    double number(const char* name) {
        const char* value = require(name);
        double result = 0.0;
        if (!ParseNumber(value, result)) bad(name, value, "a number");
        return result;
    }

    [[noreturn]] void bad(const char* name, const char* value, const char* expected) const {
        m_document.raise<BadAttribute>(std::string("The attribute ") + name + " has the value " + Quoted(value)
                                           + ", which is not " + expected + ".",
                                       name);
    }

    // Everything was asked for: refuses the rest.
    void done() const {
        if (m_document.m_isLater || m_found == m_count) return;
        const auto* const askedEnd = m_asked.begin() + m_found;
        for (std::size_t i = 0; i < m_count; ++i) {
            const char* name = m_list[2 * i];
            if (std::find(m_asked.begin(), askedEnd, name) != askedEnd) continue;
            m_document.raise<BadAttribute>("The attribute " + Quoted(name) + " is not known here.", name);
        }
    }

private:
    const Document& m_document;
    const char** m_list;
    std::size_t m_count = 0;
    std::array<const char*, 16> m_asked{}; // more than any element has
    std::size_t m_found = 0;
};

// --- elements --------------------------------------------------------------------------------------------------------

void Document::start(const char* tag, const char** attributes) {
    if (m_open.size() >= m_limits.nesting) raise<LimitExceeded>("The elements are nested too deeply.", tag);
    Attributes list(*this, attributes);
    const Node node = startAny(tag, list);
    if (node != Node::Unknown) list.done();
    m_open.push_back({node});
}

// Makes the element's calls. Attributes are looked at before the first call: a target hears of complete parts only.
Document::Node Document::startAny(const char* tag, Attributes& attributes) {
    const auto is = [tag](const char* name) { return std::strcmp(tag, name) == 0; };
    if (m_open.empty()) {
        if (is(Tag::kRoot)) return startRoot(attributes);
        raise<UnexpectedTag>("The document is not a curve file: its root is " + Quoted(tag) + ".", tag);
    }

    switch (m_open.back().node) {
    case Node::Root:
        if (m_hasContent) break;
        if (is(Tag::kCurve)) {
            m_hasContent = true;
            if (m_wantsContainer) m_target.startCurveContainer();
            return startCurve(attributes);
        }
        if (is(Tag::kContainer)) {
            if (!m_wantsContainer) raise<UnexpectedTag>("The document holds a container, not a single curve.", tag);
            m_hasContent = true;
            m_target.startCurveContainer();
            return Node::Container;
        }
        break;
    case Node::Container:
        if (is(Tag::kCurve)) return startCurve(attributes);
        if (is(Tag::kProperty) && m_curves == 0) return startProperty(attributes);
        break;
    case Node::Curve:
        if (is(Tag::kSegment) && m_run != Run::Segment) return startSegment(attributes);
        if (is(Tag::kKey) && m_run == Run::Segment) return startKey(attributes);
        if (is(Tag::kProperty) && m_run == Run::Nothing) return startProperty(attributes);
        break;
    case Node::Segment:
        if (is(Tag::kOut) && !m_hasTangent[0]) return startTangent(attributes, false);
        if (is(Tag::kIn) && !m_hasTangent[1]) return startTangent(attributes, true);
        if (is(Tag::kProperty)) return startProperty(attributes);
        break;
    case Node::Tangent:
    case Node::Key:
        if (is(Tag::kProperty)) return startProperty(attributes);
        break;
    case Node::Property:
    case Node::Unknown:
        break;
    }
    if (m_isLater) return Node::Unknown;
    raise<UnexpectedTag>("The tag " + Quoted(tag) + " is not expected here.", tag);
}

void Document::end() {
    const Node node = m_open.back().node;
    m_open.pop_back();
    switch (node) {
    case Node::Root:
        if (!m_hasContent) raise<MissingTag>("The document holds neither a curve nor a container.", Tag::kCurve);
        break;
    case Node::Container:
        m_target.finishCurveContainer();
        break;
    case Node::Curve:
        finishCurve();
        break;
    case Node::Segment:
        m_out->finishSegment();
        break;
    case Node::Tangent:
        if (m_isIn) {
            m_out->finishInTangent();
        } else {
            m_out->finishOutTangent();
        }
        break;
    case Node::Key:
        m_out->finishKeyframe();
        break;
    case Node::Property:
    case Node::Unknown:
        break;
    }
}

void Document::text(std::string_view text) const {
    if (m_isLater || std::all_of(text.begin(), text.end(), &IsXMLSpace)) return;
    raise<UnexpectedText>("There is text between the tags: " + Quoted(text) + ".");
}

Document::Node Document::startRoot(Attributes& attributes) {
    const char* version = attributes.require("version");
    unsigned major = 0;
    unsigned minor = 0;
    if (!Private::ParseVersion(version, major, minor)) attributes.bad("version", version, "a version such as 1.0");
    if (major != kMajor) throw UnsupportedVersion(major, kMajor, line(), column());
    m_isLater = minor > kMinor;
    return Node::Root;
}

Document::Node Document::startCurve(Attributes& attributes) {
    count(m_curves, m_limits.curves, "curves");
    std::string name;
    attributes.text("name", name);
    const bool visible = attributes.flag("visible", true);
    const bool locked = attributes.flag("locked");
    const bool velocity = attributes.flag("velocity");
    const bool acceleration = attributes.flag("acceleration");
    const bool discontinuities = attributes.flag("discontinuities");
    double grid[4] = {};
    const char* const gridText = attributes.find("grid");
    if (gridText) {
        std::string_view rest = gridText;
        for (double& number : grid) {
            const bool isLast = &number == std::end(grid) - 1;
            const std::size_t length = isLast ? rest.size() : std::min(rest.find(' '), rest.size());
            if (!ParseNumber(rest.substr(0, length), number)) {
                attributes.bad("grid", gridText, "four numbers with blanks between them");
            }
            rest.remove_prefix(std::min(length + 1, rest.size()));
        }
    }
    double scale = 1.0;
    if (const char* const scaleText = attributes.find("tangentScale")) {
        if (!ParseNumber(scaleText, scale)) attributes.bad("tangentScale", scaleText, "a number");
    }
    attributes.done();

    m_out = m_target.startCurve(name.c_str()) ? &m_target : &m_nobody;
    m_out->curveVisible(visible);
    m_out->curveLocked(locked);
    m_out->curveShowVelocity(velocity);
    m_out->curveShowAcceleration(acceleration);
    m_out->curveShowDiscontinuities(discontinuities);
    if (gridText) m_out->curveGrid(grid[0], grid[1], grid[2], grid[3]);
    m_out->curveTangentScale(scale);
    m_run = Run::Nothing;
    m_keys = 0;
    m_lastX = -std::numeric_limits<double>::infinity();
    return Node::Curve;
}

void Document::finishCurve() {
    if (m_run == Run::Key) raise<MissingTag>(Private::kKeyAtEnd, Tag::kSegment);
    if (m_run == Run::Nothing) m_out->startSegmentContainer();
    m_out->finishSegmentContainer();
    if (!m_out->finishCurve()) {
        m_enough = true;
        XML_StopParser(m_expat, XML_FALSE);
    }
    // A document of a single curve, read as a container, or a container that ends here for its target.
    if (m_wantsContainer && (m_enough || m_open.back().node == Node::Root)) m_target.finishCurveContainer();
}

Document::Node Document::startSegment(Attributes& attributes) {
    std::string expression;
    attributes.text("interpolator", expression);
    attributes.done();

    if (m_run == Run::Nothing) m_out->startSegmentContainer();
    m_run = Run::Segment;
    m_out->startSegment(expression.c_str());
    m_hasTangent[0] = m_hasTangent[1] = false;
    return Node::Segment;
}

Document::Node Document::startTangent(Attributes& attributes, bool isIn) {
    std::size_t type = 0;
    if (const char* const name = attributes.find("type")) {
        type = Private::TangentTypeOf(name);
        if (type == std::size(Private::kTangentTypes)) {
            if (!m_isLater) attributes.bad("type", name, "a type of tangent");
            type = 0; // the handle stays as the later version computed it
        }
    }
    const bool weighted = attributes.flag("weighted");
    const bool weightLocked = attributes.flag("weightLocked");
    const char* const xText = attributes.find("x");
    const char* const yText = attributes.find("y");
    double x = 0.0;
    double y = 0.0;
    if (xText || yText) {
        if (!xText || !yText) {
            const char* const missing = xText ? "y" : "x";
            raise<BadAttribute>(std::string("The attribute ") + missing + " is missing.", missing);
        }
        if (!ParseNumber(xText, x)) attributes.bad("x", xText, "a number");
        if (!ParseNumber(yText, y)) attributes.bad("y", yText, "a number");
    }
    attributes.done();

    m_isIn = isIn;
    m_hasTangent[isIn ? 1 : 0] = true;
    if (isIn) {
        m_out->startInTangent();
    } else {
        m_out->startOutTangent();
    }
    m_out->tangentType(static_cast<unsigned char>(type));
    m_out->tangentWeighted(weighted);
    m_out->tangentWeightLocked(weightLocked);
    if (xText) m_out->tangentVector(x, y);
    return Node::Tangent;
}

Document::Node Document::startKey(Attributes& attributes) {
    count(m_keys, m_limits.keys, "keys");
    const double x = attributes.number("x");
    const double y = attributes.number("y");
    const bool locked = attributes.flag("locked");
    const bool breakdown = attributes.flag("breakdown");
    const bool unified = attributes.flag("unified");
    attributes.done();
    if (!(x > m_lastX)) raise<BadAttribute>(Private::kKeyOutOfOrder, "x");

    m_lastX = x;
    m_run = Run::Key;
    m_out->startKeyframe();
    m_out->keyframePosition(x, y);
    m_out->keyframeLocked(locked);
    m_out->keyframeBreakdown(breakdown);
    m_out->keyframeTangentsUnified(unified);
    return Node::Key;
}

Document::Node Document::startProperty(Attributes& attributes) {
    count(m_open.back().properties, m_limits.properties, "properties");
    std::string keyBuffer;
    std::string valueBuffer;
    const char* const key = attributes.text("key", keyBuffer);
    const char* const value = attributes.text("value", valueBuffer);
    attributes.done();

    switch (m_open.back().node) {
    case Node::Container:
        m_target.containerProperty(key, value);
        break;
    case Node::Curve:
        m_out->curveProperty(key, value);
        break;
    case Node::Segment:
        m_out->segmentProperty(key, value);
        break;
    case Node::Tangent:
        m_out->tangentProperty(key, value);
        break;
    default:
        m_out->keyframeProperty(key, value);
        break;
    }
    return Node::Property;
}

// --- bytes -----------------------------------------------------------------------------------------------------------

void Document::read() {
    const BoundedMemory::Use use(m_memory);
    std::uint64_t fed = 0;
    std::uint64_t remaining = static_cast<std::uint64_t>(std::max(0, m_stream.getSize() - m_stream.getPosition()));
    std::size_t piece = kPiece;
    XML_Status status = XML_STATUS_OK;
    do {
        const int count = static_cast<int>(std::min<std::uint64_t>(piece, remaining));
        if (count == 0) {
            status = XML_Parse(m_expat, "", 0, XML_TRUE);
        } else {
            void* const buffer = XML_GetBuffer(m_expat, count);
            if (!buffer) raiseNoMemory();
            m_stream.readData(buffer, count);
            fed += static_cast<std::uint64_t>(count);
            remaining -= static_cast<std::uint64_t>(count);
            status = XML_ParseBuffer(m_expat, count, remaining == 0 ? XML_TRUE : XML_FALSE);
        }
        if (m_error) std::rethrow_exception(m_error);
        if (m_enough) return;
        if (status != XML_STATUS_OK) {
            const XML_Error code = XML_GetErrorCode(m_expat);
            if (code == XML_ERROR_NO_MEMORY) raiseNoMemory();
            throw ParseError(code, std::string("The document is not well-formed: ") + XML_ErrorString(code) + ".",
                             line(), column());
        }
        const XML_Index done = XML_GetCurrentByteIndex(m_expat);
        const std::uint64_t pending = done < 0 ? fed : fed - static_cast<std::uint64_t>(done);
        if (pending > m_longestTag) raise<LimitExceeded>("A tag or comment is too long.");
        // Expat looks at an unfinished tag from its start each time, so the pieces grow with it.
        piece = std::max(kPiece, static_cast<std::size_t>(pending));
    } while (remaining > 0);
}

} // namespace

XMLReader::XMLReader() : Reader(GetFormatType()) {}
XMLReader::~XMLReader() = default;

void XMLReader::readCurves(Stream& stream, FormatInterface& target) {
    Document(stream, target, true).read();
}

void XMLReader::readCurve(Stream& stream, FormatInterface& target) {
    Document(stream, target, false).read();
}

// Looks for "<fcurvelib" or "<!DOCTYPE fcurvelib" after a byte-order mark, declarations, comments and white space.
bool XMLReader::canRead(Stream& stream, Stream& header) {
    Private::Opening opening(stream, header);
    Private::TextSource source(opening);
    const auto takes = [&](std::string_view text) {
        return std::all_of(text.begin(), text.end(), [&](char c) { return source.take() == c; });
    };
    const auto skipSpace = [&] {
        while (IsXMLSpace(source.peek())) source.take();
    };
    const auto skipPast = [&](std::string_view end) {
        std::string last;
        for (int c = source.take(); c != source.noByte; c = source.take()) {
            last += static_cast<char>(c);
            if (last.size() > end.size()) last.erase(0, 1);
            if (last == end) return;
        }
    };

    for (;;) {
        skipSpace();
        if (!takes("<")) return false;
        if (source.peek() == '?') {
            skipPast("?>");
        } else if (source.peek() == '!') {
            source.take();
            if (source.peek() != '-') {
                if (!takes("DOCTYPE")) return false;
                skipSpace();
                break;
            }
            if (!takes("--")) return false;
            skipPast("-->");
        } else {
            break;
        }
    }
    if (!takes(Tag::kRoot)) return false;
    const int next = source.peek();
    return IsXMLSpace(next) || next == '>' || next == '/' || next == '[';
}

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
