#include "interchange/Json.h"

#include <nlohmann/json.hpp>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

std::string JsonText(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
