#pragma once

// The steps of an UndoStack, and the edits that belong to no group.

#include "selection/EditRecord.h"

#include <cstddef>
#include <list>
#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

class EditHub;

class EditHistory {
public:
    EditHistory(std::shared_ptr<FCurveContainer> curves, EditHub& hub, std::size_t maxBytes);
    EditHistory(const EditHistory&) = delete;
    EditHistory& operator=(const EditHistory&) = delete;
    ~EditHistory();

    // What records edits outside of groups; null once they have become larger than all steps may be.
    EditRecord* loose() noexcept { return m_loose.get(); }
    void looseGrew() noexcept;
    // Makes a step of them.
    void closeLoose();
    bool hasLoose() const noexcept { return m_hub && (!m_loose || m_loose->changes(*m_curves)); }
    bool canUndo() const noexcept { return !m_done.empty() || (m_loose && m_loose->changes(*m_curves)); }
    bool canRedo() const noexcept { return !m_undone.empty() && !hasLoose(); }

    // A closed record that may join the step before it.
    void push(std::unique_ptr<EditRecord> record, bool merges);
    bool move(bool undo);

    bool mentions(const FCurve& curve) const noexcept;
    void destroyed(FCurve& curve);
    void clear() noexcept;
    // Something happened that no step tells: nothing from before can be brought back, nor is the document as saved.
    void loseTrack() noexcept;

    struct Step {
        std::unique_ptr<EditRecord> record;
        std::size_t bytes = 0;
        bool merges = false;
    };
    using Steps = std::list<Step>;
    const Steps& done() const noexcept { return m_done; }
    const Steps& undone() const noexcept { return m_undone; }

    void setClean();
    bool isClean() const noexcept { return m_isClean && !hasLoose() && m_clean == m_done.size(); }
    std::size_t bytes() const noexcept;
    std::size_t maxBytes() const noexcept { return m_maxBytes; }
    void setMaxBytes(std::size_t bytes) noexcept;
    EditHub* hub() const noexcept { return m_hub; }

private:
    void forgetUndone() noexcept;
    void forgetOldest() noexcept;
    void hold() noexcept;

    std::shared_ptr<FCurveContainer> m_curves;
    EditHub* m_hub; // null for a second history of a container
    Steps m_done, m_undone;
    std::unique_ptr<EditRecord> m_loose;
    std::size_t m_maxBytes;
    std::size_t m_kept = 0; // bytes of the steps
    std::size_t m_clean = 0;
    bool m_isClean = true; // m_clean tells the number of steps at which the document was saved
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
