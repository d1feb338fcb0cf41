#include "model/PendingChanges.h"

#include "model/Delivery.h"

#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

PendingChanges::PendingChanges(FCurve* curve) {
    if (!curve) return;
    ObserverSet<FCurveObserver>& observers = Raw::observers(*curve);
    if (observers.empty() && GlobalObservers().empty())
        m_silent = &observers;
    else
        m_curve = curve->getShared();
}

void PendingChanges::add(Change change) {
    if (m_count < m_few.size())
        m_few[m_count] = std::move(change);
    else
        m_more.push_back(std::move(change));
    ++m_count;
}

void PendingChanges::moved(Keyframe& key) {
    if (m_curve)
        add({key.getShared(), nullptr});
    else
        ++m_count;
}

void PendingChanges::handleChanged(Tangent& tangent) {
    if (!m_curve) {
        ++m_count;
        return;
    }
    // A tangent may be reached twice in one edit; it is told of once, with its final handle.
    const auto same = [&](const Change& change) { return change.tangent.get() == &tangent; };
    const std::size_t few = m_count < m_few.size() ? m_count : m_few.size();
    for (std::size_t i = 0; i < few; ++i)
        if (same(m_few[i])) return;
    if (m_count >= m_few.size() && !m_tangents.insert(&tangent).second) return;
    add({nullptr, tangent.getShared()});
}

void PendingChanges::notify() {
    if (m_silent && m_count > 0)
        m_silent->admits(); // nobody listens, but a switch must learn that something was suppressed
    if (!m_curve) return;
    const auto tell = [this](const Change& change) {
        if (change.key && Read::curve(*change.key) == m_curve.get())
            Deliver(m_curve.get(), *change.key, [&](FCurveObserver& observer) {
                observer.keyframeIntrinsicChanged(*change.key, FCurveObserver::KeyframePosition);
            });
        if (change.tangent && Read::curve(*change.tangent) == m_curve.get())
            Deliver(m_curve.get(), *change.tangent, [&](FCurveObserver& observer) {
                observer.tangentIntrinsicChanged(*change.tangent, FCurveObserver::TangentHandle);
            });
    };
    for (std::size_t i = 0; i < m_count && i < m_few.size(); ++i) tell(m_few[i]);
    for (const Change& change : m_more) tell(change);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
