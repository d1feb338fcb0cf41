#pragma once

#include "FCurveLib/Forward.h"
#include "FCurveLib/PropertyMap.h"

#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

/// Base of everything that carries properties: holds them and lets them be read, as PropertyMap does. Each part has
/// setters of its own, which tell its observers.
class PropertyCarrier {
public:
    const char* getProperty(const char* key) const noexcept { return m_properties.get(key); }
    std::size_t sizeProperties() const noexcept { return m_properties.size(); }
    PropertyMap::const_iterator beginProperties() const noexcept { return m_properties.begin(); }
    PropertyMap::const_iterator endProperties() const noexcept { return m_properties.end(); }

protected:
    PropertyCarrier() noexcept = default;
    PropertyCarrier(const PropertyCarrier&) = default;
    PropertyCarrier& operator=(const PropertyCarrier&) = default;
    ~PropertyCarrier() = default;

    PropertyMap m_properties;

private:
    friend struct Raw;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
