#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \file
/// From curves to the calls of a FormatInterface, in its stated order: what writes curves with a writer of one's own,
/// or looks at them as a file would say them.
///
///     MemoryStream bytes;
///     const auto document = FormatFactory::getWriter("xml")->createDocument(bytes);
///     EmitCurves(*container, *document);
///
/// A segment without an interpolator, which evaluates to 0, is emitted as the number "0". Properties with "fc_" are
/// left out where no call is for them. Exceptions of the target pass to the caller. Linear in the keys.

/// Returns whether the target wants further curves, as its finishCurve said; true where it skipped this one.
FCURVELIB_API bool EmitCurve(const FCurve& curve, FormatInterface& target);

/// The container, with its properties and its curves until the target wants no more.
FCURVELIB_API void EmitCurves(const FCurveContainer& container, FormatInterface& target);

} // namespace v19
} // namespace VEM_FN::FCurveLib
