#include "FCurveLib/FCurve.h"

#include "FCurveLib/Interpolator.h"
#include "interp/DefaultInterpolator.h"
#include "model/Delivery.h"
#include "model/TangentUpdate.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Raw;
using Private::Read;

namespace {

FCurve::ChangeType g_changeType = FCurve::OrdinaryChange;

} // namespace

FCurve::FCurve() = default;

FCurve::~FCurve() {
    Private::Recording::tell(*this, [this](Private::Recorder& recorder) { recorder.destroyed(*this); });
    if (m_link) m_link->curve = nullptr;
    if (m_identity) m_identity->curve = nullptr;
    Raw::release(std::move(m_leading));
}

std::shared_ptr<FCurve> FCurve::create() {
    std::shared_ptr<FCurve> curve(new FCurve);
    curve->setShared(curve);
    curve->m_link = curve->makeReference();
    curve->m_leading = Raw::makeBlock(*curve, nullptr, Private::DefaultInterpolator());
    curve->m_segments.insertLeading(&curve->m_leading->segment);
    return curve;
}

Private::CurveReference FCurve::makeReference() {
    auto reference = Private::CurveReference::make();
    reference->curve = this;
    reference->owner = getShared();
    return reference;
}

std::shared_ptr<FCurve> FCurve::createCopy(const FCurve& source) {
    auto copy = create();
    copy->m_name = source.m_name;
    copy->m_properties = source.m_properties;
    Segment* segment = copy->m_segments.first();
    for (const Segment* from = source.m_segments.first();;) {
        segment->m_interpolator = from->m_interpolator;
        segment->m_box.setProperties(from->m_box.properties());
        Raw::copyTangent(*Read::inTangent(*segment), *Read::inTangent(*from));
        Raw::copyTangent(*Read::outTangent(*segment), *Read::outTangent(*from));
        const Keyframe* key = Read::rightKey(*from);
        if (!key) break;
        segment = Raw::appendKey(*copy, *key, nullptr);
        from = Read::rightSegment(*key);
    }
    return copy;
}

FCurve& FCurve::operator=(const FCurve& source) {
    if (this == &source) return *this;
    {
        const auto copy = createCopy(source);
        Private::Recording::replace(*this, *copy);
        exchange(*copy);
    }
    notifyChanged();
    return *this;
}

void FCurve::swap(FCurve& other) {
    if (this == &other) return;
    const auto keep = other.getShared();
    Private::Recording::exchange(*this, other);
    exchange(other);
    notifyChanged();
    other.notifyChanged();
}

void FCurve::exchange(FCurve& other) noexcept {
    m_name.swap(other.m_name);
    m_properties.swap(other.m_properties);
    m_leading.swap(other.m_leading);
    m_segments.swap(other.m_segments);
    m_link.swap(other.m_link);
    std::swap(m_link->curve, other.m_link->curve);
    m_link->owner.swap(other.m_link->owner);
}

void FCurve::clear() {
    // The old parts keep the old link, which names no curve from here on.
    Private::SegmentMap segments;
    auto link = makeReference();
    auto leading = Private::Block::make(nullptr);
    leading->segment.m_curve = link;
    leading->segment.m_interpolator = Private::DefaultInterpolator();
    segments.insertLeading(&leading->segment);
    Private::Recording::removeAll(*this);
    Private::Recording::add(*this, *leading);
    m_segments.swap(segments);
    m_leading.swap(leading);
    m_link.swap(link);
    link->curve = nullptr;
    link->owner.reset();
    Raw::release(std::move(leading));
    notifyChanged();
}

bool FCurve::CompareKeys::operator()(const Keyframe* a, const Keyframe* b) const noexcept {
    if (!b) return false;
    return !a || a->getX() < b->getX();
}

