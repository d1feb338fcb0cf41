#pragma once

#include "FCurveLib/Export.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// Proof that the library's own readers and writers are in their lists.
struct Registered {};

// Constructs them, at the first call. Runs when the library is loaded; whoever looks at the lists or adds to them calls
// it too, because other static objects may come first, and so that a static library links Registration.cpp at all.
Registered RegisterFormats();

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
