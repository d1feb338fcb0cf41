#include "model/Edit.h"

#include "FCurveLib/Tolerance.h"
#include "model/TangentRules.h"

#include <cmath>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

ObserverSet<FCurveObserver>& GlobalObservers() noexcept {
    // deliberate: never destroyed, so that observers which die at process exit can still unsubscribe
    // NOLINTNEXTLINE(bugprone-unhandled-exception-at-new): one small object, at the very first use
    static auto& observers = *new ObserverSet<FCurveObserver>;
    return observers;
}

Edit::Edit(FCurve* curve) {
    if (!curve) return;
    ObserverSet<FCurveObserver>& observers = Access::observers(*curve);
    if (observers.empty() && GlobalObservers().empty())
        m_silent = &observers;
    else
        m_curve = curve->getShared();
}

void Edit::add(Change change) {
    if (m_count < m_few.size())
        m_few[m_count] = std::move(change);
    else
        m_more.push_back(std::move(change));
    ++m_count;
}

void Edit::moved(Keyframe& key) {
    if (m_curve)
        add({key.getShared(), nullptr});
    else
        ++m_count;
}

void Edit::handleChanged(Tangent& tangent) {
    if (!m_curve) {
        ++m_count;
        return;
    }
    // A tangent may be reached twice in one edit; it is told of once, with its final handle.
    const auto same = [&](const Change& change) { return change.tangent.get() == &tangent; };
    const std::size_t few = m_count < m_few.size() ? m_count : m_few.size();
    for (std::size_t i = 0; i < few; ++i)
        if (same(m_few[i])) return;
    for (std::size_t i = m_more.size(), looks = 0; i > 0 && looks < 8; --i, ++looks)
        if (same(m_more[i - 1])) return;
    add({nullptr, tangent.getShared()});
}

void Edit::notify() {
    if (m_silent && m_count > 0)
        m_silent->admits(); // nobody listens, but a switch must learn that something was suppressed
    if (!m_curve) return;
    const auto tell = [this](const Change& change) {
        if (change.key && Access::curve(*change.key) == m_curve.get())
            Deliver(m_curve.get(), *change.key, [&](FCurveObserver& observer) {
                observer.keyframeIntrinsicChanged(*change.key, FCurveObserver::KeyframePosition);
            });
        if (change.tangent && Access::curve(*change.tangent) == m_curve.get())
            Deliver(m_curve.get(), *change.tangent, [&](FCurveObserver& observer) {
                observer.tangentIntrinsicChanged(*change.tangent, FCurveObserver::TangentHandle);
            });
    };
    for (std::size_t i = 0; i < m_count && i < m_few.size(); ++i) tell(m_few[i]);
    for (const Change& change : m_more) tell(change);
}

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
    site.left = PositionOf(Access::leftKey(*segment));
    site.right = PositionOf(Access::rightKey(*segment));
    Keyframe* own = site.isIn ? Access::rightKey(*segment) : Access::leftKey(*segment);
    if (!own) return site;
    site.own = PositionOf(own);
    if (site.type <= Tangent::Linear) return site; // looks no further than its own segment
    site.before = PositionOf(PreviousKey(*own));
    site.after = PositionOf(NextKey(*own));
    return site;
}

// Stores the handle itself; whether it did.
bool Store(Tangent& tangent, const Vector2D<double>& handle, Edit& edit) {
    if (!std::isfinite(handle.x) || !std::isfinite(handle.y)) return false;
    if (NearEqual(handle.x, tangent.getX()) && NearEqual(handle.y, tangent.getY())) return false;
    Access::setHandleRaw(tangent, handle.x, handle.y);
    edit.handleChanged(tangent);
    return true;
}

// A tangent made by hand is not its segment's own: it turns nothing.
bool IsOwn(const Tangent& tangent, Segment& segment) noexcept {
    return &tangent == (tangent.isInTangent() ? Access::inTangent(segment) : Access::outTangent(segment));
}

