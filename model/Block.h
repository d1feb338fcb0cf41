#pragma once

// The parts around a key, in one block of memory with one owner.
//
//      in tangent ---- key ---- out tangent
//                       |
//                       segment that starts at the key ----> next block
//
// So a segment's out tangent stands in its own block and its in tangent in the next one, with the key where it ends.
// The leading block has no key: its tangents are those at the curve's open ends, the leading segment's out tangent and
// the trailing segment's in tangent. A block that has left its curve, or never was in one, keeps to itself: both of its
// tangents are its segment's then.
//
// Every shared reference to a part shares the owner of its block. In a curve each block is held by the one before it,
// and the leading one by the curve.

#include "FCurveLib/FCurve.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Segment.h"
#include "FCurveLib/Tangent.h"

#include <atomic>
#include <cstddef>
#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

struct CurveLink {
    std::atomic<unsigned> references{1};
    FCurve* curve = nullptr; // null once the curve is gone
    // Asked by parts for their owner, on any thread: nothing writes to it while the curve dies.
    std::weak_ptr<FCurve> owner;
};

// What a part has besides its fields: properties, the first base; where it stands alone, what its block would know.
struct KeyframeContents : PropertyMap {
    std::weak_ptr<Keyframe> self;
};
struct TangentContents : PropertyMap {
    std::weak_ptr<Tangent> self;
    std::weak_ptr<Segment> segment;
};
struct SegmentContents : PropertyMap {
    std::weak_ptr<Segment> self;
    std::shared_ptr<Keyframe> leftKey;
    std::shared_ptr<Keyframe> rightKey;
    std::shared_ptr<Tangent> inTangent;
    std::shared_ptr<Tangent> outTangent;
};

// A segment made by hand without an allocation, for the length of a call. Its parts are somebody else's.
class BorrowedSegment {
public:
    BorrowedSegment(const Keyframe* leftKey, const Keyframe* rightKey, const Tangent* in, const Tangent* out) noexcept
        : m_contents{{}, {}, borrow(leftKey), borrow(rightKey), borrow(in), borrow(out)} {
        m_segment.m_box.borrow(&m_contents);
    }
    BorrowedSegment(const BorrowedSegment&) = delete;
    BorrowedSegment& operator=(const BorrowedSegment&) = delete;
    ~BorrowedSegment() { m_segment.m_box.borrow(nullptr); }

    const Segment& get() const noexcept { return m_segment; }

private:
    template<class Part>
    static std::shared_ptr<Part> borrow(const Part* part) noexcept {
        return std::shared_ptr<Part>(std::shared_ptr<void>(), const_cast<Part*>(part));
    }

    SegmentContents m_contents;
    Segment m_segment;
};

struct Block {
    // A block that is in no curve. Without a key it is a leading one.
    explicit Block(const Keyframe* from);
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block();
    static std::shared_ptr<Block> make(const Keyframe* key);

    // The block of a part; null for a part that stands alone.
    static inline Block* of(const Keyframe& key) noexcept;
    static inline Block* of(const Segment& segment) noexcept;
    static inline Block* of(const Tangent& tangent) noexcept;

    bool isLeading() const noexcept;
    Block* next() const noexcept;
    Block* previous() const noexcept;
    FCurve* curve() const noexcept;
    // The segment that a tangent of the block belongs to.
    Segment* segmentOf(const Tangent& tangent) noexcept;
    // The in tangent of a segment without right key.
    Tangent& inTangentAtEnd() noexcept;

    // In the order in which evaluation reads them: of the block where a segment ends the first cache line, of the one
    // where it starts the first two.
    Tangent in;
    Keyframe key;
    Tangent out;
    Segment segment;
    std::weak_ptr<Block> self;
};

// deliberate: the parts are no standard-layout classes, but compilers lay them out one after the other all the same.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#endif
inline Block* Block::of(const Keyframe& key) noexcept {
    if (!key.m_box.isSet(key.m_box.inBlock)) return nullptr;
    return reinterpret_cast<Block*>(reinterpret_cast<char*>(const_cast<Keyframe*>(&key)) - offsetof(Block, key));
}
inline Block* Block::of(const Segment& segment) noexcept {
    if (!segment.m_box.isSet(segment.m_box.inBlock)) return nullptr;
    return reinterpret_cast<Block*>(reinterpret_cast<char*>(const_cast<Segment*>(&segment)) - offsetof(Block, segment));
}
inline Block* Block::of(const Tangent& tangent) noexcept {
    if (!tangent.m_box.isSet(tangent.m_box.inBlock)) return nullptr;
    const std::size_t offset = tangent.m_isIn ? offsetof(Block, in) : offsetof(Block, out);
    return reinterpret_cast<Block*>(reinterpret_cast<char*>(const_cast<Tangent*>(&tangent)) - offset);
}
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

inline bool Block::isLeading() const noexcept {
    return segment.m_box.isSet(Segment::leadingFlag);
}
inline Block* Block::next() const noexcept {
    return segment.m_next.get();
}
inline Block* Block::previous() const noexcept {
    return segment.m_previous;
}
inline FCurve* Block::curve() const noexcept {
    return segment.m_curve ? segment.m_curve->curve : nullptr;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
