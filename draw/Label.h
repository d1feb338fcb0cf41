#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

// At most that many significant digits, without trailing zeros: for people.
std::string ToBriefText(double value);
// At most that many decimals, without trailing zeros and without "-0": for coordinates.
std::string ToFixedText(double value, int decimals);

// Number of code points in UTF-8; a byte that is not part of one counts as one.
std::size_t CountCharacters(std::string_view text);
// Width of a line of sans-serif text in pixels, estimated on the large side.
double EstimateTextWidth(std::string_view text, double fontSize);
// The text, its end replaced by an ellipsis where it would be wider.
std::string Fit(std::string_view text, double fontSize, double width);

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
