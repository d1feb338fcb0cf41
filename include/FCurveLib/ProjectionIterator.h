#pragma once

#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Walks what Iterator walks, and yields Projection()(*iterator) for each element.
///
/// As strong as the iterator beneath (its category is passed on). A projection to const converts from the mutable one.
template<class Projection, class Iterator>
class ProjectionIterator {
public:
    using iterator_category = typename std::iterator_traits<Iterator>::iterator_category;
    using difference_type = typename std::iterator_traits<Iterator>::difference_type;
    using reference = decltype(std::declval<const Projection&>()(*std::declval<const Iterator&>()));
    using value_type = std::remove_cv_t<std::remove_reference_t<reference>>;
    using pointer = std::remove_reference_t<reference>*;

    ProjectionIterator() = default;
    explicit ProjectionIterator(Iterator base) : m_base(std::move(base)) {}

    template<
        class Other, class OtherIterator,
        class = std::enable_if_t<
            std::is_convertible_v<
                OtherIterator,
                Iterator> && std::is_convertible_v<typename ProjectionIterator<Other, OtherIterator>::pointer, pointer>>>
    ProjectionIterator(const ProjectionIterator<Other, OtherIterator>& other) : m_base(other.base()) {}

    const Iterator& base() const noexcept { return m_base; }

    reference operator*() const { return Projection()(*m_base); }
    pointer operator->() const { return std::addressof(**this); }

    ProjectionIterator& operator++() {
        ++m_base;
        return *this;
    }
    ProjectionIterator operator++(int) {
        ProjectionIterator old(*this);
        ++m_base;
        return old;
    }
    ProjectionIterator& operator--() {
        --m_base;
        return *this;
    }
    ProjectionIterator operator--(int) {
        ProjectionIterator old(*this);
        --m_base;
        return old;
    }

private:
    Iterator m_base{};
};

template<class P, class I, class Q, class J>
bool operator==(const ProjectionIterator<P, I>& a, const ProjectionIterator<Q, J>& b) {
    return a.base() == b.base();
}
template<class P, class I, class Q, class J>
bool operator!=(const ProjectionIterator<P, I>& a, const ProjectionIterator<Q, J>& b) {
    return !(a == b);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
