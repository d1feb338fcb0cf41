#include "model/Delivery.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

ObserverSet<FCurveObserver>& GlobalObservers() noexcept {
    // deliberate: never destroyed, so that observers which die at process exit can still unsubscribe
    // NOLINTNEXTLINE(bugprone-unhandled-exception-at-new): one small object, at the very first use
    static auto& observers = *new ObserverSet<FCurveObserver>;
    return observers;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
