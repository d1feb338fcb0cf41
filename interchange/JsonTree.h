#pragma once

// JSON documents for reading alone, in a few blocks of memory: large ones take a fraction of what a tree of objects
// does.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

class JsonTree;

// One value of a tree, which must outlive it. What is not there is null, and has no members.
class JsonValue {
public:
    enum Type : std::uint8_t { Null, Boolean, Number, Text, Array, Object };

    Type type() const noexcept;
    bool isNull() const noexcept { return type() == Null; }
    bool isNumber() const noexcept { return type() == Number; }
    bool isText() const noexcept { return type() == Text; }
    bool isArray() const noexcept { return type() == Array; }
    bool isObject() const noexcept { return type() == Object; }
    bool isStructured() const noexcept { return type() >= Array; }
    bool isTrue() const noexcept { return type() == Boolean && number() != 0.0; }

    double number() const noexcept;           // 0 for what is none
    const std::string& text() const noexcept; // empty for what is none

    // Of an array or object; 0 for anything else.
    std::size_t size() const noexcept;
    bool empty() const noexcept { return size() == 0; }
    JsonValue operator[](std::size_t index) const noexcept; // precondition: below size()
    const std::string& key(std::size_t index) const noexcept;
    JsonValue operator[](const char* name) const noexcept;
    bool contains(const char* name) const noexcept;

private:
    friend class JsonTree;

    JsonValue(const JsonTree& tree, std::uint32_t node) noexcept : m_tree(&tree), m_node(node) {}

    const JsonTree* m_tree;
    std::uint32_t m_node;
};

class JsonTree {
public:
    // Raises BadDocument with line and column, or TooMuch where values are nested deeper than 64.
    explicit JsonTree(std::string_view bytes);
    JsonTree(const JsonTree&) = delete;
    JsonTree& operator=(const JsonTree&) = delete;
    ~JsonTree();

    JsonValue root() const noexcept { return {*this, m_root}; }

private:
    friend class JsonValue;
    struct Builder;

    struct Node {
        double number = 0.0;
        std::uint32_t first = 0; // of its entries; of a text, its place
        std::uint32_t count = 0;
        JsonValue::Type type = JsonValue::Null;
    };
    struct Entry {
        std::uint32_t key;
        std::uint32_t node;
    };

    std::vector<Node> m_nodes;
    std::vector<Entry> m_entries;
    std::vector<std::string> m_texts; // values and keys
    std::unordered_map<std::string, std::uint32_t> m_keys;
    std::uint32_t m_root = 0;
};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
