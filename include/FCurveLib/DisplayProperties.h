#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \file
/// What an editor remembers of a curve's display, kept in the curve's own properties, so that it travels with the curve
/// through copies, and what the display looks like through files, too.
///
/// Flags are set where the property has any text but the empty one: "fc_sel" (selected), "fc_vis" (hidden), "fc_edit"
/// (cannot be edited), "fc_lock" (also of a key), "fc_vel" and "fc_acc" (the derivatives are displayed), "fc_disc". The
/// grid is "fc_grid", the scale "fc_scal". "fc_vis" and "fc_edit" deliberately store the exception, so that a curve
/// without properties is visible and editable. What files keep of them: docs/selection.md.
///
/// The setters go through setProperty: a change is told to the curve's observers, an equal value is not. Numbers are
/// stored with six significant digits, in the C locale whatever the global one is.

/// \name Flags
/// @{
FCURVELIB_API bool IsVisible(const FCurve& curve);
FCURVELIB_API void SetVisible(FCurve& curve, bool visible);
FCURVELIB_API bool IsEditable(const FCurve& curve);
FCURVELIB_API void SetEditable(FCurve& curve, bool editable);
FCURVELIB_API bool IsLocked(const FCurve& curve);
FCURVELIB_API void SetLocked(FCurve& curve, bool locked);
/// The key's own lock; its "fc_lock" property tells.
FCURVELIB_API void SetLocked(Keyframe& key, bool locked);
FCURVELIB_API bool IsVelocityVisible(const FCurve& curve);
FCURVELIB_API void SetVelocityVisible(FCurve& curve, bool visible);
FCURVELIB_API bool IsAccelerationVisible(const FCurve& curve);
FCURVELIB_API void SetAccelerationVisible(FCurve& curve, bool visible);
FCURVELIB_API bool IsDiscontinuityVisible(const FCurve& curve);
FCURVELIB_API void SetDiscontinuityVisible(FCurve& curve, bool visible);
/// @}

/// \name Grid (corner and size of one cell, x in frames, y in the curve's unit)
/// @{
FCURVELIB_API bool HasGridSettings(const FCurve& curve);
/// Stores the grid. One whose width or height is not above 0 (or is NaN) erases it instead; one with another
/// non-finite number is ignored.
FCURVELIB_API void SetGridSettings(FCurve& curve, const Rectangle<double>& grid);
/// All zero without a grid. The numbers pass through single precision, deliberately: a stored 0.1 comes back as
/// 0.10000000149011612. From the first number that cannot be read on, the rest of a foreign text counts as 0 (a number
/// beyond single precision as its largest).
FCURVELIB_API void GetGridSettings(const FCurve& curve, Rectangle<double>& grid);
FCURVELIB_API void RemoveGridSettings(FCurve& curve);
/// @}

/// \name Scale of the displayed tangent handles
/// @{

/// 1 when none is stored, 0 when the stored text is not a number.
FCURVELIB_API double GetTangentScale(const FCurve& curve);
/// A scale of exactly 1 is never stored: it erases the property. A non-finite one is ignored.
FCURVELIB_API void SetTangentScale(FCurve& curve, double scale);
/// @}

/// Whether a property key belongs to the editor: starts with "fc_". False for null.
FCURVELIB_API bool IsEditorKeyString(const char* key) noexcept;

} // namespace v19
} // namespace VEM_FN::FCurveLib
