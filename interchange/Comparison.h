#pragma once

// What became of curves on their way into a document and back, named and measured.

#include <FCurveLib/FCurveContainer.h>

#include "FCurveInterchange/ConversionReport.h"
#include "interchange/Resolve.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

// Adds to the report every difference of the curves that came back from the original ones: of values beyond 1e-9 of a
// curve's range, and of all parts. Curves find each other by name, or where the numbers of curves are equal, by place.
// What came in addition (properties, say) is no loss. Linear in the number of keys.
void Compare(const FCurveContainer& originals, const FCurveContainer& back, const Notes& notes,
             ConversionReport& report);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
