#pragma once

// Where the edits of a container's curves arrive: records of open groups and of the undo stack, and who is told.

#include "FCurveLib/EditGroup.h"
#include "FCurveLib/detail/ObserverSet.h"
#include "selection/EditChanges.h"
#include "selection/EditRecord.h"
#include "selection/EditWatch.h"

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

class EditHistory;
class SelectionState;

class EditHub final : public Recorder {
public:
    // One group that was opened.
    struct Frame {
        Frame(const char* name, std::uint32_t asked)
            : record(std::make_unique<EditRecord>(name ? name : "")), options(asked) {}

        std::unique_ptr<EditRecord> record;
        std::uint32_t options;
        bool isOpen = true;
        std::vector<std::weak_ptr<FCurve>> begun; // the curves whose observers were told that a change begins
    };

    explicit EditHub(FCurveContainer& container);
    ~EditHub() override;
    // The container's; makes it, if there is none.
    static EditHub& of(FCurveContainer& container);

    // The container must outlive the calls.
    std::shared_ptr<Frame> open(const char* name, std::uint32_t options);
    void step(const std::shared_ptr<Frame>& frame);
    void end(const std::shared_ptr<Frame>& frame);
    void cancel(const std::shared_ptr<Frame>& frame);
    // Leaves the edits as they are, and nothing of them to undo. Never throws.
    void abandon(const std::shared_ptr<Frame>& frame);

    EditHistory* history() const noexcept { return m_history; }
    void setHistory(EditHistory* history) noexcept { m_history = history; }
    void addSelection(const std::shared_ptr<SelectionState>& selection);
    ObserverSet<EditObserver>& observers() noexcept { return m_observers; }
    bool isIdle() const noexcept { return m_frames.empty() && !m_isRestoring; }
    bool isTellingRestored() const noexcept { return m_tellsRestored > 0; }

    void tellBegan(EditSummary::Kind kind, const std::string& name);
    void tellEnded(const EditSummary& summary);

    // Brings a record's state back at once; tells of it when asked.
    class Restoration {
    public:
        Restoration(EditHub& hub, EditSummary::Kind kind, EditRecord& record) noexcept;
        // What it throws leaves all as it was.
        void run();
        void summarize();
        // That it came to nothing.
        void tellNothing() noexcept;
        // To the observers of curves and selections, part by part.
        void tellChanges();
        // To those of curves, curve by curve, as at the end of that quiet group.
        void tellQuietly(Frame& frame);
        void tellSummary();

    private:
        std::shared_ptr<FCurveContainer> m_container;
        EditHub& m_hub;
        EditRecord& m_record;
        const EditSummary::Kind m_kind;
        EditSummary m_summary; // of an inner group none
        EditChanges m_changes;
    };

    void touch(Block& block) override;
    void add(FCurve& curve, Block& block) override;
    void remove(Block& block) override;
    void exchange(FCurve& a, FCurve& b) override;
    void name(FCurve& curve) override;
    void property(Carrier carrier, void* place, const char* key) override;
    void contents(FCurveContainer& container) override;
    void joined(FCurve& curve) override;
    void destroyed(FCurve& curve) noexcept override;
    bool mutes() const noexcept override;

private:
    EditRecord* target(FCurve* curve) noexcept;
    void forgetAll() noexcept;
    bool isQuiet() const noexcept { return !m_frames.empty() && (m_frames.front()->options & EditGroup::Quiet); }
    bool watches() const noexcept { return !m_frames.empty() && (isQuiet() || !m_observers.empty()); }
    void recorded() noexcept;
    void tellStep(Frame& frame, bool last);
    void notifyAs(FCurve& curve, std::uint32_t type);
    void notifyQuietly(Frame& frame, const EditSummary& summary, bool last);
    void tellStepped(const EditSummary& summary);

    FCurveContainer& m_container;
    std::unordered_set<FCurve*> m_attached; // curves that name this recorder
    std::vector<std::shared_ptr<Frame>> m_frames;
    EditWatch m_watch; // of the outermost group
    EditHistory* m_history = nullptr;
    std::vector<std::weak_ptr<SelectionState>> m_selections;
    ObserverSet<EditObserver> m_observers;
    bool m_isRestoring = false;
    bool m_isTelling = false; // on behalf of a quiet group
    int m_tellsRestored = 0;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
