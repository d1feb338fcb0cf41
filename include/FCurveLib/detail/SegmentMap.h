#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstddef>
#include <iterator>
#include <memory>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

/// A keyframe, null for the leading entry, and the segment that starts at it.
struct SegmentEntry {
    Keyframe* key;
    Segment* segment;
};

/// Walks the entries of a SegmentMap along the links between segments and keys. Stays with its segment.
class FCURVELIB_API SegmentMapIterator {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = SegmentEntry;
    using difference_type = std::ptrdiff_t;
    using pointer = const SegmentEntry*;
    using reference = SegmentEntry;

    SegmentMapIterator() noexcept = default;

    SegmentEntry operator*() const noexcept;
    SegmentMapIterator& operator++() noexcept;
    SegmentMapIterator& operator--() noexcept;

    friend bool operator==(const SegmentMapIterator& a, const SegmentMapIterator& b) noexcept {
        return a.m_segment == b.m_segment;
    }
    friend bool operator!=(const SegmentMapIterator& a, const SegmentMapIterator& b) noexcept { return !(a == b); }

private:
    friend class SegmentMap;
    friend struct Read;
    SegmentMapIterator(Segment* segment, const SegmentMap* map) noexcept : m_segment(segment), m_map(map) {}

    Segment* m_segment = nullptr;      // null at the end
    const SegmentMap* m_map = nullptr; // for stepping back from the end
};

/// The ordered map of a curve: segments by the x of the key at which they start; the leading one, which starts at none,
/// comes first.
///
/// It owns nothing: the curve holds the leading segment, each key the segment that starts at it.
/// Segments are nodes of their own, chained through their keys, so that iterators survive every edit around them.
/// Beside the chain stands an index in two levels: blocks of at most blockSize contiguous pairs of abscissa and
/// segment, and the contiguous first abscissae of all blocks but the head, which most curves never outgrow. A look-up
/// reads contiguous numbers only; an insertion shifts at most one block and, once per split, the list of blocks.
class FCURVELIB_API SegmentMap {
public:
    SegmentMap() noexcept;
    SegmentMap(const SegmentMap&) = delete;
    SegmentMap& operator=(const SegmentMap&) = delete;
    ~SegmentMap();

    void swap(SegmentMap& other) noexcept;

    std::size_t size() const noexcept { return m_size; }
    SegmentMapIterator begin() const noexcept { return {first(), this}; }
    SegmentMapIterator end() const noexcept { return {nullptr, this}; }
    /// The last entry whose x is not above the given one; the leading entry for NaN.
    SegmentMapIterator find(double x) const noexcept { return {lookUp(x), this}; }

    Segment* first() const noexcept;
    Segment* last() const noexcept;
    Segment* lookUp(double x) const noexcept;

    /// Entry number i in key order, null past the end. Linear in the number of blocks.
    Segment* at(std::size_t i) const noexcept;
    /// Number of the entry that starts at x. Precondition: there is one.
    std::size_t indexOf(double x) const noexcept;

    /// Whether more entries than that start from one abscissa to another, both included. Looks at the index alone.
    bool hasMoreThan(std::size_t entries, double from, double to) const noexcept;

    /// Where an abscissa belongs: the entry that find() gives, and whether it starts at exactly that abscissa. Good
    /// until the map changes.
    struct Place {
        std::size_t block;
        std::size_t slot;
        Segment* segment;
        bool isAt;
    };
    Place locate(double x) const noexcept;
    /// Goes on to the next entry; the segment is null after the last one. For long walks: memory is asked for what
    /// comes.
    void advance(Place& place) const noexcept;

    struct Slot {
        double x;
        Segment* segment;
    };
    using Block = std::vector<Slot>;
    /// Memory for insertions to come.
    using Room = std::vector<Block>;

    /// Adds the first entry, the leading one. Precondition: the map is empty.
    void insertLeading(Segment* segment);
    /// Replaces the first entry. Precondition: there is one.
    void setLeading(Segment* segment) noexcept { m_head.front().segment = segment; }
    /// Room for so many insertions, whatever is taken out before. What throws changes nothing.
    Room makeRoom(std::size_t insertions);
    /// Adds an entry after the place where x belongs. Precondition: the map has no entry at x. Throws std::bad_alloc
    /// and then changes nothing; never throws while there is room.
    void insert(const Place& place, double x, Segment* segment, Room* room = nullptr);
    /// Takes the entry at x out. Precondition: there is one.
    void erase(double x) noexcept;
    /// Gives the entry at oldX another abscissa that leaves the order as it is. Precondition: there is one.
    void rekey(double oldX, double newX) noexcept;

private:
    static constexpr std::size_t blockSize = 128;

    // Blocks are counted from the head, which is number 0.
    std::size_t findBlock(double x) const noexcept;
    Block& blockAt(std::size_t i) noexcept { return i == 0 ? m_head : m_rest[i - 1]; }
    const Block& blockAt(std::size_t i) const noexcept { return i == 0 ? m_head : m_rest[i - 1]; }

    Block m_head;
    std::vector<double> m_firstX; // of each of the other blocks
    std::vector<Block> m_rest;
    std::size_t m_size = 0;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
