#include "FCurveLib/SelectionExaminer.h"

#include "FCurveLib/DisplayProperties.h"
#include "FCurveLib/FCurveObserver.h"
#include "FCurveLib/Selection.h"
#include "FCurveLib/Tolerance.h"
#include "selection/SelectionState.h"
#include "selection/ShownTangents.h"
#include "selection/SummaryTree.h"

#include <algorithm>
#include <array>
#include <functional>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;
using Private::SelectionFilter;

namespace {

// --- what parts have in common ---------------------------------------------------------------------------------------

struct Range {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void include(double value) noexcept {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    void merge(const Range& other) noexcept {
        low = std::min(low, other.low);
        high = std::max(high, other.high);
    }
    Examined<double> examined() const {
        Examined<double> result;
        if (low > high) return result;
        result.include(low + 0.0); // -0, the angle of a flat in tangent, is 0 to whoever reads a panel
        if (low != high && !NearEqual(high, low)) result.setMixed();
        return result;
    }
};

// What the selected parts of one kind have in common. The kind lists its fields: where the answer stands, and what to
// ask of a part. Numbers are equal within a tolerance, so they are summed up by their range.
template<class Kind>
struct PartSummary {
    using Answer = typename Kind::Answer;

    Answer common;
    std::array<Range, 2> ranges;

    void include(const typename Kind::Part& part) {
        ++common.count;
        Kind::forEachField([&](auto field, const auto& ask) { (common.*field).include(std::invoke(ask, part)); });
        Range* range = ranges.data();
        Kind::forEachNumber([&](auto, const auto& ask) { (range++)->include(std::invoke(ask, part)); });
    }
    void merge(const PartSummary& other) {
        common.count += other.common.count;
        Kind::forEachField([&](auto field, const auto&) { (common.*field).merge(other.common.*field); });
        for (std::size_t i = 0; i < ranges.size(); ++i) ranges[i].merge(other.ranges[i]);
    }
    Answer answer() const {
        Answer result = common;
        const Range* range = ranges.data();
        Kind::forEachNumber([&](auto field, const auto&) { result.*field = (range++)->examined(); });
        return result;
    }
};

struct CurveKind {
    using Part = FCurve;
    using Answer = SelectionExaminer::Curves;

    template<class Act>
    static void forEachField(const Act& act) {
        act(&Answer::name, &FCurve::getName);
        act(&Answer::visible, &IsVisible);
        act(&Answer::editable, &IsEditable);
        act(&Answer::locked, &IsLocked);
        act(&Answer::velocityVisible, &IsVelocityVisible);
        act(&Answer::accelerationVisible, &IsAccelerationVisible);
        act(&Answer::discontinuityVisible, &IsDiscontinuityVisible);
    }
    template<class Act>
    static void forEachNumber(const Act&) {}
};

struct SegmentKind {
    using Part = Segment;
    using Answer = SelectionExaminer::Segments;

    template<class Act>
    static void forEachField(const Act& act) {
        act(&Answer::expression, [](const Segment& segment) {
            const Interpolator* interpolator = Read::interpolator(segment);
            return interpolator ? interpolator->getExpression() : "";
        });
    }
    template<class Act>
    static void forEachNumber(const Act&) {}
};

struct KeyframeKind {
    using Part = Keyframe;
    using Answer = SelectionExaminer::Keyframes;

    template<class Act>
    static void forEachField(const Act& act) {
        act(&Answer::breakdown, &Keyframe::isBreakdown);
        act(&Answer::tangentsUnified, &Keyframe::isTangentsUnified);
        act(&Answer::locked, [](const Keyframe& key) { return *key.getProperty("fc_lock") != '\0'; });
    }
    template<class Act>
    static void forEachNumber(const Act& act) {
        act(&Answer::x, &Keyframe::getX);
        act(&Answer::y, &Keyframe::getY);
    }
};

struct TangentKind {
    using Part = Tangent;
    using Answer = SelectionExaminer::Tangents;

