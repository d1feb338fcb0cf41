#pragma once

#include "FCurveLib/Export.h"

#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A colour for each curve of these names, as "#rrggbb": what DrawCurves takes, so that a host's view and a picture of
/// the same curves agree. Shades of red, green and blue for names that end like an axis (tx, ry, "camera.z", rotateX,
/// "chan0 (tz)"), colours that also the colour-blind tell apart for the rest; made for a light ground. Colours repeat
/// after 21 curves. Linear in the number of names. Any number of threads.
FCURVELIB_API std::vector<std::string> ChooseCurveColours(const std::vector<std::string>& names);

} // namespace v19
} // namespace VEM_FN::FCurveLib
