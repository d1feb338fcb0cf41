#pragma once

#include "FCurveLib/Export.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

/// Whether notifications of one subject go out, and whether one was suppressed.
struct NotificationFlags {
    bool enabled = true;
    bool blocked = false;
};

/// The flags of the whole library.
FCURVELIB_API NotificationFlags& LibraryNotification() noexcept;

/// Turns notification off while it lives, for one subject or for the whole library; then restores both flags as they
/// were. Suppressed notifications are not sent afterwards. Switches nest.
class FCURVELIB_API NotificationSwitch {
public:
    NotificationSwitch(const NotificationSwitch&) = delete;
    NotificationSwitch& operator=(const NotificationSwitch&) = delete;

    /// Whether a notification was suppressed since the switch was made.
    bool blockedNotification() const noexcept { return m_flags.blocked; }

protected:
    NotificationSwitch() noexcept;
    /// Keeps alive what holds the flags.
    NotificationSwitch(std::shared_ptr<const void> owner, NotificationFlags& flags) noexcept;
    ~NotificationSwitch();

private:
    std::shared_ptr<const void> m_owner;
    NotificationFlags& m_flags;
    const NotificationFlags m_before;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
