#pragma once

// A glTF document: its JSON by path, its buffers, its accessors as numbers.

#include "interchange/gltf/Container.h"

#include <FCurveLib/FormatLimits.h>

#include <nlohmann/json.hpp>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

using Json = nlohmann::json;

// A value of the document, or none, and its path for messages. What the document must not say raises BadDocument.
class Value {
public:
    Value(const Json* json, std::string path) : m_json(json), m_path(std::move(path)) {}

    explicit operator bool() const noexcept { return m_json != nullptr; }
    const Json& json() const noexcept { return *m_json; }
    const std::string& path() const noexcept { return m_path; }
    [[noreturn]] void refuse(const std::string& message) const;

    // A member of an object, which may be missing; of an array.
    Value operator[](const char* key) const;
    Value operator[](std::size_t index) const;
    // Elements of an array; 0 where it is missing.
    std::size_t size() const;

    // Of values that must be there.
    const std::string& text() const;
    double number() const;
    std::size_t whole(std::size_t most) const;
    // An index of an array of so many elements.
    std::size_t index(std::size_t size) const;
    // Of values that may be missing.
    double numberOr(double fallback) const { return m_json ? number() : fallback; }
    std::size_t wholeOr(std::size_t fallback, std::size_t most) const { return m_json ? whole(most) : fallback; }
    std::string textOr(const char* fallback) const { return m_json ? text() : fallback; }

private:
    void require(bool isThere, const char* what) const;

    const Json* m_json;
    std::string m_path;
};

// Numbers of an accessor, element by element.
struct Numbers {
    std::size_t components = 1;
    std::vector<double> values;

    std::size_t count() const noexcept { return values.size() / components; }
};

// Reads the file of a relative path beside the document. Nothing where there is none.
using Neighbour = std::function<std::optional<std::string>(const std::string& path)>;

class Asset {
public:
    // The bytes must outlive this object. Throws BadDocument and TooMuch.
    Asset(std::string_view bytes, Neighbour neighbour);

    Value root() const { return {&m_root, ""}; }
    const Parts& parts() const noexcept { return m_parts; }

    // A JSON pointer's value; null where there is none.
    const Json* find(const std::string& pointer) const;

    // Throws where it is no array of numbers of one to four components inside its buffer.
    Numbers read(const Value& accessorIndex);

private:
    std::string_view buffer(std::size_t index);
    // The bytes from offset on, of count elements of so many bytes.
    struct Elements {
        std::string_view bytes;
        std::size_t stride;
    };
    Elements elements(const Value& owner, std::size_t offset, std::size_t elementSize, std::size_t componentSize,
                      std::size_t count);

    Parts m_parts;
    std::size_t m_size;
    FormatLimits m_limits;
    Neighbour m_neighbour;
    Json m_root;
    std::vector<std::optional<std::string>> m_buffers; // decoded
    std::size_t m_unwritten = 0;                       // numbers that no bytes stand for
};

// JSON of the text; objects may not say a name twice. Throws BadDocument with line and column.
Json ParseJson(std::string_view text, std::size_t mostNesting);

// "~1" and "~0" in one part of a JSON pointer, and back.
std::string EscapePointer(std::string_view part);
std::string UnescapePointer(std::string_view part);

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
