#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/HitRecord.h"

#include <set>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \name Whole curves
/// First the curve, then for each segment from first to last: the segment, its right key, its in tangent, its out
/// tangent, as far as the key at each end exists. Tangents are included whatever the interpolator, deliberately unlike
/// the walk over a selection: an interpolator set later finds them selected. Each part that changes is told on its own,
/// in that order. Observers may edit the curve meanwhile, as in Selection::clear.
/// @{
FCURVELIB_API void SelectCurveCompletely(Selection& selection, FCurve& curve);
FCURVELIB_API void DeselectCurveCompletely(Selection& selection, FCurve& curve);
/// @}

/// Deselects the selected segments, keyframes and tangents, those included that the walk does not show; selected curves
/// stay selected. Observers may edit meanwhile, as in Selection::clear.
FCURVELIB_API void DeselectSelectedParts(Selection& selection);

/// \name Collect
/// Add to the set; what it holds already stays.
/// @{
FCURVELIB_API void GetSelected(Selection& selection, std::set<HitRecord, CompareRecord>& parts);
/// The selected curves only. Linear in the number of curves.
FCURVELIB_API void GetSelectedCurves(Selection& selection, std::set<HitRecord, CompareRecord>& curves);
/// @}

/// Calls FCurve::notifyChanged() of each selected curve, in the container's order. Linear in the number of curves.
FCURVELIB_API void NotifyCurveChanges(Selection& selection);

} // namespace v19
} // namespace VEM_FN::FCurveLib
