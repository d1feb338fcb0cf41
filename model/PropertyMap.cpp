#include "FCurveLib/PropertyMap.h"

#include <string_view>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace {

std::string_view TextOf(const char* text) {
    return text ? std::string_view(text) : std::string_view();
}

} // namespace

PropertyMap::PropertyMap() noexcept = default;
PropertyMap::PropertyMap(PropertyMap&&) noexcept = default;
PropertyMap& PropertyMap::operator=(PropertyMap&&) noexcept = default;
PropertyMap::~PropertyMap() = default;

PropertyMap::PropertyMap(const PropertyMap& other)
    : m_map(other.m_map ? std::make_unique<Map>(*other.m_map) : nullptr) {}

PropertyMap& PropertyMap::operator=(const PropertyMap& other) {
    PropertyMap copy(other);
    swap(copy);
    return *this;
}

const PropertyMap::Map& PropertyMap::map() const noexcept {
    static const Map none;
    return m_map ? *m_map : none;
}

const char* PropertyMap::get(const char* key) const noexcept {
    if (!m_map) return "";
    const auto found = m_map->find(TextOf(key));
    return found == m_map->end() ? "" : found->second.c_str();
}

bool PropertyMap::set(const char* key, const char* value) {
    const std::string_view name = TextOf(key);
    const std::string_view text = TextOf(value);
    if (text.empty()) {
        if (!m_map) return false;
        const auto found = m_map->find(name);
        if (found == m_map->end()) return false;
        m_map->erase(found);
        if (m_map->empty()) m_map.reset();
        return true;
    }
    if (m_map) {
        const auto found = m_map->find(name);
        if (found != m_map->end()) {
            if (found->second == text) return false;
            found->second = text;
            return true;
        }
        m_map->emplace(name, text);
        return true;
    }
    auto first = std::make_unique<Map>();
    first->emplace(name, text);
    m_map = std::move(first);
    return true;
}

void PropertyMap::clear() noexcept {
    m_map.reset();
}

std::size_t PropertyMap::size() const noexcept {
    return m_map ? m_map->size() : 0;
}

bool PropertyMap::empty() const noexcept {
    return !m_map;
}

PropertyMap::const_iterator PropertyMap::begin() const noexcept {
    return map().begin();
}

PropertyMap::const_iterator PropertyMap::end() const noexcept {
    return map().end();
}

void PropertyMap::swap(PropertyMap& other) noexcept {
    m_map.swap(other.m_map);
}

namespace Private {

const PropertyMap& NoProperties() noexcept {
    // deliberate: never destroyed, so that parts which outlive static objects can still be asked
    // NOLINTNEXTLINE(bugprone-unhandled-exception-at-new): one small object, at the very first use
    static const PropertyMap& none = *new PropertyMap;
    return none;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
