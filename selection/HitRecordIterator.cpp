#include "FCurveLib/HitRecordIterator.h"

#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Segment.h"
#include "FCurveLib/Tangent.h"
#include "model/Read.h"
#include "selection/ShownTangents.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

template<class Parts>
void BasicHitRecordIterator<Parts>::advance(bool allTangents) {
    if (m_stage == AtCurve) {
        m_segment = m_curve->begin();
        m_stage = AtSegment;
        return;
    }
    const Segment& segment = *m_segment;
    const bool hasRightKey = Read::rightKey(segment) != nullptr;
    switch (m_stage) {
    case AtSegment:
        if (allTangents || Private::ShowsOutTangent(segment)) {
            m_stage = AtOutTangent;
            return;
        }
        if (Private::ShowsInTangent(segment)) {
            m_stage = AtInTangent;
            return;
        }
        break;
    case AtOutTangent:
        if (allTangents || hasRightKey) {
            m_stage = AtInTangent;
            return;
        }
        break;
    case AtRightKey:
        if (hasRightKey) {
            ++m_segment;
            m_stage = AtSegment;
            return;
        }
        break;
    default:
        break;
    }
    // The segment and its tangents are done.
    if (hasRightKey) {
        m_stage = AtRightKey;
    } else {
        ++m_curve;
        m_stage = AtCurve;
    }
}

template<class Parts>
void BasicHitRecordIterator<Parts>::retreat() {
    switch (m_stage) {
    case AtCurve:
        --m_curve;
        m_segment = m_curve->end();
        --m_segment;
        m_stage = Private::ShowsOutTangent(*m_segment) ? AtOutTangent : AtSegment;
        return;
    case AtSegment:
        if (m_segment == m_curve->begin()) {
            m_stage = AtCurve;
        } else {
            --m_segment;
            m_stage = AtRightKey;
        }
        return;
    case AtRightKey:
        if (Private::ShowsInTangent(*m_segment)) {
            m_stage = AtInTangent;
            return;
        }
        m_stage = AtSegment;
        return;
    case AtInTangent:
        m_stage = Private::ShowsOutTangent(*m_segment) ? AtOutTangent : AtSegment;
        return;
    case AtOutTangent:
        m_stage = AtSegment;
        return;
    }
}

template<class Parts>
auto BasicHitRecordIterator<Parts>::operator*() const -> Record {
    if (m_valid) return m_record;
    switch (m_stage) {
    case AtCurve:
        return Record(m_curve->getShared());
    case AtSegment:
        return Record(m_segment->getShared());
    case AtRightKey:
        return Record(m_segment->getRightKey());
    case AtInTangent:
        return Record(m_segment->getInTangent(), true);
    case AtOutTangent:
        return Record(m_segment->getOutTangent(), true);
    }
    return Record();
}

template<class Parts>
auto BasicHitRecordIterator<Parts>::operator->() const -> const Record* {
    if (m_valid) return &m_record;
    switch (m_stage) {
    case AtCurve:
        m_record.reset(m_curve->getShared());
        break;
    case AtSegment:
        m_record.reset(m_segment->getShared());
        break;
    case AtRightKey:
        m_record.reset(m_segment->getRightKey());
        break;
    case AtInTangent:
        m_record.reset(m_segment->getInTangent(), true);
        break;
    case AtOutTangent:
        m_record.reset(m_segment->getOutTangent(), true);
        break;
    }
    m_valid = true;
    return &m_record;
}

template<class Parts>
auto BasicHitRecordIterator<Parts>::getType() const noexcept -> typename Record::Type {
    switch (m_stage) {
    case AtCurve:
        return Record::CURVE;
    case AtSegment:
        return Record::SEGMENT;
    case AtRightKey:
        return Record::KEYFRAME;
    case AtInTangent:
    case AtOutTangent:
        return Record::TANGENT;
    }
    return Record::NONE;
}

template<class Parts>
const char* BasicHitRecordIterator<Parts>::getProperty(const char* key) const noexcept {
    switch (m_stage) {
    case AtCurve:
        return m_curve->getProperty(key);
    case AtSegment:
        return m_segment->getProperty(key);
    case AtRightKey: {
        const Keyframe* rightKey = Read::rightKey(*m_segment);
        return rightKey ? rightKey->getProperty(key) : "";
    }
    case AtInTangent:
        return Read::inTangent(*m_segment)->getProperty(key);
    case AtOutTangent:
        return Read::outTangent(*m_segment)->getProperty(key);
    }
    return "";
}

template class BasicHitRecordIterator<Private::MutableParts>;
template class BasicHitRecordIterator<Private::ConstParts>;

} // namespace v19
} // namespace VEM_FN::FCurveLib
