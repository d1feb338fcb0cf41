#include "FCurveLib/EditObserver.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

EditObserver::EditObserver() noexcept = default;
EditObserver::EditObserver(const EditObserver&) noexcept = default;
EditObserver& EditObserver::operator=(const EditObserver&) noexcept = default;
EditObserver::~EditObserver() = default;

void EditObserver::editBegan(const EditSummary&) {}
void EditObserver::editStepped(const EditSummary&) {}
void EditObserver::editEnded(const EditSummary&) {}

} // namespace v19
} // namespace VEM_FN::FCurveLib
