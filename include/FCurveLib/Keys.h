#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Vector2D.h"

#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A key of a curve with all that stands around it, none of it absent. A small value: it refers to the curve's own
/// parts, and is good for as long as the key is in the curve.
template<class Curve>
class FCURVELIB_API BasicKeyView {
    template<class T>
    using Part = std::conditional_t<std::is_const_v<Curve>, const T, T>;

public:
    /// The key at which the segment starts. Precondition: the segment is in a curve, and is not its leading one.
    explicit BasicKeyView(Part<Segment>& right) noexcept : m_right(&right) {}

    const Vector2D<double>& get() const noexcept { return getKeyframe().get(); }
    double getX() const noexcept { return get().x; }
    double getY() const noexcept { return get().y; }
    Part<Keyframe>& getKeyframe() const noexcept;
    Part<Tangent>& getInTangent() const noexcept;
    Part<Tangent>& getOutTangent() const noexcept;
    Part<Segment>& getLeftSegment() const noexcept;
    Part<Segment>& getRightSegment() const noexcept { return *m_right; }

private:
    Part<Segment>* m_right;
};

/// Walks keys in order. Dereferencing makes the view, so there is no reference to hold on to: `for (auto key : range)`.
/// Valid as FCurve::iterator is: as long as its key is in the curve.
template<class Curve>
class BasicKeyIterator {
    using Base = std::conditional_t<std::is_const_v<Curve>, FCurve::const_iterator, FCurve::iterator>;

public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = BasicKeyView<Curve>;
    using difference_type = std::ptrdiff_t;
    using reference = value_type;
    class pointer {
    public:
        explicit pointer(value_type view) noexcept : m_view(view) {}
        const value_type* operator->() const noexcept { return &m_view; }

    private:
        value_type m_view;
    };

    BasicKeyIterator() = default;
    explicit BasicKeyIterator(Base position) noexcept : m_position(position) {}

    reference operator*() const { return value_type(*m_position); }
    pointer operator->() const { return pointer(**this); }
    BasicKeyIterator& operator++() {
        ++m_position;
        return *this;
    }
    BasicKeyIterator& operator--() {
        --m_position;
        return *this;
    }
    BasicKeyIterator operator++(int) { return BasicKeyIterator(m_position++); }
    BasicKeyIterator operator--(int) { return BasicKeyIterator(m_position--); }
    friend bool operator==(const BasicKeyIterator& a, const BasicKeyIterator& b) {
        return a.m_position == b.m_position;
    }
    friend bool operator!=(const BasicKeyIterator& a, const BasicKeyIterator& b) { return !(a == b); }

private:
    Base m_position;
};

/// The keys of a curve, in order. Refers to the curve, and follows its edits.
template<class Curve>
class FCURVELIB_API BasicKeyRange {
public:
    using iterator = BasicKeyIterator<Curve>;
    using const_iterator = iterator;
    using value_type = BasicKeyView<Curve>;

    explicit BasicKeyRange(Curve& curve) noexcept : m_curve(&curve) {}

    std::size_t size() const noexcept { return m_curve->size() - 1; }
    bool empty() const noexcept { return size() == 0; }
    iterator begin() const { return iterator(++m_curve->begin()); }
    iterator end() const { return iterator(m_curve->end()); }
    /// Takes as long as GetIndexedKeyframe. Precondition: index < size().
    value_type operator[](std::size_t index) const noexcept;
    /// Precondition: there is a key.
    value_type front() const { return *begin(); }
    value_type back() const { return *--end(); }

private:
    Curve* m_curve;
};

using KeyView = BasicKeyView<FCurve>;
using ConstKeyView = BasicKeyView<const FCurve>;
using KeyRange = BasicKeyRange<FCurve>;
using ConstKeyRange = BasicKeyRange<const FCurve>;

/// \name The keys of a curve
/// Any number of threads may walk the keys of a curve that nobody edits.
/// @{
inline KeyRange Keys(FCurve& curve) noexcept {
    return KeyRange(curve);
}
inline ConstKeyRange Keys(const FCurve& curve) noexcept {
    return ConstKeyRange(curve);
}

/// The key nearest to x that is not farther from it than the tolerance, in frames; of two equally near, the left one.
/// Empty where there is none, and for NaN and a negative tolerance. Logarithmic.
FCURVELIB_API std::shared_ptr<Keyframe> FindKey(FCurve& curve, double x,
                                                double tolerance = Keyframe::getMinSeparation());
FCURVELIB_API std::shared_ptr<const Keyframe> FindKey(const FCurve& curve, double x,
                                                      double tolerance = Keyframe::getMinSeparation());
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
