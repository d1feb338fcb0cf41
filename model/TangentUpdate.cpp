#include "model/TangentUpdate.h"

#include "FCurveLib/Tolerance.h"
#include "model/Raw.h"
#include "model/TangentRules.h"

#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

const Vector2D<double>* PositionOf(const Keyframe* key) noexcept {
    return key ? &key->get() : nullptr;
}

TangentSite SiteOf(const Tangent& tangent, Segment* segment) noexcept {
    TangentSite site;
    site.handle = tangent.get();
    site.type = tangent.getType();
    site.isIn = tangent.isInTangent();
    site.weighted = tangent.isWeighted();
    site.weightLocked = tangent.isWeightLocked();
    if (!segment) return site;
    site.left = PositionOf(Read::leftKey(*segment));
    site.right = PositionOf(Read::rightKey(*segment));
    Keyframe* own = site.isIn ? Read::rightKey(*segment) : Read::leftKey(*segment);
    if (!own) return site;
    site.own = PositionOf(own);
    if (site.type <= Tangent::Linear) return site; // looks no further than its own segment
    site.before = PositionOf(Read::previousKey(*own));
    site.after = PositionOf(Read::nextKey(*own));
    return site;
}

// Stores the handle itself; whether it did.
bool Store(Tangent& tangent, const Vector2D<double>& handle, PendingChanges& changes) {
    if (!std::isfinite(handle.x) || !std::isfinite(handle.y)) return false;
    if (NearEqual(handle.x, tangent.getX()) && NearEqual(handle.y, tangent.getY())) return false;
    Raw::setHandle(tangent, handle.x, handle.y);
    changes.handleChanged(tangent);
    return true;
}

// A tangent made by hand is not its segment's own: it turns nothing.
bool IsOwn(const Tangent& tangent, Segment& segment) noexcept {
    return &tangent == (tangent.isInTangent() ? Read::inTangent(segment) : Read::outTangent(segment));
}

// The segment on the other side of a unified key; null where there is none.
Segment* UnifiedNeighbour(const Tangent& tangent, Segment& segment) noexcept {
    if (!IsOwn(tangent, segment)) return nullptr;
    Keyframe* key = tangent.isInTangent() ? Read::rightKey(segment) : Read::leftKey(segment);
    if (!key || !key->isTangentsUnified()) return nullptr;
    return tangent.isInTangent() ? Read::rightSegment(*key) : Read::leftSegment(*key);
}

// The tangent of that segment at the same key.
Tangent& Opposite(const Tangent& tangent, Segment& neighbour) noexcept {
    // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.UndefReturn): a segment in a curve has both
    return tangent.isInTangent() ? *Read::outTangent(neighbour) : *Read::inTangent(neighbour);
}

// A fixed tangent on the other side of a unified key turns to the angle of the given one.
void TurnOpposite(const Tangent& tangent, Segment& segment, PendingChanges& changes) {
    Segment* neighbour = UnifiedNeighbour(tangent, segment);
    if (!neighbour) return;
    Tangent& opposite = Opposite(tangent, *neighbour);
    if (opposite.getType() != Tangent::Fixed) return;
    Store(opposite, AlignedHandle(SiteOf(opposite, neighbour), tangent.get()), changes);
}

} // namespace

void StoreHandle(Tangent& tangent, Segment* segment, const Vector2D<double>& handle, PendingChanges& changes) {
    if (!Store(tangent, handle, changes) || !segment || !IsOwn(tangent, *segment)) return;
    // A plateau tangent at the segment's other end is tested for overshoot against this segment.
    Tangent* far = tangent.isInTangent() ? Read::outTangent(*segment) : Read::inTangent(*segment);
    if (far->getType() == Tangent::Plateau) UpdateTangent(*far, segment, changes);
    TurnOpposite(tangent, *segment, changes);
}

void AlignTangent(Tangent& tangent, Segment* segment, PendingChanges& changes) {
    Segment* neighbour = segment ? UnifiedNeighbour(tangent, *segment) : nullptr;
    if (neighbour)
        Store(tangent, AlignedHandle(SiteOf(tangent, segment), Opposite(tangent, *neighbour).get()), changes);
}

void UpdateTangent(Tangent& tangent, Segment* segment, PendingChanges& changes) {
    StoreHandle(tangent, segment, AutomaticHandle(SiteOf(tangent, segment)), changes);
}

void UpdateTangents(Keyframe* first, Keyframe* last, PendingChanges& changes) {
    for (Keyframe* key = first; key; key = Read::nextKey(*key)) {
        Segment* left = Read::leftSegment(*key);
        Segment* right = Read::rightSegment(*key);
        UpdateTangent(*Read::inTangent(*left), left, changes);
        UpdateTangent(*Read::outTangent(*right), right, changes);
        if (key == last) break;
    }
}

namespace {

void UpdateIfSmooth(Tangent& tangent, Segment* segment, PendingChanges& changes) {
    if (tangent.getType() > Tangent::Linear) UpdateTangent(tangent, segment, changes);
}

} // namespace

void UpdateBeforeChange(Keyframe* key, PendingChanges& changes) {
    if (!key) return;
    Segment* left = Read::leftSegment(*key);
    Segment* right = Read::rightSegment(*key);
    UpdateIfSmooth(*Read::inTangent(*left), left, changes);
    UpdateTangent(*Read::outTangent(*right), right, changes);
}

void UpdateAfterChange(Keyframe* key, PendingChanges& changes) {
    if (!key) return;
    Segment* left = Read::leftSegment(*key);
    Segment* right = Read::rightSegment(*key);
    UpdateTangent(*Read::inTangent(*left), left, changes);
    UpdateIfSmooth(*Read::outTangent(*right), right, changes);
}

void AlignTangents(Keyframe& key, PendingChanges& changes) {
    Segment* left = Read::leftSegment(key);
    Segment* right = Read::rightSegment(key);
    if (!left || !right) return;
    Tangent& in = *Read::inTangent(*left);
    Tangent& out = *Read::outTangent(*right);
    if (in.getType() == Tangent::Fixed)
        TurnOpposite(out, *right, changes);
    else
        TurnOpposite(in, *left, changes);
}

void EditHandle(Tangent& tangent, Segment* segment, double x, double y, PendingChanges& changes) {
    StoreHandle(tangent, segment, EditedHandle(SiteOf(tangent, segment), x, y), changes);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
