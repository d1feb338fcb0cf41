#include "interchange/gltf/Container.h"

#include "FCurveInterchange/Formats.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t kMagic = 0x46546C67; // "glTF"
constexpr std::uint32_t kJson = 0x4E4F534A;
constexpr std::uint32_t kBin = 0x004E4942;
constexpr std::size_t kHeader = 12;
constexpr std::size_t kChunkHeader = 8;

std::uint32_t ReadWord(std::string_view bytes, std::size_t place) noexcept {
    std::uint32_t word = 0;
    for (std::size_t i = 4; i-- > 0;) word = word << 8U | static_cast<unsigned char>(bytes[place + i]);
    return word;
}

void AppendWord(std::string& bytes, std::size_t word) {
    for (unsigned i = 0; i < 4; ++i) bytes += static_cast<char>(word >> 8U * i & 0xFFU);
}

void Pad(std::string& bytes, char padding) {
    bytes.append((4 - bytes.size() % 4) % 4, padding);
}

int HexDigit(char c) noexcept {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

} // namespace

// --- base64 ----------------------------------------------------------------------------------------------------------

std::string ToBase64(std::string_view bytes) {
    std::string text((bytes.size() + 2) / 3 * 4, '=');
    char* out = text.data();
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t there = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < there; ++k)
            group |= std::uint32_t{static_cast<unsigned char>(bytes[i + k])} << (16U - 8U * k);
        for (std::size_t k = 0; k <= there; ++k) out[k] = kDigits[group >> (18U - 6U * k) & 63U];
        out += 4;
    }
    return text;
}

std::optional<std::string> FromBase64(std::string_view text) {
    static constexpr std::uint32_t kNone = 0x80;
    static const std::array<std::uint32_t, 256> values = [] {
        std::array<std::uint32_t, 256> table{};
        table.fill(kNone);
        for (std::uint32_t i = 0; i < 64; ++i) table[static_cast<unsigned char>(kDigits[i])] = i;
        return table;
    }();
    for (int i = 0; i < 2 && !text.empty() && text.back() == '='; ++i) text.remove_suffix(1);
    if (text.size() % 4 == 1) return std::nullopt;
    std::string bytes(text.size() * 3 / 4, '\0');
    char* out = bytes.data();
    std::uint32_t all = 0;
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const std::size_t there = std::min<std::size_t>(4, text.size() - i);
        std::uint32_t group = 0;
        for (std::size_t k = 0; k < there; ++k) {
            const std::uint32_t value = values[static_cast<unsigned char>(text[i + k])];
            all |= value;
            group |= value << (18U - 6U * k);
        }
        for (std::size_t k = 0; k + 1 < there; ++k) *out++ = static_cast<char>(group >> (16U - 8U * k) & 0xFFU);
    }
    if (all & kNone) return std::nullopt;
    return bytes;
}

std::optional<std::string> FromDataUri(std::string_view uri) {
    const std::size_t comma = uri.substr(0, 1024).find(',');
    constexpr std::string_view mark = ";base64";
    if (uri.substr(0, 5) != "data:" || comma == std::string_view::npos) return std::nullopt;
    const std::string_view type = uri.substr(0, comma);
    if (type.size() < mark.size() || type.substr(type.size() - mark.size()) != mark) return std::nullopt;
    return FromBase64(uri.substr(comma + 1));
}

std::optional<std::string> RelativePath(std::string_view uri) {
    std::string path;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        char c = uri[i];
        if (c == '%') {
            const int high = i + 2 < uri.size() ? HexDigit(uri[i + 1]) : -1;
            const int low = high >= 0 ? HexDigit(uri[i + 2]) : -1;
            if (low < 0) return std::nullopt;
            c = static_cast<char>(high * 16 + low);
            i += 2;
        } else if (c == ':') {
            return std::nullopt;
        }
        if (c == '\0' || c == '\\' || c == ':') return std::nullopt;
        path += c;
    }
    if (path.empty() || path.front() == '/') return std::nullopt;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        if (path.compare(begin, end - begin, "..") == 0) return std::nullopt;
        begin = end + 1;
    }
    return path;
}

// --- GLB -------------------------------------------------------------------------------------------------------------

bool IsBinary(std::string_view bytes) noexcept {
    return bytes.size() >= kHeader && ReadWord(bytes, 0) == kMagic;
}

