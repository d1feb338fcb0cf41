#include "FCurveLib/EditGroup.h"

#include "FCurveLib/Selection.h"
#include "selection/EditHub.h"
#include "selection/SelectionState.h"

#include <exception>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::EditHub;

class EditGroup::Bracket {
public:
    Bracket(std::shared_ptr<FCurveContainer> curves, const char* name, std::uint32_t options)
        : m_curves(std::move(curves)), m_frame(EditHub::of(*m_curves).open(name, options)) {}

    bool isOpen() const noexcept { return m_frame->isOpen; }
    bool isUnwinding() const noexcept { return std::uncaught_exceptions() > m_exceptions; }

    // Observers may destroy the group.
    void call(void (EditHub::*action)(const std::shared_ptr<EditHub::Frame>&)) const {
        const auto curves = m_curves;
        const auto frame = m_frame;
        (EditHub::of(*curves).*action)(frame);
    }
    // Nobody is told what it throws.
    void tryTo(void (EditHub::*action)(const std::shared_ptr<EditHub::Frame>&)) const noexcept {
        try {
            if (isOpen()) call(action);
        } catch (...) { // NOLINT(bugprone-empty-catch): deliberate, for a destructor
        }
    }

private:
    std::shared_ptr<FCurveContainer> m_curves;
    std::shared_ptr<EditHub::Frame> m_frame;
    const int m_exceptions = std::uncaught_exceptions();
};

EditGroup::EditGroup(FCurveContainer& curves, const char* name, std::uint32_t options)
    : m_bracket(std::make_unique<Bracket>(curves.getShared(), name, options)) {}

EditGroup::EditGroup(Selection& selection, const char* name, std::uint32_t options) {
    EditHub::of(*selection.getCurves()).addSelection(Private::SelectionState::of(selection));
    m_bracket = std::make_unique<Bracket>(selection.getCurves(), name, options);
}

EditGroup::~EditGroup() {
    if (m_bracket->isUnwinding()) m_bracket->tryTo(&EditHub::cancel);
    m_bracket->tryTo(&EditHub::end);
    m_bracket->tryTo(&EditHub::end); // what there was to tell has been told: an observer threw
    m_bracket->tryTo(&EditHub::abandon);
}

void EditGroup::step() {
    m_bracket->call(&EditHub::step);
}
void EditGroup::end() {
    m_bracket->call(&EditHub::end);
}
void EditGroup::cancel() {
    m_bracket->call(&EditHub::cancel);
}
bool EditGroup::isOpen() const noexcept {
    return m_bracket->isOpen();
}

void EditGroup::subscribe(FCurveContainer& curves, EditObserver& observer) {
    EditHub::of(curves).observers().subscribe(observer);
}
void EditGroup::unsubscribe(FCurveContainer& curves, EditObserver& observer) noexcept {
    if (Private::Read::recorder(curves)) EditHub::of(curves).observers().unsubscribe(observer);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
