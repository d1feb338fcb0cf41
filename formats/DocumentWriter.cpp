#include "FCurveLib/detail/DocumentWriter.h"

#include <algorithm>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

DocumentWriter::DocumentWriter(const FormatType& type) : Writer(type) {}
DocumentWriter::~DocumentWriter() = default;

// Links nest: a document that is put aside goes on where it was.
void DocumentWriter::newStream(Stream* stream) {
    if (!stream) {
        m_documents.clear();
        return;
    }
    const auto known = std::find_if(m_documents.begin(), m_documents.end(),
                                    [stream](const Linked& document) { return document.stream == stream; });
    if (known == m_documents.end()) {
        m_documents.push_back({stream, createDocument(*stream)});
    } else {
        m_documents.erase(known + 1, m_documents.end());
    }
}

FormatInterface& DocumentWriter::document() noexcept {
    return m_documents.empty() ? m_nobody : *m_documents.back().calls;
}

void DocumentWriter::startCurveContainer() {
    document().startCurveContainer();
}
void DocumentWriter::finishCurveContainer() {
    document().finishCurveContainer();
}
void DocumentWriter::containerProperty(const char* key, const char* value) {
    document().containerProperty(key, value);
}

bool DocumentWriter::startCurve(const char* name) {
    return document().startCurve(name);
}
bool DocumentWriter::finishCurve() {
    return document().finishCurve();
}
void DocumentWriter::curveVisible(bool visible) {
    document().curveVisible(visible);
}
void DocumentWriter::curveLocked(bool locked) {
    document().curveLocked(locked);
}
void DocumentWriter::curveShowVelocity(bool show) {
    document().curveShowVelocity(show);
}
void DocumentWriter::curveShowAcceleration(bool show) {
    document().curveShowAcceleration(show);
}
void DocumentWriter::curveShowDiscontinuities(bool show) {
    document().curveShowDiscontinuities(show);
}
void DocumentWriter::curveGrid(double x, double y, double width, double height) {
    document().curveGrid(x, y, width, height);
}
void DocumentWriter::curveTangentScale(double scale) {
    document().curveTangentScale(scale);
}
void DocumentWriter::curveProperty(const char* key, const char* value) {
    document().curveProperty(key, value);
}

void DocumentWriter::startSegmentContainer() {
    document().startSegmentContainer();
}
void DocumentWriter::finishSegmentContainer() {
    document().finishSegmentContainer();
}
void DocumentWriter::startSegment(const char* expression) {
    document().startSegment(expression);
}
void DocumentWriter::finishSegment() {
    document().finishSegment();
}
void DocumentWriter::segmentProperty(const char* key, const char* value) {
    document().segmentProperty(key, value);
}

void DocumentWriter::startInTangent() {
    document().startInTangent();
}
void DocumentWriter::finishInTangent() {
    document().finishInTangent();
}
void DocumentWriter::startOutTangent() {
    document().startOutTangent();
}
void DocumentWriter::finishOutTangent() {
    document().finishOutTangent();
}
void DocumentWriter::tangentVector(double x, double y) {
    document().tangentVector(x, y);
}
void DocumentWriter::tangentType(unsigned char type) {
    document().tangentType(type);
}
void DocumentWriter::tangentWeightLocked(bool locked) {
    document().tangentWeightLocked(locked);
}
void DocumentWriter::tangentWeighted(bool weighted) {
    document().tangentWeighted(weighted);
}
void DocumentWriter::tangentProperty(const char* key, const char* value) {
    document().tangentProperty(key, value);
}

void DocumentWriter::startKeyframe() {
    document().startKeyframe();
}
void DocumentWriter::finishKeyframe() {
    document().finishKeyframe();
}
void DocumentWriter::keyframePosition(double x, double y) {
    document().keyframePosition(x, y);
}
void DocumentWriter::keyframeTangentsUnified(bool unified) {
    document().keyframeTangentsUnified(unified);
}
void DocumentWriter::keyframeBreakdown(bool breakdown) {
    document().keyframeBreakdown(breakdown);
}
void DocumentWriter::keyframeLocked(bool locked) {
    document().keyframeLocked(locked);
}
void DocumentWriter::keyframeProperty(const char* key, const char* value) {
    document().keyframeProperty(key, value);
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
