#pragma once

#include "FCurveLib/Export.h"

#include <cstddef>
#include <iterator>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// The words for Tangent::Type in files, by its number.
constexpr const char* kTangentTypes[] = {"fixed", "flat", "linear", "smooth", "smoothContinued", "clamped", "plateau"};

// std::size(kTangentTypes) for another word.
inline std::size_t TangentTypeOf(std::string_view word) noexcept {
    std::size_t type = 0;
    while (type < std::size(kTangentTypes) && word != kTangentTypes[type]) ++type;
    return type;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
