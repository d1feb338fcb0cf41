#include "interchange/CurveWriter.h"

#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "interchange/Comparison.h"
#include "interchange/CurveReader.h"

#include <FCurveLib/ContainerInterface.h>
#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/MemoryStream.h>
#include <FCurveLib/Stream.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

FormatInterface nobody;

void RequireFinite(double a, double b) {
    if (!std::isfinite(a) || !std::isfinite(b)) throw NotWritable("A number is not finite.");
}

void RequireLimits(const FCurveContainer& curves) {
    const FormatLimits limits = GetFormatLimits();
    if (curves.size() > limits.curves)
        throw TooMuch("There are too many curves; the limit is " + std::to_string(limits.curves) + '.');
    for (const FCurve& curve : curves) {
        if (curve.size() - 1 > limits.keys)
            throw TooMuch("There are too many keys; the limit is " + std::to_string(limits.keys) + '.');
        if (std::char_traits<char>::length(curve.getName()) > limits.text)
            throw TooMuch("A name is too long; the limit is " + std::to_string(limits.text) + " bytes.");
    }
}

void Write(const std::string& bytes, Stream& stream) {
    constexpr std::size_t kPiece = 1 << 20;
    if (bytes.size() > 0x7FFFFFFFU - static_cast<unsigned>(stream.getPosition()))
        throw TooMuch("The document is longer than a stream can hold.");
    for (std::size_t at = 0; at < bytes.size(); at += kPiece)
        stream.writeData(bytes.data() + at, static_cast<int>(std::min(kPiece, bytes.size() - at)));
}

} // namespace

struct CurveWriter::Draft {
    explicit Draft(Stream& to) : stream(to) {}

    void clear() {
        curves = FCurveContainer::create();
        builder.emplace(*curves);
        isInContainer = false;
        isInCurve = false;
    }

    Stream& stream;
    std::shared_ptr<FCurveContainer> curves = FCurveContainer::create();
    std::optional<ContainerInterface> builder{std::in_place, *curves};
    bool isInContainer = false;
    bool isInCurve = false;
};

CurveWriter::CurveWriter(const FormatType& type) : Writer(type) {}
CurveWriter::~CurveWriter() = default;

void CurveWriter::newStream(Stream* stream) {
    if (!stream) {
        m_drafts.clear();
        return;
    }
    const auto known = std::find_if(m_drafts.begin(), m_drafts.end(),
                                    [stream](const auto& draft) { return &draft->stream == stream; });
    if (known == m_drafts.end()) {
        m_drafts.push_back(std::make_unique<Draft>(*stream));
    } else {
        m_drafts.erase(known + 1, m_drafts.end());
    }
}

FormatInterface& CurveWriter::draft() const noexcept {
    return m_drafts.empty() ? nobody : *m_drafts.back()->builder;
}

void CurveWriter::finish() {
    Draft& draft = *m_drafts.back();
    const std::shared_ptr<FCurveContainer> curves = draft.curves;
    draft.clear();
    RequireLimits(*curves);
    Notes notes;
    const std::string bytes = compose(*curves, notes);
    if (ConversionReport* const report = Conversion::report()) {
        MemoryStream stream;
        Write(bytes, stream);
        stream.setPosition(0);
        const auto back = FCurveContainer::create();
        ContainerInterface target(*back);
        ConversionReport nothing; // reading reports what the document has, which here is what the comparison finds
        const Conversion reading(nothing, Conversion::options());
        if (Reader* const reader = FormatFactory::getReader(getFormatType())) reader->readCurves(stream, target);
        Compare(*curves, *back, notes, *report);
    }
    Write(bytes, draft.stream);
}

void CurveWriter::startCurveContainer() {
    if (m_drafts.empty()) return;
    Draft& draft = *m_drafts.back();
    if (draft.isInContainer || draft.isInCurve) {
        draft.clear();
        throw NotWritable("startCurveContainer comes within a document.");
    }
    draft.isInContainer = true;
    draft.builder->startCurveContainer();
}

