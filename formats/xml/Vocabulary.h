#pragma once

#include "FCurveLib/Export.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace XMLFormat {

constexpr unsigned kMajor = 1;
constexpr unsigned kMinor = 0;

namespace Tag {
constexpr const char* kRoot = "fcurvelib";
constexpr const char* kContainer = "container";
constexpr const char* kCurve = "curve";
constexpr const char* kProperty = "property";
constexpr const char* kSegment = "segment";
constexpr const char* kOut = "out";
constexpr const char* kIn = "in";
constexpr const char* kKey = "key";
} // namespace Tag

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
