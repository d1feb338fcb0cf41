#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/PropertyMap.h"

#include <cstdint>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

struct Block;

/// What few parts have, in one word: the part's properties and, for a part that stands alone, what its relatives would
/// tell in a block. The word's low bits hold flags.
///
/// Contents, which the public headers only name, derives from PropertyMap.
template<class Contents>
class PartBox {
public:
    PartBox() noexcept = default;
    PartBox(const PartBox&) = delete;
    PartBox& operator=(const PartBox&) = delete;

    /// The part stands in a Block, with its key's relatives.
    static constexpr std::uintptr_t inBlock = 1;

    bool isSet(std::uintptr_t flag) const noexcept { return (m_word & flag) != 0; }
    void setFlag(std::uintptr_t flag, bool value) noexcept { m_word = value ? m_word | flag : m_word & ~flag; }

    /// Null where the part has nothing of the kind.
    Contents* get() const noexcept { return pointer<Contents>(); }
    Contents& need() {
        if (!get()) borrow(new Contents);
        return *get();
    }
    /// Contents of somebody else's, or none, without destroying what was there.
    void borrow(Contents* contents) noexcept { m_word = (m_word & flags) | reinterpret_cast<std::uintptr_t>(contents); }
    void destroy() noexcept {
        delete get();
        borrow(nullptr);
    }

    /// \name Properties, as PropertyMap
    /// @{
    const PropertyMap& properties() const noexcept {
        const auto* contents = pointer<PropertyMap>(); // Contents' first base
        return contents ? *contents : NoProperties();
    }
    void setProperties(const PropertyMap& properties) {
        PropertyMap copy(properties);
        swap(copy);
    }
    bool set(const char* key, const char* value) {
        const bool erases = !value || *value == '\0';
        if (erases && !get()) return false;
        const bool changed = need().set(key, value);
        tidy();
        return changed;
    }
    void swap(PropertyMap& other) {
        if (get() || !other.empty()) need().swap(other);
        tidy();
    }
    /// @}

private:
    template<class T>
    T* pointer() const noexcept {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): a pointer and flags in one word
        return reinterpret_cast<T*>(m_word & ~flags);
    }
    // In a block a part has nothing but its properties.
    void tidy() noexcept {
        if (isSet(inBlock) && get() && get()->empty()) destroy();
    }

    static constexpr std::uintptr_t flags = 7;
    std::uintptr_t m_word = 0;
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
