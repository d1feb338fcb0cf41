#include "FCurveLib/Keyframe.h"

#include "model/Delivery.h"
#include "model/TangentUpdate.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::PendingChanges;
using Private::Raw;
using Private::Read;

Keyframe::Keyframe() noexcept = default;

Keyframe::Keyframe(const Keyframe& other) : SharedFromThis<Keyframe>(other) {
    Raw::copyKey(*this, other);
}

Keyframe::~Keyframe() {
    m_box.destroy();
}

std::shared_ptr<Keyframe> Keyframe::create(double x, double y) {
    const Keyframe plain;
    const auto block = Private::Block::make(&plain);
    block->key.set(x, y);
    return {block, &block->key};
}

namespace {

// The x, on the way from the key's own to the given one, that keeps the separation from the neighbours; the key's own x
// where the neighbour is too near to move at all.
double Clamped(Keyframe& key, double x) noexcept {
    const double present = key.getX();
    if (x < present) {
        const Keyframe* previous = Read::previousKey(key);
        if (!previous) return x;
        const double lowest = std::max(x, previous->getX() + Keyframe::getMinSeparation());
        return lowest < present && previous->getX() < lowest ? lowest : present;
    }
    const Keyframe* next = Read::nextKey(key);
    if (!next) return x;
    const double highest = std::min(x, next->getX() - Keyframe::getMinSeparation());
    return present < highest && highest < next->getX() ? highest : present;
}

using Neighbour = Keyframe* (*)(Keyframe&) noexcept;

// The breakdown keys next to the given one on one side, nearest first; the key that ends the run, if there is one.
std::vector<Keyframe*> BreakdownRun(Keyframe& key, Neighbour next, Keyframe*& anchor) {
    std::vector<Keyframe*> run;
    anchor = next(key);
    for (; anchor && anchor->isBreakdown(); anchor = next(*anchor)) run.push_back(anchor);
    return run;
}

// Moves breakdown keys, in the given order: in proportion to the pivot, or by delta where the span is 0.
void MoveRun(const std::vector<Keyframe*>& keys, double delta, double span, double pivot, PendingChanges& changes) {
    for (Keyframe* key : keys) {
        const double x = key->getX();
        const double proposed = span == 0.0 ? x + delta : pivot + (x - pivot) * (span - delta) / span;
        const double clamped = std::isfinite(proposed) ? Clamped(*key, proposed) : x;
        if (clamped == x) continue;
        Raw::moveKey(*key, {clamped, key->getY()});
        changes.moved(*key);
    }
}

} // namespace

void Keyframe::set(double x, double y) {
    if (!std::isfinite(x) || !std::isfinite(y)) return;
    if (!Read::leftSegment(*this)) {
        m_position = {x, y};
        return;
    }
    if (m_position == Vector2D<double>(x, y)) return;
    const double oldX = m_position.x;
    x = Clamped(*this, x);
    if (m_position == Vector2D<double>(x, y)) return;

    PendingChanges changes(Read::curve(*this));
    Keyframe* first = this;
    Keyframe* last = this;
    // The moved key is stored before the runs beside it, which may then pass its old place.
    Raw::moveKey(*this, {x, y});
    changes.moved(*this);
    if (x != oldX) {
        const double delta = x - oldX;
        // Each key is clamped against neighbours that have moved out of its way already.
        const auto moveRun = [&](std::vector<Keyframe*>& run, const Keyframe* anchor, bool nearestFirst) {
            if (!nearestFirst) std::reverse(run.begin(), run.end());
            MoveRun(run, delta, anchor ? anchor->getX() - oldX : 0.0, anchor ? anchor->getX() : 0.0, changes);
        };
        Keyframe* anchor = nullptr;
        std::vector<Keyframe*> run = BreakdownRun(*this, &Read::previousKey, anchor);
        if (!run.empty()) first = run.back();
        moveRun(run, anchor, delta > 0.0);
        run = BreakdownRun(*this, &Read::nextKey, anchor);
        if (!run.empty()) last = run.back();
        moveRun(run, anchor, delta < 0.0);
    }
    Private::UpdateBeforeChange(Read::previousKey(*first), changes);
    Private::UpdateTangents(first, last, changes);
    Private::UpdateAfterChange(Read::nextKey(*last), changes);
    changes.notify();
}

void Keyframe::set(const Vector2D<double>& position) {
    set(position.x, position.y);
}
void Keyframe::setX(double x) {
    set(x, m_position.y);
}
void Keyframe::setY(double y) {
    set(m_position.x, y);
}

void Keyframe::setBreakdown(bool breakdown) {
    if (isBreakdown() == breakdown) return;
    Raw::setBreakdown(*this, breakdown);
    Private::Deliver(Read::curve(*this), *this, [this](FCurveObserver& observer) {
        observer.keyframeIntrinsicChanged(*this, FCurveObserver::KeyframeBreakdown);
    });
}

void Keyframe::setTangentsUnified(bool unified) {
    if (isTangentsUnified() == unified) return;
    Raw::setUnified(*this, unified);
    FCurve* curve = Read::curve(*this);
    PendingChanges changes(curve);
    if (unified) Private::AlignTangents(*this, changes);
    Private::Deliver(curve, *this, [this](FCurveObserver& observer) {
        observer.keyframeIntrinsicChanged(*this, FCurveObserver::KeyframeTangentsUnified);
    });
    changes.notify();
}

std::shared_ptr<Segment> Keyframe::getLeftSegment() noexcept {
    return Read::share(Read::leftSegment(*this));
}
std::shared_ptr<const Segment> Keyframe::getLeftSegment() const noexcept {
    return Read::share(Read::leftSegment(*this));
}
std::shared_ptr<Segment> Keyframe::getRightSegment() noexcept {
    return Read::share(Read::rightSegment(*this));
}
std::shared_ptr<const Segment> Keyframe::getRightSegment() const noexcept {
    return Read::share(Read::rightSegment(*this));
}
std::shared_ptr<Tangent> Keyframe::getInTangent() noexcept {
    Segment* segment = Read::leftSegment(*this);
    return segment ? segment->getInTangent() : nullptr;
}
std::shared_ptr<const Tangent> Keyframe::getInTangent() const noexcept {
    return const_cast<Keyframe*>(this)->getInTangent();
}
std::shared_ptr<Tangent> Keyframe::getOutTangent() noexcept {
    Segment* segment = Read::rightSegment(*this);
    return segment ? segment->getOutTangent() : nullptr;
}
std::shared_ptr<const Tangent> Keyframe::getOutTangent() const noexcept {
    return const_cast<Keyframe*>(this)->getOutTangent();
}
std::shared_ptr<FCurve> Keyframe::getOwningCurve() noexcept {
    // deliberate: asks the link alone, which stays as it is while another thread destroys the curve
    Private::Block* block = Private::Block::of(*this);
    return block ? block->segment.getOwningCurve() : nullptr;
}
std::shared_ptr<const FCurve> Keyframe::getOwningCurve() const noexcept {
    return const_cast<Keyframe*>(this)->getOwningCurve();
}

bool Keyframe::setProperty(const char* key, const char* value) {
    return Private::SetProperty(*this, key, value);
}
void Keyframe::clearProperties() {
    Private::ClearProperties(*this);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
