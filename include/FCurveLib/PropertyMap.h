#pragma once

#include "FCurveLib/Export.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// String pairs that a part of a curve carries, ordered by byte-wise comparison of the keys.
///
/// No key maps to the empty string: setting the empty value removes the key, so absent and empty are the same thing to
/// every reader. An empty map costs one pointer and no allocation. Null arguments count as empty strings.
/// Const members may be called by any number of threads.
class FCURVELIB_API PropertyMap {
    using Map = std::map<std::string, std::string, std::less<>>;

public:
    /// Walks pairs of key (first) and value (second), in key order.
    using const_iterator = Map::const_iterator;
    using iterator = const_iterator;

    PropertyMap() noexcept;
    PropertyMap(const PropertyMap&);
    PropertyMap(PropertyMap&&) noexcept;
    PropertyMap& operator=(const PropertyMap&);
    PropertyMap& operator=(PropertyMap&&) noexcept;
    ~PropertyMap();

    /// The stored value; an empty text, never null, for a key that is absent. Valid until the key is set or the map
    /// dies.
    const char* get(const char* key) const noexcept;

    /// Stores the value, or erases the key when the value is empty. Returns whether the map changed.
    bool set(const char* key, const char* value);

    void clear() noexcept;
    std::size_t size() const noexcept;
    bool empty() const noexcept;

    const_iterator begin() const noexcept;
    const_iterator end() const noexcept;

    /// Exchanges the contents in constant time.
    void swap(PropertyMap& other) noexcept;

private:
    const Map& map() const noexcept;

    std::unique_ptr<Map> m_map; // null while empty
};

namespace Private {

/// The map of a part that has no properties.
FCURVELIB_API const PropertyMap& NoProperties() noexcept;

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
