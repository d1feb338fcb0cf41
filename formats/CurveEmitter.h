#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// Walk a curve or a container and make the calls of a FormatInterface, in its stated order: the way from curves to
// writers. A segment without an interpolator, which evaluates to 0, is emitted as the number "0".

// Returns whether the target wants further curves.
bool EmitCurve(const FCurve& curve, FormatInterface& target);
void EmitContainer(const FCurveContainer& container, FormatInterface& target);

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
