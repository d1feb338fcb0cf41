#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

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

namespace Private {

FCURVELIB_API std::shared_ptr<Keyframe> SharedOf(Keyframe& key) noexcept;
FCURVELIB_API std::shared_ptr<Segment> SharedOf(Segment& segment) noexcept;
FCURVELIB_API std::shared_ptr<Tangent> SharedOf(Tangent& tangent) noexcept;

/// For the parts of a curve, without a field: the parts around a key share one owner, which knows them all.
template<class Part>
class SharedPart {
public:
    std::shared_ptr<Part> getShared() noexcept { return SharedOf(static_cast<Part&>(*this)); }
    std::shared_ptr<const Part> getShared() const noexcept { return const_cast<SharedPart*>(this)->getShared(); }

protected:
    SharedPart() noexcept = default;
    SharedPart(const SharedPart&) noexcept = default;
    SharedPart& operator=(const SharedPart&) noexcept = default;
    ~SharedPart() = default;
};

} // namespace Private

template<>
class SharedFromThis<Keyframe> : public Private::SharedPart<Keyframe> {};
template<>
class SharedFromThis<Segment> : public Private::SharedPart<Segment> {};
template<>
class SharedFromThis<Tangent> : public Private::SharedPart<Tangent> {};

} // namespace v19
} // namespace VEM_FN::FCurveLib
