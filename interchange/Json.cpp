#include "interchange/Json.h"

#include <nlohmann/json.hpp>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

// Shows visit(offset, offset of the last text) everything outside texts in quotes until it returns true.
template<class Visit>
void VisitMarks(std::string_view json, const Visit& visit) {
    std::size_t text = 0;
    for (std::size_t at = 0; at < json.size(); ++at) {
        if (json[at] != '"') {
            if (visit(at, text)) return;
            continue;
        }
        text = at;
        for (++at; at < json.size() && json[at] != '"'; ++at)
            if (json[at] == '\\') ++at;
    }
}

} // namespace

std::size_t OffsetOfDepth(std::string_view text, std::size_t depth) noexcept {
    std::size_t found = text.size();
    std::size_t open = 0;
    VisitMarks(text, [&](std::size_t at, std::size_t) {
        const char c = text[at];
        if (c == '}' || c == ']') --open;
        if ((c == '{' || c == '[') && open++ == depth) found = at;
        return found < text.size();
    });
    return found;
}

std::size_t OffsetOfMember(std::string_view text, std::size_t number) noexcept {
    std::size_t found = text.size();
    VisitMarks(text, [&](std::size_t at, std::size_t name) {
        if (text[at] == ':' && --number == 0) found = name;
        return found < text.size();
    });
    return found;
}

std::string JsonText(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
