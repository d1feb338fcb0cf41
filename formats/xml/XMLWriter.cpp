#include "FCurveLib/Stream.h"
#include "FCurveLib/Tangent.h"
#include "FCurveLib/XMLFormat.h"
#include "formats/Text.h"
#include "formats/xml/Names.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace XMLFormat {

using Private::appendNumber;
using Private::appendShortNumber;
using Private::orEmpty;

namespace {

// Where in the document the writer stands.
enum Part : int { Nothing, Container, CurveHead, Segments, SegmentPart, OutTangent, InTangent, Key, CurveTail };

// The attributes of each part, in the order in which they are written. What is first has no default.
enum CurveAttribute : unsigned { Name, Visible, Locked, Velocity, Acceleration, Discontinuities, Grid, TangentScale };
enum TangentAttribute : unsigned { Handle, Type, Weighted, WeightLocked };
enum KeyAttribute : unsigned { Position, KeyLocked, Breakdown, Unified };

constexpr std::size_t kPiece = std::size_t{1} << 18U; // bytes that go to the stream at once

double finite(double number) {
    if (!std::isfinite(number)) throw NotFinite("A number is not finite.");
    return number;
}

} // namespace

// The document on one stream: its text that has not reached the stream, and the part that is being collected, so that
// the order of calls within a part does not matter.
struct XMLWriter::Document {
    Stream* stream;
    std::string out;
    int part = Nothing;
    bool inContainer = false;
    bool tagIsOpen = false;                // "<segment ..." still lacks its ">"
    std::array<std::string, 8> attributes; // of the current part, as text; empty where at the default
    std::string properties;                // of the current part, as elements

    explicit Document(Stream* target) : stream(target) {}

    void flush() {
        for (std::size_t done = 0; done < out.size();) {
            const std::size_t count = std::min(out.size() - done, std::size_t{1} << 30U);
            stream->writeData(out.data() + done, static_cast<int>(count));
            done += count;
        }
        out.clear();
    }

    void indent(std::string& to, std::size_t depth) const { to.append(2 * (inContainer ? depth + 1 : depth), ' '); }

    static void appendAttribute(std::string& to, const char* name, const char* value) {
        to += ' ';
        to += name;
        to += "=\"";
        appendEscaped(to, value);
        to += '"';
    }

    // Null for the default.
    void setAttribute(unsigned which, const char* name, const char* value) {
        attributes[which].clear();
        if (value) appendAttribute(attributes[which], name, value);
    }

    void setFlag(unsigned which, const char* name, bool on) {
        attributes[which].clear();
        if (on) appendAttribute(attributes[which], name, "true");
    }

    void setNumbers(double x, double y) {
        std::string& text = attributes[0];
        text = " x=\"";
        appendNumber(text, finite(x));
        text += "\" y=\"";
        appendNumber(text, finite(y));
        text += '"';
    }

    void appendProperty(std::string& to, std::size_t depth, const char* key, const char* value) const {
        indent(to, depth);
        to += "<property";
        appendAttribute(to, "key", orEmpty(key));
        appendAttribute(to, "value", orEmpty(value));
        to += "/>\n";
    }

    void enter(int next) {
        if (out.size() >= kPiece) flush();
        part = next;
        for (std::string& attribute : attributes) attribute.clear();
        properties.clear();
    }

    void openTag(std::size_t depth, const char* tag) {
        indent(out, depth);
        out += '<';
        out += tag;
        for (const std::string& attribute : attributes) out += attribute;
    }

    // A complete element: what was collected, with properties as its only children.
    void element(std::size_t depth, const char* tag) {
        openTag(depth, tag);
        if (properties.empty()) {
            out += "/>\n";
            return;
        }
        out += ">\n";
        out += properties;
        close(depth, tag);
    }

    void close(std::size_t depth, const char* tag) {
        indent(out, depth);
        out += "</";
        out += tag;
        out += ">\n";
    }

    void closeTag() {
        if (tagIsOpen) out += ">\n";
        tagIsOpen = false;
    }
};

XMLWriter::XMLWriter() : Writer(GetFormatType()) {}
XMLWriter::~XMLWriter() = default;

