#pragma once

#include "FCurveLib/Export.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace XMLFormat {

constexpr unsigned kMajor = 1;
constexpr unsigned kMinor = 0;

namespace Tag {
constexpr const char* root = "fcurvelib";
constexpr const char* container = "container";
constexpr const char* curve = "curve";
constexpr const char* property = "property";
constexpr const char* segment = "segment";
constexpr const char* out = "out";
constexpr const char* in = "in";
constexpr const char* key = "key";
} // namespace Tag

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
