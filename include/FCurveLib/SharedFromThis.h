#pragma once

#include <memory>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// Base of the model's objects, by which an object hands out shared references to itself.
///
/// The reference is registered by whoever wraps the object in its shared pointer (the static create functions). A
/// copied object never inherits it, deliberately: a copy has an owner of its own, or none.
template<class T>
class SharedFromThis {
public:
    /// A shared reference to this object; empty when none was registered or the object is no longer owned.
    std::shared_ptr<T> getShared() noexcept { return m_self.lock(); }
    std::shared_ptr<const T> getShared() const noexcept { return m_self.lock(); }

protected:
    SharedFromThis() noexcept = default;
    SharedFromThis(const SharedFromThis&) noexcept {}
    SharedFromThis& operator=(const SharedFromThis&) noexcept { return *this; }
    ~SharedFromThis() = default;

    void setShared(std::shared_ptr<T> owner) noexcept { m_self = std::move(owner); }

private:
    std::weak_ptr<T> m_self;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