void CurveWriter::finishCurveContainer() {
    if (m_drafts.empty()) return;
    Draft& draft = *m_drafts.back();
    if (!draft.isInContainer || draft.isInCurve) {
        draft.clear();
        throw NotWritable("finishCurveContainer comes without a container, or within a curve.");
    }
    finish();
}

void CurveWriter::containerProperty(const char* key, const char* value) {
    draft().containerProperty(key, value);
}

bool CurveWriter::startCurve(const char* name) {
    if (m_drafts.empty()) return true;
    Draft& draft = *m_drafts.back();
    if (draft.isInCurve) {
        draft.clear();
        throw NotWritable("startCurve comes within a curve.");
    }
    draft.isInCurve = true;
    return draft.builder->startCurve(name);
}

bool CurveWriter::finishCurve() {
    if (m_drafts.empty()) return true;
    Draft& draft = *m_drafts.back();
    if (!draft.isInCurve) {
        draft.clear();
        throw NotWritable("finishCurve comes without a curve.");
    }
    draft.isInCurve = false;
    draft.builder->finishCurve();
    if (!draft.isInContainer) finish();
    return true;
}

void CurveWriter::tangentVector(double x, double y) {
    RequireFinite(x, y);
    draft().tangentVector(x, y);
}

void CurveWriter::keyframePosition(double x, double y) {
    RequireFinite(x, y);
    draft().keyframePosition(x, y);
}

void CurveWriter::curveVisible(bool visible) {
    draft().curveVisible(visible);
}
void CurveWriter::curveLocked(bool locked) {
    draft().curveLocked(locked);
}
void CurveWriter::curveShowVelocity(bool show) {
    draft().curveShowVelocity(show);
}
void CurveWriter::curveShowAcceleration(bool show) {
    draft().curveShowAcceleration(show);
}
void CurveWriter::curveShowDiscontinuities(bool show) {
    draft().curveShowDiscontinuities(show);
}
void CurveWriter::curveGrid(double x, double y, double width, double height) {
    draft().curveGrid(x, y, width, height);
}
void CurveWriter::curveTangentScale(double scale) {
    draft().curveTangentScale(scale);
}
void CurveWriter::curveProperty(const char* key, const char* value) {
    draft().curveProperty(key, value);
}
void CurveWriter::startSegmentContainer() {
    draft().startSegmentContainer();
}
void CurveWriter::finishSegmentContainer() {
    draft().finishSegmentContainer();
}
void CurveWriter::startSegment(const char* expression) {
    draft().startSegment(expression);
}
void CurveWriter::finishSegment() {
    draft().finishSegment();
}
void CurveWriter::segmentProperty(const char* key, const char* value) {
    draft().segmentProperty(key, value);
}
void CurveWriter::startInTangent() {
    draft().startInTangent();
}
void CurveWriter::finishInTangent() {
    draft().finishInTangent();
}
void CurveWriter::startOutTangent() {
    draft().startOutTangent();
}
void CurveWriter::finishOutTangent() {
    draft().finishOutTangent();
}
void CurveWriter::tangentType(unsigned char type) {
    draft().tangentType(type);
}
void CurveWriter::tangentWeightLocked(bool locked) {
    draft().tangentWeightLocked(locked);
}
void CurveWriter::tangentWeighted(bool weighted) {
    draft().tangentWeighted(weighted);
}
void CurveWriter::tangentProperty(const char* key, const char* value) {
    draft().tangentProperty(key, value);
}
void CurveWriter::startKeyframe() {
    draft().startKeyframe();
}
void CurveWriter::finishKeyframe() {
    draft().finishKeyframe();
}
void CurveWriter::keyframeTangentsUnified(bool unified) {
    draft().keyframeTangentsUnified(unified);
}
void CurveWriter::keyframeBreakdown(bool breakdown) {
    draft().keyframeBreakdown(breakdown);
}
void CurveWriter::keyframeLocked(bool locked) {
    draft().keyframeLocked(locked);
}
void CurveWriter::keyframeProperty(const char* key, const char* value) {
    draft().keyframeProperty(key, value);
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
