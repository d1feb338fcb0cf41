#include "formats/PartCollector.h"

#include "FCurveLib/Stream.h"
#include "FCurveLib/Tangent.h"
#include "formats/Text.h"

#include <climits>
#include <cmath>
#include <cstring>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

PartCollector::PartCollector(Stream& stream) : m_stream(stream) {}
PartCollector::~PartCollector() = default;

// --- what is refused -------------------------------------------------------------------------------------------------

void PartCollector::refuse(Refusal why, const std::string& message) {
    m_part = Nothing;
    std::rethrow_exception(errorOf(why, message));
}

void PartCollector::require(bool inOrder, const char* call) {
    if (!inOrder) refuse(Refusal::Call, std::string("The call ") + call + " is out of order.");
}

void PartCollector::checkSize(std::size_t size) {
    if (size > m_room)
        refuse(Refusal::Size, "The document would be longer than the 2147483647 bytes that a stream can hold.");
}

double PartCollector::finite(double number) {
    if (!std::isfinite(number)) refuse(Refusal::NotFinite, "A number is not finite.");
    return number;
}

// As a curve keeps its display settings, with six digits: more would be lost in the next document.
double PartCollector::asKept(double number) {
    std::string digits;
    AppendShortNumber(digits, finite(number));
    double kept = 0.0;
    ParseNumber(digits, kept);
    return kept;
}

const char* PartCollector::text(const char* text) {
    const std::size_t length = std::strlen(OrEmpty(text));
    if (length > m_limits.text) refuse(Refusal::Limit, TextTooLong(length, m_limits.text));
    return OrEmpty(text);
}

void PartCollector::count(std::size_t& counted, std::size_t limit, const char* what) {
    if (counted >= limit) refuse(Refusal::Limit, TooMany(what, limit));
    ++counted;
}

void PartCollector::add(PropertyList& properties, const char* key, const char* value) {
    std::size_t size = properties.size();
    count(size, m_limits.properties, "properties");
    properties.emplace_back(text(key), text(value));
}

// --- container -------------------------------------------------------------------------------------------------------

void PartCollector::startDocument() {
    m_limits = GetFormatLimits();
    m_room = static_cast<std::size_t>(INT_MAX - m_stream.getPosition());
    m_inContainer = false;
    m_curves = 0;
    beginDocument();
}

void PartCollector::startCurveContainer() {
    require(m_part == Nothing, "startCurveContainer");
    startDocument();
    m_containerProperties.clear();
    m_inContainer = true;
    m_part = Container;
}
void PartCollector::finishCurveContainer() {
    require(m_part == Container, "finishCurveContainer");
    if (m_curves == 0) beginContainer(m_containerProperties);
    endContainer();
    m_part = Nothing;
    endDocument();
}
void PartCollector::containerProperty(const char* key, const char* value) {
    require(m_part == Container && m_curves == 0, "containerProperty");
    add(m_containerProperties, key, value);
}

// --- curve -----------------------------------------------------------------------------------------------------------

bool PartCollector::startCurve(const char* name) {
    require(m_part == Nothing || m_part == Container, "startCurve");
    if (m_part == Nothing) startDocument();
    if (m_inContainer && m_curves == 0) beginContainer(m_containerProperties);
    count(m_curves, m_limits.curves, "curves");
    m_head = {};
    m_head.name = text(name);
    m_part = Head;
    return true;
}

bool PartCollector::finishCurve() {
    require(m_part == Head || m_part == Tail, "finishCurve");
    const bool hasSegments = m_part == Tail;
    if (!hasSegments) beginCurve(m_head, false);
    endCurve(hasSegments);
    m_part = m_inContainer ? Container : Nothing;
    if (!m_inContainer) endDocument();
    return true;
}

CurveHead& PartCollector::head(const char* call) {
    require(m_part == Head, call);
    return m_head;
}
void PartCollector::curveVisible(bool visible) {
    head("curveVisible").visible = visible;
}
void PartCollector::curveLocked(bool locked) {
    head("curveLocked").locked = locked;
}
void PartCollector::curveShowVelocity(bool show) {
    head("curveShowVelocity").velocity = show;
}
void PartCollector::curveShowAcceleration(bool show) {
    head("curveShowAcceleration").acceleration = show;
}
void PartCollector::curveShowDiscontinuities(bool show) {
    head("curveShowDiscontinuities").discontinuities = show;
}
void PartCollector::curveGrid(double x, double y, double width, double height) {
    head("curveGrid").grid = {asKept(x), asKept(y), asKept(width), asKept(height)};
    m_head.hasGrid = m_head.grid[2] > 0.0 && m_head.grid[3] > 0.0;
}
void PartCollector::curveTangentScale(double scale) {
    head("curveTangentScale").tangentScale = asKept(scale);
}
void PartCollector::curveProperty(const char* key, const char* value) {
    add(head("curveProperty").properties, key, value);
}

