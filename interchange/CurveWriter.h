#pragma once

// Base of this library's writers: builds the curves that it is told of, hands them over as a whole, writes what comes
// of them at once; and where a report is wanted, reads that back and compares.

#include <FCurveLib/FCurveContainer.h>
#include <FCurveLib/Writer.h>

#include "interchange/Resolve.h"

#include <memory>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

class CurveWriter : public Writer {
public:
    ~CurveWriter() override;

    void startCurveContainer() final;
    void finishCurveContainer() final;
    void containerProperty(const char* key, const char* value) final;
    bool startCurve(const char* name) final;
    bool finishCurve() final;
    void curveVisible(bool visible) final;
    void curveLocked(bool locked) final;
    void curveShowVelocity(bool show) final;
    void curveShowAcceleration(bool show) final;
    void curveShowDiscontinuities(bool show) final;
    void curveGrid(double x, double y, double width, double height) final;
    void curveTangentScale(double scale) final;
    void curveProperty(const char* key, const char* value) final;
    void startSegmentContainer() final;
    void finishSegmentContainer() final;
    void startSegment(const char* expression) final;
    void finishSegment() final;
    void segmentProperty(const char* key, const char* value) final;
    void startInTangent() final;
    void finishInTangent() final;
    void startOutTangent() final;
    void finishOutTangent() final;
    void tangentVector(double x, double y) final;
    void tangentType(unsigned char type) final;
    void tangentWeightLocked(bool locked) final;
    void tangentWeighted(bool weighted) final;
    void tangentProperty(const char* key, const char* value) final;
    void startKeyframe() final;
    void finishKeyframe() final;
    void keyframePosition(double x, double y) final;
    void keyframeTangentsUnified(bool unified) final;
    void keyframeBreakdown(bool breakdown) final;
    void keyframeLocked(bool locked) final;
    void keyframeProperty(const char* key, const char* value) final;

protected:
    explicit CurveWriter(const FormatType& type);

    // The document of these curves; raises NotWritable or TooMuch. A reader of the same format must read it back.
    // Names that come back differently go to the notes.
    virtual std::string compose(const FCurveContainer& curves, Notes& notes) const = 0;

private:
    struct Draft; // of one document

    void newStream(Stream* stream) final;
    FormatInterface& draft() const noexcept;
    void finish();

    std::vector<std::unique_ptr<Draft>> m_drafts; // by stream, as links nest
};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
