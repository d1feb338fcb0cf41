#include "FCurveLib/Selection.h"

#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Segment.h"
#include "FCurveLib/Tangent.h"
#include "selection/EditProofWalk.h"
#include "selection/SelectionState.h"

#include <type_traits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::SelectionFilter;
using Private::SelectionState;

namespace {

template<class Record>
bool IsRecordSelected(const Record& record) noexcept {
    return SelectionState::withPart(record, [](const auto& part) { return SelectionFilter::isSelected(part); });
}

template<class Part>
HitRecord RecordOf(Part& part) noexcept {
    if constexpr (std::is_same_v<Part, Tangent>)
        return HitRecord(part.getShared(), true);
    else
        return HitRecord(part.getShared());
}

} // namespace

template<class Part>
void SelectionState::change(const std::shared_ptr<SelectionState>& state, Part& part, bool select) {
    if (select ? SelectionFilter::isSelected(part) : *part.getProperty(SelectionFilter::key) == '\0') return;
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): observers may destroy the Selection that holds it
    const std::shared_ptr<SelectionState> kept = state;
    const HitRecord record = RecordOf(part);
    if (!part.setProperty(SelectionFilter::key, select ? SelectionFilter::value : "")) return;
    kept->deliver(
        [&](SelectionObserver& observer) { select ? observer.selected(record) : observer.deselected(record); });
}

template void SelectionState::change(const std::shared_ptr<SelectionState>&, FCurve&, bool);
template void SelectionState::change(const std::shared_ptr<SelectionState>&, Segment&, bool);
template void SelectionState::change(const std::shared_ptr<SelectionState>&, Keyframe&, bool);
template void SelectionState::change(const std::shared_ptr<SelectionState>&, Tangent&, bool);

void SelectionState::change(const std::shared_ptr<SelectionState>& state, const HitRecord& record, bool select) {
    withPart(record, [&](auto& part) {
        change(state, part, select);
        return true;
    });
}

void SelectionState::deselectHeld(const HitRecord& record) {
    const bool changed = withPart(record, [](auto& part) { return part.setProperty(SelectionFilter::key, ""); });
    if (changed) deliver([&](SelectionObserver& observer) { observer.deselected(record); });
}

void SelectionState::clear(const Selection& selection, bool partsOnly) {
    const auto state = selection.m_state;
    const auto curves = selection.m_curves;
    const SelectionFilter selected(&selection);
    Private::EditProofWalk::forEach(
        curves,
        [&](const HitRecordIterator& position) {
            return selected.accepts(position) && !(partsOnly && position.getType() == HitRecord::CURVE);
        },
        [&](const HitRecord& part) { state->deselectHeld(part); });
}

bool SelectionFilter::operator()(const HitRecord& record) const noexcept {
    return m_selection && IsRecordSelected(record);
}
bool SelectionFilter::operator()(const ConstHitRecord& record) const noexcept {
    return m_selection && IsRecordSelected(record);
}

Selection::Selection(std::shared_ptr<FCurveContainer> curves)
    : m_curves(curves ? std::move(curves) : FCurveContainer::create()), m_state(std::make_shared<SelectionState>()) {}

Selection::~Selection() {
    m_state->isAlive = false;
}

void Selection::select(FCurve& curve) {
    SelectionState::change(m_state, curve, true);
}
void Selection::select(Segment& segment) {
    SelectionState::change(m_state, segment, true);
}
void Selection::select(Keyframe& keyframe) {
    SelectionState::change(m_state, keyframe, true);
}
void Selection::select(Tangent& tangent) {
    SelectionState::change(m_state, tangent, true);
}
void Selection::deselect(FCurve& curve) {
    SelectionState::change(m_state, curve, false);
}
void Selection::deselect(Segment& segment) {
    SelectionState::change(m_state, segment, false);
}
void Selection::deselect(Keyframe& keyframe) {
    SelectionState::change(m_state, keyframe, false);
}
void Selection::deselect(Tangent& tangent) {
    SelectionState::change(m_state, tangent, false);
}

void Selection::select(const HitRecord& part) {
    SelectionState::change(m_state, part, true);
}
void Selection::deselect(const HitRecord& part) {
    SelectionState::change(m_state, part, false);
}

void Selection::select(const std::set<HitRecord, CompareRecord>& parts) {
    const auto state = m_state;
    for (const HitRecord& part : parts) SelectionState::change(state, part, true);
}
void Selection::deselect(const std::set<HitRecord, CompareRecord>& parts) {
    const auto state = m_state;
    for (const HitRecord& part : parts) SelectionState::change(state, part, false);
}

void Selection::clear() {
    const auto state = m_state;
    SelectionState::clear(*this, false);
    state->deliver([](SelectionObserver& observer) { observer.selectionCleared(); });
}

bool Selection::isSelected(const FCurve& curve) const noexcept {
    return SelectionFilter::isSelected(curve);
}
bool Selection::isSelected(const Segment& segment) const noexcept {
    return SelectionFilter::isSelected(segment);
}
bool Selection::isSelected(const Keyframe& keyframe) const noexcept {
    return SelectionFilter::isSelected(keyframe);
}
bool Selection::isSelected(const Tangent& tangent) const noexcept {
    return SelectionFilter::isSelected(tangent);
}
bool Selection::isSelected(const HitRecord& part) const noexcept {
    return IsRecordSelected(part);
}
bool Selection::isSelected(const ConstHitRecord& part) const noexcept {
    return IsRecordSelected(part);
}

Selection::iterator Selection::begin() {
    return {HitRecordIterator::begin(*m_curves), HitRecordIterator::end(*m_curves), SelectionFilter(this)};
}
Selection::iterator Selection::end() {
    return {HitRecordIterator::end(*m_curves), HitRecordIterator::end(*m_curves), SelectionFilter(this)};
}
Selection::const_iterator Selection::begin() const {
    const FCurveContainer& curves = *m_curves;
    return {ConstHitRecordIterator::begin(curves), ConstHitRecordIterator::end(curves), SelectionFilter(this)};
}
Selection::const_iterator Selection::end() const {
    const FCurveContainer& curves = *m_curves;
    return {ConstHitRecordIterator::end(curves), ConstHitRecordIterator::end(curves), SelectionFilter(this)};
}

void Selection::subscribe(SelectionObserver& observer) {
    m_state->observers.subscribe(observer);
}
void Selection::unsubscribe(SelectionObserver& observer) noexcept {
    m_state->observers.unsubscribe(observer);
}

Selection::Switch::Switch(Selection& selection) noexcept
    : NotificationSwitch(selection.m_state, selection.m_state->observers.flags()) {}

#define FCURVELIB_SELECTED_RANGE(Iterator, Plural)                                                                     \
    Iterator BeginSelected##Plural(Selection& selection) {                                                             \
        return {selection.begin(), selection.end()};                                                                   \
    }                                                                                                                  \
    Iterator EndSelected##Plural(Selection& selection) {                                                               \
        return {selection.end(), selection.end()};                                                                     \
    }
FCURVELIB_SELECTED_RANGE(SelectedCurveIterator, Curves)
FCURVELIB_SELECTED_RANGE(SelectedSegmentIterator, Segments)
FCURVELIB_SELECTED_RANGE(SelectedKeyframeIterator, Keyframes)
FCURVELIB_SELECTED_RANGE(SelectedTangentIterator, Tangents)
#undef FCURVELIB_SELECTED_RANGE

} // namespace v19
} // namespace VEM_FN::FCurveLib
