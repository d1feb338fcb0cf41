#include "FCurveLib/Tangent.h"

#include "FCurveLib/Tolerance.h"
#include "model/Delivery.h"
#include "model/TangentUpdate.h"

#include <cmath>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Raw;
using Private::Read;

namespace {

constexpr double kSmallestWeight = 1e-05; // never zero, so that a handle keeps a direction

} // namespace

Tangent::Tangent() noexcept : m_handle(1.0, 0.0) {}

Tangent::Tangent(std::shared_ptr<Segment> owner, bool isIn) : m_isIn(isIn), m_handle(isIn ? -1.0 : 1.0, 0.0) {
    if (owner) m_box.need().segment = owner;
}

Tangent::~Tangent() {
    m_box.destroy();
}

std::shared_ptr<Tangent> Tangent::create(std::shared_ptr<Segment> owner, bool isIn) {
    auto tangent = std::make_shared<Tangent>(std::move(owner), isIn);
    tangent->m_box.need().self = tangent;
    return tangent;
}

Tangent& Tangent::operator=(const Tangent& other) {
    if (this == &other) return *this;
    const auto self = getShared();
    const Vector2D<double> handle = m_isIn == other.m_isIn ? other.m_handle : -other.m_handle;
    const bool newHandle = m_handle != handle;
    const bool newType = m_type != other.m_type;
    const bool newWeighted = m_weighted != other.m_weighted;
    const bool newLocked = m_weightLocked != other.m_weightLocked;
    const PropertyMap before(m_box.properties());
    const PropertyMap after(other.m_box.properties());
    Raw::setProperties(*this, after);
    Private::Recording::touchPart(*this);
    m_handle = handle;
    m_type = other.m_type;
    m_weighted = other.m_weighted;
    m_weightLocked = other.m_weightLocked;

    if (newHandle) notifyIntrinsic(FCurveObserver::TangentHandle);
    if (newType) notifyIntrinsic(FCurveObserver::TangentType);
    if (newWeighted) notifyIntrinsic(FCurveObserver::TangentWeighted);
    if (newLocked) notifyIntrinsic(FCurveObserver::TangentWeightLocked);
    for (const auto& [key, value] : before)
        if (*after.get(key.c_str()) == '\0') Private::TellProperty(*this, key.c_str(), "");
    for (const auto& [key, value] : after)
        if (value != before.get(key.c_str())) Private::TellProperty(*this, key.c_str(), value.c_str());
    return *this;
}

double Tangent::getAngle() const noexcept {
    const double angle = std::atan2(m_handle.y, std::fabs(m_handle.x));
    return m_isIn ? -angle : angle;
}

double Tangent::getWeight() const noexcept {
    return std::hypot(m_handle.x, m_handle.y);
}

void Tangent::set(double x, double y) {
    if (!std::isfinite(x) || !std::isfinite(y)) return;
    if (m_isIn ? x > 0.0 : x < 0.0) x = 0.0;
    propose(x, y);
}

void Tangent::set(const Vector2D<double>& handle) {
    set(handle.x, handle.y);
}
void Tangent::setX(double x) {
    set(x, m_handle.y);
}
void Tangent::setY(double y) {
    set(m_handle.x, y);
}

void Tangent::setAngle(double radians) {
    if (!std::isfinite(radians)) return;
    double weight = getWeight();
    if (NearZero(weight)) weight = 1.0;
    double x = std::cos(radians) * weight;
    double y = std::sin(radians) * weight;
    if (m_isIn ? x > 0.0 : x < 0.0) {
        x = -x;
        y = -y;
    }
    propose(x, y);
}

void Tangent::setWeight(double weight) {
    if (!std::isfinite(weight)) return;
    if (weight <= 0.0) weight = kSmallestWeight;
    const double present = getWeight();
    if (NearZero(present))
        propose(m_isIn ? -weight : weight, 0.0);
    else
        propose(m_handle.x * (weight / present), m_handle.y * (weight / present));
}

void Tangent::setType(std::uint8_t type) {
    if (type > Plateau || type == m_type) return;
    Raw::setType(*this, type);
    const auto segment = getOwningSegment();
    Private::PendingChanges changes(Read::curve(*this));
    Private::UpdateTangent(*this, segment.get(), changes);
    if (type == Fixed) Private::AlignTangent(*this, segment.get(), changes);
    notifyIntrinsic(FCurveObserver::TangentType);
    changes.notify();
}

void Tangent::setWeighted(bool weighted) {
    if (weighted == m_weighted) return;
    Raw::setWeighted(*this, weighted);
    const auto segment = getOwningSegment();
    Private::PendingChanges changes(Read::curve(*this));
    if (!weighted) Private::UpdateTangent(*this, segment.get(), changes);
    notifyIntrinsic(FCurveObserver::TangentWeighted);
    changes.notify();
}

void Tangent::setWeightLocked(bool locked) {
    if (locked == m_weightLocked) return;
    Raw::setWeightLocked(*this, locked);
    notifyIntrinsic(FCurveObserver::TangentWeightLocked);
}

void Tangent::propose(double x, double y) {
    const auto segment = getOwningSegment();
    Private::PendingChanges changes(Read::curve(*this));
    Private::EditHandle(*this, segment.get(), x, y, changes);
    changes.notify();
}

std::shared_ptr<Segment> Tangent::getOwningSegment() noexcept {
    if (Private::Block* block = Private::Block::of(*this)) return Read::share(block->segmentOf(*this));
    return m_box.get() ? m_box.get()->segment.lock() : nullptr;
}
std::shared_ptr<const Segment> Tangent::getOwningSegment() const noexcept {
    return const_cast<Tangent*>(this)->getOwningSegment();
}

std::shared_ptr<Keyframe> Tangent::getOwningKeyframe() noexcept {
    const auto segment = getOwningSegment();
    if (!segment) return nullptr;
    return m_isIn ? segment->getRightKey() : segment->getLeftKey();
}
std::shared_ptr<const Keyframe> Tangent::getOwningKeyframe() const noexcept {
    return const_cast<Tangent*>(this)->getOwningKeyframe();
}

std::shared_ptr<FCurve> Tangent::getOwningCurve() noexcept {
    // deliberate: as Keyframe::getOwningCurve
    if (Private::Block* block = Private::Block::of(*this)) return block->segment.getOwningCurve();
    const auto segment = getOwningSegment();
    return segment ? segment->getOwningCurve() : nullptr;
}
std::shared_ptr<const FCurve> Tangent::getOwningCurve() const noexcept {
    return const_cast<Tangent*>(this)->getOwningCurve();
}

std::shared_ptr<Tangent> Tangent::getOppositeTangent() noexcept {
    const auto key = getOwningKeyframe();
    if (!key) return nullptr;
    return m_isIn ? key->getOutTangent() : key->getInTangent();
}
std::shared_ptr<const Tangent> Tangent::getOppositeTangent() const noexcept {
    return const_cast<Tangent*>(this)->getOppositeTangent();
}

void Tangent::notifyIntrinsic(std::uint32_t type) {
    Private::Deliver(Read::curve(*this), *this, [=](FCurveObserver& observer) {
        observer.tangentIntrinsicChanged(*this, static_cast<FCurveObserver::TangentIntrinsicType>(type));
    });
}

bool Tangent::setProperty(const char* key, const char* value) {
    return Private::SetProperty(*this, key, value);
}
void Tangent::clearProperties() {
    Private::ClearProperties(*this);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
