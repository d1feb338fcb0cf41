#include "FCurveLib/SelectionObserver.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

SelectionObserver::SelectionObserver() noexcept = default;
SelectionObserver::SelectionObserver(const SelectionObserver&) noexcept = default;
SelectionObserver& SelectionObserver::operator=(const SelectionObserver&) noexcept = default;
SelectionObserver::~SelectionObserver() = default;

void SelectionObserver::selected(const HitRecord&) {}
void SelectionObserver::deselected(const HitRecord&) {}
void SelectionObserver::selectionCleared() {}

} // namespace v19
} // namespace VEM_FN::FCurveLib
