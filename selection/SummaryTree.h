#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// An unordered collection of leaves and the summary of them all. Changing one leaf costs O(log n) at the next settle():
// summaries stand in levels, each node merges fanOut nodes of the level below, and only nodes above touched leaves are
// made anew. Summaries have merge(const Summary&) and begin empty.
template<class Leaf, class Summary>
class SummaryTree {
public:
    std::size_t size() const noexcept { return m_leaves.size(); }
    Leaf& operator[](std::size_t i) noexcept { return m_leaves[i]; }

    void add(Leaf leaf) {
        m_leaves.push_back(std::move(leaf));
        touch(size() - 1);
    }

    // Takes the leaf out; the last one gets its number.
    Leaf remove(std::size_t i) noexcept {
        Leaf removed = std::move(m_leaves[i]);
        if (i + 1 != size()) {
            m_leaves[i] = std::move(m_leaves.back());
            touch(i);
        }
        m_leaves.pop_back();
        m_settled = false;
        if (size() != 0) touch(size() - 1); // its node is the last one now
        return removed;
    }

    void clear() noexcept {
        m_leaves.clear();
        m_touched.clear();
        m_allTouched = true;
        m_settled = false;
    }

    // The leaf's contribution changed.
    void touch(std::size_t i) noexcept {
        m_settled = false;
        const std::size_t node = i / fanOut;
        if (m_allTouched || (!m_touched.empty() && m_touched.back() == node)) return;
        if (m_touched.size() > nodesAbove(size())) {
            m_allTouched = true;
            return;
        }
        try {
            m_touched.push_back(node);
        } catch (...) {
            m_allTouched = true;
        }
    }

    bool isSettled() const noexcept { return m_settled; }

    // The summary of all leaves, after include(summary, leaf) has been called for leaves near touched ones.
    template<class Include>
    const Summary& settle(const Include& include) {
        if (m_settled) return m_root;
        if (m_leaves.empty()) {
            m_levels.clear();
            m_root = Summary();
        } else {
            std::vector<std::size_t> nodes = touchedNodes();
            std::size_t below = size();
            for (std::size_t level = 0;; ++level) {
                const std::size_t count = nodesAbove(below);
                if (level == m_levels.size()) m_levels.emplace_back();
                m_levels[level].resize(count);
                for (const std::size_t node : nodes) {
                    Summary summary;
                    const std::size_t end = std::min(below, (node + 1) * fanOut);
                    for (std::size_t i = node * fanOut; i < end; ++i) {
                        if (level == 0)
                            include(summary, m_leaves[i]);
                        else
                            summary.merge(m_levels[level - 1][i]);
                    }
                    m_levels[level][node] = std::move(summary);
                }
                if (count == 1) {
                    m_levels.resize(level + 1);
                    break;
                }
                below = count;
                for (std::size_t& node : nodes) node /= fanOut;
                nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
            }
            m_root = m_levels.back().front();
        }
        m_touched.clear();
        m_allTouched = false;
        m_settled = true;
        return m_root;
    }

private:
    static constexpr std::size_t fanOut = 16;

    static constexpr std::size_t nodesAbove(std::size_t count) noexcept { return (count + fanOut - 1) / fanOut; }

    // The numbers of the lowest nodes to make anew, ascending.
    std::vector<std::size_t> touchedNodes() const {
        const std::size_t count = nodesAbove(size());
        std::vector<std::size_t> nodes;
        if (m_allTouched) {
            nodes.resize(count);
            for (std::size_t i = 0; i < count; ++i) nodes[i] = i;
        } else {
            for (const std::size_t node : m_touched)
                if (node < count) nodes.push_back(node);
            std::sort(nodes.begin(), nodes.end());
            nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
        }
        return nodes;
    }

    std::vector<Leaf> m_leaves;
    std::vector<std::vector<Summary>> m_levels;
    std::vector<std::size_t> m_touched; // lowest nodes, in any order
    bool m_allTouched = false;
    bool m_settled = false;
    Summary m_root;
};

// A set of parts and the summary of them all. Parts are not kept alive; dead ones count for nothing.
// Summaries have include(const Part&), too.
template<class Part, class Summary>
class PartSet {
public:
    // Puts the part in or out. Returns whether the summary may change: a part that stays in is taken to have changed.
    bool put(const Part& part, bool in) {
        const auto found = m_numbers.find(&part);
        if (found == m_numbers.end()) {
            if (in) add(part);
            return in;
        }
        const std::size_t number = found->second;
        if (in) {
            m_tree[number].alive = part.getShared(); // another part may have lived at this address
            m_tree.touch(number);
        } else {
            m_numbers.erase(found);
            m_tree.remove(number);
            if (number < m_tree.size()) m_numbers[m_tree[number].part] = number;
        }
        return true;
    }

    // Precondition: the part is not in.
    void add(const Part& part) {
        const auto entry = m_numbers.emplace(&part, m_tree.size()).first;
        try {
            m_tree.add({&part, part.getShared()});
        } catch (...) {
            m_numbers.erase(entry);
            throw;
        }
    }

    void clear() noexcept {
        m_numbers.clear();
        m_tree.clear();
    }

    const Summary& settle() {
        return m_tree.settle([](Summary& summary, const Member& member) {
            if (const auto part = member.alive.lock()) summary.include(*part);
        });
    }

private:
    struct Member {
        const Part* part; // may be dead
        std::weak_ptr<const Part> alive;
    };

    SummaryTree<Member, Summary> m_tree;
    std::unordered_map<const Part*, std::size_t> m_numbers;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
