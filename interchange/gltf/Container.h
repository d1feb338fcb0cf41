#pragma once

// The bytes around a glTF document: GLB containers, data URIs, base64, and where values stand in a JSON text.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

// --- base64 ----------------------------------------------------------------------------------------------------------

// As RFC 4648, section 4, with padding.
std::string ToBase64(std::string_view bytes);
// Padding may be missing. Nothing for any other character or a wrong length.
std::optional<std::string> FromBase64(std::string_view text);

// The bytes of "data:...;base64,..."; nothing for another URI or wrong base64.
std::optional<std::string> FromDataUri(std::string_view uri);
// A relative path from its percent-encoded form; nothing where it names a scheme, is absolute, leaves its folder, or
// holds a zero byte.
std::optional<std::string> RelativePath(std::string_view uri);

// --- GLB -------------------------------------------------------------------------------------------------------------

struct Parts {
    bool isBinary = false;
    std::string_view json;
    std::string_view chunk; // the BIN chunk, padding included
    std::string_view rest;  // chunks after it, as they stand
};

bool IsBinary(std::string_view bytes) noexcept;
// Views into the bytes. Throws BadDocument where the lengths of a GLB do not agree.
Parts PartsOf(std::string_view bytes);
// A GLB of these parts, padded; rest as it stood. Throws NotWritable beyond 4 GB.
std::string Joined(std::string json, std::string chunk, std::string_view rest);

// --- places in a JSON text -------------------------------------------------------------------------------------------
// Precondition: the text is valid JSON.

struct JsonSpan {
    std::size_t begin = 0;
    std::size_t end = 0;

    bool empty() const noexcept { return begin == end; }
};

// The text's one value.
JsonSpan RootOf(std::string_view text);
// The value of a member; empty if the object has no such one.
JsonSpan MemberOf(std::string_view text, JsonSpan object, std::string_view key);
// The values of an array, or of an object.
std::vector<JsonSpan> ElementsOf(std::string_view text, JsonSpan array);

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