// Links nest: a document that is put aside goes on where it was.
void XMLWriter::newStream(Stream* stream) {
    if (!stream) {
        m_suspended.clear();
        m_document.reset();
        return;
    }
    if (m_document && m_document->stream == stream) return;
    const auto known = std::find_if(m_suspended.begin(), m_suspended.end(),
                                    [stream](const auto& document) { return document->stream == stream; });
    if (known != m_suspended.end()) {
        m_document = std::move(*known);
        m_suspended.erase(known, m_suspended.end());
        return;
    }
    auto fresh = std::make_unique<Document>(stream);
    if (m_document) m_suspended.push_back(std::move(m_document));
    m_document = std::move(fresh);
}

bool XMLWriter::at(int part) const noexcept {
    return m_document && m_document->part == part;
}

void XMLWriter::enterDocument() {
    m_document->out += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<";
    m_document->out += Tag::root;
    m_document->out += " version=\"" + std::to_string(kMajor) + '.' + std::to_string(kMinor) + "\">\n";
}

void XMLWriter::leaveDocument() {
    m_document->close(0, Tag::root);
    m_document->part = Nothing;
    m_document->flush();
}

// --- container -------------------------------------------------------------------------------------------------------

void XMLWriter::startCurveContainer() {
    if (!at(Nothing)) return;
    enterDocument();
    m_document->indent(m_document->out, 1);
    m_document->out += "<container>\n";
    m_document->inContainer = true;
    m_document->part = Container;
}

void XMLWriter::finishCurveContainer() {
    if (!at(Container)) return;
    m_document->inContainer = false;
    m_document->close(1, Tag::container);
    leaveDocument();
}

void XMLWriter::containerProperty(const char* key, const char* value) {
    if (at(Container)) m_document->appendProperty(m_document->out, 1, key, value);
}

// --- curve -----------------------------------------------------------------------------------------------------------

bool XMLWriter::startCurve(const char* name) {
    if (!at(Nothing) && !at(Container)) return false;
    if (at(Nothing)) enterDocument();
    m_document->enter(CurveHead);
    m_document->setAttribute(Name, "name", orEmpty(name));
    return true;
}

bool XMLWriter::finishCurve() {
    if (at(CurveHead)) {
        m_document->element(1, Tag::curve);
    } else if (at(CurveTail) || at(Segments)) {
        m_document->close(1, Tag::curve);
    } else {
        return true;
    }
    m_document->part = Container;
    if (!m_document->inContainer) leaveDocument();
    return true;
}

void XMLWriter::curveVisible(bool visible) {
    if (at(CurveHead)) m_document->setAttribute(Visible, "visible", visible ? nullptr : "false");
}
void XMLWriter::curveLocked(bool locked) {
    if (at(CurveHead)) m_document->setFlag(Locked, "locked", locked);
}
void XMLWriter::curveShowVelocity(bool show) {
    if (at(CurveHead)) m_document->setFlag(Velocity, "velocity", show);
}
void XMLWriter::curveShowAcceleration(bool show) {
    if (at(CurveHead)) m_document->setFlag(Acceleration, "acceleration", show);
}
void XMLWriter::curveShowDiscontinuities(bool show) {
    if (at(CurveHead)) m_document->setFlag(Discontinuities, "discontinuities", show);
}

void XMLWriter::curveGrid(double x, double y, double width, double height) {
    if (!at(CurveHead)) return;
    if (!(finite(width) > 0.0 && finite(height) > 0.0)) {
        m_document->setAttribute(Grid, "grid", nullptr);
        return;
    }
    std::string text;
    for (double number : {x, y, width, height}) {
        if (!text.empty()) text += ' ';
        appendShortNumber(text, finite(number));
    }
    m_document->setAttribute(Grid, "grid", text.c_str());
}

void XMLWriter::curveTangentScale(double scale) {
    if (!at(CurveHead)) return;
    std::string text;
    appendShortNumber(text, finite(scale));
    m_document->setAttribute(TangentScale, "tangentScale", text == "1" ? nullptr : text.c_str());
}

void XMLWriter::curveProperty(const char* key, const char* value) {
    if (at(CurveHead)) m_document->appendProperty(m_document->properties, 2, key, value);
}

