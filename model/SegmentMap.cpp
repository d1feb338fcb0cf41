#include "FCurveLib/detail/SegmentMap.h"

#include "model/Read.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

// Curves built in order leave an eighth of each block free, so that a later insertion into a long one seldom splits.
constexpr std::size_t kSlack = 8;

constexpr std::size_t kLine = 64; // of the cache, in bytes

// So few items are compared all at once: the steps of a search wait for each other.
constexpr std::size_t kCounted = 16;

inline double Abscissa(double x) noexcept {
    return x;
}
template<class Slot>
double Abscissa(const Slot& slot) noexcept {
    return slot.x;
}

// Asks the cache for every line of n items: in a large curve, or a scene of many, they come from memory, and one after
// the other the steps of a search would cost more than everything else.
template<class Item>
void PrefetchSearch(const Item* items, std::size_t n) noexcept {
#if defined(__GNUC__)
    for (std::size_t i = 0; i < n; i += kLine / sizeof(Item)) __builtin_prefetch(items + i);
#else
    (void)items;
    (void)n;
#endif
}

// Asks for what evaluation reads of a segment: the lines around its start, and the one at the key where it ends, which
// otherwise it would find through the first.
void PrefetchEvaluation(const Segment& segment, const Segment* next) noexcept {
#if defined(__GNUC__)
    const auto* start = reinterpret_cast<const char*>(&segment);
    __builtin_prefetch(start - 64);
    __builtin_prefetch(start);
    if (next) __builtin_prefetch(reinterpret_cast<const char*>(next) - 64);
#else
    (void)segment;
    (void)next;
#endif
}

// Index of the last of n ascending items that is not above x; 0 when none is, and for NaN.
// The loop has no branch that depends on x, so random look-ups cost no mispredictions.
template<class Item>
std::size_t LastNotAbove(const Item* items, std::size_t n, double x) noexcept {
    const Item* base = items;
    while (n > kCounted) {
        const std::size_t half = n / 2;
        base += (Abscissa(base[half]) <= x) ? half : 0;
        n -= half;
    }
    std::size_t notAbove = 0;
    for (std::size_t i = 1; i < n; ++i) notAbove += Abscissa(base[i]) <= x ? 1U : 0U;
    base += notAbove;
    return static_cast<std::size_t>(base - items);
}

template<class Item>
auto IteratorAt(std::vector<Item>& items, std::size_t i) noexcept {
    return items.begin() + static_cast<std::ptrdiff_t>(i);
}

} // namespace

SegmentEntry SegmentMapIterator::operator*() const noexcept {
    return {Read::leftKey(*m_segment), m_segment};
}

SegmentMapIterator& SegmentMapIterator::operator++() noexcept {
    Keyframe* key = Read::rightKey(*m_segment);
    m_segment = key ? Read::rightSegment(*key) : nullptr;
    return *this;
}

SegmentMapIterator& SegmentMapIterator::operator--() noexcept {
    if (!m_segment)
        m_segment = m_map->last();
    else
        m_segment = Read::leftSegment(*Read::leftKey(*m_segment));
    return *this;
}

SegmentMap::SegmentMap() noexcept = default;
SegmentMap::~SegmentMap() = default;

void SegmentMap::swap(SegmentMap& other) noexcept {
    m_head.swap(other.m_head);
    m_firstX.swap(other.m_firstX);
    m_rest.swap(other.m_rest);
    std::swap(m_size, other.m_size);
}

Segment* SegmentMap::first() const noexcept {
    return m_head.front().segment;
}

Segment* SegmentMap::last() const noexcept {
    return blockAt(m_rest.size()).back().segment;
}

std::size_t SegmentMap::findBlock(double x) const noexcept {
    if (m_firstX.empty() || !(m_firstX.front() <= x)) return 0;
    return LastNotAbove(m_firstX.data(), m_firstX.size(), x) + 1;
}

Segment* SegmentMap::lookUp(double x) const noexcept {
    const Block& block = blockAt(findBlock(x));
    PrefetchSearch(block.data(), block.size());
    const std::size_t slot = LastNotAbove(block.data(), block.size(), x);
    PrefetchEvaluation(*block[slot].segment, slot + 1 < block.size() ? block[slot + 1].segment : nullptr);
    return block[slot].segment;
}

SegmentMap::Place SegmentMap::locate(double x) const noexcept {
    // Most curves are built in order.
    const Block& end = blockAt(m_rest.size());
    if (end.back().x <= x) return {m_rest.size(), end.size() - 1, end.back().segment, end.back().x == x};
    const std::size_t b = findBlock(x);
    const Block& block = blockAt(b);
    PrefetchSearch(block.data(), block.size());
    const std::size_t slot = LastNotAbove(block.data(), block.size(), x);
    // An edit looks at the neighbours' neighbours, too.
    PrefetchEvaluation(*block[slot].segment, slot + 1 < block.size() ? block[slot + 1].segment : nullptr);
    if (slot > 0)
        PrefetchEvaluation(*block[slot - 1].segment, slot + 2 < block.size() ? block[slot + 2].segment : nullptr);
    return {b, slot, block[slot].segment, block[slot].x == x};
}

