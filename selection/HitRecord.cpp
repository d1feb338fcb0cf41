#include "FCurveLib/HitRecord.h"

#include "FCurveLib/FCurve.h"
#include "FCurveLib/HitRecordIterator.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Segment.h"
#include "FCurveLib/Tangent.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

template<class Parts>
void BasicHitRecord<Parts>::reset() noexcept {
    switch (m_type) {
    case CURVE:
        m_curve.reset();
        break;
    case SEGMENT:
        m_segment.reset();
        break;
    case KEYFRAME:
    case TANGENT:
    case TANGENT_UNFLAGGED:
        m_keyframe.reset();
        break; // deliberate: the tangent stays until it is replaced
    case NONE:
        break;
    }
    m_type = NONE;
}

template<class Parts>
void BasicHitRecord<Parts>::reset(std::shared_ptr<Part<FCurve>> curve) noexcept {
    reset();
    m_type = CURVE;
    m_curve = std::move(curve);
}

template<class Parts>
void BasicHitRecord<Parts>::reset(std::shared_ptr<Part<Segment>> segment) noexcept {
    reset();
    m_type = SEGMENT;
    m_segment = std::move(segment);
}

template<class Parts>
void BasicHitRecord<Parts>::reset(std::shared_ptr<Part<Keyframe>> keyframe) noexcept {
    reset();
    m_type = KEYFRAME;
    m_keyframe = std::move(keyframe);
}

template<class Parts>
void BasicHitRecord<Parts>::reset(std::shared_ptr<Part<Tangent>> tangent, bool flag) noexcept {
    reset();
    m_type = flag ? TANGENT : TANGENT_UNFLAGGED;
    m_tangent = std::move(tangent);
}

template<class Parts>
auto BasicHitRecord<Parts>::getCurve() const noexcept -> std::shared_ptr<Part<FCurve>> {
    switch (m_type) {
    case CURVE:
        return m_curve;
    case SEGMENT:
        return m_segment ? m_segment->getOwningCurve() : nullptr;
    case KEYFRAME:
        return m_keyframe ? m_keyframe->getOwningCurve() : nullptr;
    case TANGENT:
    case TANGENT_UNFLAGGED:
        return m_tangent ? m_tangent->getOwningCurve() : nullptr;
    case NONE:
        break;
    }
    return nullptr;
}

template<class Parts>
const void* BasicHitRecord<Parts>::getAddress() const noexcept {
    switch (m_type) {
    case CURVE:
        return m_curve.get();
    case SEGMENT:
        return m_segment.get();
    case KEYFRAME:
        return m_keyframe.get();
    case TANGENT:
    case TANGENT_UNFLAGGED:
        return m_tangent.get();
    case NONE:
        break;
    }
    return nullptr;
}

template class BasicHitRecord<Private::MutableParts>;
template class BasicHitRecord<Private::ConstParts>;

namespace {

template<class Record>
bool IsSame(const Record& a, const Record& b) noexcept {
    return a.getType() == b.getType() && a.getAddress() == b.getAddress();
}

template<class Record>
bool IsBefore(const Record& a, const Record& b) noexcept {
    if (a.getType() != b.getType()) return a.getType() < b.getType();
    return std::less<const void*>()(a.getAddress(), b.getAddress());
}

} // namespace

bool operator==(const HitRecord& a, const HitRecord& b) noexcept {
    return IsSame(a, b);
}
bool operator!=(const HitRecord& a, const HitRecord& b) noexcept {
    return !IsSame(a, b);
}
bool operator==(const ConstHitRecord& a, const ConstHitRecord& b) noexcept {
    return IsSame(a, b);
}
bool operator!=(const ConstHitRecord& a, const ConstHitRecord& b) noexcept {
    return !IsSame(a, b);
}

bool CompareRecord::operator()(const HitRecord& a, const HitRecord& b) const noexcept {
    return IsBefore(a, b);
}
bool CompareRecord::operator()(const ConstHitRecord& a, const ConstHitRecord& b) const noexcept {
    return IsBefore(a, b);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
