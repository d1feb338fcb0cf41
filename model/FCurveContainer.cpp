#include "FCurveLib/FCurveContainer.h"

#include "FCurveLib/FCurve.h"
#include "model/Recorder.h"

#include <cstddef>
#include <iterator>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

FCurveContainer::FCurveContainer() noexcept = default;
FCurveContainer::~FCurveContainer() = default;

std::shared_ptr<FCurveContainer> FCurveContainer::create() {
    std::shared_ptr<FCurveContainer> container(new FCurveContainer);
    container->setShared(container);
    return container;
}

FCurveContainer::iterator FCurveContainer::insertCurve(iterator position, std::shared_ptr<FCurve> curve) {
    if (!curve) return end();
    const auto keep = getShared();
    FCurve* const inserted = curve.get();
    if (m_recorder && m_positions.count(inserted) == 0) m_recorder->contents(*this);
    const auto [entry, isNew] = m_positions.try_emplace(inserted);
    if (!isNew) return iterator(entry->second);
    try {
        entry->second = m_curves.insert(position.base(), std::move(curve));
    } catch (...) {
        m_positions.erase(entry);
        throw;
    }
    if (m_recorder) m_recorder->joined(*inserted);
    notifyChanged();
    return find(inserted);
}

// An observer may have removed what the caller is to get; then the end.
FCurveContainer::iterator FCurveContainer::find(const FCurve* curve) noexcept {
    const auto found = m_positions.find(curve);
    return found == m_positions.end() ? end() : iterator(found->second);
}

FCurveContainer::iterator FCurveContainer::addCurve(std::shared_ptr<FCurve> curve) {
    return insertCurve(end(), std::move(curve));
}

FCurveContainer::iterator FCurveContainer::removeCurve(iterator position) {
    const auto keep = getShared();
    if (m_recorder) m_recorder->contents(*this);
    const std::shared_ptr<FCurve> removed = *position.base(); // lives until the observers were told
    m_positions.erase(removed.get());
    const auto after = m_curves.erase(position.base());
    const FCurve* const next = after == m_curves.end() ? nullptr : after->get();
    notifyChanged();
    return find(next);
}

FCurveContainer::iterator FCurveContainer::moveCurve(iterator position, FCurve& curve) {
    const auto found = m_positions.find(&curve);
    if (found == m_positions.end()) return end();
    const List::iterator moved = found->second;
    if (position.base() == moved || position.base() == std::next(moved)) return iterator(moved);
    const auto keep = getShared();
    if (m_recorder) m_recorder->contents(*this);
    m_curves.splice(position.base(), m_curves, moved);
    notifyChanged();
    return find(&curve);
}

FCurveContainer::iterator FCurveContainer::moveCurve(iterator position, FCurveContainer& from, FCurve& curve) {
    if (&from == this) return moveCurve(position, curve);
    const auto found = from.m_positions.find(&curve);
    if (found == from.m_positions.end()) return end();
    if (m_positions.count(&curve) == 0) {
        if (m_recorder) m_recorder->contents(*this);
        if (from.m_recorder) from.m_recorder->contents(from);
    }
    const auto [entry, isNew] = m_positions.try_emplace(&curve, found->second);
    if (!isNew) return iterator(entry->second);
    const auto keep = getShared();
    const auto keepFrom = from.getShared();
    const auto keepCurve = curve.getShared();
    m_curves.splice(position.base(), from.m_curves, entry->second);
    from.m_positions.erase(found);
    if (m_recorder) m_recorder->joined(curve);
    from.notifyChanged();
    notifyChanged();
    return find(&curve);
}

void FCurveContainer::replaceCurves(std::size_t first, std::size_t count,
                                    const std::vector<std::shared_ptr<FCurve>>& curves) {
    List added; // what takes memory comes first
    try {
        for (const auto& curve : curves) {
            if (m_positions.count(curve.get()) > 0) continue;
            added.push_back(curve);
            m_positions.emplace(curve.get(), std::prev(added.end()));
        }
    } catch (...) {
        for (const auto& curve : added) m_positions.erase(curve.get());
        throw;
    }
    auto place = std::next(m_curves.begin(), static_cast<std::ptrdiff_t>(first));
    const auto rest = std::next(place, static_cast<std::ptrdiff_t>(count));
    for (const auto& curve : curves) {
        const List::iterator entry = m_positions.find(curve.get())->second;
        if (!added.empty() && entry == added.begin())
            m_curves.splice(place, added, entry);
        else if (entry == place)
            ++place;
        else
            m_curves.splice(place, m_curves, entry);
    }
    while (place != rest) {
        m_positions.erase(place->get());
        place = m_curves.erase(place);
    }
}

void FCurveContainer::clear() {
    const auto keep = getShared();
    if (m_recorder) m_recorder->contents(*this);
    List removed;
    removed.swap(m_curves);
    m_positions.clear();
    notifyChanged();
}

bool FCurveContainer::setProperty(const char* key, const char* value) {
    Private::Recording::property(*this, key);
    if (!m_properties.set(key, value)) return false;
    notifyChanged();
    return true;
}

void FCurveContainer::clearProperties() {
    if (m_properties.empty()) return;
    Private::Recording::properties(*this, {});
    m_properties.clear();
    notifyChanged();
}

void FCurveContainer::subscribe(ContainerObserver& observer) {
    m_observers.subscribe(observer);
}
void FCurveContainer::unsubscribe(ContainerObserver& observer) noexcept {
    m_observers.unsubscribe(observer);
}

void FCurveContainer::notifyChanged() {
    if (!m_observers.admits()) return;
    const auto keep = getShared();
    m_observers.forEach([this](ContainerObserver& observer) { observer.containerChanged(*this); });
}

FCurveContainer::Switch::Switch() noexcept = default;
FCurveContainer::Switch::Switch(FCurveContainer& container) noexcept
    : NotificationSwitch(container.getShared(), container.m_observers.flags()) {}

} // namespace v19
} // namespace VEM_FN::FCurveLib
