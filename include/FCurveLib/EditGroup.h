#pragma once

#include "FCurveLib/EditObserver.h"
#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstdint>
#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// One bracket for a gesture: a drag, a paste, a button of a panel. While it is open, whatever is edited in the curves
/// of a container, and in its list of curves, belongs together.
///
///     EditGroup drag(*curves, "Move keys");  // the button goes down
///     key.set(x, y);                         // each move of the pointer: any edits, by any functions
///     drag.step();
///     drag.end();                            // the button goes up; drag.cancel() on Escape
///
/// cancel() puts everything back to the last bit, with the same objects, and an UndoStack of the container gets one
/// step. Views that listen to summaries (EditObserver) need no calls to the curves' observers; Quiet holds them back.
///
/// Groups nest: docs/editing.md tells how. A curve that is exchanged with one of the container's (FCurve::swap) belongs
/// to the edit, too. Costs a few dozen nanoseconds for each edit and some 200 bytes for each touched key while it is
/// open; nothing per key of the container.
class FCURVELIB_API EditGroup {
public:
    enum Options : std::uint32_t {
        Plain = 0,
        /// The observers of curves hear of no parts while the group is open. Each step calls notifyChanged of each
        /// changed curve instead, as a drag does: beginValueChange before its first step, intermediateValueChange,
        /// endValueChange at the end or when it is cancelled. Without any step() before they get one curveChanged.
        Quiet = 1,
        /// On the undo stack this group joins the step before it, if that has the same name and came from a group that
        /// was to merge, too, and nothing was undone, edited or marked as saved in between. For keys that nudge.
        Merge = 2
    };

    /// \name Bracket
    /// @{

    /// Tells editBegan, unless it is an inner group. The name is for the undo menu; null counts as empty.
    explicit EditGroup(FCurveContainer& curves, const char* name = "", std::uint32_t options = Plain);
    /// Also tells the selection's observers where cancelling, undoing and redoing change what is selected.
    explicit EditGroup(Selection& selection, const char* name = "", std::uint32_t options = Plain);
    EditGroup(const EditGroup&) = delete;
    EditGroup& operator=(const EditGroup&) = delete;
    /// Ends the group; where an exception is what destroys it, cancels it. Exceptions of observers end here, and so
    /// does std::bad_alloc: what could not be put back stays.
    ~EditGroup();

    /// Tells editStepped, if anything changed since the last step. An inner group does nothing.
    void step();
    /// A last step, then editEnded. Does nothing when the group is no longer open.
    void end();
    /// Puts everything back as it was when the group was opened, tells the observers of what that changes, then
    /// editStepped and editEnded as Cancel. Does nothing when the group is no longer open.
    ///
    /// Where memory runs out (std::bad_alloc) all is put back, or nothing has changed and the group is open still. Only
    /// if there is not even room for that it is over: its edits stay, and an UndoStack has forgotten its steps.
    void cancel();
    bool isOpen() const noexcept;
    /// @}

    /// \name Observe the edits of a container
    /// As FCurveContainer::subscribe; called in the order of subscription.
    /// @{
    static void subscribe(FCurveContainer& curves, EditObserver& observer);
    static void unsubscribe(FCurveContainer& curves, EditObserver& observer) noexcept;
    /// @}

private:
    class Bracket;
    std::unique_ptr<Bracket> m_bracket;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
