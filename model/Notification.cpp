#include "FCurveLib/detail/Notification.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

NotificationFlags& LibraryNotification() noexcept {
    static NotificationFlags flags;
    return flags;
}

NotificationSwitch::NotificationSwitch() noexcept : NotificationSwitch(nullptr, LibraryNotification()) {}

NotificationSwitch::NotificationSwitch(std::shared_ptr<const void> owner, NotificationFlags& flags) noexcept
    : m_owner(std::move(owner)), m_flags(flags), m_before(flags) {
    m_flags = {false, false};
}

NotificationSwitch::~NotificationSwitch() {
    m_flags = m_before;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
