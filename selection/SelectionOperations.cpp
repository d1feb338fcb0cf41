#include "FCurveLib/SelectionOperations.h"

#include "FCurveLib/Selection.h"
#include "selection/EditProofWalk.h"
#include "selection/SelectionState.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::KeptSegment;
using Private::Read;
using Private::SelectionState;

namespace {

void ChangeCompletely(const Selection& selection, FCurve& curve, bool select) {
    const auto state = SelectionState::of(selection);
    const auto kept = curve.getShared();
    SelectionState::change(state, curve, select);

    for (Segment* segment = &*curve.begin(); segment;) {
        const KeptSegment place(*segment);
        SelectionState::change(state, *segment, select);
        // Observers may take the segment out of the curve, or a key away from it, at each of these.
        if (Keyframe* key = place.isIn(curve) ? Read::rightKey(*segment) : nullptr)
            SelectionState::change(state, *key, select);
        if (place.isIn(curve) && Read::rightKey(*segment))
            SelectionState::change(state, *Read::inTangent(*segment), select);
        if (place.isIn(curve) && Read::leftKey(*segment))
            SelectionState::change(state, *Read::outTangent(*segment), select);
        const Keyframe* key = Read::rightKey(place.resolve(curve));
        segment = key ? Read::rightSegment(const_cast<Keyframe&>(*key)) : nullptr;
    }
}

} // namespace

void SelectCurveCompletely(Selection& selection, FCurve& curve) {
    ChangeCompletely(selection, curve, true);
}
void DeselectCurveCompletely(Selection& selection, FCurve& curve) {
    ChangeCompletely(selection, curve, false);
}

void DeselectSelectedParts(Selection& selection) {
    SelectionState::clear(selection, true);
}

void GetSelected(Selection& selection, std::set<HitRecord, CompareRecord>& parts) {
    for (const HitRecord& part : selection) parts.insert(part);
}

void GetSelectedCurves(Selection& selection, std::set<HitRecord, CompareRecord>& curves) {
    for (FCurve& curve : *selection.getCurves())
        if (selection.isSelected(curve)) curves.insert(HitRecord(curve.getShared()));
}

void NotifyCurveChanges(Selection& selection) {
    const auto curves = selection.getCurves();
    Private::KeptCurve place;
    for (auto curve = curves->begin(); curve != curves->end();) {
        if (Private::SelectionFilter::isSelected(*curve)) {
            place.hold(*curves, curve);
            place.get()->notifyChanged();
            curve = place.next(*curves);
        } else {
            ++curve;
        }
    }
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