    template<class Act>
    static void forEachField(const Act& act) {
        act(&Answer::type, &Tangent::getType);
        act(&Answer::weighted, &Tangent::isWeighted);
        act(&Answer::weightLocked, &Tangent::isWeightLocked);
    }
    template<class Act>
    static void forEachNumber(const Act& act) {
        act(&Answer::angle, &Tangent::getAngle);
        act(&Answer::weight, &Tangent::getWeight);
    }
};

using CurveSummary = PartSummary<CurveKind>;
using SegmentSummary = PartSummary<SegmentKind>;
using KeyframeSummary = PartSummary<KeyframeKind>;
using TangentSummary = PartSummary<TangentKind>;

struct Summary {
    CurveSummary curves;
    SegmentSummary segments;
    KeyframeSummary keyframes;
    TangentSummary tangents;

    void merge(const Summary& other) {
        curves.merge(other.curves);
        segments.merge(other.segments);
        keyframes.merge(other.keyframes);
        tangents.merge(other.tangents);
    }
};

// --- which parts count: those in the curve's chain that the walk shows, and that are selected -----------------------

bool IsIn(const FCurve& curve, const Segment& segment) noexcept {
    if (Read::curve(segment) != &curve) return false;
    const Keyframe* key = Read::leftKey(segment);
    const Private::SegmentMap& segments = Read::segments(curve);
    return (key ? segments.lookUp(key->getX()) : segments.first()) == &segment;
}

bool Counts(const FCurve& curve, const Segment& segment) noexcept {
    return SelectionFilter::isSelected(segment) && IsIn(curve, segment);
}

bool Counts(const FCurve& curve, const Keyframe& key) noexcept {
    const Segment* left = Read::leftSegment(key);
    return SelectionFilter::isSelected(key) && left && Read::curve(*left) == &curve;
}

bool Counts(const FCurve& curve, const Tangent& tangent) {
    if (!SelectionFilter::isSelected(tangent)) return false;
    const std::shared_ptr<const Segment> segment = tangent.getOwningSegment();
    if (!segment || !IsIn(curve, *segment)) return false;
    if (&tangent == Read::inTangent(*segment)) return Private::ShowsInTangent(*segment);
    return &tangent == Read::outTangent(*segment) && Private::ShowsOutTangent(*segment);
}

// --- one observed curve ----------------------------------------------------------------------------------------------

class ExaminedCurve {
public:
    explicit ExaminedCurve(FCurve& curve) noexcept : m_address(&curve), m_curve(curve.getShared()) {}

    const FCurve* address() const noexcept { return m_address; } // the curve may be dead
    std::shared_ptr<FCurve> lock() const noexcept { return m_curve.lock(); }

    bool isStale() const noexcept { return m_isStale; }
    void setStale() noexcept { m_isStale = true; }

    // Takes in that the part changed, or became or ceased to be one that counts.
    template<class Part>
    void update(const FCurve& curve, const Part& part) noexcept {
        if (m_isStale || isWorthAWalk(curve)) return;
        try {
            partsLike(part).put(part, Counts(curve, part));
        } catch (...) { // of memory; the walk will see to it
            m_isStale = true;
        }
    }

    void updateAround(const FCurve& curve, const Segment& segment) noexcept {
        update(curve, segment);
        update(curve, *Read::inTangent(segment));
        update(curve, *Read::outTangent(segment));
        if (const Keyframe* key = Read::rightKey(segment)) update(curve, *key);
    }

    void settle(Summary& summary) {
        const std::shared_ptr<FCurve> curve = lock();
        if (!curve) return;
        if (m_isStale) rebuild(*curve);
        m_updates = 0;
        if (SelectionFilter::isSelected(*curve)) summary.curves.include(*curve);
        summary.segments.merge(m_segments.settle());
        summary.keyframes.merge(m_keyframes.settle());
        summary.tangents.merge(m_tangents.settle());
    }

private:
    // Many single updates cost more than one walk.
    bool isWorthAWalk(const FCurve& curve) noexcept {
        if (++m_updates <= 32 + curve.size() / 4) return false;
        m_isStale = true;
        return true;
    }

