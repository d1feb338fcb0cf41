#include "model/PartBundle.h"

#include <functional>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

void* PartBundle::take(std::size_t size) {
    size = RoundedUp(size);
    const bool fits = size <= m_capacity - m_used;
    // Where the standard library's shared owners are larger than thought, a part stands alone.
    void* const place = fits ? begin() + m_used : ::operator new(size);
    if (fits) m_used += static_cast<unsigned>(size);
    m_live.fetch_add(1, std::memory_order_relaxed);
    return place;
}

void PartBundle::giveBack(void* place) noexcept {
    const std::less<const void*> before;
    const bool inside = !before(place, begin()) && before(place, begin() + m_capacity);
    if (!inside) ::operator delete(place);
    drop();
}

void PartBundle::drop() noexcept {
    if (m_live.fetch_sub(1, std::memory_order_acq_rel) > 1) return;
    this->~PartBundle();
    ::operator delete(this);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
