#include "FCurveLib/CurveOverview.h"

#include "FCurveLib/DisplayProperties.h"
#include "model/NotFinite.h"
#include "model/Read.h"
#include "tools/SegmentSummaries.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::kInfinity;
using Private::Read;

CurveOverview::CurveOverview(std::shared_ptr<const FCurve> curve)
    : m_curve(curve ? std::move(curve) : FCurve::create()), m_summaries(std::make_unique<Private::SegmentSummaries>()),
      m_low(-kInfinity), m_high(kInfinity) {}

CurveOverview::~CurveOverview() = default;

void CurveOverview::invalidate(double low, double high) noexcept {
    constexpr double farthest = std::numeric_limits<double>::max(); // not infinity, which stands for the whole curve
    if (std::isnan(low) || std::isnan(high)) return invalidate();
    if (low > high) return;
    m_low = std::min(m_low, std::clamp(low, -farthest, farthest));
    m_high = std::max(m_high, std::clamp(high, -farthest, farthest));
}

void CurveOverview::invalidate() noexcept {
    m_low = -kInfinity;
    m_high = kInfinity;
}

const Private::SegmentSummaries& CurveOverview::update() {
    if (m_low <= m_high) m_summaries->update(*m_curve, m_low, m_high);
    m_low = kInfinity;
    m_high = -kInfinity;
    return *m_summaries;
}

bool CurveOverview::getExtents(double x0, double x1, double& low, double& high) {
    const Private::SegmentSummaries& summaries = update();
    double least = kInfinity;
    double most = -kInfinity;
    if (m_curve->size() == 2) {
        least = most = Read::rightKey(Read::firstSegment(*m_curve))->getY();
    } else if (m_curve->size() > 2) {
        const double begin = Read::rightKey(Read::firstSegment(*m_curve))->getX();
        const double end = Read::leftKey(Read::lastSegment(*m_curve))->getX();
        summaries.foldExtents(*m_curve, std::clamp(std::min(x0, x1), begin, end),
                              std::clamp(std::max(x0, x1), begin, end), least, most);
    }
    if (!(least <= most)) return false;
    low = least;
    high = most;
    return true;
}

// --- an overview that listens ----------------------------------------------------------------------------------------

ObservedOverview::ObservedOverview(const std::shared_ptr<FCurve>& curve) : CurveOverview(curve) {
    if (curve) curve->subscribe(*this);
}

ObservedOverview::~ObservedOverview() = default;

// A key never passes its neighbours: wherever it came from, it was between them.
void ObservedOverview::invalidateAround(const Keyframe* left, const Keyframe* right) noexcept {
    invalidate(left ? left->getX() : -kInfinity, right ? right->getX() : kInfinity);
}

void ObservedOverview::curveChanged(FCurve&) {
    invalidate();
}

void ObservedOverview::tangentChanged(Tangent& tangent) {
    if (const auto key = tangent.getOwningKeyframe())
        invalidateAround(key.get(), key.get());
    else if (const auto segment = tangent.getOwningSegment()) // at one of the curve's ends
        segmentChanged(*segment);
}

void ObservedOverview::tangentPropertyChanged(Tangent& tangent, const char* key, const char*) {
    if (!IsEditorKeyString(key)) tangentChanged(tangent);
}

void ObservedOverview::keyframeChanged(Keyframe& keyframe) {
    invalidateAround(Read::previousKey(keyframe), Read::nextKey(keyframe));
}

void ObservedOverview::keyframePropertyChanged(Keyframe& keyframe, const char* key, const char*) {
    if (!IsEditorKeyString(key)) keyframeChanged(keyframe);
}

void ObservedOverview::segmentChanged(Segment& segment) {
    const Keyframe* const left = Read::leftKey(segment);
    const Keyframe* const right = Read::rightKey(segment);
    invalidateAround(left ? left : right, right ? right : left);
}

void ObservedOverview::segmentPropertyChanged(Segment& segment, const char* key, const char*) {
    if (!IsEditorKeyString(key)) segmentChanged(segment);
}

void ObservedOverview::segmentAdded(FCurve&, Segment& segment) {
    segmentChanged(segment);
}

void ObservedOverview::segmentRemoved(FCurve&, Segment& segment) {
    segmentChanged(segment);
}

void ObservedOverview::curveIntrinsicChanged(FCurve&, FCurveObserver::CurveIntrinsicType) {}

void ObservedOverview::curvePropertyChanged(FCurve&, const char*, const char*) {}

} // namespace v19
} // namespace VEM_FN::FCurveLib
