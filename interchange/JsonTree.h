#pragma once

// JSON documents for reading alone, in one block of memory: large ones take a fraction of what a tree of objects does.

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
    class Iterator;

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

    // The values in an array or object; none in anything else. Counting and indexing walk over them.
    Iterator begin() const noexcept;
    Iterator end() const noexcept;
    std::size_t size() const noexcept;
    bool empty() const noexcept;
    JsonValue operator[](std::size_t index) const noexcept; // precondition: below size()
    JsonValue operator[](const char* name) const noexcept;
    bool contains(const char* name) const noexcept { return (*this)[name].m_node != 0; }
    const std::string& key() const noexcept; // this value's own, in its object

private:
    friend class JsonTree;

    JsonValue(const JsonTree& tree, std::uint32_t node) noexcept : m_tree(&tree), m_node(node) {}
    std::uint32_t after() const noexcept; // the first node behind this value

    const JsonTree* m_tree;
    std::uint32_t m_node;
};

class JsonValue::Iterator {
public:
    explicit Iterator(const JsonValue& value) noexcept : m_value(value) {}

    const JsonValue& operator*() const noexcept { return m_value; }
    const JsonValue* operator->() const noexcept { return &m_value; }
    Iterator& operator++() noexcept {
        m_value.m_node = m_value.after();
        return *this;
    }
    bool operator!=(const Iterator& other) const noexcept { return m_value.m_node != other.m_value.m_node; }

private:
    JsonValue m_value;
};

class JsonTree {
public:
    // Raises BadDocument, or TooMuch where values are nested deeper than 64, with line and column.
    explicit JsonTree(std::string_view bytes);
    JsonTree(const JsonTree&) = delete;
    JsonTree& operator=(const JsonTree&) = delete;
    ~JsonTree();

    JsonValue root() const noexcept { return {*this, 1}; }

private:
    friend class JsonValue;
    struct Builder;

    // In the order of the document: the values in an array or object follow it.
    struct Node {
        double number = 0.0;
        std::uint32_t place = 0; // of an array or object, the first node behind it; of a text, its index
        std::uint32_t key : 28;
        std::uint32_t type : 4;
    };

    std::vector<Node> m_nodes;
    std::vector<std::string> m_texts; // values and keys
    std::unordered_map<std::string, std::uint32_t> m_keys;
};

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
