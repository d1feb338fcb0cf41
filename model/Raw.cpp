#include "model/Raw.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

const CurveReference& Raw::identity(FCurve& c) {
    if (!c.m_identity) c.m_identity = c.makeReference();
    return c.m_identity;
}

void Raw::moveKey(Keyframe& k, const Vector2D<double>& position) noexcept {
    if (position.x != k.m_position.x) Read::curve(k)->m_segments.rekey(k.m_position.x, position.x);
    k.m_position = position;
}

std::shared_ptr<Block> Raw::makeBlock(FCurve& c, const Keyframe* key, std::shared_ptr<Interpolator> interpolator) {
    auto block = Block::make(key);
    block->segment.m_curve = c.m_link;
    block->segment.m_interpolator = std::move(interpolator);
    return block;
}

Segment* Raw::appendKey(FCurve& c, const Keyframe& key, std::shared_ptr<Interpolator> interpolator) {
    const SegmentMap::Place place = c.m_segments.locate(key.getX());
    Block& before = *Block::of(*place.segment);
    if (place.isAt || before.next()) return nullptr;
    auto block = makeBlock(c, &key, std::move(interpolator));
    Segment* segment = &block->segment;
    c.m_segments.insert(place, key.getX(), segment);
    // What was the trailing segment keeps the in tangent that it was given.
    Tangent& atEnd = before.inTangentAtEnd();
    const Tangent plain(nullptr, true);
    copyTangent(block->in, atEnd);
    copyTangent(atEnd, plain);
    segment->m_previous = &before;
    before.segment.m_next = std::move(block);
    return segment;
}

void Raw::release(std::shared_ptr<Block> leading) noexcept {
    for (std::shared_ptr<Block> block = std::move(leading); block;) {
        std::shared_ptr<Block> next = std::move(block->segment.m_next);
        if (next) next->segment.m_previous = nullptr;
        block = std::move(next);
    }
}

void Raw::copyKey(Keyframe& to, const Keyframe& from) {
    to.m_box.setProperties(from.m_box.properties());
    to.m_position = from.m_position;
    to.m_box.setFlag(Keyframe::breakdownFlag, from.isBreakdown());
    to.m_box.setFlag(Keyframe::unifiedFlag, from.isTangentsUnified());
}

void Raw::copyTangent(Tangent& to, const Tangent& from) {
    to.m_box.setProperties(from.m_box.properties());
    to.m_handle = from.m_handle;
    to.m_type = from.m_type;
    to.m_weighted = from.m_weighted;
    to.m_weightLocked = from.m_weightLocked;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
