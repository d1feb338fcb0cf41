#pragma once

#include "FCurveLib/Forward.h"

#include <functional>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// As EmitCurve and EmitCurves; each key is followed by a call of the function, if there is one, whose exceptions pass.
bool EmitCurve(const FCurve& curve, FormatInterface& target, const std::function<void()>& afterKey);
void EmitCurves(const FCurveContainer& container, FormatInterface& target, const std::function<void()>& afterKey);

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
