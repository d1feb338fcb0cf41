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
    explicit Block(std::size_t room)
        : xs(new double[room]), segments(new std::shared_ptr<Segment>[room]), capacity(room) {}

    std::size_t slotOf(double x) const noexcept { return LastNotAbove(xs.get(), count, x); }

    // Precondition: there is room.
    void insert(std::size_t slot, double x, std::shared_ptr<Segment> segment) noexcept {
        std::move_backward(xs.get() + slot, xs.get() + count, xs.get() + count + 1);
        std::move_backward(segments.get() + slot, segments.get() + count, segments.get() + count + 1);
        xs[slot] = x;
        segments[slot] = std::move(segment);
        ++count;
    }

    std::shared_ptr<Segment> erase(std::size_t slot) noexcept {
        std::shared_ptr<Segment> segment = std::move(segments[slot]);
        std::move(xs.get() + slot + 1, xs.get() + count, xs.get() + slot);
        std::move(segments.get() + slot + 1, segments.get() + count, segments.get() + slot);
        --count;
        segments[count].reset();
        return segment;
    }

    // Moves the entries from the given slot on to the end of another block. Precondition: it has room.
    void moveTail(std::size_t from, Block& to) noexcept {
        std::move(xs.get() + from, xs.get() + count, to.xs.get() + to.count);
        std::move(segments.get() + from, segments.get() + count, to.segments.get() + to.count);
        to.count += count - from;
        count = from;
    }

    std::unique_ptr<double[]> xs;
    std::unique_ptr<std::shared_ptr<Segment>[]> segments;
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
    return m_blocks.front().segments[0].get();
}

Segment* SegmentMap::last() const noexcept {
    const Block& block = m_blocks.back();
    return block.segments[block.count - 1].get();
}

std::size_t SegmentMap::findBlock(double x) const noexcept {
    return LastNotAbove(m_firstX.data(), m_firstX.size(), x);
}

Segment* SegmentMap::lookUp(double x) const noexcept {
    const Block& block = m_blocks[findBlock(x)];
    return block.segments[block.slotOf(x)].get();
}

Segment* SegmentMap::at(std::size_t i) const noexcept {
    if (i >= m_size) return nullptr;
    auto block = m_blocks.begin();
    for (; i >= block->count; ++block) i -= block->count;
    return block->segments[i].get();
}

std::size_t SegmentMap::indexOf(double x) const noexcept {
    const std::size_t b = findBlock(x);
    std::size_t index = m_blocks[b].slotOf(x);
    for (std::size_t i = 0; i < b; ++i) index += m_blocks[i].count;
    return index;
}

void SegmentMap::insert(double x, std::shared_ptr<Segment> segment) {
    if (m_blocks.empty()) {
        m_firstX.reserve(1);
        m_blocks.emplace_back(kFirstCapacity);
        m_firstX.push_back(-std::numeric_limits<double>::infinity());
        m_blocks.front().insert(0, x, std::move(segment));
        m_size = 1;
        return;
    }
    std::size_t b = findBlock(x);
    std::size_t slot = m_blocks[b].slotOf(x) + 1;
    if (m_blocks[b].count == blockSize) {
        if (m_blocks.size() == m_blocks.capacity()) m_blocks.reserve(2 * m_blocks.size());
        m_firstX.reserve(m_blocks.capacity());
        Block right(blockSize);
        // Behind the last entry nothing is split, so that curves built in order fill their blocks.
        const bool append = b + 1 == m_blocks.size() && slot == blockSize;
        if (!append) m_blocks[b].moveTail(blockSize / 2, right);
        const double rightX = append ? x : right.xs[0];
        const auto at = static_cast<std::ptrdiff_t>(b) + 1;
        m_blocks.insert(m_blocks.begin() + at, std::move(right));
        m_firstX.insert(m_firstX.begin() + at, rightX);
        if (slot > m_blocks[b].count || append) {
            slot -= m_blocks[b].count;
            ++b;
        }
    } else if (m_blocks[b].count == m_blocks[b].capacity) {
        Block wider(std::min(blockSize, m_blocks[b].capacity * 2));
        m_blocks[b].moveTail(0, wider);
        m_blocks[b] = std::move(wider);
    }
    m_blocks[b].insert(slot, x, std::move(segment));
    ++m_size;
}

std::shared_ptr<Segment> SegmentMap::erase(double x) noexcept {
    const std::size_t b = findBlock(x);
    Block& block = m_blocks[b];
    const std::size_t slot = block.slotOf(x);
    assert(block.xs[slot] == x);
    std::shared_ptr<Segment> segment = block.erase(slot);
    --m_size;
    const auto drop = [this](std::size_t i) {
        m_blocks.erase(m_blocks.begin() + static_cast<std::ptrdiff_t>(i));
        m_firstX.erase(m_firstX.begin() + static_cast<std::ptrdiff_t>(i));
    };
    if (block.count == 0) {
        drop(b);
    } else {
        if (slot == 0) m_firstX[b] = block.xs[0];
        // Thin neighbours join, so that a curve which lost most of its keys loses its blocks too.
        if (b + 1 < m_blocks.size() && block.count + m_blocks[b + 1].count <= blockSize / 2
            && block.capacity >= blockSize / 2) {
            m_blocks[b + 1].moveTail(0, block);
            drop(b + 1);
        }
    }
    return segment;
}

void SegmentMap::rekey(double oldX, double newX) noexcept {
    const std::size_t b = findBlock(oldX);
    Block& block = m_blocks[b];
    const std::size_t slot = block.slotOf(oldX);
    assert(block.xs[slot] == oldX);
    block.xs[slot] = newX;
    if (slot == 0) m_firstX[b] = newX;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
