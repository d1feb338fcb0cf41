#pragma once

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Walks the positions of another iterator whose elements a filter accepts.
///
/// A filter is a function object that takes an element and returns bool. Where it also offers accepts(iterator), that
/// is asked instead, so that elements which are costly to make are made only for accepted positions. Filters may be
/// stacked.
template<class Filter, class Iterator>
class FilterIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = typename std::iterator_traits<Iterator>::value_type;
    using difference_type = typename std::iterator_traits<Iterator>::difference_type;
    using pointer = typename std::iterator_traits<Iterator>::pointer;
    using reference = typename std::iterator_traits<Iterator>::reference;

    FilterIterator() = default;
    /// Stands at the first accepted position from current on, or at the end.
    FilterIterator(Iterator current, Iterator end, Filter filter = Filter())
        : m_current(std::move(current)), m_end(std::move(end)), m_filter(std::move(filter)) {
        skip();
    }

    const Iterator& base() const noexcept { return m_current; }

    reference operator*() const { return *m_current; }
    pointer operator->() const { return m_current.operator->(); }

    FilterIterator& operator++() {
        ++m_current;
        skip();
        return *this;
    }
    FilterIterator operator++(int) {
        FilterIterator old(*this);
        ++*this;
        return old;
    }

    /// \name What the iterator beneath tells of its position, where it does
    /// @{
    template<class I = Iterator>
    auto getType() const noexcept -> decltype(std::declval<const I&>().getType()) {
        return m_current.getType();
    }
    template<class I = Iterator>
    auto getProperty(const char* key) const noexcept -> decltype(std::declval<const I&>().getProperty(key)) {
        return m_current.getProperty(key);
    }
    /// @}

    friend bool operator==(const FilterIterator& a, const FilterIterator& b) { return a.m_current == b.m_current; }
    friend bool operator!=(const FilterIterator& a, const FilterIterator& b) { return !(a == b); }

private:
    // Whether the filter can judge a position without what the iterator yields there.
    template<class F, class = void>
    struct JudgesPositions : std::false_type {};
    template<class F>
    struct JudgesPositions<F, std::void_t<decltype(std::declval<const F&>().accepts(std::declval<const Iterator&>()))>>
        : std::true_type {};

    bool accepted() const {
        if constexpr (JudgesPositions<Filter>::value)
            return m_filter.accepts(m_current);
        else
            return m_filter(*m_current);
    }
    void skip() {
        while (m_current != m_end && !accepted()) ++m_current;
    }

    Iterator m_current{};
    Iterator m_end{};
    Filter m_filter{};
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
