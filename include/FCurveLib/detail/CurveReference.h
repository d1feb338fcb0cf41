#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

/// Names a curve without keeping it alive. All segments of a curve share one link, so that a swap re-points them
/// together.
class FCURVELIB_API CurveReference {
public:
    CurveReference() noexcept = default;
    /// A reference to a new link.
    static CurveReference make();
    CurveReference(const CurveReference& other) noexcept;
    CurveReference(CurveReference&& other) noexcept : m_link(std::exchange(other.m_link, nullptr)) {}
    CurveReference& operator=(CurveReference other) noexcept {
        swap(other);
        return *this;
    }
    ~CurveReference();

    void swap(CurveReference& other) noexcept { std::swap(m_link, other.m_link); }
    explicit operator bool() const noexcept { return m_link != nullptr; }
    CurveLink* operator->() const noexcept { return m_link; }

    friend bool operator==(const CurveReference& a, const CurveReference& b) noexcept { return a.m_link == b.m_link; }
    friend bool operator!=(const CurveReference& a, const CurveReference& b) noexcept { return !(a == b); }

private:
    CurveLink* m_link = nullptr;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