void SegmentMap::advance(Place& place) const noexcept {
    const Block* block = &blockAt(place.block);
    const bool isLastBlock = place.block == m_rest.size();
    if (++place.slot == block->size()) {
        place.segment = nullptr;
        if (isLastBlock) return;
        place.slot = 0;
        block = &blockAt(++place.block);
    }
    place.segment = (*block)[place.slot].segment;
    constexpr std::size_t ahead = 8;
    if (place.slot + ahead < block->size()) {
        PrefetchEvaluation(*(*block)[place.slot + ahead].segment, nullptr);
    } else if (place.block < m_rest.size()) {
        const Block& next = blockAt(place.block + 1);
        const std::size_t slot = place.slot + ahead - block->size();
        if (slot < next.size()) PrefetchEvaluation(*next[slot].segment, nullptr);
    }
}

Segment* SegmentMap::at(std::size_t i) const noexcept {
    if (i >= m_size) return nullptr;
    std::size_t b = 0;
    for (; i >= blockAt(b).size(); ++b) i -= blockAt(b).size();
    return blockAt(b)[i].segment;
}

std::size_t SegmentMap::indexOf(double x) const noexcept {
    const Place place = locate(x);
    std::size_t index = place.slot;
    for (std::size_t b = 0; b < place.block; ++b) index += blockAt(b).size();
    return index;
}

bool SegmentMap::hasMoreThan(std::size_t entries, double from, double to) const noexcept {
    if (!(from <= to) || m_size <= entries) return false;
    const Place first = locate(from), last = locate(to);
    std::size_t count = last.slot + (first.isAt ? 1 : 0); // and what lies between, less what lies before
    for (std::size_t b = first.block; b < last.block && count <= entries + first.slot; ++b) count += blockAt(b).size();
    return count > entries + first.slot;
}

void SegmentMap::insertLeading(Segment* segment) {
    m_head.push_back({-std::numeric_limits<double>::infinity(), segment});
    m_size = 1;
}

// An insertion splits one block at most: one that is there now, of which each may be full, or one that more than a
// quarter of a block was inserted into.
SegmentMap::Room SegmentMap::makeRoom(std::size_t insertions) {
    m_head.reserve(std::min(blockSize, m_size + insertions));
    Room room;
    if (m_size + insertions <= blockSize - blockSize / kSlack) return room;
    const std::size_t splits = std::min(insertions, m_rest.size() + insertions / (blockSize / 4) + 3);
    room.resize(splits);
    for (Block& block : room) block.reserve(blockSize);
    m_rest.reserve(m_rest.size() + splits);
    m_firstX.reserve(m_rest.capacity());
    return room;
}

void SegmentMap::insert(const Place& place, double x, Segment* segment, Room* room) {
    const std::size_t slot = place.slot + 1;
    Block& block = blockAt(place.block);
    // After the last entry nothing is split.
    const bool append = place.block == m_rest.size() && slot == block.size();
    if (block.size() < (append ? blockSize - blockSize / kSlack : blockSize)) {
        block.insert(IteratorAt(block, slot), {x, segment});
    } else {
        Block right;
        if (room && !room->empty()) {
            right = std::move(room->back());
            room->pop_back();
        }
        right.reserve(blockSize);
        const std::size_t kept = append ? block.size() : blockSize / 2;
        right.assign(IteratorAt(block, kept), block.end());
        if (slot > kept || append) right.insert(IteratorAt(right, slot - kept), {x, segment});
        const double rightX = right.front().x;
        // Both lists get their room first: what follows cannot fail half-way.
        if (m_rest.size() == m_rest.capacity()) m_rest.reserve(2 * m_rest.size() + 1);
        m_firstX.reserve(m_rest.capacity());
        m_rest.insert(IteratorAt(m_rest, place.block), std::move(right));
        m_firstX.insert(IteratorAt(m_firstX, place.block), rightX);
        Block& left = blockAt(place.block); // the list may have moved
        left.resize(kept);
        if (slot <= kept && !append) left.insert(IteratorAt(left, slot), {x, segment});
    }
    ++m_size;
}

void SegmentMap::erase(double x) noexcept {
    const Place place = locate(x);
    assert(place.isAt);
    Block& block = blockAt(place.block);
    block.erase(IteratorAt(block, place.slot));
    --m_size;
    const auto drop = [this](std::size_t i) {
        m_rest.erase(IteratorAt(m_rest, i - 1));
        m_firstX.erase(IteratorAt(m_firstX, i - 1));
    };
    if (block.empty()) {
        drop(place.block); // never the head, which holds the leading entry
        return;
    }
    if (place.slot == 0) m_firstX[place.block - 1] = block.front().x;
    // Thin neighbours join, so that a curve which lost most of its keys loses its blocks too.
    if (place.block < m_rest.size()) {
        const Block& next = blockAt(place.block + 1);
        if (block.size() + next.size() <= std::min(block.capacity(), blockSize / 2)) {
            block.insert(block.end(), next.begin(), next.end());
            drop(place.block + 1);
        }
    }
}

void SegmentMap::rekey(double oldX, double newX) noexcept {
    const Place place = locate(oldX);
    assert(place.isAt);
    blockAt(place.block)[place.slot].x = newX;
    if (place.slot == 0) m_firstX[place.block - 1] = newX;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