    Private::PartSet<Segment, SegmentSummary>& partsLike(const Segment&) noexcept { return m_segments; }
    Private::PartSet<Keyframe, KeyframeSummary>& partsLike(const Keyframe&) noexcept { return m_keyframes; }
    Private::PartSet<Tangent, TangentSummary>& partsLike(const Tangent&) noexcept { return m_tangents; }

    void rebuild(const FCurve& curve) {
        m_segments.clear();
        m_keyframes.clear();
        m_tangents.clear();
        for (const Segment& segment : curve) {
            if (SelectionFilter::isSelected(segment)) m_segments.add(segment);
            const Tangent& out = *Read::outTangent(segment);
            if (SelectionFilter::isSelected(out) && Private::ShowsOutTangent(segment)) m_tangents.add(out);
            const Tangent& in = *Read::inTangent(segment);
            if (SelectionFilter::isSelected(in) && Private::ShowsInTangent(segment)) m_tangents.add(in);
            const Keyframe* key = Read::rightKey(segment);
            if (key && SelectionFilter::isSelected(*key)) m_keyframes.add(*key);
        }
        m_isStale = false;
    }

    const FCurve* m_address;
    std::weak_ptr<FCurve> m_curve;
    bool m_isStale = true;
    std::size_t m_updates = 0; // since the last question
    Private::PartSet<Segment, SegmentSummary> m_segments;
    Private::PartSet<Keyframe, KeyframeSummary> m_keyframes;
    Private::PartSet<Tangent, TangentSummary> m_tangents;
};

} // namespace

// --- the observer ----------------------------------------------------------------------------------------------------

class SelectionExaminer::Observer final : public FCurveObserver, public ContainerObserver, public SelectionObserver {
public:
    explicit Observer(Selection& selection) : m_container(selection.getCurves()) {
        selection.subscribe(*this);
        selection.getCurves()->subscribe(*this);
    }

    void invalidate() noexcept {
        m_listIsStale = true;
        for (std::size_t i = 0; i < m_curves.size(); ++i) {
            m_curves[i]->setStale();
            m_curves.touch(i);
        }
    }

    // Brings the answers up to date.
    void settle() {
        if (!m_listIsStale && m_curves.isSettled()) return;
        if (m_listIsStale) {
            matchList();
            m_listIsStale = false;
        }
        const Summary& all = m_curves.settle(
            [](Summary& summary, const std::unique_ptr<ExaminedCurve>& curve) { curve->settle(summary); });
        curves = all.curves.answer();
        segments = all.segments.answer();
        keyframes = all.keyframes.answer();
        tangents = all.tangents.answer();
    }

    Curves curves;
    Segments segments;
    Keyframes keyframes;
    Tangents tangents;

private:
    // --- SelectionObserver: also tells what curves are silenced about ------------------------------------------------
    void selected(const HitRecord& part) override { updateRecord(part); }
    void deselected(const HitRecord& part) override { updateRecord(part); }

    void updateRecord(const HitRecord& record) {
        Private::SelectionState::withPart(record, [this](auto& part) {
            update(part);
            return true;
        });
    }

    // --- ContainerObserver -------------------------------------------------------------------------------------------
    void containerChanged(FCurveContainer&) override { m_listIsStale = true; }

    // --- FCurveObserver ----------------------------------------------------------------------------------------------
    void curveChanged(FCurve& curve) override {
        if (ExaminedCurve* examined = touch(&curve)) examined->setStale();
    }
    void tangentIntrinsicChanged(Tangent& tangent, TangentIntrinsicType) override { update(tangent); }
    void tangentPropertyChanged(Tangent& tangent, const char*, const char*) override { update(tangent); }
    void keyframeIntrinsicChanged(Keyframe& key, KeyframeIntrinsicType) override { update(key); }
    void keyframePropertyChanged(Keyframe& key, const char*, const char*) override { update(key); }
    void segmentPropertyChanged(Segment& segment, const char*, const char*) override { update(segment); }
    void segmentIntrinsicChanged(Segment& segment, SegmentIntrinsicType) override {
        // Another interpolator may use tangents, or no longer.
        if (!Read::inTangent(segment)) return; // made by hand
        FCurve* curve = Read::curve(segment);
        if (ExaminedCurve* examined = touch(curve)) examined->updateAround(*curve, segment);
    }
    void segmentAdded(FCurve& curve, Segment& segment) override {
        ExaminedCurve* examined = touch(&curve);
        if (!examined) return;
        examined->updateAround(curve, segment);
        updatePlace(*examined, curve, segment);
    }
    void segmentRemoved(FCurve& curve, Segment& segment) override {
        ExaminedCurve* examined = touch(&curve);
        if (!examined) return;
        examined->updateAround(curve, segment);
        examined->update(curve, *Read::leftKey(segment));
        updatePlace(*examined, curve, segment);
    }
    void curveIntrinsicChanged(FCurve& curve, CurveIntrinsicType) override { touch(&curve); }
    void curvePropertyChanged(FCurve& curve, const char*, const char*) override { touch(&curve); }

