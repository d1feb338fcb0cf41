#include "FCurveLib/FCurveFormatInterface.h"

#include "FCurveLib/DisplayProperties.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/Interpolator.h"
#include "FCurveLib/InterpolatorFactory.h"
#include "FCurveLib/Rectangle.h"
#include "FCurveLib/Segment.h"
#include "FCurveLib/Tangent.h"
#include "formats/Text.h"
#include "model/Raw.h"

#include <cmath>
#include <cstring>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::OrEmpty;
using Private::Raw;
using Private::Read;

FCurveFormatInterface::FCurveFormatInterface() = default;
FCurveFormatInterface::~FCurveFormatInterface() = default;

void FCurveFormatInterface::setCurve(std::shared_ptr<FCurve> curve) {
    m_curve = std::move(curve);
    m_firstPending = true;
    m_segment.reset();
    m_tangent = NoTangent;
    m_keyPending = false;
    m_unsettled.clear();
}

// --- curve -----------------------------------------------------------------------------------------------------------

bool FCurveFormatInterface::startCurve(const char* name) {
    if (m_curve) m_curve->setName(name);
    return true;
}

bool FCurveFormatInterface::finishCurve() {
    if (m_curve) {
        addPendingKey();
        leave();
        for (const std::shared_ptr<Tangent>& tangent : m_unsettled) {
            const std::uint8_t type = tangent->getType();
            Raw::setType(*tangent, Tangent::Fixed); // so that setting the type is a change
            tangent->setType(type);
        }
    }
    setCurve(nullptr);
    return true;
}

void FCurveFormatInterface::curveVisible(bool visible) {
    if (m_curve) SetVisible(*m_curve, visible);
}
void FCurveFormatInterface::curveLocked(bool locked) {
    if (m_curve) SetLocked(*m_curve, locked);
}
void FCurveFormatInterface::curveShowVelocity(bool show) {
    if (m_curve) SetVelocityVisible(*m_curve, show);
}
void FCurveFormatInterface::curveShowAcceleration(bool show) {
    if (m_curve) SetAccelerationVisible(*m_curve, show);
}
void FCurveFormatInterface::curveShowDiscontinuities(bool show) {
    if (m_curve) SetDiscontinuityVisible(*m_curve, show);
}
void FCurveFormatInterface::curveGrid(double x, double y, double width, double height) {
    if (m_curve) SetGridSettings(*m_curve, Rectangle<double>(x, y, width, height));
}
void FCurveFormatInterface::curveTangentScale(double scale) {
    if (m_curve) SetTangentScale(*m_curve, scale);
}
void FCurveFormatInterface::curveProperty(const char* key, const char* value) {
    if (m_curve) m_curve->setProperty(key, value);
}

// --- segments --------------------------------------------------------------------------------------------------------

void FCurveFormatInterface::startSegmentContainer() {
    addPendingKey();
    leave();
    m_firstPending = true;
}

void FCurveFormatInterface::startSegment(const char* expression) {
    if (!m_curve) return;
    const std::shared_ptr<Interpolator>& interpolator = interpolatorOf(OrEmpty(expression));
    if (m_keyPending) {
        addKey(interpolator);
    } else if (m_firstPending) {
        Segment& first = *m_curve->begin();
        Raw::setInterpolator(first, interpolator);
        enter(first);
        m_firstPending = false;
    } else {
        Raw::setInterpolator(*m_segment, interpolator);
    }
}

const std::shared_ptr<Interpolator>& FCurveFormatInterface::interpolatorOf(const char* expression) {
    if (!m_lastUsed || m_lastUsed->first != expression) {
        const auto entry = m_interpolators.try_emplace(expression).first;
        if (!entry->second) entry->second = InterpolatorFactory::create(expression);
        m_lastUsed = &*entry;
    }
    return m_lastUsed->second;
}

void FCurveFormatInterface::finishSegment() {
    m_tangent = NoTangent;
    if (!m_segment) return;
    Keyframe* const left = Read::leftKey(*m_segment);
    if (left && std::strcmp(left->getProperty("fc_isUnified"), "1") == 0) Raw::setUnified(*left, true);
}

void FCurveFormatInterface::segmentProperty(const char* key, const char* value) {
    if (m_segment) Raw::setProperty(*m_segment, key, value);
}

void FCurveFormatInterface::enter(Segment& segment) {
    m_segment = segment.getShared();
    m_tangent = NoTangent;
    m_inGiven = false;
    m_outGiven = false;
}

