#include "model/Block.h"

#include "model/Raw.h"

#include <new>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

CurveReference CurveReference::make() {
    CurveReference reference;
    reference.m_link = new CurveLink;
    return reference;
}

CurveReference::CurveReference(const CurveReference& other) noexcept : m_link(other.m_link) {
    if (m_link) m_link->references.fetch_add(1, std::memory_order_relaxed);
}

CurveReference::~CurveReference() {
    if (m_link && m_link->references.fetch_sub(1, std::memory_order_acq_rel) == 1) delete m_link;
}

namespace {

// Blocks begin with a cache line: what evaluation reads of them stands in the first two.
template<class T>
struct LineAllocator {
    using value_type = T;

    LineAllocator() noexcept = default;
    template<class Other>
    LineAllocator(const LineAllocator<Other>&) noexcept {}

    T* allocate(std::size_t count) { return static_cast<T*>(::operator new(count * sizeof(T), line)); }
    void deallocate(T* place, std::size_t) noexcept { ::operator delete(place, line); }

    template<class Other>
    friend bool operator==(const LineAllocator&, const LineAllocator<Other>&) noexcept {
        return true;
    }
    template<class Other>
    friend bool operator!=(const LineAllocator&, const LineAllocator<Other>&) noexcept {
        return false;
    }

    static constexpr std::align_val_t line{64};
};

} // namespace

Block::Block(const Keyframe* from) : in(nullptr, true), out(nullptr, false) {
    in.m_box.setFlag(in.m_box.inBlock, true);
    key.m_box.setFlag(key.m_box.inBlock, true);
    out.m_box.setFlag(out.m_box.inBlock, true);
    segment.m_box.setFlag(segment.m_box.inBlock, true);
    segment.m_box.setFlag(Segment::leadingFlag, !from);
    if (from) Raw::copyKey(key, *from);
}

Block::~Block() = default;

std::shared_ptr<Block> Block::make(const Keyframe* key) {
    auto block = std::allocate_shared<Block>(LineAllocator<Block>(), key);
    block->self = block;
    return block;
}

Segment* Block::segmentOf(const Tangent& tangent) noexcept {
    if (&tangent == &out) return &segment;
    if (Block* before = previous()) return &before->segment;
    if (!isLeading()) return &segment;
    FCurve* owner = curve();
    return owner ? owner->m_segments.last() : &segment;
}

Tangent& Block::inTangentAtEnd() noexcept {
    FCurve* owner = previous() ? curve() : nullptr;
    return owner ? owner->m_leading->in : in;
}

std::shared_ptr<Keyframe> SharedOf(Keyframe& key) noexcept {
    return Read::share(&key);
}
std::shared_ptr<Segment> SharedOf(Segment& segment) noexcept {
    return Read::share(&segment);
}
std::shared_ptr<Tangent> SharedOf(Tangent& tangent) noexcept {
    return Read::share(&tangent);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
