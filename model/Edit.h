#pragma once

// Delivery of notifications, and the record of one edit: the model is completed first, then the observers are told.

#include "FCurveLib/FCurve.h"
#include "model/Access.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// The observers of every curve.
ObserverSet<FCurveObserver>& GlobalObservers() noexcept;

// The one delivery step behind every notification of a curve. No curve, nobody told.
// The curve and the part stay alive until every observer has been called.
template<class Part, class Call>
void Deliver(FCurve* curve, Part& part, const Call& call) {
    if (!curve) return;
    ObserverSet<FCurveObserver>& observers = Access::observers(*curve);
    if (!observers.admits()) return;
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

// Sets a property, then calls tell(key, value) if that changed anything. With copies of the texts: the caller's may be
// the part's own, which the change overwrites or frees.
template<class Tell>
bool SetProperty(PropertyMap& properties, const char* key, const char* value, const Tell& tell) {
    const std::string name(Text(key));
    const std::string text(Text(value));
    if (!properties.set(name.c_str(), text.c_str())) return false;
    tell(name.c_str(), text.c_str());
    return true;
}

// Erases every property, then calls tell(key) for each that was there.
template<class Tell>
void ClearProperties(PropertyMap& properties, const Tell& tell) {
    PropertyMap erased;
    erased.swap(properties);
    for (const auto& [key, value] : erased) tell(key.c_str());
}

// Collects what one edit changes in the parts of a curve, for telling it afterwards. Observers may do anything to the
// curve meanwhile: parts that have left it by then are not told of.
class Edit {
public:
    explicit Edit(FCurve* curve);
    Edit(const Edit&) = delete;
    Edit& operator=(const Edit&) = delete;

    void moved(Keyframe& key);
    void handleChanged(Tangent& tangent);
    void notify();

private:
    struct Change {
        std::shared_ptr<Keyframe> key;
        std::shared_ptr<Tangent> tangent;
    };
    void add(Change change);

    std::shared_ptr<FCurve> m_curve; // empty when nobody listens: then nothing is collected
    ObserverSet<FCurveObserver>* m_silent = nullptr;
    std::array<Change, 8> m_few; // the usual drag of one key needs no allocation
    std::vector<Change> m_more;
    std::size_t m_count = 0;
};

// --- editing steps shared by the parts; each records into the edit ---------------------------------------------------

// Stores a handle if it differs beyond the tolerance, and lets the tangents that depend on it follow.
void StoreHandle(Tangent& tangent, Segment* segment, const Vector2D<double>& handle, Edit& edit);
// Stores what a handle proposed by a public setter becomes.
void EditHandle(Tangent& tangent, Segment* segment, double x, double y, Edit& edit);
// Recomputes the tangent from its type.
void UpdateTangent(Tangent& tangent, Segment* segment, Edit& edit);
// Recomputes both tangents of every key from first to last, from left to right.
void UpdateTangents(Keyframe* first, Keyframe* last, Edit& edit);
// Recomputes what depends on the segment on one side of a key that stayed where it was: the tangent on that side, and
// the other one if its type looks at both neighbours. Most tangents do not, and their parts are then left alone: in a
// long curve they are not in the cache. Null key: nothing.
void UpdateBeforeChange(Keyframe* key, Edit& edit); // the change lies on the key's right
void UpdateAfterChange(Keyframe* key, Edit& edit);  // on its left
// Brings the tangents of a key that has just been unified into line.
void AlignTangents(Keyframe& key, Edit& edit);
// Brings a tangent that has just been made fixed into line with the other one of a unified key.
void AlignTangent(Tangent& tangent, Segment* segment, Edit& edit);

inline Keyframe* PreviousKey(Keyframe& key) noexcept {
    Segment* segment = Access::leftSegment(key);
    return segment ? Access::leftKey(*segment) : nullptr;
}
inline Keyframe* NextKey(Keyframe& key) noexcept {
    Segment* segment = Access::rightSegment(key);
    return segment ? Access::rightKey(*segment) : nullptr;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
