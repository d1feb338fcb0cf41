#pragma once

// How the observers of a curve are told.

#include "FCurveLib/FCurve.h"
#include "model/Raw.h"

#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// The observers of every curve.
ObserverSet<FCurveObserver>& GlobalObservers() noexcept;

// The one delivery step of every notification of a curve. No curve, nobody told.
// The curve and the part stay alive until every observer has been called.
template<class Part, class Call>
void Deliver(FCurve* curve, Part& part, const Call& call) {
    if (!curve) return;
    ObserverSet<FCurveObserver>& observers = Raw::observers(*curve);
    if (!observers.admits() || Recording::mutes(*curve)) return;
    if (observers.empty() && GlobalObservers().empty()) return;
    const auto keepCurve = curve->getShared();
    const auto keepPart = part.getShared();
    const std::uint64_t moment = GlobalObservers().arrivals();
    observers.forEach(call);
    GlobalObservers().forEach(call, moment);
}

// Null texts count as empty ones.
inline const char* Text(const char* text) noexcept {
    return text ? text : "";
}

// The operation that tells of a property of the part.
inline auto PropertyOperation(const FCurve&) noexcept {
    return &FCurveObserver::curvePropertyChanged;
}
inline auto PropertyOperation(const Segment&) noexcept {
    return &FCurveObserver::segmentPropertyChanged;
}
inline auto PropertyOperation(const Keyframe&) noexcept {
    return &FCurveObserver::keyframePropertyChanged;
}
inline auto PropertyOperation(const Tangent&) noexcept {
    return &FCurveObserver::tangentPropertyChanged;
}

template<class Part>
void TellProperty(Part& part, const char* key, const char* value) {
    Deliver(Read::curve(part), part,
            [&](FCurveObserver& observer) { (observer.*PropertyOperation(part))(part, key, value); });
}

// Sets a property of the part and tells of it if that changed anything. With copies of the texts: the caller's may be
// the part's own, which the change overwrites or frees.
template<class Part>
bool SetProperty(Part& part, const char* key, const char* value) {
    if (*Text(value) == '\0' && Read::properties(part).empty()) return false;
    const std::string name(Text(key));
    const std::string text(Text(value));
    if (!Raw::setProperty(part, name.c_str(), text.c_str())) return false;
    TellProperty(part, name.c_str(), text.c_str());
    return true;
}

// Erases every property of the part, then tells of each that was there.
template<class Part>
void ClearProperties(Part& part) {
    if (Read::properties(part).empty()) return;
    const auto self = part.getShared();
    PropertyMap erased;
    Raw::swapProperties(part, erased);
    for (const auto& [key, value] : erased) TellProperty(part, key.c_str(), "");
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
