#pragma once

#include "FCurveLib/Forward.h"
#include "FCurveLib/PropertyMap.h"

#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

/// Base of everything that carries properties: lets them be read, as PropertyMap does. Each kind of part stores them in
/// its own way (storedProperties) and has setters of its own, which tell its observers.
template<class Part>
class PropertyCarrier {
public:
    const char* getProperty(const char* key) const noexcept { return stored().get(key); }
    std::size_t sizeProperties() const noexcept { return stored().size(); }
    PropertyMap::const_iterator beginProperties() const noexcept { return stored().begin(); }
    PropertyMap::const_iterator endProperties() const noexcept { return stored().end(); }

protected:
    PropertyCarrier() noexcept = default;
    PropertyCarrier(const PropertyCarrier&) noexcept = default;
    PropertyCarrier& operator=(const PropertyCarrier&) noexcept = default;
    ~PropertyCarrier() = default;

private:
    const PropertyMap& stored() const noexcept { return static_cast<const Part*>(this)->storedProperties(); }
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
