#include "FCurveLib/UndoStack.h"

#include "FCurveLib/Selection.h"
#include "selection/EditHistory.h"
#include "selection/EditHub.h"
#include "selection/SelectionState.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::EditHistory;
using Private::EditHub;

UndoStack::UndoStack(std::shared_ptr<FCurveContainer> curves, std::size_t maxBytes) {
    if (!curves) curves = FCurveContainer::create();
    EditHub& hub = EditHub::of(*curves);
    m_history = std::make_unique<EditHistory>(std::move(curves), hub, maxBytes);
}

UndoStack::UndoStack(Selection& selection, std::size_t maxBytes) : UndoStack(selection.getCurves(), maxBytes) {
    EditHub::of(*selection.getCurves()).addSelection(Private::SelectionState::of(selection));
}

UndoStack::~UndoStack() = default;

bool UndoStack::undo() {
    return m_history->move(true);
}
bool UndoStack::redo() {
    return m_history->move(false);
}
bool UndoStack::canUndo() const noexcept {
    return m_history->hub() && m_history->hub()->isIdle() && m_history->canUndo();
}
bool UndoStack::canRedo() const noexcept {
    return m_history->hub() && m_history->hub()->isIdle() && m_history->canRedo();
}

const char* UndoStack::getUndoName() const noexcept {
    return m_history->done().empty() || m_history->hasLoose() ? "" : m_history->done().back().record->name().c_str();
}
const char* UndoStack::getRedoName() const noexcept {
    return m_history->canRedo() ? m_history->undone().back().record->name().c_str() : "";
}
bool UndoStack::isRestoring() const noexcept {
    return m_history->hub() && m_history->hub()->isTellingRestored();
}

std::size_t UndoStack::undoSize() const noexcept {
    return m_history->done().size() + (m_history->loose() && m_history->hasLoose() ? 1 : 0);
}
std::size_t UndoStack::redoSize() const noexcept {
    return m_history->canRedo() ? m_history->undone().size() : 0;
}
void UndoStack::clear() noexcept {
    m_history->clear();
}
void UndoStack::setClean() {
    m_history->setClean();
}
bool UndoStack::isClean() const noexcept {
    return m_history->isClean();
}

std::size_t UndoStack::getBytes() const noexcept {
    return m_history->bytes();
}
std::size_t UndoStack::getMaxBytes() const noexcept {
    return m_history->maxBytes();
}
void UndoStack::setMaxBytes(std::size_t bytes) {
    m_history->setMaxBytes(bytes);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
