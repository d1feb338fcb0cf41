#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/FormatLimits.h"
#include "FCurveLib/Forward.h"

#include <array>
#include <exception>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

using PropertyList = std::vector<std::pair<std::string, std::string>>;

// The parts of a document as a writer is told of them. What it is not told has the values here.

struct CurveHead {
    std::string name;
    bool visible = true;
    bool locked = false;
    bool velocity = false;
    bool acceleration = false;
    bool discontinuities = false;
    bool hasGrid = false;
    std::array<double, 4> grid{};
    double tangentScale = 1.0;
    PropertyList properties;
};

struct TangentPart {
    bool isGiven = false;
    bool hasHandle = false;
    double x = 0.0;
    double y = 0.0;
    unsigned char type = 0;
    bool weighted = false;
    bool weightLocked = false;
    PropertyList properties;
};

struct SegmentPart {
    std::string expression;
    TangentPart out;
    TangentPart in;
    PropertyList properties;
};

struct KeyPart {
    double x = 0.0;
    double y = 0.0;
    bool locked = false;
    bool breakdown = false;
    bool unified = false;
    PropertyList properties;
};

// One document on its way from calls to a stream. Holds what all written formats have in common: which call may follow
// which, the limits that readers have, what no reader takes. Derived classes are handed complete parts, and write them
// to memory; the stream is touched in endDocument() at the earliest, when nothing can be refused any more. A refused
// call drops the document.
class PartCollector : public FormatInterface {
public:
    explicit PartCollector(Stream& stream);
    PartCollector(const PartCollector&) = delete;
    PartCollector& operator=(const PartCollector&) = delete;
    ~PartCollector() override;

    Stream& stream() const noexcept { return m_stream; }

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
    enum class Refusal { Call, NotFinite, Limit, Size };
    [[noreturn]] void refuse(Refusal why, const std::string& message);

    const FormatLimits& limits() const noexcept { return m_limits; }
    bool inContainer() const noexcept { return m_inContainer; }
    // Raises where the document would not end within what its stream can hold.
    void checkSize(std::size_t size);

private:
    enum Part { Nothing, Container, Head, Segments, Segment, OutTangent, InTangent, Key, Tail };

    virtual void beginDocument() = 0;
    virtual void beginContainer(const PropertyList& properties) = 0;
    virtual void beginCurve(const CurveHead& head, bool hasSegments) = 0;
    // With the key at its right end; null for the last segment.
    virtual void writeSegment(const SegmentPart& segment, const KeyPart* key) = 0;
    virtual void endCurve(bool hasSegments) = 0;
    virtual void endContainer() = 0;
    virtual void endDocument() = 0;
    virtual std::exception_ptr errorOf(Refusal why, const std::string& message) const = 0;

    void startDocument();
    void require(bool inOrder, const char* call);
    CurveHead& head(const char* call);
    void startTangent(Part part, TangentPart& tangent, const char* call);
    TangentPart& tangent(const char* call);
    KeyPart& key(const char* call);
    double finite(double number);
    double asKept(double number);
    const char* text(const char* text);
    void add(PropertyList& properties, const char* key, const char* value);
    void count(std::size_t& counted, std::size_t limit, const char* what);

    Stream& m_stream;
    FormatLimits m_limits;
    std::size_t m_room = 0; // of the stream, after its position
    Part m_part = Nothing;
    bool m_inContainer = false;
    std::size_t m_curves = 0;
    PropertyList m_containerProperties;
    CurveHead m_head;
    std::size_t m_keys = 0;
    double m_lastX = 0.0;
    bool m_afterSegment = false; // a segment came last, and waits for its key
    bool m_afterKey = false;
    SegmentPart m_segment;
    KeyPart m_key;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
