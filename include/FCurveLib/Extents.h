#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Rectangle.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \name Extents: the boxes around curves and their parts, for a view that frames them
///
/// A box holds x (frames) and y of its lower left corner, its width and its height; a single point has width and height
/// 0. Boxes are as tight as Interpolator::getRangeExtents tells the values: for every built-in kind they hold all
/// values between the keys and touch the extreme ones. Values that are not finite count for nothing.
///
/// The functions that return bool may find nothing: then they return false and leave the box alone. Any number of
/// threads may measure curves that nobody edits. Linear in the number of parts looked at.
/// @{

/// Around the handle: from its key to its tip. The display's tangent scale is not applied. All zero for a tangent
/// without key.
FCURVELIB_API void GetTangentExtents(const Tangent& tangent, Rectangle<double>& extents);

/// From the left key to the right key, both included, around all values between them. A segment that lacks a key runs
/// on for ever, so only the key it has is framed; a segment without keys gives all zero.
FCURVELIB_API void GetSegmentExtents(const Segment& segment, Rectangle<double>& extents);

/// Around the keyed range; what lies before the first key and after the last is never included. False without keys.
FCURVELIB_API bool GetInteriorExtents(const FCurve& curve, Rectangle<double>& extents);

/// Around the keyed range and, only if the curve itself is selected, the handles that shape it: those at keys, of
/// segments whose interpolator uses tangents.
FCURVELIB_API bool GetFCurveAndPartsExtents(const FCurve& curve, const Selection& selection,
                                            Rectangle<double>& extents);

/// GetFCurveAndPartsExtents over the visible curves that have keys.
FCURVELIB_API bool GetVisibleExtents(const FCurveContainer& curves, const Selection& selection,
                                     Rectangle<double>& extents);

/// Around what is selected, whether or not the curve of a selected part is selected itself: the keyed range of a curve,
/// the position of a key, the extents of a segment or tangent as above. Parts that have no place (a curve without keys,
/// its only segment, a tangent without key) add nothing.
FCURVELIB_API bool GetSelectedExtents(const Selection& selection, Rectangle<double>& extents);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
