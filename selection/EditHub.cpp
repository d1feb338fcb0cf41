#include "selection/EditHub.h"

#include "selection/EditHistory.h"

#include <algorithm>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

template<class Value>
class Restored {
public:
    Restored(Value& variable, Value value) noexcept : m_variable(variable), m_before(std::exchange(variable, value)) {}
    Restored(const Restored&) = delete;
    Restored& operator=(const Restored&) = delete;
    ~Restored() { m_variable = m_before; }

private:
    Value& m_variable;
    const Value m_before;
};

} // namespace

EditHub::EditHub(FCurveContainer& container) : m_container(container) {
    for (FCurve& curve : container) joined(curve);
}

EditHub::~EditHub() {
    for (FCurve* curve : m_attached) {
        auto& recorders = Raw::recorders(*curve);
        recorders.erase(std::remove(recorders.begin(), recorders.end(), this), recorders.end());
    }
}

EditHub& EditHub::of(FCurveContainer& container) {
    std::unique_ptr<Recorder>& recorder = Raw::recorder(container);
    if (!recorder) recorder = std::make_unique<EditHub>(container);
    return static_cast<EditHub&>(*recorder);
}

void EditHub::addSelection(const std::shared_ptr<SelectionState>& selection) {
    const auto isOver = [&](const std::weak_ptr<SelectionState>& known) {
        const auto state = known.lock();
        return !state || state == selection;
    };
    m_selections.erase(std::remove_if(m_selections.begin(), m_selections.end(), isOver), m_selections.end());
    m_selections.push_back(selection);
}

// --- recording -------------------------------------------------------------------------------------------------------

// Where an edit of a curve is recorded now; null where it is not. A curve that left the container is recorded as long
// as something recorded concerns it.
EditRecord* EditHub::target(FCurve* curve) noexcept {
    if (m_isRestoring) return nullptr;
    EditRecord* const record = !m_frames.empty() ? m_frames.back()->record.get()
                               : m_history       ? m_history->loose()
                                                 : nullptr;
    if (!record || !curve || record->mentions(*curve)) return record;
    if (Read::find(m_container, *curve) != m_container.end() || (m_history && m_history->mentions(*curve)))
        return record;
    for (const auto& frame : m_frames)
        if (frame->record->mentions(*curve)) return record;
    return nullptr;
}

void EditHub::recorded() noexcept {
    if (m_frames.empty() && m_history) m_history->looseGrew();
}

void EditHub::touch(Block& block) {
    FCurve& curve = *block.curve();
    EditRecord* const record = target(&curve);
    if (!record) return;
    if (watches()) m_watch.touch(block, curve, false);
    record->touch(block);
    recorded();
}

void EditHub::add(FCurve& curve, Block& block) {
    EditRecord* const record = target(&curve);
    if (!record) return;
    if (watches()) m_watch.touch(block, curve, true);
    record->add(curve, block);
    recorded();
}

void EditHub::remove(Block& block) {
    FCurve& curve = *block.curve();
    EditRecord* const record = target(&curve);
    if (!record) return;
    if (watches()) m_watch.touch(block, curve, true);
    record->remove(block);
    recorded();
}

void EditHub::exchange(FCurve& a, FCurve& b) {
    EditRecord* const record = target(&a) ? target(&a) : target(&b);
    if (!record) return;
    for (FCurve* curve : {&a, &b}) {
        joined(*curve);
        if (watches()) m_watch.whole(*curve);
    }
    record->touchAll(a);
    record->touchAll(b);
    for (const auto& entry : Read::properties(b)) record->property(OfCurve, &a, entry.first.c_str());
    for (const auto& entry : Read::properties(a)) record->property(OfCurve, &b, entry.first.c_str());
    recorded();
}

void EditHub::name(FCurve& curve) {
    EditRecord* const record = target(&curve);
    if (!record) return;
    if (watches()) m_watch.intrinsic(curve);
    record->nameOf(curve);
    recorded();
}

void EditHub::property(Carrier carrier, void* place, const char* key) {
    FCurve* curve = nullptr;
    if (carrier == OfCurve) curve = static_cast<FCurve*>(place);
    if (carrier > OfCurve) curve = static_cast<Block*>(place)->curve();
    EditRecord* const record = target(curve);
    if (!record) return;
    if (watches()) {
        if (carrier == OfContainer)
            m_watch.container();
        else if (carrier == OfCurve)
            m_watch.intrinsic(*curve);
        else
            m_watch.property(*static_cast<Block*>(place), *curve);
    }
    record->property(carrier, place, key);
    recorded();
}

