#include "FCurveLib/FCurve.h"

#include "FCurveLib/Constant.h"
#include "FCurveLib/Interpolator.h"
#include "model/Access.h"
#include "model/Edit.h"
#include "model/PartBundle.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Access;

namespace {

FCurve::ChangeType g_changeType = FCurve::OrdinaryChange;

} // namespace

namespace Private {

std::shared_ptr<CurveLink> Access::identity(FCurve& c) {
    if (!c.m_identity) {
        c.m_identity = std::make_shared<CurveLink>();
        c.m_identity->curve = &c;
    }
    return c.m_identity;
}

void Access::moveKey(Keyframe& k, const Vector2D<double>& position) noexcept {
    if (position.x != k.m_position.x) curve(k)->m_segments.rekey(k.m_position.x, position.x);
    k.m_position = position;
}

namespace {

// A segment's tangents live together.
struct TangentPair {
    explicit TangentPair(const std::shared_ptr<Segment>& owner) : out(owner, false), in(owner, true) {}
    Tangent out;
    Tangent in;
};

} // namespace

std::shared_ptr<Segment> Access::makeSegment(FCurve& c, const Keyframe* key,
                                             std::shared_ptr<Interpolator> interpolator) {
    PartBundle::Maker bundle((key ? PartBundle::roomFor<Keyframe>() : 0) + PartBundle::roomFor<Segment>()
                             + PartBundle::roomFor<TangentPair>());
    std::shared_ptr<Keyframe> own;
    if (key) {
        own = bundle.make<Keyframe>(*key);
        own->setShared(own);
    }
    auto segment = bundle.make<Segment>();
    segment->setShared(segment);
    segment->m_curve = c.m_link;
    segment->m_leftKey = std::move(own);
    segment->m_interpolator = std::move(interpolator);

    const auto pair = bundle.make<TangentPair>(segment);
    segment->m_outTangent = std::shared_ptr<Tangent>(pair, &pair->out);
    segment->m_inTangent = std::shared_ptr<Tangent>(pair, &pair->in);
    segment->m_outTangent->setShared(segment->m_outTangent);
    segment->m_inTangent->setShared(segment->m_inTangent);
    return segment;
}

Segment* Access::appendRaw(FCurve& c, const Keyframe& key, std::shared_ptr<Interpolator> interpolator) {
    const SegmentMap::Place place = c.m_segments.locate(key.getX());
    Segment& before = *place.segment;
    if (place.isAt || before.m_rightKey) return nullptr;
    const auto segment = makeSegment(c, &key, std::move(interpolator));
    const std::shared_ptr<Keyframe>& own = segment->m_leftKey;
    c.m_segments.insert(place, own->getX(), segment.get());
    before.m_rightKey = own;
    own->m_left = &before;
    own->m_right = segment;
    return segment.get();
}

void Access::exchangeInTangents(Segment& a, Segment& b) noexcept {
    a.m_inTangent.swap(b.m_inTangent);
    a.m_inTangent->m_segment.swap(b.m_inTangent->m_segment);
}

void Access::detach(Segment& s) noexcept {
    s.m_curve.reset();
    s.m_rightKey.reset();
}

void Access::release(std::shared_ptr<Segment> leading) noexcept {
    for (std::shared_ptr<Segment> segment = std::move(leading); segment;) {
        const std::shared_ptr<Keyframe> key = segment->m_rightKey;
        std::shared_ptr<Segment> next;
        if (key) {
            next = std::move(key->m_right);
            key->m_left = nullptr;
        }
        detach(*segment);
        segment = std::move(next);
    }
}

void Access::copyTangent(Tangent& to, const Tangent& from) {
    to.m_properties = from.m_properties;
    to.m_handle = from.m_handle;
    to.m_type = from.m_type;
    to.m_weighted = from.m_weighted;
    to.m_weightLocked = from.m_weightLocked;
}

} // namespace Private

FCurve::FCurve() : m_link(std::make_shared<Private::CurveLink>()) {
    m_link->curve = this;
    m_leading = Access::makeSegment(*this, nullptr, Constant::create());
    m_segments.insertLeading(m_leading.get());
}

