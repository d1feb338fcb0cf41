#include "FCurveLib/SegmentMap.h"

#include "model/Access.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

constexpr std::size_t kFirstCapacity = 4; // most curves have few keys

// Curves built in order leave an eighth of each block free, so that a later insertion into a long one seldom splits.
constexpr std::size_t kSlack = 8;

// Index of the last of n ascending numbers that is not above x; 0 when none is, and for NaN.
// The loop has no branch that depends on x, so random look-ups cost no mispredictions.
inline std::size_t LastNotAbove(const double* xs, std::size_t n, double x) noexcept {
    const double* base = xs;
    while (n > 1) {
        const std::size_t half = n / 2;
        base += (base[half] <= x) ? half : 0;
        n -= half;
    }
    return static_cast<std::size_t>(base - xs);
}

} // namespace

struct SegmentMap::Block {
    explicit Block(std::size_t room) : xs(new double[room]), segments(new Segment*[room]), capacity(room) {}

    std::size_t slotOf(double x) const noexcept { return LastNotAbove(xs.get(), count, x); }

    // Precondition: there is room.
    void insert(std::size_t slot, double x, Segment* segment) noexcept {
        std::move_backward(xs.get() + slot, xs.get() + count, xs.get() + count + 1);
        std::move_backward(segments.get() + slot, segments.get() + count, segments.get() + count + 1);
        xs[slot] = x;
        segments[slot] = segment;
        ++count;
    }

    void erase(std::size_t slot) noexcept {
        std::move(xs.get() + slot + 1, xs.get() + count, xs.get() + slot);
        std::move(segments.get() + slot + 1, segments.get() + count, segments.get() + slot);
        --count;
    }

    // Moves the entries from the given slot on to the end of another block. Precondition: it has room.
    void moveTail(std::size_t from, Block& to) noexcept {
        std::move(xs.get() + from, xs.get() + count, to.xs.get() + to.count);
        std::move(segments.get() + from, segments.get() + count, to.segments.get() + to.count);
        to.count += count - from;
        count = from;
    }

    std::unique_ptr<double[]> xs;
    std::unique_ptr<Segment*[]> segments;
    std::size_t count = 0;
    std::size_t capacity;
};

SegmentEntry SegmentMapIterator::operator*() const noexcept {
    return {Access::leftKey(*m_segment), m_segment};
}

SegmentMapIterator& SegmentMapIterator::operator++() noexcept {
    Keyframe* key = Access::rightKey(*m_segment);
    m_segment = key ? Access::rightSegment(*key) : nullptr;
    return *this;
}

SegmentMapIterator& SegmentMapIterator::operator--() noexcept {
    if (!m_segment)
        m_segment = m_map->last();
    else
        m_segment = Access::leftSegment(*Access::leftKey(*m_segment));
    return *this;
}

SegmentMap::SegmentMap() noexcept = default;
SegmentMap::~SegmentMap() = default;

void SegmentMap::swap(SegmentMap& other) noexcept {
    m_firstX.swap(other.m_firstX);
    m_blocks.swap(other.m_blocks);
    std::swap(m_size, other.m_size);
}

Segment* SegmentMap::first() const noexcept {
    return m_blocks.front()->segments[0];
}

Segment* SegmentMap::last() const noexcept {
    const Block& block = *m_blocks.back();
    return block.segments[block.count - 1];
}

std::size_t SegmentMap::findBlock(double x) const noexcept {
    return LastNotAbove(m_firstX.data(), m_firstX.size(), x);
}

Segment* SegmentMap::lookUp(double x) const noexcept {
    const Block& block = *m_blocks[findBlock(x)];
    return block.segments[block.slotOf(x)];
}

SegmentMap::Place SegmentMap::locate(double x) const noexcept {
    const std::size_t b = findBlock(x);
    const Block& block = *m_blocks[b];
    const std::size_t slot = block.slotOf(x);
    return {b, slot, block.segments[slot], block.xs[slot] == x};
}

Segment* SegmentMap::at(std::size_t i) const noexcept {
    if (i >= m_size) return nullptr;
    auto block = m_blocks.begin();
    for (; i >= (*block)->count; ++block) i -= (*block)->count;
    return (*block)->segments[i];
}

std::size_t SegmentMap::indexOf(double x) const noexcept {
    const Place place = locate(x);
    std::size_t index = place.slot;
    for (std::size_t i = 0; i < place.block; ++i) index += m_blocks[i]->count;
    return index;
}

void SegmentMap::insertLeading(Segment* segment) {
    constexpr double x = -std::numeric_limits<double>::infinity();
    auto block = std::make_unique<Block>(kFirstCapacity);
    m_firstX.reserve(1);
    m_blocks.push_back(std::move(block));
    m_firstX.push_back(x);
    m_blocks.front()->insert(0, x, segment);
    m_size = 1;
}

void SegmentMap::insert(const Place& place, double x, Segment* segment) {
    Block* block = m_blocks[place.block].get();
    std::size_t slot = place.slot + 1;
    // Behind the last entry nothing is split.
    const bool append = place.block + 1 == m_blocks.size() && slot == block->count;
    if (block->count == blockSize || (append && block->count == blockSize - blockSize / kSlack)) {
        auto right = std::make_unique<Block>(blockSize);
        if (m_blocks.size() == m_blocks.capacity()) m_blocks.reserve(2 * m_blocks.size());
        m_firstX.reserve(m_blocks.capacity());
        const std::size_t kept = append ? block->count : blockSize / 2;
        block->moveTail(kept, *right);
        const double rightX = append ? x : right->xs[0];
        const auto at = static_cast<std::ptrdiff_t>(place.block) + 1;
        Block* const behind = right.get();
        m_blocks.insert(m_blocks.begin() + at, std::move(right));
        m_firstX.insert(m_firstX.begin() + at, rightX);
        if (slot > kept || append) {
            slot -= kept;
            block = behind;
        }
    } else if (block->count == block->capacity) {
        auto wider = std::make_unique<Block>(std::min(blockSize, block->capacity * 2));
        block->moveTail(0, *wider);
        m_blocks[place.block] = std::move(wider);
        block = m_blocks[place.block].get();
    }
    block->insert(slot, x, segment);
    ++m_size;
}

void SegmentMap::erase(double x) noexcept {
    const Place place = locate(x);
    assert(place.isAt);
    const std::size_t b = place.block;
    Block& block = *m_blocks[b];
    block.erase(place.slot);
    --m_size;
    const auto drop = [this](std::size_t i) {
        m_blocks.erase(m_blocks.begin() + static_cast<std::ptrdiff_t>(i));
        m_firstX.erase(m_firstX.begin() + static_cast<std::ptrdiff_t>(i));
    };
    if (block.count == 0) {
        drop(b);
    } else {
        if (place.slot == 0) m_firstX[b] = block.xs[0];
        // Thin neighbours join, so that a curve which lost most of its keys loses its blocks too.
        if (b + 1 < m_blocks.size() && block.count + m_blocks[b + 1]->count <= blockSize / 2
            && block.capacity >= blockSize / 2) {
            m_blocks[b + 1]->moveTail(0, block);
            drop(b + 1);
        }
    }
}

void SegmentMap::rekey(double oldX, double newX) noexcept {
    const Place place = locate(oldX);
    assert(place.isAt);
    m_blocks[place.block]->xs[place.slot] = newX;
    if (place.slot == 0) m_firstX[place.block] = newX;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
