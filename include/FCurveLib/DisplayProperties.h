#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \file
/// What an editor remembers of a curve's display, kept in the curve's own properties, so that it travels with the curve
/// through copies, and what the display looks like through files, too.
///
/// | key             | meaning                                   | stored                        | absent       | files
/// |
/// |-----------------|-------------------------------------------|-------------------------------|--------------|-------|
/// | "fc_sel"        | selected (any part)                       | "1"                           | not selected | no |
/// | "fc_vis"        | the curve is hidden                       | "1"                           | visible      | yes |
/// | "fc_edit"       | the curve cannot be edited                | "1"                           | editable     | no |
/// | "fc_lock"       | the curve, or key, is locked              | "1"                           | unlocked     | yes |
/// | "fc_vel"        | the first derivative is displayed         | "1"                           | off          | yes |
/// | "fc_acc"        | the second derivative is displayed        | "1"                           | off          | yes |
/// | "fc_disc"       | discontinuities are displayed             | "1"                           | off          | yes |
/// | "fc_grid"       | grid: x, y, width, height                 | four numbers, a space between | no grid      | yes |
/// | "fc_scal"       | scale of the displayed tangent handles    | one number                    | 1            | yes |
/// | "fc_tnm"        | reserved                                  | -                             | -            | no |
/// | "fc_isUnified"  | the key's tangents are unified            | "1"                           | -            | flag
/// |
///
/// Files keep what says "yes" in the formats that have display settings (docs/formats/README.md), each as a setting of
/// its own; a key's lock likewise. Selection, editability and all other properties that begin with "fc_" stay out of
/// files: what was saved comes back editable and not selected. "fc_isUnified" is understood where a file has it as a
/// key's property; the library itself keeps Keyframe::isTangentsUnified() and writes that.
///
/// "fc_vis" and "fc_edit" deliberately store the exception, so that a curve without properties is visible and editable.
/// Any text but the empty one counts as set.
///
/// The setters go through setProperty: a change is told to the curve's observers, an equal value is not. Numbers are
/// stored with six significant digits. They are written and read in the C locale whatever the global one is.

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
