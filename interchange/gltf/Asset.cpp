#include "interchange/gltf/Asset.h"

#include "FCurveInterchange/Formats.h"
#include "interchange/CurveReader.h"
#include "interchange/Json.h"
#include "interchange/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <unordered_set>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

namespace {

constexpr std::size_t kMostElements = std::size_t{1} << 24U;
// Whole numbers of JSON are exact up to 2^53.
constexpr auto kMostBytes = static_cast<std::size_t>(std::min<std::uint64_t>(std::uint64_t{1} << 53U, SIZE_MAX));
constexpr std::size_t kMostStride = 252;
constexpr std::size_t kNumbersPerByte = 2; // that accessors without bytes may state, besides FormatLimits::runs

// Builds a value, and refuses what the parser would let pass: names that stand twice, depth.
class Builder : public nlohmann::json_sax<Json> {
public:
    Builder(Json& root, std::string_view text, std::size_t mostNesting)
        : m_inner(root, true), m_text(text), m_most(mostNesting) {}

    bool null() override { return m_inner.null(); }
    bool boolean(bool value) override { return m_inner.boolean(value); }
    bool number_integer(number_integer_t value) override { return m_inner.number_integer(value); }
    bool number_unsigned(number_unsigned_t value) override { return m_inner.number_unsigned(value); }
    bool number_float(number_float_t value, const string_t& text) override { return m_inner.number_float(value, text); }
    bool string(string_t& value) override { return m_inner.string(value); }
    bool binary(binary_t& value) override { return m_inner.binary(value); }
    bool start_object(std::size_t size) override {
        open();
        return m_inner.start_object(size);
    }
    bool key(string_t& name) override {
        ++m_members;
        if (!m_names.back().insert(name).second)
            raise<BadDocument>("An object has the name " + Interchange::Quoted(name) + " twice.",
                               OffsetOfMember(m_text, m_members));
        return m_inner.key(name);
    }
    bool end_object() override {
        m_names.pop_back();
        return m_inner.end_object();
    }
    bool start_array(std::size_t size) override {
        open();
        return m_inner.start_array(size);
    }
    bool end_array() override {
        m_names.pop_back();
        return m_inner.end_array();
    }
    bool parse_error(std::size_t position, const std::string&, const nlohmann::json::exception&) override {
        const std::size_t at = std::min(position == 0 ? 0 : position - 1, m_text.size());
        raise<BadDocument>(at < m_text.size()
                               ? "Expected JSON, found " + Interchange::Quoted(m_text.substr(at, 1)) + '.'
                               : "The JSON ends too early.",
                           at);
    }

private:
    template<class Error>
    [[noreturn]] void raise(const std::string& message, std::size_t offset) const {
        const Place place = PlaceOf(m_text, offset);
        throw Error(message, place.line, place.column);
    }
    void open() {
        if (m_names.size() >= m_most)
            raise<TooMuch>("Objects and arrays are nested too deeply; the limit is " + std::to_string(m_most) + '.',
                           OffsetOfDepth(m_text, m_most));
        m_names.emplace_back();
    }

    nlohmann::detail::json_sax_dom_parser<Json> m_inner;
    std::string_view m_text;
    std::size_t m_most;
    std::size_t m_members = 0;
    std::vector<std::unordered_set<std::string>> m_names; // of the open objects; empty for arrays
};

struct ComponentType {
    std::size_t code;
    std::size_t size;
    bool isSigned;
};
constexpr ComponentType kComponentTypes[] = {{5120, 1, true},  {5121, 1, false}, {5122, 2, true},
                                             {5123, 2, false}, {5125, 4, false}, {5126, 4, true}};

double Decode(const char* bytes, const ComponentType& type, bool isNormalized) noexcept {
    std::uint32_t raw = 0;
    for (std::size_t i = type.size; i-- > 0;) raw = raw << 8U | static_cast<unsigned char>(bytes[i]);
    if (type.code == 5126) {
        float number = 0.0F;
        std::memcpy(&number, &raw, sizeof number);
        return static_cast<double>(number);
    }
    double number = raw;
    const double range = std::ldexp(1.0, static_cast<int>(8 * type.size));
    if (type.isSigned && number >= range / 2.0) number -= range;
    if (!isNormalized) return number;
    return std::max(number / (type.isSigned ? range / 2.0 - 1.0 : range - 1.0), -1.0);
}

} // namespace

// --- values ----------------------------------------------------------------------------------------------------------

void Value::refuse(const std::string& message) const {
    throw BadDocument(message, 0, 0, m_path.empty() ? "/" : m_path);
}
void Value::require(bool isThere, const char* what) const {
    if (!isThere) refuse(std::string("Expected ") + what + (m_json ? "." : ", found nothing."));
}

