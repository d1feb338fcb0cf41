#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/Forward.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \file
/// Parts of a curve by number, for editors and scripts.
///
///     segment    0        1        2        3
///             --------o--------o--------o--------
///     key             0        1        2
///     tangent        0 1      2 3      4 5          2k: in tangent of key k, 2k + 1: its out tangent
///
/// Numbers change when keys before the part are inserted or removed. All look-ups take about as long as
/// FCurve::findSegment, plus a count over blocks of 128 to 256 keys. Any number of threads may look up in a curve that
/// nobody edits.

/// \name Part of a number
/// Empty, or end(), for a number that no part has: negative ones and those past the last part.
/// @{
FCURVELIB_API std::shared_ptr<Keyframe> GetIndexedKeyframe(FCurve& curve, int index);
FCURVELIB_API std::shared_ptr<Segment> GetIndexedSegment(FCurve& curve, int index);
FCURVELIB_API std::shared_ptr<const Segment> GetIndexedSegment(const FCurve& curve, int index);
FCURVELIB_API FCurve::iterator GetIndexedSegmentIterator(FCurve& curve, int index);
FCURVELIB_API FCurve::const_iterator GetIndexedSegmentIterator(const FCurve& curve, int index);
FCURVELIB_API std::shared_ptr<Tangent> GetIndexedTangent(FCurve& curve, int index);
/// @}

/// \name Number of a part
/// By identity: -1 for an object that is not in this curve, however equal to one that is. A tangent at the end of a
/// segment that has no key there has no number.
/// @{
FCURVELIB_API int GetKeyframeIndex(const FCurve& curve, const Keyframe& keyframe);
FCURVELIB_API int GetSegmentIndex(const FCurve& curve, const Segment& segment);
FCURVELIB_API int GetTangentIndex(const FCurve& curve, const Tangent& tangent);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
