#include "FCurveLib/FormatInterface.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

FormatInterface::FormatInterface() noexcept = default;
FormatInterface::~FormatInterface() = default;

void FormatInterface::startCurveContainer() {}
void FormatInterface::finishCurveContainer() {}
void FormatInterface::containerProperty(const char*, const char*) {}

bool FormatInterface::startCurve(const char*) {
    return true;
}
bool FormatInterface::finishCurve() {
    return true;
}
void FormatInterface::curveVisible(bool) {}
void FormatInterface::curveLocked(bool) {}
void FormatInterface::curveShowVelocity(bool) {}
void FormatInterface::curveShowAcceleration(bool) {}
void FormatInterface::curveShowDiscontinuities(bool) {}
void FormatInterface::curveGrid(double, double, double, double) {}
void FormatInterface::curveTangentScale(double) {}
void FormatInterface::curveProperty(const char*, const char*) {}

void FormatInterface::startSegmentContainer() {}
void FormatInterface::finishSegmentContainer() {}
void FormatInterface::startSegment(const char*) {}
void FormatInterface::finishSegment() {}
void FormatInterface::segmentProperty(const char*, const char*) {}

void FormatInterface::startInTangent() {}
void FormatInterface::finishInTangent() {}
void FormatInterface::startOutTangent() {}
void FormatInterface::finishOutTangent() {}
void FormatInterface::tangentVector(double, double) {}
void FormatInterface::tangentType(unsigned char) {}
void FormatInterface::tangentWeightLocked(bool) {}
void FormatInterface::tangentWeighted(bool) {}
void FormatInterface::tangentProperty(const char*, const char*) {}

void FormatInterface::startKeyframe() {}
void FormatInterface::finishKeyframe() {}
void FormatInterface::keyframePosition(double, double) {}
void FormatInterface::keyframeTangentsUnified(bool) {}
void FormatInterface::keyframeBreakdown(bool) {}
void FormatInterface::keyframeLocked(bool) {}
void FormatInterface::keyframeProperty(const char*, const char*) {}

} // namespace v19
} // namespace VEM_FN::FCurveLib