Value Value::operator[](const char* key) const {
    const std::string path = m_path + '/' + key;
    if (!m_json) return {nullptr, path};
    require(m_json->is_object(), "an object");
    const auto member = m_json->find(key);
    return {member == m_json->end() ? nullptr : &*member, path};
}
Value Value::operator[](std::size_t index) const {
    require(m_json && m_json->is_array() && index < m_json->size(), "an array with this element");
    return {&(*m_json)[index], m_path + '/' + std::to_string(index)};
}
std::size_t Value::size() const {
    if (!m_json) return 0;
    require(m_json->is_array(), "an array");
    return m_json->size();
}

const std::string& Value::text() const {
    require(m_json && m_json->is_string(), "a text");
    return m_json->get_ref<const std::string&>();
}
double Value::number() const {
    require(m_json && m_json->is_number(), "a number");
    return m_json->get<double>();
}
std::size_t Value::whole(std::size_t most) const {
    const double value = number();
    require(value >= 0.0 && value == std::floor(value), "a whole number that is not negative");
    if (value > static_cast<double>(most)) refuse("The number is above " + std::to_string(most) + '.');
    return static_cast<std::size_t>(value);
}
std::size_t Value::index(std::size_t size) const {
    const std::size_t value = whole(kMostBytes);
    if (value >= size) refuse("There is no element " + std::to_string(value) + '.');
    return value;
}

// --- documents -------------------------------------------------------------------------------------------------------

Json ParseJson(std::string_view text, std::size_t mostNesting) {
    Json root;
    Builder builder(root, text, mostNesting);
    Json::sax_parse(text.begin(), text.end(), &builder);
    return root;
}

std::string EscapePointer(std::string_view part) {
    std::string result;
    for (const char c : part) result += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    return result;
}
std::string UnescapePointer(std::string_view part) {
    std::string result;
    for (std::size_t i = 0; i < part.size(); ++i) {
        const bool isEscape = part[i] == '~' && i + 1 < part.size() && (part[i + 1] == '0' || part[i + 1] == '1');
        result += !isEscape ? part[i] : part[i + 1] == '1' ? '/' : '~';
        if (isEscape) ++i;
    }
    return result;
}

Asset::Asset(std::string_view bytes, Neighbour neighbour)
    : m_parts(PartsOf(bytes)), m_size(bytes.size()), m_limits(GetFormatLimits()), m_neighbour(std::move(neighbour)),
      m_root(ParseJson(m_parts.json, m_limits.nesting)) {
    if (!m_root.is_object()) root().refuse("Expected an object.");
    const Value asset = root()["asset"];
    const Value version = asset["version"];
    const Value needed = asset["minVersion"];
    const std::string& least = needed ? needed.text() : version.text();
    if (version.text().substr(0, 2) != "2." || (needed && least != "2.0"))
        (needed ? needed : version)
            .refuse("The document has version " + Interchange::Quoted(least) + "; version 2.0 can be read.");
    m_buffers.resize(root()["buffers"].size());
}

const Json* Asset::find(const std::string& pointer) const {
    const Json* value = &m_root;
    for (std::size_t begin = 0; begin < pointer.size();) {
        if (pointer[begin] != '/') return nullptr;
        const std::size_t end = std::min(pointer.find('/', begin + 1), pointer.size());
        const std::string part = UnescapePointer(std::string_view(pointer).substr(begin + 1, end - begin - 1));
        if (value->is_object()) {
            const auto member = value->find(part);
            if (member == value->end()) return nullptr;
            value = &*member;
        } else if (value->is_array()) {
            double index = 0.0;
            if (!ParseNumber(part, index) || index != std::floor(index) || !(index >= 0.0)
                || index >= static_cast<double>(value->size()))
                return nullptr;
            value = &(*value)[static_cast<std::size_t>(index)];
        } else {
            return nullptr;
        }
        begin = end;
    }
    return value;
}

std::string_view Asset::buffer(std::size_t index) {
    const Value buffer = root()["buffers"][index];
    const std::size_t length = buffer["byteLength"].whole(kMostBytes);
    const Value uri = buffer["uri"];
    std::string_view bytes;
    if (!uri) {
        if (index != 0 || !m_parts.isBinary) buffer.refuse("The buffer has no bytes.");
        bytes = m_parts.chunk;
    } else {
        std::optional<std::string>& decoded = m_buffers[index];
        if (!decoded && uri.text().compare(0, 5, "data:") == 0) {
            decoded = FromDataUri(uri.text());
            if (!decoded) uri.refuse("The data are not valid base64.");
        } else if (!decoded) {
            const auto path = RelativePath(uri.text());
            if (!path) uri.refuse("The path does not lead beside the document.");
            if (!m_neighbour)
                uri.refuse("The data are in the file " + Interchange::Quoted(*path)
                           + "; the setting gltf.folder tells where that is.");
            decoded = m_neighbour(*path);
            if (!decoded)
                uri.refuse("There is no readable file " + Interchange::Quoted(*path) + " beside the document.");
        }
        bytes = *decoded;
    }
    if (bytes.size() < length)
        buffer.refuse("The buffer has " + std::to_string(bytes.size()) + " bytes; its length says "
                      + std::to_string(length) + '.');
    return bytes.substr(0, length);
}

