#include "FCurveLib/Segment.h"

#include "FCurveLib/Interpolator.h"
#include "model/Delivery.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

Segment::Segment() noexcept = default;

Segment::Segment(std::shared_ptr<FCurve> curve, std::shared_ptr<Keyframe> left,
                 std::shared_ptr<Interpolator> interpolator, std::shared_ptr<Keyframe> right)
    : m_interpolator(std::move(interpolator)) {
    if (curve) m_curve = Private::Raw::identity(*curve);
    m_box.need().leftKey = std::move(left);
    m_box.need().rightKey = std::move(right);
}

Segment::Segment(const Segment& other)
    : SharedFromThis<Segment>(other), m_interpolator(other.m_interpolator), m_curve(other.m_curve) {
    auto& from = const_cast<Segment&>(other); // the copy shares its parts, to edit
    Private::SegmentContents& contents = m_box.need();
    static_cast<PropertyMap&>(contents) = Read::properties(other);
    contents.leftKey = from.getLeftKey();
    contents.rightKey = from.getRightKey();
    contents.inTangent = from.getInTangent();
    contents.outTangent = from.getOutTangent();
}

Segment::~Segment() {
    m_box.destroy();
}

std::shared_ptr<Segment> Segment::create(std::shared_ptr<FCurve> curve, std::shared_ptr<Keyframe> left,
                                         std::shared_ptr<Interpolator> interpolator, std::shared_ptr<Keyframe> right) {
    auto segment =
        std::make_shared<Segment>(std::move(curve), std::move(left), std::move(interpolator), std::move(right));
    segment->m_box.need().self = segment;
    return segment;
}

std::shared_ptr<Keyframe> Segment::getLeftKey() noexcept {
    if (Private::Block::of(*this)) return Read::share(Read::leftKey(*this));
    return m_box.get() ? m_box.get()->leftKey : nullptr;
}
std::shared_ptr<const Keyframe> Segment::getLeftKey() const noexcept {
    return const_cast<Segment*>(this)->getLeftKey();
}
std::shared_ptr<Keyframe> Segment::getRightKey() noexcept {
    if (Private::Block::of(*this)) return Read::share(Read::rightKey(*this));
    return m_box.get() ? m_box.get()->rightKey : nullptr;
}
std::shared_ptr<const Keyframe> Segment::getRightKey() const noexcept {
    return const_cast<Segment*>(this)->getRightKey();
}
std::shared_ptr<Tangent> Segment::getInTangent() noexcept {
    if (Private::Block::of(*this)) return Read::share(Read::inTangent(*this));
    return m_box.get() ? m_box.get()->inTangent : nullptr;
}
std::shared_ptr<const Tangent> Segment::getInTangent() const noexcept {
    return const_cast<Segment*>(this)->getInTangent();
}
std::shared_ptr<Tangent> Segment::getOutTangent() noexcept {
    if (Private::Block::of(*this)) return Read::share(Read::outTangent(*this));
    return m_box.get() ? m_box.get()->outTangent : nullptr;
}
std::shared_ptr<const Tangent> Segment::getOutTangent() const noexcept {
    return const_cast<Segment*>(this)->getOutTangent();
}
std::shared_ptr<FCurve> Segment::getOwningCurve() noexcept {
    return m_curve ? m_curve->owner.lock() : nullptr;
}
std::shared_ptr<const FCurve> Segment::getOwningCurve() const noexcept {
    return const_cast<Segment*>(this)->getOwningCurve();
}

void Segment::setInterpolator(std::shared_ptr<Interpolator> interpolator) {
    if (m_interpolator == interpolator) return;
    const auto before = Private::Raw::setInterpolator(*this, std::move(interpolator)); // dies after observers were told
    Private::Deliver(Read::curve(*this), *this, [this](FCurveObserver& observer) {
        observer.segmentIntrinsicChanged(*this, FCurveObserver::SegmentInterpolator);
    });
}

bool Segment::setProperty(const char* key, const char* value) {
    return Private::SetProperty(*this, key, value);
}
void Segment::clearProperties() {
    Private::ClearProperties(*this);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