// The current segment is complete, its right key included.
void FCurveFormatInterface::leave() {
    if (!m_segment) return;
    if (!m_outGiven) settle(*Read::outTangent(*m_segment));
    if (!m_inGiven) settle(*Read::inTangent(*m_segment));
    m_segment.reset();
    m_tangent = NoTangent;
}

// A handle was not given. Flat ones, new tangents' Fixed included, are known here; the other types look at keys to
// come.
void FCurveFormatInterface::settle(Tangent& tangent) {
    if (tangent.getType() > Tangent::Flat) {
        m_unsettled.push_back(tangent.getShared());
        return;
    }
    const Keyframe* const left = Read::leftKey(*m_segment);
    const Keyframe* const right = Read::rightKey(*m_segment);
    if (!left || !right) return;
    const double third = (right->getX() - left->getX()) / 3.0;
    Raw::setHandle(tangent, tangent.isInTangent() ? -third : third, 0.0);
}

// Joins a new segment, from the collected key on.
void FCurveFormatInterface::addKey(std::shared_ptr<Interpolator> interpolator) {
    m_keyPending = false;
    m_firstPending = false;
    Segment* added = Raw::appendKey(*m_curve, m_key, interpolator);
    leave(); // deliberate: after the key before which the segment ends is there
    if (!added) {
        added = &*m_curve->insertSegment(m_key, interpolator);
        Raw::setInterpolator(*added, std::move(interpolator));
    }
    enter(*added);
}

// A key that no segment followed.
void FCurveFormatInterface::addPendingKey() {
    if (!m_curve || !m_keyPending) return;
    addKey(InterpolatorFactory::create("constant()"));
    finishSegment();
}

// --- tangents --------------------------------------------------------------------------------------------------------

void FCurveFormatInterface::startInTangent() {
    m_tangent = InTangent;
}
void FCurveFormatInterface::startOutTangent() {
    m_tangent = OutTangent;
}

// Asked for anew by every call: an observer may have changed the curve meanwhile.
Tangent* FCurveFormatInterface::currentTangent() const {
    if (!m_segment || m_tangent == NoTangent) return nullptr;
    return m_tangent == InTangent ? Read::inTangent(*m_segment) : Read::outTangent(*m_segment);
}

void FCurveFormatInterface::tangentVector(double x, double y) {
    Tangent* const tangent = currentTangent();
    if (!tangent || !std::isfinite(x) || !std::isfinite(y)) return;
    const bool across = tangent->isInTangent() ? x > 0.0 : x < 0.0;
    Raw::setHandle(*tangent, across ? 0.0 : x, y);
    (tangent->isInTangent() ? m_inGiven : m_outGiven) = true;
}
void FCurveFormatInterface::tangentType(unsigned char type) {
    Tangent* const tangent = currentTangent();
    if (tangent && type <= Tangent::Plateau) Raw::setType(*tangent, type);
}
void FCurveFormatInterface::tangentWeightLocked(bool locked) {
    if (Tangent* const tangent = currentTangent()) Raw::setWeightLocked(*tangent, locked);
}
void FCurveFormatInterface::tangentWeighted(bool weighted) {
    if (Tangent* const tangent = currentTangent()) Raw::setWeighted(*tangent, weighted);
}
void FCurveFormatInterface::tangentProperty(const char* key, const char* value) {
    if (Tangent* const tangent = currentTangent()) Raw::setProperty(*tangent, key, value);
}

// --- keyframes -------------------------------------------------------------------------------------------------------

void FCurveFormatInterface::startKeyframe() {
    addPendingKey();
    m_key.set(0.0, 0.0);
    m_key.setTangentsUnified(false);
    m_key.setBreakdown(false);
    m_key.clearProperties();
    m_keyPending = true;
}
void FCurveFormatInterface::keyframePosition(double x, double y) {
    m_key.set(x, y);
}
void FCurveFormatInterface::keyframeTangentsUnified(bool unified) {
    m_key.setTangentsUnified(unified);
}
void FCurveFormatInterface::keyframeBreakdown(bool breakdown) {
    m_key.setBreakdown(breakdown);
}
void FCurveFormatInterface::keyframeLocked(bool locked) {
    SetLocked(m_key, locked);
}
void FCurveFormatInterface::keyframeProperty(const char* key, const char* value) {
    m_key.setProperty(key, value);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
