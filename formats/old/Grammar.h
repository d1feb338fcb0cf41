#pragma once

#include "FCurveLib/Export.h"
#include "formats/Text.h"

#include <cmath>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// What the text of the older curve system does not say, decided alike by whoever writes and whoever reads it.

// Whether the tangent of a handle is weighted: an unweighted one reaches a third of its span in x. The tolerance lets
// handles through that were rounded to six digits.
inline bool IsWeightedHandle(double handleX, double span) noexcept {
    return std::abs(std::abs(handleX) - span / 3.0) > 1e-5 * span;
}

// Names stand between quotation marks and may hold some: one ends at the first that is followed by this word.
constexpr std::string_view kWordAfterName = "extensions";

// Whether the text after a quotation mark shows that it ends a name.
inline bool EndsName(std::string_view after) noexcept {
    while (!after.empty() && IsSpace(after.front())) after.remove_prefix(1);
    return after.substr(0, kWordAfterName.size()) == kWordAfterName;
}

// By TovKey::InterpType.
constexpr const char* kInterpWords[] = {"UNKNOWNINTERP", "constant", "linear", "bezier"};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