// --- segments --------------------------------------------------------------------------------------------------------

void PartCollector::startSegmentContainer() {
    beginCurve(head("startSegmentContainer"), true);
    m_keys = 0;
    m_lastX = -HUGE_VAL;
    m_afterSegment = false;
    m_afterKey = false;
    m_part = Segments;
}
void PartCollector::finishSegmentContainer() {
    require(m_part == Segments, "finishSegmentContainer");
    if (m_afterKey) refuse(Refusal::Call, kKeyAtEnd);
    if (m_afterSegment) writeSegment(m_segment, nullptr);
    m_part = Tail;
}

void PartCollector::startSegment(const char* expression) {
    require(m_part == Segments && !m_afterSegment, "startSegment");
    m_segment.expression = text(expression);
    m_segment.out = {};
    m_segment.in = {};
    m_segment.properties.clear();
    m_part = Segment;
}
void PartCollector::finishSegment() {
    require(m_part == Segment, "finishSegment");
    m_afterSegment = true;
    m_afterKey = false;
    m_part = Segments;
}
void PartCollector::segmentProperty(const char* key, const char* value) {
    require(m_part == Segment, "segmentProperty");
    add(m_segment.properties, key, value);
}

// --- tangents --------------------------------------------------------------------------------------------------------

void PartCollector::startTangent(Part part, TangentPart& tangent, const char* call) {
    require(m_part == Segment && !tangent.isGiven, call);
    tangent.isGiven = true;
    m_part = part;
}
void PartCollector::startInTangent() {
    startTangent(InTangent, m_segment.in, "startInTangent");
}
void PartCollector::finishInTangent() {
    require(m_part == InTangent, "finishInTangent");
    m_part = Segment;
}
void PartCollector::startOutTangent() {
    startTangent(OutTangent, m_segment.out, "startOutTangent");
}
void PartCollector::finishOutTangent() {
    require(m_part == OutTangent, "finishOutTangent");
    m_part = Segment;
}

TangentPart& PartCollector::tangent(const char* call) {
    require(m_part == InTangent || m_part == OutTangent, call);
    return m_part == InTangent ? m_segment.in : m_segment.out;
}
void PartCollector::tangentVector(double x, double y) {
    TangentPart& part = tangent("tangentVector");
    part.x = finite(x);
    part.y = finite(y);
    part.hasHandle = true;
}
void PartCollector::tangentType(unsigned char type) {
    if (type > Tangent::Plateau) refuse(Refusal::Call, std::to_string(type) + " is not a tangent type.");
    tangent("tangentType").type = type;
}
void PartCollector::tangentWeightLocked(bool locked) {
    tangent("tangentWeightLocked").weightLocked = locked;
}
void PartCollector::tangentWeighted(bool weighted) {
    tangent("tangentWeighted").weighted = weighted;
}
void PartCollector::tangentProperty(const char* key, const char* value) {
    add(tangent("tangentProperty").properties, key, value);
}

// --- keyframes -------------------------------------------------------------------------------------------------------

void PartCollector::startKeyframe() {
    require(m_part == Segments && m_afterSegment, "startKeyframe");
    m_key.x = 0.0;
    m_key.y = 0.0;
    m_key.locked = false;
    m_key.breakdown = false;
    m_key.unified = false;
    m_key.properties.clear();
    m_part = Key;
}
void PartCollector::finishKeyframe() {
    key("finishKeyframe");
    if (!(m_key.x > m_lastX)) refuse(Refusal::Call, kKeyOutOfOrder);
    count(m_keys, m_limits.keys, "keys");
    m_lastX = m_key.x;
    writeSegment(m_segment, &m_key);
    m_afterSegment = false;
    m_afterKey = true;
    m_part = Segments;
}

KeyPart& PartCollector::key(const char* call) {
    require(m_part == Key, call);
    return m_key;
}
void PartCollector::keyframePosition(double x, double y) {
    key("keyframePosition").x = finite(x);
    m_key.y = finite(y);
}
void PartCollector::keyframeTangentsUnified(bool unified) {
    key("keyframeTangentsUnified").unified = unified;
}
void PartCollector::keyframeBreakdown(bool breakdown) {
    key("keyframeBreakdown").breakdown = breakdown;
}
void PartCollector::keyframeLocked(bool locked) {
    key("keyframeLocked").locked = locked;
}
void PartCollector::keyframeProperty(const char* key, const char* value) {
    add(this->key("keyframeProperty").properties, key, value);
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
