#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/HitRecord.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <type_traits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Walks every part of every curve of a container, in the container's order. Each curve yields
///
///     the curve, then from its first segment to its last:  segment, out tangent, in tangent, right key
///
/// where tangents appear only if the segment's interpolator uses them and the key at their end exists. So every key is
/// visited once, as the right key of the segment that ends at it, and a linear curve shows no tangents.
///
/// Records are made on demand: stepping and comparing touch no reference count. A record obtained through -> stays
/// valid until the iterator is moved; * gives a record of its own, so that std::reverse_iterator works (by *).
///
/// An iterator stays valid as long as the curve and the segment where it stands are in the container and the curve;
/// values and everything elsewhere may be edited meanwhile. Stepping past the ends is undefined, as for the standard's
/// iterators. An iterator belongs to one thread.
///
/// Use it as HitRecordIterator or as ConstHitRecordIterator; the first converts to the second.
template<class Parts>
class FCURVELIB_API BasicHitRecordIterator {
    using Container = typename Parts::template Qualified<FCurveContainer>;
    using Record = BasicHitRecord<Parts>;
    static constexpr bool isMutable = std::is_same_v<Parts, Private::MutableParts>;
    using CurvePosition = std::conditional_t<isMutable, FCurveContainer::iterator, FCurveContainer::const_iterator>;
    using SegmentPosition = std::conditional_t<isMutable, FCurve::iterator, FCurve::const_iterator>;

public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = Record;
    using difference_type = std::ptrdiff_t;
    using pointer = const Record*;
    using reference = Record;

    BasicHitRecordIterator() = default;
    /// Stands at the curve of that position.
    explicit BasicHitRecordIterator(CurvePosition curve) : m_curve(curve) {}
    /// From the twin that hands out parts to edit.
    template<class Other,
             class = std::enable_if_t<std::is_same_v<Other, Private::MutableParts> && !std::is_same_v<Other, Parts>>>
    BasicHitRecordIterator(const BasicHitRecordIterator<Other>& other)
        : m_curve(other.m_curve), m_segment(other.m_segment), m_stage(static_cast<Stage>(other.m_stage)) {}

    static BasicHitRecordIterator begin(Container& curves) { return BasicHitRecordIterator(curves.begin()); }
    static BasicHitRecordIterator end(Container& curves) { return BasicHitRecordIterator(curves.end()); }

    Record operator*() const;
    const Record* operator->() const;

    BasicHitRecordIterator& operator++() {
        advance();
        m_valid = false;
        return *this;
    }
    BasicHitRecordIterator operator++(int) {
        BasicHitRecordIterator old(*this);
        ++*this;
        return old;
    }
    BasicHitRecordIterator& operator--() {
        retreat();
        m_valid = false;
        return *this;
    }
    BasicHitRecordIterator operator--(int) {
        BasicHitRecordIterator old(*this);
        --*this;
        return old;
    }

    /// \name Look without making a record
    /// Precondition: not at the end.
    /// @{
    typename Record::Type getType() const noexcept;
    /// The property of the part.
    const char* getProperty(const char* key) const noexcept;
    /// @}

    friend bool operator==(const BasicHitRecordIterator& a, const BasicHitRecordIterator& b) noexcept {
        return a.m_stage == b.m_stage && a.m_curve == b.m_curve && (a.m_stage == AtCurve || a.m_segment == b.m_segment);
    }
    friend bool operator!=(const BasicHitRecordIterator& a, const BasicHitRecordIterator& b) noexcept {
        return !(a == b);
    }

private:
    template<class Other>
    friend class BasicHitRecordIterator;
    friend class Private::EditProofWalk;

    enum Stage : std::uint32_t { AtCurve = 0, AtSegment = 1, AtRightKey = 2, AtInTangent = 3, AtOutTangent = 4 };

    BasicHitRecordIterator(CurvePosition curve, SegmentPosition segment, Stage stage)
        : m_curve(curve), m_segment(segment), m_stage(stage) {}

    // allTangents: stands at both tangents of every segment, also where the walk does not show them.
    void advance(bool allTangents = false);
    void retreat();

    mutable Record m_record; // of this position if m_valid
    CurvePosition m_curve;
    SegmentPosition m_segment; // unused at AtCurve
    Stage m_stage = AtCurve;
    mutable bool m_valid = false;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
