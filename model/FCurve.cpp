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

FCurve::FCurve() : m_link(std::make_shared<Private::CurveLink>()) {
    m_link->curve = this;
    m_leading = Raw::makeSegment(*this, nullptr, Private::DefaultInterpolator());
    m_segments.insertLeading(m_leading.get());
}

FCurve::~FCurve() {
    Raw::release(std::move(m_leading));
    m_link->curve = nullptr;
    if (m_identity) m_identity->curve = nullptr;
}

std::shared_ptr<FCurve> FCurve::create() {
    std::shared_ptr<FCurve> curve(new FCurve);
    curve->setShared(curve);
    return curve;
}

std::shared_ptr<FCurve> FCurve::createCopy(const FCurve& source) {
    auto copy = create();
    copy->m_name = source.m_name;
    copy->m_properties = source.m_properties;
    Segment* segment = copy->m_segments.first();
    for (const Segment* from = source.m_segments.first();;) {
        segment->m_interpolator = from->m_interpolator;
        segment->m_properties = from->m_properties;
        Raw::copyTangent(*segment->m_inTangent, *from->m_inTangent);
        Raw::copyTangent(*segment->m_outTangent, *from->m_outTangent);
        const Keyframe* key = Read::rightKey(*from);
        if (!key) break;
        segment = Raw::appendKey(*copy, *key, nullptr);
        from = Read::rightSegment(*key);
    }
    return copy;
}

FCurve& FCurve::operator=(const FCurve& source) {
    if (this == &source) return *this;
    createCopy(source)->exchange(*this);
    notifyChanged();
    return *this;
}

void FCurve::swap(FCurve& other) {
    if (this == &other) return;
    const auto keep = other.getShared();
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
    m_link->curve = this;
    other.m_link->curve = &other;
}

void FCurve::clear() {
    Private::SegmentMap segments;
    auto leading = Raw::makeSegment(*this, nullptr, Private::DefaultInterpolator());
    segments.insertLeading(leading.get());
    m_segments.swap(segments);
    m_leading.swap(leading);
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
    const auto segment = Raw::makeSegment(*this, &key, std::move(interpolator));
    const std::shared_ptr<Keyframe> own = segment->m_leftKey;
    m_segments.insert(place, x, segment.get());

    Keyframe* next = Read::rightKey(before);
    segment->m_rightKey = std::move(before.m_rightKey);
    if (next) next->m_left = segment.get();
    before.m_rightKey = own;
    own->m_left = &before;
    own->m_right = segment;
    Raw::exchangeInTangents(before, *segment);

    Keyframe* previous = Read::leftKey(before);
    Private::UpdateBeforeChange(previous, changes);
    Private::UpdateAfterChange(next, changes);
    // The new key's tangents are part of the addition. They come last: nothing that must be told of depends on them any
    // more.
    Private::PendingChanges unheard(nullptr);
    Private::UpdateTangents(own.get(), own.get(), unheard);

    Private::Deliver(this, *segment, [&](FCurveObserver& observer) { observer.segmentAdded(*this, *segment); });
    changes.notify();
    return segment->m_curve == m_link ? Read::iteratorAt(*this, *segment) : end();
}

FCurve::iterator FCurve::removeSegment(iterator position) {
    Segment* found = Read::segmentAt(position);
    if (!found) return position;
    if (found->m_curve != m_link || !found->m_leftKey) return ++position;

    Private::PendingChanges changes(this);
    Keyframe& key = *found->m_leftKey;
    Segment& before = *key.m_left;
    m_segments.erase(key.getX());
    const std::shared_ptr<Segment> removed = std::move(key.m_right);
    Keyframe* next = Read::rightKey(*removed);
    before.m_rightKey = removed->m_rightKey;
    if (next) next->m_left = &before;
    key.m_left = nullptr;
    Raw::exchangeInTangents(before, *removed);
    Raw::detach(*removed);

    Keyframe* previous = Read::leftKey(before);
    Private::UpdateBeforeChange(previous, changes);
    Private::UpdateAfterChange(next, changes);

    const std::shared_ptr<Segment> after = next ? next->m_right : nullptr;
    Private::Deliver(this, *removed, [&](FCurveObserver& observer) { observer.segmentRemoved(*this, *removed); });
    changes.notify();
    return after && after->m_curve == m_link ? Read::iteratorAt(*this, *after) : end();
}

double FCurve::eval(double x) const {
    const Segment& segment = *m_segments.lookUp(x);
    const Interpolator* interpolator = Read::interpolator(segment);
    return interpolator ? interpolator->eval(x, segment) : 0.0;
}

void FCurve::setName(const char* name) {
    if (m_name == Private::Text(name)) return;
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