FCurve::iterator FCurve::insertSegment(const Keyframe& key, std::shared_ptr<Interpolator> interpolator) {
    const double x = key.getX();
    const Private::SegmentMap::Place place = m_segments.locate(x);
    Segment& before = *place.segment;
    if (place.isAt) return Read::iteratorAt(*this, before);

    Private::PendingChanges changes(this);
    auto block = Raw::makeBlock(*this, &key, std::move(interpolator));
    const std::shared_ptr<Segment> segment(block, &block->segment);
    Keyframe& own = block->key;
    Keyframe* next = Read::rightKey(before);
    Private::Recording::add(*this, *block);
    Raw::link(*this, place, std::move(block));

    Keyframe* previous = Read::leftKey(before);
    Private::UpdateBeforeChange(previous, changes);
    Private::UpdateAfterChange(next, changes);
    // The new key's tangents are part of the addition. They come last: nothing that must be told of depends on them any
    // more.
    Private::PendingChanges unheard(nullptr);
    Private::UpdateTangents(&own, &own, unheard);

    Private::Deliver(this, *segment, [&](FCurveObserver& observer) { observer.segmentAdded(*this, *segment); });
    changes.notify();
    return segment->m_curve == m_link ? Read::iteratorAt(*this, *segment) : end();
}

FCurve::iterator FCurve::removeSegment(iterator position) {
    Segment* found = Read::segmentAt(position);
    if (!found) return position;
    if (found->m_curve != m_link || !found->m_previous) return ++position;

    Private::PendingChanges changes(this);
    Segment& before = found->m_previous->segment;
    Private::Block& block = *Private::Block::of(*found);
    Private::Recording::remove(*this, block);
    const std::shared_ptr<Segment> removed(Raw::unlink(block), found);
    const std::shared_ptr<Private::Block> next = before.m_next;

    Private::UpdateBeforeChange(Read::leftKey(before), changes);
    Private::UpdateAfterChange(next ? &next->key : nullptr, changes);

    Private::Deliver(this, *removed, [&](FCurveObserver& observer) { observer.segmentRemoved(*this, *removed); });
    changes.notify();
    return next && next->segment.m_curve == m_link ? Read::iteratorAt(*this, next->segment) : end();
}

double FCurve::eval(double x) const {
    const Segment& segment = *m_segments.lookUp(x);
    const Interpolator* interpolator = Read::interpolator(segment);
    return interpolator ? interpolator->eval(x, segment) : 0.0;
}

void FCurve::setName(const char* name) {
    if (m_name == Private::Text(name)) return;
    Private::Recording::name(*this);
    m_name = Private::Text(name);
    Private::Deliver(this, *this, [this](FCurveObserver& observer) {
        observer.curveIntrinsicChanged(*this, FCurveObserver::CurveName);
    });
}

bool FCurve::setProperty(const char* key, const char* value) {
    return Private::SetProperty(*this, key, value);
}
void FCurve::clearProperties() {
    Private::ClearProperties(*this);
}

void FCurve::subscribe(FCurveObserver& observer) {
    m_observers.subscribe(observer);
}
void FCurve::unsubscribe(FCurveObserver& observer) noexcept {
    m_observers.unsubscribe(observer);
}
void FCurve::subscribeGlobal(FCurveObserver& observer) {
    Private::GlobalObservers().subscribe(observer);
}
void FCurve::unsubscribeGlobal(FCurveObserver& observer) noexcept {
    Private::GlobalObservers().unsubscribe(observer);
}

void FCurve::setChangeType(FCurve::ChangeType type) noexcept {
    g_changeType = type;
}
FCurve::ChangeType FCurve::getChangeType() noexcept {
    return g_changeType;
}

bool FCurve::notifyInteractive() {
    using Operation = void (FCurveObserver::*)(FCurve&);
    Operation operation = nullptr;
    switch (g_changeType) {
    case BeginChange:
        operation = &FCurveObserver::beginValueChange;
        break;
    case StepChange:
        operation = &FCurveObserver::intermediateValueChange;
        break;
    case EndChange:
        operation = &FCurveObserver::endValueChange;
        break;
    default:
        return false;
    }
    Private::Deliver(this, *this, [=](FCurveObserver& observer) { (observer.*operation)(*this); });
    return true;
}

void FCurve::notifyChanged() {
    if (notifyInteractive()) return;
    Private::Deliver(this, *this, [this](FCurveObserver& observer) { observer.curveChanged(*this); });
}

FCurve::Switch::Switch() noexcept = default;
FCurve::Switch::Switch(FCurve& curve) noexcept : NotificationSwitch(curve.getShared(), curve.m_observers.flags()) {}

} // namespace v19
} // namespace VEM_FN::FCurveLib
