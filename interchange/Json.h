#pragma once

// JSON documents, whose objects keep the order of their members.

#include <nlohmann/json.hpp>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

using Json = nlohmann::ordered_json;

// The document that the bytes are, after a byte-order mark if there is one; raises BadDocument with line and column, or
// TooMuch where objects and arrays are nested deeper than `nesting`.
Json ParseJson(std::string_view bytes, std::size_t nesting = 64);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