Asset::Elements Asset::elements(const Value& owner, std::size_t offset, std::size_t elementSize,
                                std::size_t componentSize, std::size_t count) {
    const Value views = root()["bufferViews"];
    const Value view = views[owner["bufferView"].index(views.size())];
    if (view["extensions"]["EXT_meshopt_compression"])
        view.refuse("The data are compressed (EXT_meshopt_compression), which cannot be read.");
    const std::size_t index = view["buffer"].index(m_buffers.size());
    const std::string_view bytes = buffer(index);
    const std::size_t begin = view["byteOffset"].wholeOr(0, kMostBytes);
    const std::size_t length = view["byteLength"].whole(kMostBytes);
    const std::size_t stride = view["byteStride"].wholeOr(elementSize, kMostStride);
    if (begin > bytes.size() || length > bytes.size() - begin) view.refuse("The view does not lie inside its buffer.");
    if (stride < elementSize) view["byteStride"].refuse("The stride is shorter than an element.");
    // count and stride are bounded: nothing overflows.
    if (count > kMostElements || offset > length || stride * (count - 1) + elementSize > length - offset)
        owner.refuse("The elements do not lie inside their view.");
    if ((begin + offset) % componentSize != 0) owner.refuse("The elements are not aligned.");
    return {bytes.substr(begin + offset), stride};
}

Numbers Asset::read(const Value& accessorIndex) {
    const Value accessors = root()["accessors"];
    const Value accessor = accessors[accessorIndex.index(accessors.size())];

    const std::size_t code = accessor["componentType"].whole(kMostBytes);
    const auto* const type = std::find_if(std::begin(kComponentTypes), std::end(kComponentTypes),
                                          [code](const ComponentType& known) { return known.code == code; });
    if (type == std::end(kComponentTypes)) accessor["componentType"].refuse("Expected a type of numbers.");
    const Value normalized = accessor["normalized"];
    const bool isNormalized = normalized && normalized.json() == true;
    constexpr std::string_view shapes[] = {"SCALAR", "VEC2", "VEC3", "VEC4"};
    const auto* const shape = std::find(std::begin(shapes), std::end(shapes), accessor["type"].text());
    if (shape == std::end(shapes)) accessor["type"].refuse("Expected \"SCALAR\", \"VEC2\", \"VEC3\" or \"VEC4\".");

    Numbers numbers;
    numbers.components = static_cast<std::size_t>(shape - shapes) + 1;
    const std::size_t count = accessor["count"].whole(kMostElements);
    if (count == 0) accessor["count"].refuse("There is no element.");
    const std::size_t elementSize = numbers.components * type->size;
    const auto put = [&](std::size_t element, const char* bytes) {
        for (std::size_t c = 0; c < numbers.components; ++c)
            numbers.values[element * numbers.components + c] = Decode(bytes + c * type->size, *type, isNormalized);
    };

    if (accessor["bufferView"]) {
        const Elements data =
            elements(accessor, accessor["byteOffset"].wholeOr(0, kMostBytes), elementSize, type->size, count);
        numbers.values.resize(count * numbers.components);
        for (std::size_t i = 0; i < count; ++i) put(i, data.bytes.data() + i * data.stride);
    } else {
        m_unwritten += count;
        if (m_unwritten > m_limits.runs && (m_unwritten - m_limits.runs) / kNumbersPerByte > m_size)
            throw TooMuch("Too many numbers stand in no buffer for a document of this length.", 0, 0, accessor.path());
        numbers.values.resize(count * numbers.components);
    }

    if (const Value sparse = accessor["sparse"]) {
        const std::size_t changed = sparse["count"].whole(count);
        if (changed == 0) sparse["count"].refuse("There is no element.");
        const Value indices = sparse["indices"];
        const std::size_t indexCode = indices["componentType"].whole(kMostBytes);
        if (indexCode != 5121 && indexCode != 5123 && indexCode != 5125)
            indices["componentType"].refuse("Expected a type of whole numbers.");
        const ComponentType indexType{indexCode, indexCode == 5121 ? 1U : indexCode == 5123 ? 2U : 4U, false};
        const Elements places =
            elements(indices, indices["byteOffset"].wholeOr(0, kMostBytes), indexType.size, indexType.size, changed);
        const Value values = sparse["values"];
        const Elements data =
            elements(values, values["byteOffset"].wholeOr(0, kMostBytes), elementSize, type->size, changed);
        double last = -1.0;
        for (std::size_t i = 0; i < changed; ++i) {
            const double place = Decode(places.bytes.data() + i * places.stride, indexType, false);
            if (!(place > last)) indices.refuse("The indices do not increase.");
            if (place >= static_cast<double>(count)) indices.refuse("An index is beyond the accessor's count.");
            last = place;
            put(static_cast<std::size_t>(place), data.bytes.data() + i * data.stride);
        }
    }
    return numbers;
}

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
