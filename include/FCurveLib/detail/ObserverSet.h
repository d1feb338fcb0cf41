#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/TrackedObserver.h"
#include "FCurveLib/detail/Notification.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
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

    /// Throws std::bad_alloc and then changes nothing.
    void subscribed(TrackedObserver& observer);
    void unsubscribed(TrackedObserver& observer) noexcept;

private:
    friend class FCurveLib::TrackedObserver;
    virtual void observerDestroyed(TrackedObserver& observer) noexcept = 0;
};

/// The order in which an ObserverSet calls.
enum class ObserverOrder { Subscription, Address };

/// The observers of one subject, the flags of its notification, and the walk over them.
///
/// Calls may subscribe, unsubscribe and destroy observers, and start walks of their own. One that leaves is not called
/// any more; one that arrives is called by the walks that start after its arrival. The subject must outlive the walk:
/// whoever delivers holds it. A walk allocates and writes nothing.
template<class Observer, ObserverOrder order = ObserverOrder::Subscription>
class ObserverSet final : private TrackerBase {
public:
    ObserverSet() noexcept = default;
    ~ObserverSet() override {
        for (const Entry& entry : m_entries) unsubscribed(*entry.observer);
    }

    /// A second subscription of the same observer has no effect. Throws std::bad_alloc and then changes nothing.
    void subscribe(Observer& observer) {
        if (find(observer) != m_entries.end()) return;
        subscribed(observer);
        try {
            const Entry entry{&observer, m_arrivals + 1};
            m_entries.insert(after(entry), entry);
        } catch (...) {
            unsubscribed(observer);
            throw;
        }
        ++m_arrivals;
    }

    void unsubscribe(Observer& observer) noexcept {
        const auto found = find(observer);
        if (found == m_entries.end()) return;
        m_entries.erase(found);
        unsubscribed(observer);
    }

    bool empty() const noexcept { return m_entries.empty(); }

    NotificationFlags& flags() noexcept { return m_flags; }

    /// Whether a notification may go out now; sets the blocked flag of the level that forbids it.
    bool admits() noexcept {
        NotificationFlags& library = LibraryNotification();
        NotificationFlags& forbidding = library.enabled ? m_flags : library;
        if (forbidding.enabled) return true;
        forbidding.blocked = true;
        return false;
    }

    /// How many observers have arrived so far: names this moment.
    std::uint64_t arrivals() const noexcept { return m_arrivals; }

    /// Calls each observer that was subscribed at that moment and still is. An exception of an observer ends the walk.
    template<class Call>
    void forEach(const Call& call, std::uint64_t moment) {
        for (std::size_t i = 0; i < m_entries.size();) {
            const Entry entry = m_entries[i];
            if (entry.arrival <= moment) call(*entry.observer);
            // Anything may have moved meanwhile: go on after the place of the one just called.
            if (i < m_entries.size() && m_entries[i].arrival == entry.arrival)
                ++i;
            else
                i = static_cast<std::size_t>(after(entry) - m_entries.begin());
        }
    }
    template<class Call>
    void forEach(const Call& call) {
        forEach(call, m_arrivals);
    }

private:
    struct Entry {
        Observer* observer;
        std::uint64_t arrival; // its number among all that ever subscribed here
    };
    using Entries = std::vector<Entry>;

    static bool isBefore(const Entry& a, const Entry& b) noexcept {
        if constexpr (order == ObserverOrder::Address) return std::less<Observer*>()(a.observer, b.observer);
        return a.arrival < b.arrival;
    }

    typename Entries::iterator after(const Entry& entry) noexcept {
        return std::upper_bound(m_entries.begin(), m_entries.end(), entry, isBefore);
    }

    typename Entries::iterator find(const TrackedObserver& observer) noexcept {
        return std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry& entry) {
            return static_cast<const TrackedObserver*>(entry.observer) == &observer;
        });
    }

    void observerDestroyed(TrackedObserver& observer) noexcept override { m_entries.erase(find(observer)); }

    Entries m_entries;
    std::uint64_t m_arrivals = 0;
    NotificationFlags m_flags;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
