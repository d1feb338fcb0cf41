#include "FCurveLib/TrackedObserver.h"

#include "FCurveLib/detail/ObserverSet.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

TrackerBase::~TrackerBase() = default;

void TrackerBase::subscribed(TrackedObserver& observer) {
    observer.m_trackers.push_back(this);
}

void TrackerBase::unsubscribed(TrackedObserver& observer) noexcept {
    auto& trackers = observer.m_trackers;
    trackers.erase(std::remove(trackers.begin(), trackers.end(), this), trackers.end());
}

} // namespace Private

TrackedObserver::TrackedObserver() noexcept = default;
TrackedObserver::TrackedObserver(const TrackedObserver&) noexcept {}
TrackedObserver& TrackedObserver::operator=(const TrackedObserver&) noexcept {
    return *this;
}

TrackedObserver::~TrackedObserver() {
    for (Private::TrackerBase* tracker : m_trackers) tracker->observerDestroyed(*this);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
