#include "interchange/JsonTree.h"

#include "FCurveInterchange/Formats.h"
#include "interchange/CurveReader.h"
#include "interchange/Json.h"

#include <nlohmann/json.hpp>

#include <array>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

// Told by the parser what it finds. Its names are those that the parser calls.
// NOLINTBEGIN(readability-identifier-naming): see above
struct JsonTree::Builder : nlohmann::json_sax<nlohmann::json> {
    Builder(JsonTree& target, std::string_view text) : tree(target), bytes(text) {}

    bool null() override { return add(JsonValue::Null, 0.0); }
    bool boolean(bool value) override { return add(JsonValue::Boolean, value ? 1.0 : 0.0); }
    bool number_integer(number_integer_t value) override { return add(JsonValue::Number, static_cast<double>(value)); }
    bool number_unsigned(number_unsigned_t value) override {
        return add(JsonValue::Number, static_cast<double>(value));
    }
    bool number_float(number_float_t value, const string_t&) override { return add(JsonValue::Number, value); }
    bool string(string_t& value) override {
        add(JsonValue::Text, 0.0);
        tree.m_nodes.back().place = newText(std::move(value));
        return true;
    }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(JsonValue::Object); }
    bool start_array(std::size_t) override { return open(JsonValue::Array); }
    bool key(string_t& name) override {
        // Most keys of animations have one letter.
        std::uint32_t* const letter = name.size() == 1 ? &letters[static_cast<unsigned char>(name[0])] : nullptr;
        if (letter && *letter != 0) {
            lastKey = *letter;
            return true;
        }
        const auto [found, isNew] = tree.m_keys.try_emplace(name, 0U);
        if (isNew) found->second = newText(name);
        lastKey = found->second;
        if (letter) *letter = lastKey;
        return true;
    }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception&) override {
        const Place place = PlaceOf(bytes, position > 0 ? position - 1 : 0);
        throw BadDocument(position > bytes.size() ? "The JSON text ends too early." : "This is not valid JSON.",
                          place.line, place.column);
    }

    std::uint32_t newText(std::string text) {
        if (tree.m_texts.size() >= kMostTexts) throw TooMuch("There are too many texts.");
        tree.m_texts.push_back(std::move(text));
        return static_cast<std::uint32_t>(tree.m_texts.size() - 1);
    }
    bool add(JsonValue::Type type, double number) {
        if (tree.m_nodes.size() >= kMostNodes) throw TooMuch("There are too many values.");
        Node& node = tree.m_nodes.emplace_back();
        node.number = number;
        node.key = lastKey & 0xFFFFFFFU;
        node.type = type & 0xFU;
        return true;
    }
    bool open(JsonValue::Type type) {
        constexpr std::size_t kDeepest = 64;
        if (opened.size() >= kDeepest) {
            const Place place = PlaceOf(bytes, OffsetOfDepth(bytes, kDeepest));
            throw TooMuch("Objects and arrays are nested too deep; the limit is 64.", place.line, place.column);
        }
        opened.push_back(tree.m_nodes.size());
        return add(type, 0.0);
    }
    bool close() {
        tree.m_nodes[opened.back()].place = static_cast<std::uint32_t>(tree.m_nodes.size());
        opened.pop_back();
        return true;
    }

    static constexpr std::size_t kMostTexts = std::size_t{1} << 28U;
    static constexpr std::size_t kMostNodes = 0xFFFFFFF0U;
    JsonTree& tree;
    std::string_view bytes;
    std::vector<std::size_t> opened;
    std::array<std::uint32_t, 256> letters{}; // keys of one letter
    std::uint32_t lastKey = 0;
};
// NOLINTEND(readability-identifier-naming)

JsonTree::JsonTree(std::string_view bytes) {
    constexpr std::size_t kBytesPerNode = 8; // in an animation, about
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
    m_texts.emplace_back(); // what is no text
    m_nodes.reserve(bytes.size() / kBytesPerNode + 16);
    m_nodes.emplace_back(); // what is not there
    m_nodes.back().key = 0;
    m_nodes.back().type = JsonValue::Null;
    Builder builder(*this, bytes);
    nlohmann::json::sax_parse(bytes, &builder);
}
JsonTree::~JsonTree() = default;

JsonValue::Type JsonValue::type() const noexcept {
    return static_cast<Type>(m_tree->m_nodes[m_node].type);
}

double JsonValue::number() const noexcept {
    return m_tree->m_nodes[m_node].number;
}

const std::string& JsonValue::text() const noexcept {
    return m_tree->m_texts[isText() ? m_tree->m_nodes[m_node].place : 0];
}

const std::string& JsonValue::key() const noexcept {
    return m_tree->m_texts[m_tree->m_nodes[m_node].key];
}

std::uint32_t JsonValue::after() const noexcept {
    return isStructured() ? m_tree->m_nodes[m_node].place : m_node + 1;
}

JsonValue::Iterator JsonValue::begin() const noexcept {
    return Iterator({*m_tree, isStructured() ? m_node + 1 : 0});
}
JsonValue::Iterator JsonValue::end() const noexcept {
    return Iterator({*m_tree, isStructured() ? after() : 0});
}

std::size_t JsonValue::size() const noexcept {
    std::size_t count = 0;
    for (auto value = begin(); value != end(); ++value) ++count;
    return count;
}

bool JsonValue::empty() const noexcept {
    return !(begin() != end());
}

JsonValue JsonValue::operator[](std::size_t index) const noexcept {
    Iterator value = begin();
    for (; index > 0; --index) ++value;
    return *value;
}

JsonValue JsonValue::operator[](const char* name) const noexcept {
    if (isObject())
        for (const JsonValue& value : *this)
            if (const std::string& key = value.key(); key.c_str()[0] == name[0] && key == name) return value;
    return {*m_tree, 0};
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
