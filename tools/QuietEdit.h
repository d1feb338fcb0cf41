#pragma once

#include "FCurveLib/FCurve.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// Runs an edit of many steps in silence, then tells the curve's observers once, if the edit returns that it changed
// something.
template<class Edit>
void QuietEdit(FCurve& curve, const Edit& edit) {
    bool changed = false;
    {
        const FCurve::Switch quiet(curve);
        changed = edit();
    }
    if (changed) curve.notifyChanged();
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
