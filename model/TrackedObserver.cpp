#include "FCurveLib/TrackedObserver.h"

#include "FCurveLib/detail/ObserverSet.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

Subscription::Subscription(Subject& subject, TrackedObserver& observer) noexcept
    : m_subject(subject), m_observer(observer), m_next(observer.m_subscriptions) {
    if (m_next) m_next->m_previous = this;
    observer.m_subscriptions = this;
}

Subscription::~Subscription() {
    (m_previous ? m_previous->m_next : m_observer.m_subscriptions) = m_next;
    if (m_next) m_next->m_previous = m_previous;
}

} // namespace Private

TrackedObserver::TrackedObserver() noexcept = default;
TrackedObserver::TrackedObserver(const TrackedObserver&) noexcept {}
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): nothing is assigned
TrackedObserver& TrackedObserver::operator=(const TrackedObserver&) noexcept {
    return *this;
}

TrackedObserver::~TrackedObserver() {
    while (m_subscriptions) m_subscriptions->m_subject.observerDestroyed(*this);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
