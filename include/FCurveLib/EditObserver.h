#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/TrackedObserver.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// What a step of an edit changed in one curve: what a view has to draw again.
struct CurveEdit {
    /// From start to end, in frames. Infinite beyond the first or the last key; empty (start > end) where nothing is.
    struct Range {
        double start = std::numeric_limits<double>::infinity();
        double end = -std::numeric_limits<double>::infinity();

        bool isEmpty() const noexcept { return !(start <= end); }
        void add(const Range& other) noexcept {
            if (other.start < start) start = other.start;
            if (other.end > end) end = other.end;
        }
    };

    std::shared_ptr<FCurve> curve;
    /// Where values may have changed. Outside it the curve is the same to the last bit, but see repeats; a host's own
    /// interpolators count as reading no farther than the segments next to their own.
    Range values;
    /// As values, and the surroundings of every part of which a property changed: a key that was selected, say.
    Range parts;
    /// Values changed, and the curve repeats them before its first key or after its last one.
    bool repeats = false;
    bool keys = false;      ///< keys were added or removed, or passed others
    bool intrinsic = false; ///< the curve's name, or a property of its own
};

/// One step of an edit, or all of it.
struct EditSummary {
    enum Kind : std::uint8_t {
        Edit = 0,
        Cancel = 1, ///< of an edit that was put back: steps before it were Edit
        Undo = 2,
        Redo = 3
    };
    Kind kind = Edit;
    std::string name; ///< the group's
    /// The curves of the container that changed, each once.
    std::vector<CurveEdit> curves;
    bool container = false; ///< the container's list of curves, or a property of its own
};

/// Hears of grouped edits as a whole (EditGroup::subscribe): a summary of each step, instead of a call for each part.
///
/// Summaries tell of everything, also of what was changed under a Switch. They come besides the calls that the curves'
/// own observers get, and after them. Undo and redo come as edits of one step. Edits outside of groups are told to the
/// curves' and the container's observers alone.
///
/// Calls are synchronous, on the thread that edits, and may edit, subscribe and unsubscribe: what they edit before
/// editEnded belongs to the group. An exception passes through to whoever called the group.
class FCURVELIB_API EditObserver : public TrackedObserver {
public:
    EditObserver() noexcept;
    EditObserver(const EditObserver&) noexcept;
    EditObserver& operator=(const EditObserver&) noexcept;
    ~EditObserver() override;

    /// A group was opened, or an undo or redo starts. Nothing has changed yet.
    virtual void editBegan(const EditSummary& edit);
    /// What changed since the last step; not called where nothing did.
    virtual void editStepped(const EditSummary& edit);
    /// The edit is over; it changed all this, or nothing where curves is empty. For a Cancel, what had been changed.
    virtual void editEnded(const EditSummary& edit);
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
