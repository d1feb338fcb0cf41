#include "FCurveLib/CurveEmitter.h"

#include "FCurveLib/DisplayProperties.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/InterpolatorFactory.h"
#include "FCurveLib/Rectangle.h"
#include "formats/EmitKeys.h"
#include "model/Read.h"

#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {

using PropertyCall = void (FormatInterface::*)(const char* key, const char* value);

// Editor properties have calls of their own, or are no business of files.
template<class Part>
void EmitProperties(const Part& part, FormatInterface& target, PropertyCall call) {
    for (auto property = part.beginProperties(); property != part.endProperties(); ++property) {
        if (IsEditorKeyString(property->first.c_str())) continue;
        (target.*call)(property->first.c_str(), property->second.c_str());
    }
}

void EmitTangent(const Tangent& tangent, FormatInterface& target) {
    target.tangentType(tangent.getType());
    target.tangentWeighted(tangent.isWeighted());
    target.tangentWeightLocked(tangent.isWeightLocked());
    target.tangentVector(tangent.getX(), tangent.getY());
    EmitProperties(tangent, target, &FormatInterface::tangentProperty);
}

void EmitSegment(const Segment& segment, FormatInterface& target, std::string& expression) {
    const Interpolator* const interpolator = Read::interpolator(segment);
    if (interpolator) {
        InterpolatorFactory::getExpression(*interpolator, expression);
    } else {
        expression = "0";
    }
    target.startSegment(expression.c_str());
    EmitProperties(segment, target, &FormatInterface::segmentProperty);
    target.startOutTangent();
    EmitTangent(*Read::outTangent(segment), target);
    target.finishOutTangent();
    target.startInTangent();
    EmitTangent(*Read::inTangent(segment), target);
    target.finishInTangent();
    target.finishSegment();
}

void EmitKeyframe(const Keyframe& key, FormatInterface& target) {
    target.startKeyframe();
    target.keyframePosition(key.getX(), key.getY());
    target.keyframeLocked(*key.getProperty("fc_lock") != '\0');
    target.keyframeBreakdown(key.isBreakdown());
    target.keyframeTangentsUnified(key.isTangentsUnified());
    EmitProperties(key, target, &FormatInterface::keyframeProperty);
    target.finishKeyframe();
}

void EmitDisplay(const FCurve& curve, FormatInterface& target) {
    target.curveVisible(IsVisible(curve));
    target.curveLocked(IsLocked(curve));
    target.curveShowVelocity(IsVelocityVisible(curve));
    target.curveShowAcceleration(IsAccelerationVisible(curve));
    target.curveShowDiscontinuities(IsDiscontinuityVisible(curve));
    if (HasGridSettings(curve)) {
        Rectangle<double> grid;
        GetGridSettings(curve, grid);
        target.curveGrid(grid.x, grid.y, grid.width, grid.height);
    }
    target.curveTangentScale(GetTangentScale(curve));
}

} // namespace

bool EmitCurve(const FCurve& curve, FormatInterface& target, const std::function<void()>& afterKey) {
    if (!target.startCurve(curve.getName())) return true;
    EmitDisplay(curve, target);
    EmitProperties(curve, target, &FormatInterface::curveProperty);

    target.startSegmentContainer();
    std::string expression; // one buffer for all segments
    for (const Segment& segment : curve) {
        EmitSegment(segment, target, expression);
        const Keyframe* const key = Read::rightKey(segment);
        if (!key) continue;
        EmitKeyframe(*key, target);
        if (afterKey) afterKey();
    }
    target.finishSegmentContainer();
    return target.finishCurve();
}

void EmitCurves(const FCurveContainer& container, FormatInterface& target, const std::function<void()>& afterKey) {
    target.startCurveContainer();
    for (auto property = container.beginProperties(); property != container.endProperties(); ++property) {
        target.containerProperty(property->first.c_str(), property->second.c_str());
    }
    for (const FCurve& curve : container) {
        if (!EmitCurve(curve, target, afterKey)) break;
    }
    target.finishCurveContainer();
}

} // namespace Private

bool EmitCurve(const FCurve& curve, FormatInterface& target) {
    return Private::EmitCurve(curve, target, {});
}
void EmitCurves(const FCurveContainer& container, FormatInterface& target) {
    Private::EmitCurves(container, target, {});
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