void EditHub::contents(FCurveContainer& container) {
    EditRecord* const record = target(nullptr);
    if (!record) return;
    if (watches()) m_watch.container();
    record->contents(container);
    recorded();
}

void EditHub::joined(FCurve& curve) {
    auto& recorders = Raw::recorders(curve);
    if (std::find(recorders.begin(), recorders.end(), this) != recorders.end()) return;
    m_attached.insert(&curve);
    try {
        recorders.push_back(this);
    } catch (...) {
        m_attached.erase(&curve);
        throw;
    }
}

void EditHub::destroyed(FCurve& curve) noexcept {
    m_attached.erase(&curve);
    m_watch.destroyed(curve);
    try {
        for (const auto& frame : m_frames)
            if (frame->record->mentions(curve)) frame->record->destroyed(curve);
        if (m_history) m_history->destroyed(curve);
    } catch (...) { // no memory to sort out what dies with it
        forgetAll();
    }
}

bool EditHub::mutes() const noexcept {
    return isQuiet() && !m_isTelling;
}

// --- groups ----------------------------------------------------------------------------------------------------------

void EditHub::tellBegan(EditSummary::Kind kind, const std::string& name) {
    const EditSummary summary{kind, name, {}, false};
    m_observers.forEach([&](EditObserver& observer) { observer.editBegan(summary); });
}
void EditHub::tellStepped(const EditSummary& summary) {
    if (summary.curves.empty() && !summary.container) return;
    m_observers.forEach([&](EditObserver& observer) { observer.editStepped(summary); });
}
void EditHub::tellEnded(const EditSummary& summary) {
    m_observers.forEach([&](EditObserver& observer) { observer.editEnded(summary); });
}

std::shared_ptr<EditHub::Frame> EditHub::open(const char* name, std::uint32_t options) {
    if (m_frames.empty() && m_history) m_history->closeLoose();
    auto frame = std::make_shared<Frame>(name, options);
    m_frames.push_back(frame);
    if (m_frames.size() > 1) return frame;
    try {
        tellBegan(EditSummary::Edit, frame->record->name());
    } catch (...) {
        try {
            end(frame);
        } catch (...) {
            abandon(frame);
        }
        throw;
    }
    return frame;
}

void EditHub::notifyAs(FCurve& curve, std::uint32_t type) {
    const FCurve::ChangeType before = FCurve::getChangeType();
    const Restored<bool> telling(m_isTelling, true);
    FCurve::setChangeType(static_cast<FCurve::ChangeType>(type));
    try {
        curve.notifyChanged();
    } catch (...) {
        FCurve::setChangeType(before);
        throw;
    }
    FCurve::setChangeType(before);
}

// A curve whose observers heard of no step hears once of everything, at the end.
void EditHub::notifyQuietly(Frame& frame, const EditSummary& summary, bool last) {
    const std::vector<std::weak_ptr<FCurve>> begun = frame.begun;
    const auto hasBegun = [&](const std::shared_ptr<FCurve>& curve) {
        return std::any_of(begun.begin(), begun.end(), [&](const auto& known) { return known.lock() == curve; });
    };
    for (const CurveEdit& edit : summary.curves) {
        const bool isNew = !hasBegun(edit.curve);
        if (isNew && !last) {
            frame.begun.push_back(edit.curve);
            notifyAs(*edit.curve, FCurve::BeginChange);
        }
        notifyAs(*edit.curve, isNew && last ? FCurve::OrdinaryChange : FCurve::StepChange);
    }
    if (!last) return;
    for (const auto& known : begun)
        if (const auto curve = known.lock()) notifyAs(*curve, FCurve::EndChange);
}

void EditHub::tellStep(Frame& frame, bool last) {
    EditSummary summary = m_watch.takeStep(m_container);
    summary.name = frame.record->name();
    if (frame.options & EditGroup::Quiet) notifyQuietly(frame, summary, last);
    tellStepped(summary);
}

void EditHub::step(const std::shared_ptr<Frame>& frame) {
    if (frame->isOpen && m_frames.front() == frame) tellStep(*frame, false);
}

