#include "interchange/JsonTree.h"

#include "FCurveInterchange/Formats.h"
#include "interchange/CurveReader.h"

#include <nlohmann/json.hpp>

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
        tree.m_nodes.back().first = static_cast<std::uint32_t>(tree.m_texts.size());
        tree.m_texts.push_back(std::move(value));
        return true;
    }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return open(JsonValue::Object); }
    bool start_array(std::size_t) override { return open(JsonValue::Array); }
    bool key(string_t& name) override {
        const auto [found, isNew] = tree.m_keys.try_emplace(name, static_cast<std::uint32_t>(tree.m_texts.size()));
        if (isNew) tree.m_texts.push_back(name);
        lastKey = found->second;
        return true;
    }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception&) override {
        const Place place = PlaceOf(bytes, position > 0 ? position - 1 : 0);
        throw BadDocument(position > bytes.size() ? "The JSON text ends too early." : "This is not valid JSON.",
                          place.line, place.column);
    }

    bool add(JsonValue::Type type, double number) {
        if (tree.m_nodes.size() >= 0xFFFFFFF0U) throw TooMuch("There are too many values.");
        const auto index = static_cast<std::uint32_t>(tree.m_nodes.size());
        Node& node = tree.m_nodes.emplace_back();
        node.number = number;
        node.type = type;
        if (!opened.empty()) pending.push_back({lastKey, index});
        return true;
    }
    bool open(JsonValue::Type type) {
        constexpr std::size_t kDeepest = 64;
        if (opened.size() >= kDeepest) throw TooMuch("Objects and arrays are nested too deep; the limit is 64.");
        add(type, 0.0);
        opened.push_back({static_cast<std::uint32_t>(tree.m_nodes.size() - 1), pending.size()});
        return true;
    }
    // The entries of what ends are the last ones pending; together they go to their place.
    bool close() {
        const auto [node, start] = opened.back();
        opened.pop_back();
        tree.m_nodes[node].first = static_cast<std::uint32_t>(tree.m_entries.size());
        tree.m_nodes[node].count = static_cast<std::uint32_t>(pending.size() - start);
        tree.m_entries.insert(tree.m_entries.end(), pending.begin() + static_cast<std::ptrdiff_t>(start),
                              pending.end());
        pending.resize(start);
        return true;
    }

    struct Opened {
        std::uint32_t node;
        std::size_t start;
    };
    JsonTree& tree;
    std::string_view bytes;
    std::vector<Opened> opened;
    std::vector<Entry> pending;
    std::uint32_t lastKey = 0;
};
// NOLINTEND(readability-identifier-naming)

JsonTree::JsonTree(std::string_view bytes) {
    if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
    m_texts.emplace_back(); // what is no text
    m_nodes.emplace_back(); // what is not there
    m_root = 1;
    Builder builder(*this, bytes);
    nlohmann::json::sax_parse(bytes, &builder);
}
JsonTree::~JsonTree() = default;

JsonValue::Type JsonValue::type() const noexcept {
    return m_tree->m_nodes[m_node].type;
}

double JsonValue::number() const noexcept {
    return m_tree->m_nodes[m_node].number;
}

const std::string& JsonValue::text() const noexcept {
    return m_tree->m_texts[isText() ? m_tree->m_nodes[m_node].first : 0];
}

std::size_t JsonValue::size() const noexcept {
    return m_tree->m_nodes[m_node].count;
}

JsonValue JsonValue::operator[](std::size_t index) const noexcept {
    return {*m_tree, m_tree->m_entries[m_tree->m_nodes[m_node].first + index].node};
}

const std::string& JsonValue::key(std::size_t index) const noexcept {
    return m_tree->m_texts[m_tree->m_entries[m_tree->m_nodes[m_node].first + index].key];
}

JsonValue JsonValue::operator[](const char* name) const noexcept {
    for (std::size_t i = 0; isObject() && i < size(); ++i)
        if (key(i) == name) return (*this)[i];
    return {*m_tree, 0};
}

bool JsonValue::contains(const char* name) const noexcept {
    return (*this)[name].m_node != 0;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
