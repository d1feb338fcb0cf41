#include "interchange/Json.h"

#include "FCurveInterchange/Formats.h"
#include "interchange/CurveReader.h"

#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

void CheckNesting(std::string_view bytes, std::size_t nesting) {
    std::size_t depth = 0;
    bool isInText = false;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = bytes[i];
        if (isInText) {
            if (c == '\\') ++i;
            if (c == '"') isInText = false;
        } else if (c == '"') {
            isInText = true;
        } else if (c == '[' || c == '{') {
            if (++depth <= nesting) continue;
            const Place place = PlaceOf(bytes, i);
            throw TooMuch("Objects and arrays are nested too deep; the limit is " + std::to_string(nesting) + '.',
                          place.line, place.column);
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
}

} // namespace

Json ParseJson(std::string_view bytes, std::size_t nesting) {
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
    CheckNesting(bytes, nesting);
    try {
        return Json::parse(bytes);
    } catch (const Json::parse_error& error) {
        const Place place = PlaceOf(bytes, error.byte > 0 ? error.byte - 1 : 0);
        throw BadDocument(error.byte > bytes.size() ? "The JSON text ends too early." : "This is not valid JSON.",
                          place.line, place.column);
    } catch (const Json::out_of_range&) {
        throw BadDocument("A number of the JSON text is beyond the range of doubles.", 1, 1);
    }
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
