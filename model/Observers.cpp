#include "FCurveLib/ContainerObserver.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveObserver.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Segment.h"
#include "FCurveLib/Tangent.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

FCurveObserver::FCurveObserver() noexcept = default;
FCurveObserver::FCurveObserver(const FCurveObserver&) noexcept = default;
FCurveObserver& FCurveObserver::operator=(const FCurveObserver&) noexcept = default;
FCurveObserver::~FCurveObserver() = default;

void FCurveObserver::curveChanged(FCurve&) {}

void FCurveObserver::beginValueChange(FCurve& curve) {
    curveChanged(curve);
}
void FCurveObserver::intermediateValueChange(FCurve& curve) {
    curveChanged(curve);
}
void FCurveObserver::endValueChange(FCurve& curve) {
    curveChanged(curve);
}

void FCurveObserver::tangentIntrinsicChanged(Tangent& tangent, FCurveObserver::TangentIntrinsicType) {
    tangentChanged(tangent);
}
void FCurveObserver::tangentPropertyChanged(Tangent& tangent, const char*, const char*) {
    tangentChanged(tangent);
}
void FCurveObserver::tangentChanged(Tangent& tangent) {
    if (const auto curve = tangent.getOwningCurve()) curveChanged(*curve);
}

void FCurveObserver::keyframeIntrinsicChanged(Keyframe& keyframe, FCurveObserver::KeyframeIntrinsicType) {
    keyframeChanged(keyframe);
}
void FCurveObserver::keyframePropertyChanged(Keyframe& keyframe, const char*, const char*) {
    keyframeChanged(keyframe);
}
void FCurveObserver::keyframeChanged(Keyframe& keyframe) {
    if (const auto curve = keyframe.getOwningCurve()) curveChanged(*curve);
}

void FCurveObserver::segmentIntrinsicChanged(Segment& segment, FCurveObserver::SegmentIntrinsicType) {
    segmentChanged(segment);
}
void FCurveObserver::segmentPropertyChanged(Segment& segment, const char*, const char*) {
    segmentChanged(segment);
}
void FCurveObserver::segmentChanged(Segment& segment) {
    if (const auto curve = segment.getOwningCurve()) curveChanged(*curve);
}

void FCurveObserver::segmentAdded(FCurve& curve, Segment&) {
    curveChanged(curve);
}
void FCurveObserver::segmentRemoved(FCurve& curve, Segment&) {
    curveChanged(curve);
}

void FCurveObserver::curveIntrinsicChanged(FCurve& curve, FCurveObserver::CurveIntrinsicType) {
    curveChanged(curve);
}
void FCurveObserver::curvePropertyChanged(FCurve& curve, const char*, const char*) {
    curveChanged(curve);
}

ContainerObserver::ContainerObserver() noexcept = default;
ContainerObserver::ContainerObserver(const ContainerObserver&) noexcept = default;
ContainerObserver& ContainerObserver::operator=(const ContainerObserver&) noexcept = default;
ContainerObserver::~ContainerObserver() = default;

void ContainerObserver::containerChanged(FCurveContainer&) {}

} // namespace v19
} // namespace VEM_FN::FCurveLib
