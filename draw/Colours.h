#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

inline constexpr std::string_view kTextColour = "#24292f";
inline constexpr std::string_view kFaintTextColour = "#5f6670";
inline constexpr std::string_view kGridColour = "#e9ebee";
inline constexpr std::string_view kZeroColour = "#c3c8ce";
inline constexpr std::string_view kAxisColour = "#8c939c";
inline constexpr std::string_view kAlarmColour = "#b3261e";

// A colour for each curve of these names: shades of red, green and blue for those that end like an axis (tx, ry,
// "camera.z", rotateX, "chan0 (tz)"), others for the rest.
std::vector<std::string_view> ChooseColours(const std::vector<std::string>& names);

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
