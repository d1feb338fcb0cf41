#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Writer.h"

#include <memory>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

/// Machinery of writers that write by createDocument(), which is what they implement: hands each call to the document
/// on the current stream. Without a stream calls do nothing.
class FCURVELIB_API DocumentWriter : public Writer {
public:
    ~DocumentWriter() override;

    std::unique_ptr<FormatInterface> createDocument(Stream& stream) const override = 0;

    void startCurveContainer() override;
    void finishCurveContainer() override;
    void containerProperty(const char* key, const char* value) override;

    bool startCurve(const char* name) override;
    bool finishCurve() override;
    void curveVisible(bool visible) override;
    void curveLocked(bool locked) override;
    void curveShowVelocity(bool show) override;
    void curveShowAcceleration(bool show) override;
    void curveShowDiscontinuities(bool show) override;
    void curveGrid(double x, double y, double width, double height) override;
    void curveTangentScale(double scale) override;
    void curveProperty(const char* key, const char* value) override;

    void startSegmentContainer() override;
    void finishSegmentContainer() override;
    void startSegment(const char* expression) override;
    void finishSegment() override;
    void segmentProperty(const char* key, const char* value) override;

    void startInTangent() override;
    void finishInTangent() override;
    void startOutTangent() override;
    void finishOutTangent() override;
    void tangentVector(double x, double y) override;
    void tangentType(unsigned char type) override;
    void tangentWeightLocked(bool locked) override;
    void tangentWeighted(bool weighted) override;
    void tangentProperty(const char* key, const char* value) override;

    void startKeyframe() override;
    void finishKeyframe() override;
    void keyframePosition(double x, double y) override;
    void keyframeTangentsUnified(bool unified) override;
    void keyframeBreakdown(bool breakdown) override;
    void keyframeLocked(bool locked) override;
    void keyframeProperty(const char* key, const char* value) override;

protected:
    explicit DocumentWriter(const FormatType& type);

private:
    void newStream(Stream* stream) override;
    FormatInterface& document() noexcept;

    struct Linked {
        Stream* stream;
        std::unique_ptr<FormatInterface> calls;
    };

    std::vector<Linked> m_documents; // of the linked streams; the last one is the current
    FormatInterface m_nobody;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
