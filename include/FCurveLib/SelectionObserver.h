#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/TrackedObserver.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Hears of every change that is made through one Selection (Selection::subscribe). The defaults do nothing.
///
/// Calls are synchronous and come after the change: in selected() the part is selected, in deselected() it is not. From
/// inside a call an observer may select and deselect, edit, remove and add parts and curves, subscribe, unsubscribe and
/// destroy observers, and destroy the Selection itself: no observer hears of a Selection after its destruction. An
/// exception that leaves an observer passes through to whoever changed the selection; the change that was being told
/// stays made.
class FCURVELIB_API SelectionObserver : public TrackedObserver {
public:
    SelectionObserver() noexcept;
    SelectionObserver(const SelectionObserver&) noexcept;
    SelectionObserver& operator=(const SelectionObserver&) noexcept;
    ~SelectionObserver() override;

    /// A part became selected. Tangents come as TANGENT records.
    virtual void selected(const HitRecord& part);
    /// A part was deselected.
    virtual void deselected(const HitRecord& part);
    /// Selection::clear() is done; each part that it deselected was told before.
    virtual void selectionCleared();
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
