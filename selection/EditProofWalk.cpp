#include "selection/EditProofWalk.h"

#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

KeptSegment::KeptSegment(Segment& segment) noexcept : m_segment(segment.getShared()) {
    const Keyframe* key = Read::leftKey(segment);
    m_x = key ? key->getX() : -std::numeric_limits<double>::infinity();
}

bool KeptSegment::isIn(const FCurve& curve) const noexcept {
    return m_segment && Read::curve(*m_segment) == &curve;
}

Segment& KeptSegment::resolve(FCurve& curve) const noexcept {
    return isIn(curve) ? *m_segment : Read::findSegment(curve, m_x);
}

void KeptCurve::hold(FCurveContainer& curves, const FCurveContainer::iterator& position) {
    if (m_curve.get() == &*position) return;
    m_curve = position->getShared();
    m_before.reset();
    if (position == curves.begin()) return;
    auto before = position;
    m_before = (--before)->getShared();
}

FCurveContainer::iterator KeptCurve::next(FCurveContainer& curves) const noexcept {
    for (const FCurve* place : {m_curve.get(), m_before.get()}) {
        if (!place) continue;
        auto position = Read::find(curves, *place);
        if (position != curves.end()) return ++position;
    }
    return curves.begin();
}

void EditProofWalk::hold(const HitRecordIterator& position) {
    m_curve.hold(m_curves, position.m_curve);
    if (position.m_stage != HitRecordIterator::AtCurve) {
        Segment& segment = *position.m_segment;
        if (m_segment.get() != &segment) m_segment = KeptSegment(segment);
        if (const Keyframe* key = Read::rightKey(segment)) m_keyX = key->getX();
    }
    m_record = *position;
}

void EditProofWalk::advance(HitRecordIterator& position) const {
    FCurve& curve = *m_curve.get();
    const auto found = Read::find(m_curves, curve);
    if (found == m_curves.end()) {
        position = HitRecordIterator(m_curve.next(m_curves));
        return;
    }
    position.m_curve = found;
    if (position.m_stage != HitRecordIterator::AtCurve) {
        Segment& segment = m_segment.resolve(curve);
        position.m_segment = Read::iteratorAt(curve, segment);
        // Where the key has been removed, the segment ends at a later one, whose in tangent and itself the walk has not
        // seen.
        const bool wasAtEnd =
            position.m_stage == HitRecordIterator::AtInTangent || position.m_stage == HitRecordIterator::AtRightKey;
        const Keyframe* key = Read::rightKey(segment);
        const void* end = position.m_stage == HitRecordIterator::AtInTangent
                              ? static_cast<const void*>(Read::inTangent(segment))
                              : key;
        if (wasAtEnd && key && end != m_record.getAddress() && m_keyX < key->getX()) {
            position.m_stage = HitRecordIterator::AtInTangent;
            position.m_valid = false;
            return;
        }
    }
    step(position);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
