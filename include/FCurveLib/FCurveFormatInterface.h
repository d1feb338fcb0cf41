#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Keyframe.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Builds one curve from the calls of a FormatInterface.
///
/// The curve becomes what the calls say, to the last bit: handles are kept as given, whatever the tangent types would
/// compute. A tangent whose handle is not given gets the one that its type computes. Calls that make no document lead
/// to the nearest sensible curve, and never fail: docs/formats/README.md tells what becomes of which.
///
/// The curve's name and properties are set through its setters and told to its observers. Keys, segments and tangents
/// are built silently; whoever builds a curve that is observed calls FCurve::notifyChanged() afterwards.
/// Linear in the number of keys when they come in order.
class FCURVELIB_API FCurveFormatInterface : public FormatInterface {
public:
    FCurveFormatInterface();
    FCurveFormatInterface(const FCurveFormatInterface&) = delete;
    FCurveFormatInterface& operator=(const FCurveFormatInterface&) = delete;
    ~FCurveFormatInterface() override;

    /// The curve to build, normally an empty one; null for none.
    void setCurve(std::shared_ptr<FCurve> curve);
    /// Empty before setCurve and after finishCurve.
    const std::shared_ptr<FCurve>& getCurve() const noexcept { return m_curve; }

    bool startCurve(const char* name) override;
    /// Completes the curve and lets go of it.
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
    /// The interpolator comes from InterpolatorFactory::create. Segments with the same expression share one, in all
    /// curves that this object builds, as a few bytes of a file may give it to a million segments.
    void startSegment(const char* expression) override;
    /// If the property "fc_isUnified" of the segment's left key is "1", that key's tangents become unified; neither its
    /// handles nor the property change.
    void finishSegment() override;
    void segmentProperty(const char* key, const char* value) override;

    void startInTangent() override;
    void startOutTangent() override;
    void tangentVector(double x, double y) override;
    void tangentType(unsigned char type) override;
    void tangentWeightLocked(bool locked) override;
    void tangentWeighted(bool weighted) override;
    void tangentProperty(const char* key, const char* value) override;

    void startKeyframe() override;
    void keyframePosition(double x, double y) override;
    void keyframeTangentsUnified(bool unified) override;
    void keyframeBreakdown(bool breakdown) override;
    void keyframeLocked(bool locked) override;
    void keyframeProperty(const char* key, const char* value) override;

private:
    const std::shared_ptr<Interpolator>& interpolatorOf(const char* expression);
    void enter(Segment& segment);
    void leave();
    Tangent* currentTangent() const;
    void settle(Tangent& tangent);
    void addKey(std::shared_ptr<Interpolator> interpolator);
    void addPendingKey();

    std::shared_ptr<FCurve> m_curve;
    bool m_firstPending = true;
    std::shared_ptr<Segment> m_segment;                              // the current one; empty before the first
    enum { NoTangent, InTangent, OutTangent } m_tangent = NoTangent; // the current one, of the current segment
    bool m_inGiven = false;                                          // whether the current segment's handles were
    bool m_outGiven = false;
    Keyframe m_key; // free: collects the data of the current key
    bool m_keyPending = false;
    std::vector<std::shared_ptr<Tangent>>
        m_unsettled; // of automatic types, without a handle: wait for their neighbours
    std::unordered_map<std::string, std::shared_ptr<Interpolator>> m_interpolators;          // by expression
    const std::pair<const std::string, std::shared_ptr<Interpolator>>* m_lastUsed = nullptr; // of these
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
