#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstddef>
#include <iterator>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Base that puts every living object of type T into one list, newest first.
///
/// Construction and destruction change the list, which is the host's to serialise; walking it changes nothing. The
/// lists of Reader and Writer live in the library, once for the library and all its hosts.
template<class T>
class FCURVELIB_API SimpleListNode {
public:
    /// Walks from the newest object to the oldest. A default-constructed one is the end.
    class iterator {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = T*;
        using reference = T&;

        iterator() noexcept = default;

        T& operator*() const noexcept { return *static_cast<T*>(m_node); }
        T* operator->() const noexcept { return static_cast<T*>(m_node); }
        iterator& operator++() noexcept {
            m_node = m_node->m_next;
            return *this;
        }
        iterator operator++(int) noexcept {
            iterator old(*this);
            ++*this;
            return old;
        }
        iterator& operator--() noexcept {
            m_node = m_node ? m_node->m_previous : s_last;
            return *this;
        }
        iterator operator--(int) noexcept {
            iterator old(*this);
            --*this;
            return old;
        }
        friend bool operator==(const iterator& a, const iterator& b) noexcept { return a.m_node == b.m_node; }
        friend bool operator!=(const iterator& a, const iterator& b) noexcept { return a.m_node != b.m_node; }

    private:
        friend class SimpleListNode;
        explicit iterator(SimpleListNode* node) noexcept : m_node(node) {}

        SimpleListNode* m_node = nullptr;
    };

    static iterator begin() noexcept { return iterator(s_first); }
    static iterator end() noexcept { return iterator(); }
    /// The newest and the oldest object; null when there is none.
    static T* first() noexcept { return static_cast<T*>(s_first); }
    static T* last() noexcept { return static_cast<T*>(s_last); }
    /// The object constructed before this one; null for the last.
    T* next() const noexcept { return static_cast<T*>(m_next); }

    SimpleListNode(const SimpleListNode&) = delete;
    SimpleListNode& operator=(const SimpleListNode&) = delete;

protected:
    SimpleListNode() noexcept : m_next(s_first) {
        (s_first ? s_first->m_previous : s_last) = this;
        s_first = this;
    }
    ~SimpleListNode() {
        (m_previous ? m_previous->m_next : s_first) = m_next;
        (m_next ? m_next->m_previous : s_last) = m_previous;
    }

private:
    // Pointers to nodes, not to T: while a node is constructed or destroyed there is no T yet, or any more.
    static SimpleListNode* s_first;
    static SimpleListNode* s_last;

    SimpleListNode* m_next;
    SimpleListNode* m_previous = nullptr;
};

template<class T>
SimpleListNode<T>* SimpleListNode<T>::s_first = nullptr;
template<class T>
SimpleListNode<T>* SimpleListNode<T>::s_last = nullptr;

} // namespace v19
} // namespace VEM_FN::FCurveLib