Parts PartsOf(std::string_view bytes) {
    Parts parts;
    if (!IsBinary(bytes)) {
        parts.json = bytes;
        if (parts.json.substr(0, 3) == "\xef\xbb\xbf") parts.json.remove_prefix(3);
        return parts;
    }
    parts.isBinary = true;
    const std::uint32_t version = ReadWord(bytes, 4);
    if (version != 2)
        throw BadDocument("The container has version " + std::to_string(version) + "; version 2 can be read.");
    const std::size_t length = ReadWord(bytes, 8);
    if (length > bytes.size())
        throw BadDocument("The container says that it has " + std::to_string(length) + " bytes, found "
                          + std::to_string(bytes.size()) + '.');
    bytes = bytes.substr(0, length);
    const auto takeChunk = [&](std::size_t place, std::uint32_t type) {
        if (bytes.size() < kChunkHeader || place > bytes.size() - kChunkHeader || ReadWord(bytes, place + 4) != type)
            return std::optional<std::string_view>();
        const std::size_t size = ReadWord(bytes, place);
        if (size > bytes.size() - place - kChunkHeader)
            throw BadDocument("A chunk of the container is longer than the container.");
        return std::optional(bytes.substr(place + kChunkHeader, size));
    };
    const auto json = takeChunk(kHeader, kJson);
    if (!json) throw BadDocument("The container does not start with a chunk of JSON.");
    parts.json = *json;
    std::size_t next = kHeader + kChunkHeader + json->size();
    if (const auto chunk = takeChunk(next, kBin)) {
        parts.chunk = *chunk;
        next += kChunkHeader + chunk->size();
    }
    parts.rest = bytes.substr(next);
    return parts;
}

std::string Joined(std::string json, std::string chunk, std::string_view rest) {
    Pad(json, ' ');
    Pad(chunk, '\0');
    const std::size_t size =
        kHeader + kChunkHeader + json.size() + (chunk.empty() ? 0 : kChunkHeader + chunk.size()) + rest.size();
    if (size > std::numeric_limits<std::uint32_t>::max()) throw NotWritable("A container holds less than 4 GB.");
    std::string bytes;
    bytes.reserve(size);
    AppendWord(bytes, kMagic);
    AppendWord(bytes, 2);
    AppendWord(bytes, size);
    AppendWord(bytes, json.size());
    AppendWord(bytes, kJson);
    bytes += json;
    if (!chunk.empty()) {
        AppendWord(bytes, chunk.size());
        AppendWord(bytes, kBin);
        bytes += chunk;
    }
    bytes += rest;
    return bytes;
}

// --- places in a JSON text -------------------------------------------------------------------------------------------

namespace {

bool IsSpace(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

std::size_t SkipSpace(std::string_view text, std::size_t at) noexcept {
    while (at < text.size() && IsSpace(text[at])) ++at;
    return at;
}

std::size_t EndOfString(std::string_view text, std::size_t at) noexcept {
    for (++at; at < text.size() && text[at] != '"'; ++at)
        if (text[at] == '\\') ++at;
    return std::min(at + 1, text.size());
}

std::size_t EndOfValue(std::string_view text, std::size_t at) noexcept {
    if (text[at] == '"') return EndOfString(text, at);
    if (text[at] != '{' && text[at] != '[') {
        while (at < text.size() && !IsSpace(text[at]) && text[at] != ',' && text[at] != '}' && text[at] != ']') ++at;
        return at;
    }
    std::size_t depth = 0;
    while (at < text.size()) {
        const char c = text[at];
        if (c == '"') {
            at = EndOfString(text, at);
            continue;
        }
        ++at;
        if (c == '{' || c == '[') ++depth;
        if ((c == '}' || c == ']') && --depth == 0) break;
    }
    return at;
}

// Calls visit(key, value) until it returns false; the key is an empty span in an array.
template<class Visit>
void VisitElements(std::string_view text, JsonSpan whole, const Visit& visit) {
    const bool isObject = text[whole.begin] == '{';
    std::size_t at = SkipSpace(text, whole.begin + 1);
    while (at + 1 < whole.end) {
        JsonSpan key;
        if (isObject) {
            key = {at, EndOfString(text, at)};
            at = SkipSpace(text, SkipSpace(text, key.end) + 1); // after the colon
        }
        const JsonSpan value{at, EndOfValue(text, at)};
        if (!visit(key, value)) return;
        at = SkipSpace(text, value.end);
        if (text[at] == ',') at = SkipSpace(text, at + 1);
    }
}

} // namespace

JsonSpan RootOf(std::string_view text) {
    const std::size_t begin = SkipSpace(text, 0);
    return {begin, EndOfValue(text, begin)};
}

JsonSpan MemberOf(std::string_view text, JsonSpan object, std::string_view key) {
    JsonSpan found;
    VisitElements(text, object, [&](JsonSpan name, JsonSpan value) {
        const std::string_view raw = text.substr(name.begin, name.end - name.begin);
        const bool isIt = raw.find('\\') == std::string_view::npos
                              ? raw.substr(1, raw.size() - 2) == key
                              : nlohmann::json::parse(raw).get_ref<const std::string&>() == key;
        if (isIt) found = value;
        return !isIt;
    });
    return found;
}

std::vector<JsonSpan> ElementsOf(std::string_view text, JsonSpan array) {
    std::vector<JsonSpan> spans;
    VisitElements(text, array, [&](JsonSpan, JsonSpan value) {
        spans.push_back(value);
        return true;
    });
    return spans;
}

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
