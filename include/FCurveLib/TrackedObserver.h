#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Base of every observer: remembers where the observer is subscribed, so that observers and the things they observe
/// may be destroyed in any order, also from inside a notification. A destroyed observer is unsubscribed everywhere. A
/// copy of an observer starts unsubscribed.
class FCURVELIB_API TrackedObserver {
public:
    TrackedObserver() noexcept;
    TrackedObserver(const TrackedObserver&) noexcept;
    TrackedObserver& operator=(const TrackedObserver&) noexcept;
    virtual ~TrackedObserver();

private:
    friend class Private::Subscription;
    Private::Subscription* m_subscriptions = nullptr;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