// --- segments --------------------------------------------------------------------------------------------------------

void XMLWriter::startSegmentContainer() {
    if (!at(CurveHead)) return;
    m_document->openTag(1, Tag::curve);
    m_document->out += ">\n";
    m_document->out += m_document->properties;
    m_document->part = Segments;
}

void XMLWriter::finishSegmentContainer() {
    if (at(Segments)) m_document->part = CurveTail;
}

void XMLWriter::startSegment(const char* expression) {
    if (!at(Segments)) return;
    m_document->indent(m_document->out, 2);
    m_document->out += "<segment";
    Document::appendAttribute(m_document->out, "interpolator", orEmpty(expression));
    m_document->tagIsOpen = true;
    m_document->part = SegmentPart;
}

void XMLWriter::finishSegment() {
    if (!at(SegmentPart)) return;
    if (m_document->tagIsOpen) {
        m_document->out += "/>\n";
        m_document->tagIsOpen = false;
    } else {
        m_document->close(2, Tag::segment);
    }
    m_document->part = Segments;
}

void XMLWriter::segmentProperty(const char* key, const char* value) {
    if (!at(SegmentPart)) return;
    m_document->closeTag();
    m_document->appendProperty(m_document->out, 3, key, value);
}

// --- tangents --------------------------------------------------------------------------------------------------------

void XMLWriter::startTangent(int part) {
    if (!at(SegmentPart)) return;
    m_document->closeTag();
    m_document->enter(part);
}
void XMLWriter::finishTangent(int part, const char* tag) {
    if (!at(part)) return;
    m_document->element(3, tag);
    m_document->part = SegmentPart;
}
void XMLWriter::startInTangent() {
    startTangent(InTangent);
}
void XMLWriter::finishInTangent() {
    finishTangent(InTangent, Tag::in);
}
void XMLWriter::startOutTangent() {
    startTangent(OutTangent);
}
void XMLWriter::finishOutTangent() {
    finishTangent(OutTangent, Tag::out);
}

void XMLWriter::tangentVector(double x, double y) {
    if (at(InTangent) || at(OutTangent)) m_document->setNumbers(x, y);
}
void XMLWriter::tangentType(unsigned char type) {
    if (!at(InTangent) && !at(OutTangent)) return;
    const bool isNamed = type != Tangent::Fixed && type < std::size(kTangentTypes);
    m_document->setAttribute(Type, "type", isNamed ? kTangentTypes[type] : nullptr);
}
void XMLWriter::tangentWeightLocked(bool locked) {
    if (at(InTangent) || at(OutTangent)) m_document->setFlag(WeightLocked, "weightLocked", locked);
}
void XMLWriter::tangentWeighted(bool weighted) {
    if (at(InTangent) || at(OutTangent)) m_document->setFlag(Weighted, "weighted", weighted);
}
void XMLWriter::tangentProperty(const char* key, const char* value) {
    if (at(InTangent) || at(OutTangent)) m_document->appendProperty(m_document->properties, 4, key, value);
}

// --- keyframes -------------------------------------------------------------------------------------------------------

void XMLWriter::startKeyframe() {
    if (!at(Segments)) return;
    m_document->enter(Key);
    m_document->setNumbers(0.0, 0.0);
}
void XMLWriter::finishKeyframe() {
    if (!at(Key)) return;
    m_document->element(2, Tag::key);
    m_document->part = Segments;
}
void XMLWriter::keyframePosition(double x, double y) {
    if (at(Key)) m_document->setNumbers(x, y);
}
void XMLWriter::keyframeTangentsUnified(bool unified) {
    if (at(Key)) m_document->setFlag(Unified, "unified", unified);
}
void XMLWriter::keyframeBreakdown(bool breakdown) {
    if (at(Key)) m_document->setFlag(Breakdown, "breakdown", breakdown);
}
void XMLWriter::keyframeLocked(bool locked) {
    if (at(Key)) m_document->setFlag(KeyLocked, "locked", locked);
}
void XMLWriter::keyframeProperty(const char* key, const char* value) {
    if (at(Key)) m_document->appendProperty(m_document->properties, 3, key, value);
}

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
