#include "model/Raw.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

BlockShape::BlockShape(const Block& block)
    : position(block.key.get()), in(block.in.get()), out(block.out.get()),
      interpolator(block.segment.getInterpolator()), inType(block.in.getType()), outType(block.out.getType()) {
    const auto set = [this](Flag flag, bool value) { flags = static_cast<std::uint8_t>(value ? flags | flag : flags); };
    set(InWeighted, block.in.isWeighted());
    set(InLocked, block.in.isWeightLocked());
    set(OutWeighted, block.out.isWeighted());
    set(OutLocked, block.out.isWeightLocked());
    set(Breakdown, block.key.isBreakdown());
    set(Unified, block.key.isTangentsUnified());
}

const CurveReference& Raw::identity(FCurve& c) {
    if (!c.m_identity) c.m_identity = c.makeReference();
    return c.m_identity;
}

void Raw::moveKey(Keyframe& k, const Vector2D<double>& position) {
    Recording::touchPart(k);
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
    Recording::add(c, *block);
    // What was the trailing segment keeps the in tangent that it was given.
    Tangent& atEnd = before.inTangentAtEnd();
    const Tangent plain(nullptr, true);
    copyTangent(block->in, atEnd);
    copyTangent(atEnd, plain);
    link(c, place, std::move(block));
    return segment;
}

void Raw::link(FCurve& c, const SegmentMap::Place& place, std::shared_ptr<Block> block, SegmentMap::Room* room) {
    Segment& segment = block->segment;
    Segment& before = *place.segment;
    c.m_segments.insert(place, block->key.getX(), &segment, room);
    if (segment.m_curve != c.m_link) segment.m_curve = c.m_link;
    segment.m_next = std::move(before.m_next);
    segment.m_previous = Block::of(before);
    if (segment.m_next) segment.m_next->segment.m_previous = block.get();
    before.m_next = std::move(block);
}

std::shared_ptr<Block> Raw::unlink(Block& block) noexcept {
    Segment& segment = block.segment;
    Segment& before = block.previous()->segment;
    block.curve()->m_segments.erase(block.key.getX());
    std::shared_ptr<Block> unlinked = std::move(before.m_next);
    before.m_next = std::move(segment.m_next);
    if (before.m_next) before.m_next->segment.m_previous = segment.m_previous;
    segment.m_previous = nullptr;
    segment.m_curve = {};
    return unlinked;
}

void Raw::setLeading(FCurve& c, std::shared_ptr<Block> leading) noexcept {
    c.m_leading.swap(leading);
    Segment& segment = c.m_leading->segment;
    segment.m_curve = c.m_link;
    segment.m_next = std::move(leading->segment.m_next);
    if (segment.m_next) segment.m_next->segment.m_previous = c.m_leading.get();
    c.m_segments.setLeading(&segment);
}

void Raw::setShape(Block& block, const BlockShape& shape) noexcept {
    const auto is = [&](BlockShape::Flag flag) { return (shape.flags & flag) != 0; };
    block.in.m_handle = shape.in;
    block.in.m_type = shape.inType;
    block.in.m_weighted = is(BlockShape::InWeighted);
    block.in.m_weightLocked = is(BlockShape::InLocked);
    block.out.m_handle = shape.out;
    block.out.m_type = shape.outType;
    block.out.m_weighted = is(BlockShape::OutWeighted);
    block.out.m_weightLocked = is(BlockShape::OutLocked);
    block.key.m_position = shape.position;
    block.key.m_box.setFlag(Keyframe::breakdownFlag, is(BlockShape::Breakdown));
    block.key.m_box.setFlag(Keyframe::unifiedFlag, is(BlockShape::Unified));
    block.segment.m_interpolator = shape.interpolator;
}

void Raw::release(std::shared_ptr<Block> leading) noexcept {
    for (std::shared_ptr<Block> block = std::move(leading); block;) {
        std::shared_ptr<Block> next = std::move(block->segment.m_next);
        if (next) next->segment.m_previous = nullptr;
        block = std::move(next);
    }
}

void Raw::copyKey(Keyframe& to, const Keyframe& from) {
    setProperties(to, from.m_box.properties());
    Recording::touchPart(to);
    to.m_position = from.m_position;
    to.m_box.setFlag(Keyframe::breakdownFlag, from.isBreakdown());
    to.m_box.setFlag(Keyframe::unifiedFlag, from.isTangentsUnified());
}

void Raw::copyTangent(Tangent& to, const Tangent& from) {
    setProperties(to, from.m_box.properties());
    Recording::touchPart(to);
    to.m_handle = from.m_handle;
    to.m_type = from.m_type;
    to.m_weighted = from.m_weighted;
    to.m_weightLocked = from.m_weightLocked;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
