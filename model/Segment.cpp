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
    : m_curve(curve ? Private::Raw::identity(*curve) : nullptr), m_leftKey(std::move(left)),
      m_interpolator(std::move(interpolator)), m_rightKey(std::move(right)) {}

Segment::Segment(const Segment& other) = default;
Segment::~Segment() = default;

std::shared_ptr<Segment> Segment::create(std::shared_ptr<FCurve> curve, std::shared_ptr<Keyframe> left,
                                         std::shared_ptr<Interpolator> interpolator, std::shared_ptr<Keyframe> right) {
    auto segment =
        std::make_shared<Segment>(std::move(curve), std::move(left), std::move(interpolator), std::move(right));
    segment->setShared(segment);
    return segment;
}

std::shared_ptr<FCurve> Segment::getOwningCurve() noexcept {
    FCurve* curve = Read::curve(*this);
    return curve ? curve->getShared() : nullptr;
}
std::shared_ptr<const FCurve> Segment::getOwningCurve() const noexcept {
    return const_cast<Segment*>(this)->getOwningCurve();
}

void Segment::setInterpolator(std::shared_ptr<Interpolator> interpolator) {
    if (m_interpolator == interpolator) return;
    m_interpolator.swap(interpolator); // the old one dies after the observers were told
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