// The segment on the other side of a unified key; null where there is none.
Segment* UnifiedNeighbour(const Tangent& tangent, Segment& segment) noexcept {
    if (!IsOwn(tangent, segment)) return nullptr;
    Keyframe* key = tangent.isInTangent() ? Access::rightKey(segment) : Access::leftKey(segment);
    if (!key || !key->isTangentsUnified()) return nullptr;
    return tangent.isInTangent() ? Access::rightSegment(*key) : Access::leftSegment(*key);
}

// The tangent of that segment at the same key.
Tangent& Opposite(const Tangent& tangent, Segment& neighbour) noexcept {
    return tangent.isInTangent() ? *Access::outTangent(neighbour) : *Access::inTangent(neighbour);
}

// A fixed tangent on the other side of a unified key turns to the angle of the given one.
void TurnOpposite(const Tangent& tangent, Segment& segment, Edit& edit) {
    Segment* neighbour = UnifiedNeighbour(tangent, segment);
    if (!neighbour) return;
    Tangent& opposite = Opposite(tangent, *neighbour);
    if (opposite.getType() != Tangent::Fixed) return;
    Store(opposite, AlignedHandle(SiteOf(opposite, neighbour), tangent.get()), edit);
}

} // namespace

void StoreHandle(Tangent& tangent, Segment* segment, const Vector2D<double>& handle, Edit& edit) {
    if (!Store(tangent, handle, edit) || !segment || !IsOwn(tangent, *segment)) return;
    // A plateau tangent at the segment's other end is tested for overshoot against this segment.
    Tangent* far = tangent.isInTangent() ? Access::outTangent(*segment) : Access::inTangent(*segment);
    if (far->getType() == Tangent::Plateau) UpdateTangent(*far, segment, edit);
    TurnOpposite(tangent, *segment, edit);
}

void AlignTangent(Tangent& tangent, Segment* segment, Edit& edit) {
    Segment* neighbour = segment ? UnifiedNeighbour(tangent, *segment) : nullptr;
    if (neighbour) Store(tangent, AlignedHandle(SiteOf(tangent, segment), Opposite(tangent, *neighbour).get()), edit);
}

void UpdateTangent(Tangent& tangent, Segment* segment, Edit& edit) {
    StoreHandle(tangent, segment, AutomaticHandle(SiteOf(tangent, segment)), edit);
}

void UpdateTangents(Keyframe* first, Keyframe* last, Edit& edit) {
    for (Keyframe* key = first; key; key = NextKey(*key)) {
        Segment* left = Access::leftSegment(*key);
        Segment* right = Access::rightSegment(*key);
        UpdateTangent(*Access::inTangent(*left), left, edit);
        UpdateTangent(*Access::outTangent(*right), right, edit);
        if (key == last) break;
    }
}

namespace {

void UpdateIfSmooth(Tangent& tangent, Segment* segment, Edit& edit) {
    if (tangent.getType() > Tangent::Linear) UpdateTangent(tangent, segment, edit);
}

} // namespace

void UpdateBeforeChange(Keyframe* key, Edit& edit) {
    if (!key) return;
    Segment* left = Access::leftSegment(*key);
    Segment* right = Access::rightSegment(*key);
    UpdateIfSmooth(*Access::inTangent(*left), left, edit);
    UpdateTangent(*Access::outTangent(*right), right, edit);
}

void UpdateAfterChange(Keyframe* key, Edit& edit) {
    if (!key) return;
    Segment* left = Access::leftSegment(*key);
    Segment* right = Access::rightSegment(*key);
    UpdateTangent(*Access::inTangent(*left), left, edit);
    UpdateIfSmooth(*Access::outTangent(*right), right, edit);
}

void AlignTangents(Keyframe& key, Edit& edit) {
    Segment* left = Access::leftSegment(key);
    Segment* right = Access::rightSegment(key);
    if (!left || !right) return;
    Tangent& in = *Access::inTangent(*left);
    Tangent& out = *Access::outTangent(*right);
    if (in.getType() == Tangent::Fixed)
        TurnOpposite(out, *right, edit);
    else
        TurnOpposite(in, *left, edit);
}

void EditHandle(Tangent& tangent, Segment* segment, double x, double y, Edit& edit) {
    StoreHandle(tangent, segment, EditedHandle(SiteOf(tangent, segment), x, y), edit);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
