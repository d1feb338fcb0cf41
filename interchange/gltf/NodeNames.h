#pragma once

// Nodes by the names that curves give them.

#include "interchange/gltf/Asset.h"

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

// A node is called by its own name; "#3" is added where it has none, or where another node has the same.
class NodeNames {
public:
    explicit NodeNames(const Value& root) {
        const Value nodes = root["nodes"];
        std::unordered_map<std::string, std::size_t> counts;
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            m_names.push_back(nodes[i]["name"].textOr(""));
            ++counts[m_names.back()];
        }
        for (std::size_t i = 0; i < m_names.size(); ++i) {
            if (m_names[i].empty() || counts[m_names[i]] > 1) m_names[i] += '#' + std::to_string(i);
            m_indices.emplace(m_names[i], i);
        }
    }

    std::size_t size() const noexcept { return m_names.size(); }
    const std::string& nameOf(std::size_t node) const { return m_names[node]; }
    std::optional<std::size_t> find(const std::string& name) const {
        const auto found = m_indices.find(name);
        return found == m_indices.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::vector<std::string> m_names;
    std::unordered_map<std::string, std::size_t> m_indices;
};

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
