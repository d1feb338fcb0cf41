#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/TrackedObserver.h"
#include "FCurveLib/detail/Notification.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

/// What one subscription looks like from the observer.
class FCURVELIB_API Subject {
public:
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

protected:
    Subject() noexcept = default;
    ~Subject() = default;

private:
    friend class FCurveLib::TrackedObserver;
    virtual void observerDestroyed(TrackedObserver& observer) noexcept = 0;
};

/// One subscription: the subject owns it, the observer lists it. Either may be destroyed first, in constant time.
class FCURVELIB_API Subscription {
public:
    Subscription(Subject& subject, TrackedObserver& observer) noexcept;
    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;
    ~Subscription();

private:
    friend class FCurveLib::TrackedObserver;
    Subject& m_subject;
    TrackedObserver& m_observer;
    Subscription* m_previous = nullptr;
    Subscription* m_next;
};

/// The order in which an ObserverSet calls.
enum class ObserverOrder { Subscription, Address };

/// The observers of one subject, the flags of its notification, and the walk over them.
///
/// Calls may subscribe, unsubscribe and destroy observers, and start walks of their own. One that leaves is not called
/// any more; one that arrives is called by the walks that start after its arrival. The subject must outlive the walk:
/// whoever delivers holds it. A walk allocates and writes nothing.
template<class Observer, ObserverOrder order = ObserverOrder::Subscription>
class ObserverSet {
public:
    ObserverSet() noexcept = default;

    /// A second subscription of the same observer has no effect. Throws std::bad_alloc and then changes nothing.
    void subscribe(Observer& observer) {
        if (!m_list) m_list = std::make_unique<List>();
        if (m_list->find(observer) != m_list->entries.end()) return;
        Entry entry{&observer, m_list->arrivals + 1, std::make_unique<Subscription>(*m_list, observer)};
        m_list->entries.insert(m_list->after(entry), std::move(entry));
        ++m_list->arrivals;
    }

    void unsubscribe(Observer& observer) noexcept {
        if (!m_list) return;
        const auto found = m_list->find(observer);
        if (found != m_list->entries.end()) m_list->entries.erase(found);
    }

    bool empty() const noexcept { return !m_list || m_list->entries.empty(); }

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
    std::uint64_t arrivals() const noexcept { return m_list ? m_list->arrivals : 0; }

    /// Calls each observer that was subscribed at that moment and still is. An exception of an observer ends the walk.
    template<class Call>
    void forEach(const Call& call, std::uint64_t moment) {
        if (!m_list) return;
        auto& entries = m_list->entries;
        for (std::size_t i = 0; i < entries.size();) {
            const Entry entry{entries[i].observer, entries[i].arrival, nullptr};
            if (entry.arrival <= moment) call(*entry.observer);
            // Anything may have moved meanwhile: go on after the place of the one just called.
            if (i < entries.size() && entries[i].arrival == entry.arrival)
                ++i;
            else
                i = static_cast<std::size_t>(m_list->after(entry) - entries.begin());
        }
    }
    template<class Call>
    void forEach(const Call& call) {
        forEach(call, arrivals());
    }

private:
    struct Entry {
        Observer* observer;
        std::uint64_t arrival; // its number among all that ever subscribed here
        std::unique_ptr<Subscription> subscription;
    };

    struct List final : Subject {
        using Entries = std::vector<Entry>;

        static bool isBefore(const Entry& a, const Entry& b) noexcept {
            if constexpr (order == ObserverOrder::Address) return std::less<Observer*>()(a.observer, b.observer);
            return a.arrival < b.arrival;
        }
        typename Entries::iterator after(const Entry& entry) noexcept {
            return std::upper_bound(entries.begin(), entries.end(), entry, isBefore);
        }
        typename Entries::iterator find(const TrackedObserver& observer) noexcept {
            return std::find_if(entries.begin(), entries.end(), [&](const Entry& entry) {
                return static_cast<const TrackedObserver*>(entry.observer) == &observer;
            });
        }
        void observerDestroyed(TrackedObserver& observer) noexcept override { entries.erase(find(observer)); }

        Entries entries;
        std::uint64_t arrivals = 0;
    };

    std::unique_ptr<List> m_list; // made by the first subscription: most subjects have no observer
    NotificationFlags m_flags;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