void EditHub::end(const std::shared_ptr<Frame>& frame) {
    if (!frame->isOpen) return;
    while (m_frames.back() != frame) end(std::shared_ptr<Frame>(m_frames.back()));
    if (m_frames.size() > 1) {
        try {
            m_frames[m_frames.size() - 2]->record->absorb(*frame->record);
        } catch (...) {
            abandon(frame);
            throw;
        }
        m_frames.pop_back();
        frame->isOpen = false;
        return;
    }
    tellStep(*frame, true);
    if (!frame->isOpen) return; // an observer ended it
    while (m_frames.back() != frame) end(std::shared_ptr<Frame>(m_frames.back()));
    m_watch.takeStep(m_container); // what observers edited meanwhile
    frame->isOpen = false;
    m_frames.clear();
    EditSummary summary;
    try {
        summary = m_watch.takeAll(m_container);
        summary.name = frame->record->name();
        frame->record->close(m_container);
        if (m_history) m_history->push(std::move(frame->record), (frame->options & EditGroup::Merge) != 0);
    } catch (...) { // no memory to keep it
        forgetAll();
        throw;
    }
    tellEnded(summary);
}

void EditHub::cancel(const std::shared_ptr<Frame>& frame) {
    if (!frame->isOpen) return;
    while (m_frames.back() != frame) end(std::shared_ptr<Frame>(m_frames.back()));
    const bool quiet = isQuiet();
    m_watch.settle(); // before parts that came and went are forgotten
    frame->record->close(m_container);
    Restoration restoration(*this, EditSummary::Cancel, *frame->record);
    try {
        restoration.run();
    } catch (...) { // the group stays open
        try {
            frame->record->reopen(EditRecord::curvesOf(m_container));
        } catch (...) {
            abandon(frame);
        }
        throw;
    }
    restoration.summarize();
    frame->isOpen = false;
    m_frames.pop_back();
    if (quiet && m_frames.empty())
        restoration.tellQuietly(*frame);
    else
        restoration.tellChanges();
    if (m_frames.empty()) restoration.tellSummary();
}

void EditHub::abandon(const std::shared_ptr<Frame>& frame) {
    while (frame->isOpen) {
        m_frames.back()->isOpen = false;
        m_frames.pop_back();
    }
    if (m_frames.empty()) m_watch = EditWatch();
    forgetAll();
}

// What is open still goes on; but nothing from before can be brought back.
void EditHub::forgetAll() noexcept {
    for (const auto& frame : m_frames) frame->record->forget();
    if (m_history) m_history->loseTrack();
}

// --- restoring -------------------------------------------------------------------------------------------------------

EditHub::Restoration::Restoration(EditHub& hub, EditSummary::Kind kind, EditRecord& record) noexcept
    : m_container(hub.m_container.getShared()), m_hub(hub), m_record(record), m_kind(kind) {}

void EditHub::Restoration::run() {
    const Restored<bool> restoring(m_hub.m_isRestoring, true);
    try {
        if (m_hub.isQuiet() || !m_hub.m_observers.empty()) m_record.watch(m_hub.m_watch);
        m_record.eachCurve([&](FCurve& curve) { m_hub.joined(curve); });
        m_record.exchange(m_hub.m_container, m_changes);
    } catch (...) {
        if (m_hub.m_frames.empty()) m_hub.m_watch = EditWatch();
        throw;
    }
}

void EditHub::Restoration::summarize() {
    EditWatch& watch = m_hub.m_watch;
    watch.settle();
    if (m_hub.m_frames.size() > 1) return;
    try {
        m_summary = watch.takeStep(m_hub.m_container);
        watch.takeAll(m_hub.m_container);
        m_summary.kind = m_kind;
        m_summary.name = m_record.name();
    } catch (...) {
        if (m_hub.m_frames.empty()) watch = EditWatch();
        throw;
    }
}

void EditHub::Restoration::tellNothing() noexcept {
    try {
        m_hub.tellEnded(EditSummary{m_kind, "", {}, false});
    } catch (...) { // what there was to tell has been thrown already
    }
}

void EditHub::Restoration::tellChanges() {
    const Restored<int> telling(m_hub.m_tellsRestored, m_hub.m_tellsRestored + 1);
    m_changes.tell(*m_container, std::vector<std::weak_ptr<SelectionState>>(m_hub.m_selections));
}

void EditHub::Restoration::tellQuietly(Frame& frame) {
    const Restored<int> telling(m_hub.m_tellsRestored, m_hub.m_tellsRestored + 1);
    m_hub.notifyQuietly(frame, m_summary, true);
}

void EditHub::Restoration::tellSummary() {
    const Restored<int> telling(m_hub.m_tellsRestored, m_hub.m_tellsRestored + 1);
    m_hub.tellStepped(m_summary);
    m_hub.tellEnded(m_summary);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
