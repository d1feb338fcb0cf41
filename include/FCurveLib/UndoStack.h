#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstddef>
#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Undo and redo for a container: the edits made while it exists, one step for each EditGroup. All that is edited
/// outside of groups becomes a step of its own, without a name, when the next group opens or something is undone.
///
/// A step holds what the edit touched, never whole curves: up to 300 bytes for each key that was moved or removed, 100
/// for one that was added, 16 for each property. Everything comes back to the last bit and as the same objects, the
/// selection too; references and iterators to the other parts stay valid throughout.
///
/// Observers hear of an undo what the setters would tell, once all is complete (docs/editing.md). What they edit then
/// is a new edit, and ends what could be redone: isRestoring() lets them hold back.
///
/// For one container one stack; a second one stays empty. It shares the ownership of the container.
class FCURVELIB_API UndoStack {
public:
    static constexpr std::size_t defaultBytes = std::size_t{64} << 20;

    /// \name Make
    /// From now on edits are recorded. Null counts as a new, empty container.
    /// @{
    explicit UndoStack(std::shared_ptr<FCurveContainer> curves, std::size_t maxBytes = defaultBytes);
    /// Of the selection's container; its observers hear what undoing selects and deselects.
    explicit UndoStack(Selection& selection, std::size_t maxBytes = defaultBytes);
    UndoStack(const UndoStack&) = delete;
    UndoStack& operator=(const UndoStack&) = delete;
    ~UndoStack();
    /// @}

    /// \name Undo and redo
    /// Return false, and change nothing, where there is nothing to do or a group of the container is open. Linear in
    /// the number of parts that the edit touched, besides the logarithm for finding their places. An exception of an
    /// observer passes through; the undoing is complete then. Where memory runs out (std::bad_alloc) it is complete, or
    /// nothing has changed: undoSize() tells.
    /// @{
    bool undo();
    bool redo();
    bool canUndo() const noexcept;
    bool canRedo() const noexcept;
    /// Names of the steps that undo() and redo() would take; empty where there is none, and for edits without a group.
    const char* getUndoName() const noexcept;
    const char* getRedoName() const noexcept;
    /// True while undo(), redo() and EditGroup::cancel() tell observers.
    bool isRestoring() const noexcept;
    /// @}

    /// \name Steps
    /// @{
    std::size_t undoSize() const noexcept; ///< how often undo() can be called
    std::size_t redoSize() const noexcept;
    /// Forgets all steps, after loading a document, say. The curves stay as they are.
    void clear() noexcept;
    /// Marks the present state as the saved one. isClean() tells whether undo and redo led back to it.
    void setClean();
    bool isClean() const noexcept;
    /// @}

    /// \name Memory
    /// @{

    /// What the steps keep in memory, parts and curves that nobody else keeps included.
    std::size_t getBytes() const noexcept;
    std::size_t getMaxBytes() const noexcept;
    /// Beyond it the oldest steps are forgotten; a single edit that is larger leaves nothing to undo.
    void setMaxBytes(std::size_t bytes);
    /// @}

private:
    std::unique_ptr<Private::EditHistory> m_history;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