    // The segment that ends where the given one starts, or did: its end is new, and its in tangent another.
    static void updatePlace(ExaminedCurve& examined, FCurve& curve, const Segment& segment) noexcept {
        const Keyframe* key = Read::leftKey(segment);
        const Segment* before = Read::leftSegment(*key);
        examined.updateAround(curve, before ? *before : Read::findSegment(curve, key->getX()));
    }

    static FCurve* curveOf(Segment& segment) noexcept { return Read::curve(segment); }
    static FCurve* curveOf(Keyframe& key) noexcept { return Read::curve(key); }
    static FCurve* curveOf(Tangent& tangent) noexcept { return Read::curve(tangent); }

    template<class Part>
    void update(Part& part) noexcept {
        FCurve* curve = curveOf(part);
        if (ExaminedCurve* examined = touch(curve)) examined->update(*curve, part);
    }
    void update(FCurve& curve) noexcept { touch(&curve); }

    // The observed curve, with its answers marked as out of date; null for a curve that is not observed.
    ExaminedCurve* touch(const FCurve* curve) noexcept {
        const auto found = m_numbers.find(curve);
        if (found == m_numbers.end()) return nullptr;
        m_curves.touch(found->second);
        return m_curves[found->second].get();
    }

    // Observes exactly the curves of the container.
    void matchList() {
        const std::shared_ptr<FCurveContainer> container = m_container.lock();
        for (std::size_t i = m_curves.size(); i-- > 0;) {
            const std::shared_ptr<FCurve> curve = m_curves[i]->lock();
            if (curve && container && Read::find(*container, *curve) != container->end()) continue;
            if (curve) curve->unsubscribe(*this);
            m_numbers.erase(m_curves[i]->address());
            m_curves.remove(i);
            if (i < m_curves.size()) m_numbers[m_curves[i]->address()] = i;
        }
        if (!container) return;
        for (FCurve& curve : *container) {
            if (m_numbers.count(&curve) != 0) continue;
            auto examined = std::make_unique<ExaminedCurve>(curve);
            const auto entry = m_numbers.emplace(&curve, m_curves.size()).first;
            try {
                curve.subscribe(*this);
                m_curves.add(std::move(examined));
            } catch (...) {
                m_numbers.erase(entry);
                throw;
            }
        }
    }

    std::weak_ptr<FCurveContainer> m_container;
    bool m_listIsStale = true;
    Private::SummaryTree<std::unique_ptr<ExaminedCurve>, Summary> m_curves;
    std::unordered_map<const FCurve*, std::size_t> m_numbers;
};

SelectionExaminer::SelectionExaminer(Selection& selection) : m_observer(std::make_unique<Observer>(selection)) {}
SelectionExaminer::~SelectionExaminer() = default;

const SelectionExaminer::Curves& SelectionExaminer::getCurves() {
    m_observer->settle();
    return m_observer->curves;
}
const SelectionExaminer::Segments& SelectionExaminer::getSegments() {
    m_observer->settle();
    return m_observer->segments;
}
const SelectionExaminer::Keyframes& SelectionExaminer::getKeyframes() {
    m_observer->settle();
    return m_observer->keyframes;
}
const SelectionExaminer::Tangents& SelectionExaminer::getTangents() {
    m_observer->settle();
    return m_observer->tangents;
}

void SelectionExaminer::invalidate() noexcept {
    m_observer->invalidate();
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