FCurve::~FCurve() {
    Access::release(std::move(m_leading));
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
        Access::copyTangent(*segment->m_inTangent, *from->m_inTangent);
        Access::copyTangent(*segment->m_outTangent, *from->m_outTangent);
        const Keyframe* key = Access::rightKey(*from);
        if (!key) break;
        segment = Access::appendRaw(*copy, *key, nullptr);
        from = Access::rightSegment(*key);
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
    auto leading = Access::makeSegment(*this, nullptr, Constant::create());
    segments.insertLeading(leading.get());
    m_segments.swap(segments);
    m_leading.swap(leading);
    Access::release(std::move(leading));
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
    if (place.isAt) return Access::iteratorAt(*this, before);

    Private::Edit edit(this);
    const auto segment = Access::makeSegment(*this, &key, std::move(interpolator));
    const std::shared_ptr<Keyframe> own = segment->m_leftKey;
    m_segments.insert(place, x, segment.get());

    Keyframe* next = Access::rightKey(before);
    segment->m_rightKey = std::move(before.m_rightKey);
    if (next) next->m_left = segment.get();
    before.m_rightKey = own;
    own->m_left = &before;
    own->m_right = segment;
    Access::exchangeInTangents(before, *segment);

    Keyframe* previous = Access::leftKey(before);
    Private::UpdateBeforeChange(previous, edit);
    Private::UpdateAfterChange(next, edit);
    // The new key's tangents are part of the addition. They come last: nothing that must be told of depends on them any
    // more.
    Private::Edit unheard(nullptr);
    Private::UpdateTangents(own.get(), own.get(), unheard);

    Private::Deliver(this, *segment, [&](FCurveObserver& observer) { observer.segmentAdded(*this, *segment); });
    edit.notify();
    return segment->m_curve == m_link ? Access::iteratorAt(*this, *segment) : end();
}

FCurve::iterator FCurve::removeSegment(iterator position) {
    Segment* found = Access::segmentAt(position);
    if (!found) return position;
    if (found->m_curve != m_link || !found->m_leftKey) return ++position;

    Private::Edit edit(this);
    Keyframe& key = *found->m_leftKey;
    Segment& before = *key.m_left;
    m_segments.erase(key.getX());
    const std::shared_ptr<Segment> removed = std::move(key.m_right);
    Keyframe* next = Access::rightKey(*removed);
    before.m_rightKey = removed->m_rightKey;
    if (next) next->m_left = &before;
    key.m_left = nullptr;
    Access::exchangeInTangents(before, *removed);
    Access::detach(*removed);

    Keyframe* previous = Access::leftKey(before);
    Private::UpdateBeforeChange(previous, edit);
    Private::UpdateAfterChange(next, edit);

    const std::shared_ptr<Segment> after = next ? next->m_right : nullptr;
    Private::Deliver(this, *removed, [&](FCurveObserver& observer) { observer.segmentRemoved(*this, *removed); });
    edit.notify();
    return after && after->m_curve == m_link ? Access::iteratorAt(*this, *after) : end();
}

double FCurve::eval(double x) const {
    const Segment& segment = *m_segments.lookUp(x);
    const Interpolator* interpolator = Access::interpolator(segment);
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
    return Private::SetProperty(m_properties, key, value, [this](const char* name, const char* text) {
        Private::Deliver(this, *this,
                         [=](FCurveObserver& observer) { observer.curvePropertyChanged(*this, name, text); });
    });
}

void FCurve::clearProperties() {
    const auto self = getShared();
    Private::ClearProperties(m_properties, [this](const char* key) {
        Private::Deliver(this, *this, [=](FCurveObserver& observer) { observer.curvePropertyChanged(*this, key, ""); });
    });
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

FCurve::Switch::Switch() noexcept
    : m_wasEnabled(Private::GlobalNotification::isEnabled()), m_wasBlocked(Private::GlobalNotification::isBlocked()) {
    Private::GlobalNotification::setEnabled(false);
    Private::GlobalNotification::setBlocked(false);
}

FCurve::Switch::Switch(FCurve& curve) noexcept
    : m_curve(curve.getShared()), m_wasEnabled(curve.m_observers.isEnabled()),
      m_wasBlocked(curve.m_observers.isBlocked()) {
    curve.m_observers.setEnabled(false);
    curve.m_observers.setBlocked(false);
}

FCurve::Switch::~Switch() {
    if (m_curve) {
        m_curve->m_observers.setEnabled(m_wasEnabled);
        m_curve->m_observers.setBlocked(m_wasBlocked);
    } else {
        Private::GlobalNotification::setEnabled(m_wasEnabled);
        Private::GlobalNotification::setBlocked(m_wasBlocked);
    }
}

bool FCurve::Switch::blockedNotification() const noexcept {
    return m_curve ? m_curve->m_observers.isBlocked() : Private::GlobalNotification::isBlocked();
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
