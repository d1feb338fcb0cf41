#include "selection/EditChanges.h"

#include "FCurveLib/HitRecord.h"
#include "model/Delivery.h"
#include "selection/SelectionState.h"

#include <cstring>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

enum What : unsigned {
    Removed = 1,
    Added = 2,
    Moved = 4,
    Unified = 8,
    Breakdown = 16,
    Interpolation = 32,
    InHandle = 64, // then type, weighted and weight lock of the in tangent, and the same of the out tangent
    OutHandle = InHandle << 4
};

// A side's four bits, from its handle's on.
unsigned SideOf(const Tangent& now, const Vector2D<double>& handle, unsigned type, bool weighted, bool locked) {
    return (now.get() != handle ? 1U : 0U) | (now.getType() != type ? 2U : 0U)
           | (now.isWeighted() != weighted ? 4U : 0U) | (now.isWeightLocked() != locked ? 8U : 0U);
}

template<class Part, class Call>
void TellPart(const std::shared_ptr<FCurve>& curve, Part& part, const Call& call) {
    if (Read::curve(part) == curve.get()) Deliver(curve.get(), part, call);
}

void TellTangent(const std::shared_ptr<FCurve>& curve, Tangent& tangent, unsigned side) {
    for (std::uint32_t type = 0; type < 4; ++type)
        if (side & (1U << type))
            TellPart(curve, tangent, [&](FCurveObserver& observer) {
                observer.tangentIntrinsicChanged(tangent, static_cast<FCurveObserver::TangentIntrinsicType>(type));
            });
}

template<class Part>
void TellPropertyOf(const std::shared_ptr<FCurve>& curve, const std::shared_ptr<Part>& part, const std::string& key,
                    const std::string& before, const std::vector<std::weak_ptr<SelectionState>>& selections) {
    if (!part || Read::curve(*part) != curve.get()) return;
    const std::string value = part->getProperty(key.c_str());
    TellProperty(*part, key.c_str(), value.c_str());
    if (key != SelectionFilter::key || (value == SelectionFilter::value) == (before == SelectionFilter::value)) return;
    HitRecord record;
    if constexpr (std::is_same_v<Part, Tangent>)
        record.reset(part, true);
    else
        record.reset(part);
    for (const auto& selection : selections)
        if (const auto state = selection.lock())
            state->deliver([&](SelectionObserver& observer) {
                value == SelectionFilter::value ? observer.selected(record) : observer.deselected(record);
            });
}

} // namespace

void EditChanges::replaced(FCurve& curve) {
    if (m_replaced.insert(&curve).second) m_whole.push_back(curve.getShared());
}
void EditChanges::added(FCurve& curve, const std::shared_ptr<Block>& block) {
    m_blocks.push_back({curve.getShared(), block, Added});
}
void EditChanges::removed(FCurve& curve, const std::shared_ptr<Block>& block) {
    m_blocks.push_back({curve.getShared(), block, Removed});
}

void EditChanges::changed(FCurve& curve, const std::shared_ptr<Block>& block, const BlockShape& before) {
    const auto was = [&](BlockShape::Flag flag) { return (before.flags & flag) != 0; };
    unsigned what = 0;
    if (block->key.get() != before.position) what |= Moved;
    if (block->key.isTangentsUnified() != was(BlockShape::Unified)) what |= Unified;
    if (block->key.isBreakdown() != was(BlockShape::Breakdown)) what |= Breakdown;
    if (Read::interpolator(block->segment) != before.interpolator.get()) what |= Interpolation;
    what |=
        InHandle * SideOf(block->in, before.in, before.inType, was(BlockShape::InWeighted), was(BlockShape::InLocked));
    what |= OutHandle
            * SideOf(block->out, before.out, before.outType, was(BlockShape::OutWeighted), was(BlockShape::OutLocked));
    if (what != 0) m_blocks.push_back({curve.getShared(), block, what});
}

void EditChanges::property(FCurve& curve, std::shared_ptr<Block> block, Recorder::Carrier carrier,
                           const std::string& key, const std::string& before) {
    m_properties.push_back({curve.getShared(), std::move(block), carrier, key, before});
}
void EditChanges::renamed(FCurve& curve) {
    m_renamed.push_back(curve.getShared());
}

void EditChanges::tellBlocks(unsigned what) const {
    for (const BlockChange& change : m_blocks) {
        const unsigned bits = change.what & what;
        if (bits == 0 || isReplaced(*change.curve)) continue;
        FCurve& curve = *change.curve;
        Segment& segment = change.block->segment;
        Keyframe& key = change.block->key;
        const auto tellKey = [&](FCurveObserver::KeyframeIntrinsicType type) {
            TellPart(change.curve, key,
                     [&](FCurveObserver& observer) { observer.keyframeIntrinsicChanged(key, type); });
        };
        if (bits & Removed && !Read::curve(segment))
            Deliver(&curve, segment, [&](FCurveObserver& observer) { observer.segmentRemoved(curve, segment); });
        if (bits & Added)
            TellPart(change.curve, segment, [&](FCurveObserver& observer) { observer.segmentAdded(curve, segment); });
        if (bits & Moved) tellKey(FCurveObserver::KeyframePosition);
        if (bits & Unified) tellKey(FCurveObserver::KeyframeTangentsUnified);
        if (bits & Breakdown) tellKey(FCurveObserver::KeyframeBreakdown);
        if (bits & Interpolation)
            TellPart(change.curve, segment, [&](FCurveObserver& observer) {
                observer.segmentIntrinsicChanged(segment, FCurveObserver::SegmentInterpolator);
            });
        TellTangent(change.curve, change.block->in, bits / InHandle % 16);
        TellTangent(change.curve, change.block->out, bits / OutHandle);
    }
}

void EditChanges::tell(FCurveContainer& container, const std::vector<std::weak_ptr<SelectionState>>& selections) const {
    for (const auto& curve : m_whole) curve->notifyChanged();
    tellBlocks(Removed);
    tellBlocks(Added);
    tellBlocks(~(Removed | Added));
    for (const PropertyChange& change : m_properties) {
        Block* const block = change.block.get();
        const auto tellOf = [&](const auto& part) {
            TellPropertyOf(change.curve, part, change.key, change.before, selections);
        };
        switch (change.carrier) {
        case Recorder::OfContainer:
            break;
        case Recorder::OfCurve:
            tellOf(change.curve);
            break;
        case Recorder::OfSegment:
            tellOf(Read::share(&block->segment));
            break;
        case Recorder::OfKey:
            tellOf(Read::share(&block->key));
            break;
        case Recorder::OfInTangent:
            tellOf(Read::share(&block->in));
            break;
        case Recorder::OfOutTangent:
            tellOf(Read::share(&block->out));
            break;
        }
    }
    for (const auto& curve : m_renamed)
        Deliver(curve.get(), *curve,
                [&](FCurveObserver& observer) { observer.curveIntrinsicChanged(*curve, FCurveObserver::CurveName); });
    if (m_container) container.notifyChanged();
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
