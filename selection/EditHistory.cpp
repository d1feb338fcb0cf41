#include "selection/EditHistory.h"

#include "selection/EditHub.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

EditHistory::EditHistory(std::shared_ptr<FCurveContainer> curves, EditHub& hub, std::size_t maxBytes)
    : m_curves(std::move(curves)), m_hub(hub.history() ? nullptr : &hub), m_maxBytes(maxBytes) {
    if (!m_hub) return;
    m_loose = std::make_unique<EditRecord>("");
    m_hub->setHistory(this);
}

EditHistory::~EditHistory() {
    if (m_hub) m_hub->setHistory(nullptr);
}

// deliberate: an edit outside of groups that is too large to undo is not recorded to its end either, as half of it
// would be undone then
void EditHistory::looseGrew() noexcept {
    if (!m_loose || m_loose->openBytes() <= m_maxBytes) return;
    clear();
    m_loose.reset();
}

void EditHistory::closeLoose() {
    if (!m_hub || (m_loose && m_loose->isEmpty())) return;
    std::unique_ptr<EditRecord> record = std::exchange(m_loose, std::make_unique<EditRecord>(""));
    if (!record) {
        m_isClean = false;
        return;
    }
    try {
        record->close(*m_curves);
        push(std::move(record), false);
    } catch (...) { // no memory to keep it: what was before cannot be brought back either
        loseTrack();
        throw;
    }
}

void EditHistory::push(std::unique_ptr<EditRecord> record, bool merges) {
    if (record->isEmpty()) return;
    const bool joins = merges && m_undone.empty() && !m_done.empty() && m_done.back().merges
                       && m_done.back().record->name() == record->name() && !(m_isClean && m_clean == m_done.size());
    if (m_clean > m_done.size()) m_isClean = false;
    if (joins) {
        Step& last = m_done.back();
        last.record->reopen(record->reopen(EditRecord::curvesOf(*m_curves)));
        last.record->absorb(*record);
        last.record->close(*m_curves);
        m_kept -= last.bytes;
        last.bytes = last.record->bytes(*m_curves);
        m_kept += last.bytes;
    } else {
        const std::size_t bytes = record->bytes(*m_curves);
        m_done.push_back({std::move(record), bytes, merges});
        m_kept += bytes;
    }
    forgetUndone(); // now that the new step hears of curves that die with them
    hold();
}

bool EditHistory::move(bool undo) {
    if (!m_hub) return false;
    Steps& from = undo ? m_done : m_undone;
    Steps& to = undo ? m_undone : m_done;
    const EditSummary::Kind kind = undo ? EditSummary::Undo : EditSummary::Redo;
    const auto curves = m_curves; // an observer may destroy the stack
    EditHub& hub = *m_hub;
    if (!hub.isIdle()) return false;
    closeLoose();
    if (from.empty()) return false;
    hub.tellBegan(kind, from.back().record->name());
    if (hub.history() == this && hub.isIdle()) closeLoose(); // what an observer edited just now
    if (hub.history() != this || !hub.isIdle() || from.empty()) {
        hub.tellEnded(EditSummary{kind, "", {}, false});
        return false;
    }
    to.splice(to.end(), from, std::prev(from.end()));
    Step& step = to.back();
    EditHub::Restoration restoration(hub, kind, *step.record);
    try {
        restoration.run();
    } catch (...) {
        from.splice(from.end(), to, std::prev(to.end()));
        restoration.tellNothing();
        throw;
    }
    m_kept -= step.bytes;
    step.bytes = step.record->bytes(*m_curves);
    m_kept += step.bytes;
    if (!m_done.empty()) m_done.back().merges = false;
    hold();
    restoration.summarize();
    restoration.tellChanges();
    restoration.tellSummary();
    return true;
}

bool EditHistory::mentions(const FCurve& curve) const noexcept {
    const auto does = [&](const Step& step) { return step.record->mentions(curve); };
    return std::any_of(m_done.begin(), m_done.end(), does) || std::any_of(m_undone.begin(), m_undone.end(), does)
           || (m_loose && m_loose->mentions(curve));
}

void EditHistory::destroyed(FCurve& curve) {
    for (Steps* steps : {&m_done, &m_undone})
        for (Step& step : *steps)
            if (step.record->mentions(curve)) step.record->destroyed(curve);
    if (m_loose && m_loose->mentions(curve)) m_loose->destroyed(curve);
}

void EditHistory::forgetUndone() noexcept {
    Steps forgotten;
    forgotten.swap(m_undone);
    for (const Step& step : forgotten) m_kept -= step.bytes;
}

void EditHistory::forgetOldest() noexcept {
    const Step forgotten = std::move(m_done.front());
    m_done.pop_front();
    m_kept -= forgotten.bytes;
    if (m_clean == 0)
        m_isClean = false;
    else
        --m_clean;
}

void EditHistory::hold() noexcept {
    while (m_kept > m_maxBytes && !m_done.empty()) forgetOldest();
    while (m_kept > m_maxBytes && !m_undone.empty()) {
        const Step forgotten = std::move(m_undone.front());
        m_undone.pop_front();
        m_kept -= forgotten.bytes;
        if (m_clean > m_done.size() + m_undone.size()) m_isClean = false;
    }
}

// A curve may die with the last step that holds it, and looks for itself in the others then.
void EditHistory::clear() noexcept {
    const bool wasClean = isClean();
    forgetUndone();
    while (!m_done.empty()) forgetOldest();
    m_isClean = wasClean;
    m_clean = 0;
    m_kept = 0;
    if (m_loose) m_loose->forget();
}

void EditHistory::loseTrack() noexcept {
    clear();
    m_isClean = false;
}

void EditHistory::setClean() {
    closeLoose();
    m_clean = m_done.size();
    m_isClean = true;
}

std::size_t EditHistory::bytes() const noexcept {
    return m_kept + (m_loose ? m_loose->openBytes() : 0);
}

void EditHistory::setMaxBytes(std::size_t bytes) noexcept {
    m_maxBytes = bytes;
    hold();
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
