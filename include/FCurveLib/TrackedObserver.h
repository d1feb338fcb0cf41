#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

/// What an observer remembers of each place where it is subscribed.
class FCURVELIB_API TrackerBase {
public:
    TrackerBase(const TrackerBase&) = delete;
    TrackerBase& operator=(const TrackerBase&) = delete;

protected:
    TrackerBase() noexcept = default;
    virtual ~TrackerBase();

    void subscribed(TrackedObserver& observer);
    void unsubscribed(TrackedObserver& observer) noexcept;

private:
    friend class FCurveLib::TrackedObserver;
    virtual void observerDestroyed(TrackedObserver& observer) noexcept = 0;
};

} // namespace Private

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
    friend class Private::TrackerBase;
    std::vector<Private::TrackerBase*> m_trackers;
};

namespace Private {

/// The order in which an ObserverSet calls.
enum class ObserverOrder { Subscription, Address };

/// The library-wide pair of flags behind the switches that are made without a curve or container.
struct FCURVELIB_API GlobalNotification {
    static bool isEnabled() noexcept;
    static void setEnabled(bool enabled) noexcept;
    static bool isBlocked() noexcept;
    static void setBlocked(bool blocked) noexcept;
};

/// The observers of one subject, its enabled and blocked flags, and the walk over them.
///
/// During a walk an observer may be unsubscribed or destroyed (it is not called any more) or subscribed (it is called
/// from the next delivery on). The subject must outlive the walk: whoever delivers holds it. Delivery allocates
/// nothing.
template<class Observer, ObserverOrder order = ObserverOrder::Subscription>
class ObserverSet final : private TrackerBase {
public:
    ObserverSet() noexcept = default;
    ~ObserverSet() override {
        for (Observer* observer : m_observers)
            if (observer) unsubscribed(*observer);
        for (Observer* observer : m_arrivals) unsubscribed(*observer);
    }

    /// A second subscription of the same observer has no effect.
    void subscribe(Observer& observer) {
        if (contains(observer)) return;
        if (m_depth > 0)
            m_arrivals.push_back(&observer);
        else
            insert(observer);
        subscribed(observer);
    }

    void unsubscribe(Observer& observer) noexcept {
        if (!contains(observer)) return;
        remove(observer);
        unsubscribed(observer);
    }

    bool empty() const noexcept { return m_observers.empty() && m_arrivals.empty(); }

    /// \name The subject's own flags
    /// @{
    bool isEnabled() const noexcept { return m_enabled; }
    void setEnabled(bool enabled) noexcept { m_enabled = enabled; }
    bool isBlocked() const noexcept { return m_blocked; }
    void setBlocked(bool blocked) noexcept { m_blocked = blocked; }
    /// @}

    /// Whether a notification may go out now; sets the blocked flag of the level that forbids it.
    bool admits() noexcept {
        if (!GlobalNotification::isEnabled()) {
            GlobalNotification::setBlocked(true);
            return false;
        }
        if (!m_enabled) {
            m_blocked = true;
            return false;
        }
        return true;
    }

    /// Calls each observer. An exception of an observer ends the walk and leaves the set sound.
    template<class Call>
    void forEach(const Call& call) {
        if (m_observers.empty()) return; // writes nothing, so that subjects without observers need no serialising
        Walk walk(*this);
        for (std::size_t i = 0; i < m_observers.size(); ++i)
            if (Observer* observer = m_observers[i]) call(*observer);
    }

private:
    struct Walk {
        explicit Walk(ObserverSet& set) noexcept : owner(set) { ++owner.m_depth; }
        Walk(const Walk&) = delete;
        Walk& operator=(const Walk&) = delete;
        ~Walk() {
            if (--owner.m_depth == 0) owner.settle();
        }
        ObserverSet& owner;
    };

    bool contains(const Observer& observer) const noexcept {
        return std::find(m_observers.begin(), m_observers.end(), &observer) != m_observers.end()
               || std::find(m_arrivals.begin(), m_arrivals.end(), &observer) != m_arrivals.end();
    }

    void insert(Observer& observer) {
        auto position = m_observers.end();
        if constexpr (order == ObserverOrder::Address)
            position = std::upper_bound(m_observers.begin(), m_observers.end(), &observer, std::less<Observer*>());
        m_observers.insert(position, &observer);
    }

    void remove(const TrackedObserver& observer) noexcept {
        const auto same = [&](const Observer* o) { return static_cast<const TrackedObserver*>(o) == &observer; };
        m_arrivals.erase(std::remove_if(m_arrivals.begin(), m_arrivals.end(), same), m_arrivals.end());
        if (m_depth > 0)
            std::replace_if(m_observers.begin(), m_observers.end(), same, nullptr);
        else
            m_observers.erase(std::remove_if(m_observers.begin(), m_observers.end(), same), m_observers.end());
    }

    // After a walk: drop the holes, let the arrivals in.
    void settle() {
        m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), nullptr), m_observers.end());
        for (Observer* observer : m_arrivals) insert(*observer);
        m_arrivals.clear();
    }

    void observerDestroyed(TrackedObserver& observer) noexcept override { remove(observer); }

    std::vector<Observer*> m_observers; // null where one left during a walk
    std::vector<Observer*> m_arrivals;  // subscribed during a walk
    int m_depth = 0;
    bool m_enabled = true;
    bool m_blocked = false;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
