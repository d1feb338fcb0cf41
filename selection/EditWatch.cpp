#include "selection/EditWatch.h"

#include "interp/Kinds.h"
#include "model/NotFinite.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

Reads ReadsOf(const Segment& segment) noexcept {
    return ReadsOf(Read::interpolator(segment), segment);
}

// The end, on one side, of the segments whose values depend on a key at which the given segment ends: a spline beside
// that reads where the key is, a match beside that what a spline reads.
template<class Next, class End>
double Reach(Segment* segment, const Next& next, const End& end) noexcept {
    double x = 0.0;
    constexpr Reads beyond[] = {kReadsNextKeys | kReadsNeighbours, kReadsNeighbours};
    for (std::size_t distance = 0;; ++distance) {
        const Keyframe* key = end(*segment);
        if (!key) return kInfinity;
        x = key->getX();
        segment = next(*segment);
        if (distance == 2 || !segment || (ReadsOf(*segment) & beyond[distance]) == 0) return x;
    }
}

// Where the curve may change when a block of it does.
CurveEdit::Range RangeOf(Block& block) noexcept {
    Segment& right = block.segment;
    const auto leftKey = [](Segment& segment) { return Read::leftKey(segment); };
    const auto rightKey = [](Segment& segment) { return Read::rightKey(segment); };
    const auto before = [](Segment& segment) {
        Keyframe* key = Read::leftKey(segment);
        return key ? Read::leftSegment(*key) : nullptr;
    };
    const auto after = [](Segment& segment) {
        Keyframe* key = Read::rightKey(segment);
        return key ? Read::rightSegment(*key) : nullptr;
    };
    CurveEdit::Range range;
    range.end = Reach(&right, after, rightKey);
    range.start = -kInfinity;
    if (Block* previous = block.previous()) {
        const double start = Reach(&previous->segment, before, leftKey);
        if (start != kInfinity) range.start = start;
    }
    return range;
}

// Whether values repeat beyond the keys; whether beside them something reads across that joint.
struct Ends {
    bool repeat;
    bool meet;
};
Ends EndsOf(const FCurve& curve) noexcept {
    const Segment& leading = Read::firstSegment(curve);
    const Segment& trailing = Read::lastSegment(curve);
    if (((ReadsOf(leading) | ReadsOf(trailing)) & kReadsCurve) == 0 || curve.size() < 3) return {false, false};
    const Segment& first = *Read::rightSegment(*Read::rightKey(leading));
    const Segment& last = *Read::leftSegment(*Read::leftKey(trailing));
    return {true, ((ReadsOf(first) | ReadsOf(last)) & kReadsNeighbours) != 0};
}

void AddEnds(const FCurve& curve, CurveEdit& edit) noexcept {
    const Ends ends = EndsOf(curve);
    edit.repeats = edit.repeats || ends.repeat;
    if (ends.meet) {
        edit.values = {-kInfinity, kInfinity};
        edit.parts = edit.values;
    }
}

} // namespace

CurveEdit& EditWatch::Edits::of(FCurve& curve) {
    const auto known = places.find(&curve);
    if (known != places.end()) return curves[known->second].edit;
    curves.push_back({&curve, {}});
    places.emplace(&curve, curves.size() - 1);
    return curves.back().edit;
}

void EditWatch::Edits::forget(const FCurve& curve) noexcept {
    const auto known = places.find(&curve);
    if (known == places.end()) return;
    curves[known->second].curve = nullptr;
    places.erase(known);
}

EditSummary EditWatch::Edits::summary(FCurveContainer& of) const {
    EditSummary summary;
    summary.container = container;
    for (const Curve& entry : curves) {
        if (!entry.curve || Read::find(of, *entry.curve) == of.end()) continue;
        summary.curves.push_back(entry.edit);
        summary.curves.back().curve = entry.curve->getShared();
    }
    return summary;
}

void EditWatch::touch(Block& block, FCurve& curve, bool comesOrGoes) {
    CurveEdit& edit = m_step.of(curve);
    edit.keys = edit.keys || comesOrGoes;
    // One that came in this step and goes again leaves its neighbours to others.
    if (!m_touched.insert(&block).second && !comesOrGoes) return;
    if (edit.values.isEmpty()) AddEnds(curve, edit);
    if (!block.previous() && !block.isLeading()) return; // yet to come
    const CurveEdit::Range range = RangeOf(block);
    edit.values.add(range);
    edit.parts.add(range);
}

void EditWatch::property(Block& block, FCurve& curve) {
    CurveEdit& edit = m_step.of(curve);
    if (block.previous() || block.isLeading()) edit.parts.add(RangeOf(block));
}

void EditWatch::intrinsic(FCurve& curve) {
    m_step.of(curve).intrinsic = true;
}

void EditWatch::keys(FCurve& curve) {
    m_step.of(curve).keys = true;
}

void EditWatch::whole(FCurve& curve) {
    CurveEdit& edit = m_step.of(curve);
    edit.values = {-kInfinity, kInfinity};
    edit.parts = edit.values;
    edit.keys = true;
    edit.intrinsic = true;
}

void EditWatch::destroyed(FCurve& curve) noexcept {
    m_step.forget(curve);
    m_all.forget(curve);
}

void EditWatch::settle() {
    for (Block* block : m_touched) {
        FCurve* const curve = block->previous() || block->isLeading() ? block->curve() : nullptr;
        if (!curve) continue;
        CurveEdit& edit = m_step.of(*curve);
        const CurveEdit::Range range = RangeOf(*block);
        edit.values.add(range);
        edit.parts.add(range);
    }
    m_touched.clear();
    for (Curve& entry : m_step.curves)
        if (entry.curve && !entry.edit.values.isEmpty()) AddEnds(*entry.curve, entry.edit);
}

EditSummary EditWatch::takeStep(FCurveContainer& container) {
    settle();
    EditSummary summary = m_step.summary(container);
    for (const Curve& entry : m_step.curves) {
        if (!entry.curve) continue;
        CurveEdit& all = m_all.of(*entry.curve);
        all.values.add(entry.edit.values);
        all.parts.add(entry.edit.parts);
        all.repeats = all.repeats || entry.edit.repeats;
        all.keys = all.keys || entry.edit.keys;
        all.intrinsic = all.intrinsic || entry.edit.intrinsic;
    }
    m_all.container = m_all.container || m_step.container;
    m_step = Edits();
    return summary;
}

EditSummary EditWatch::takeAll(FCurveContainer& container) {
    EditSummary summary = m_all.summary(container);
    m_all = Edits();
    return summary;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
