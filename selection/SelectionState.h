#pragma once

// What a Selection shares with the notifications in progress.

#include "FCurveLib/Selection.h"
#include "FCurveLib/detail/ObserverSet.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

class SelectionState {
public:
    ObserverSet<SelectionObserver, ObserverOrder::Address> observers;
    bool isAlive = true; // cleared with the Selection: from then on nobody is called

    static const std::shared_ptr<SelectionState>& of(const Selection& selection) noexcept { return selection.m_state; }

    static const std::shared_ptr<FCurveContainer>& curvesOf(const Selection& selection) noexcept {
        return selection.m_curves;
    }

    // Calls observe(observer) for each observer. The caller keeps the state alive.
    template<class Observe>
    void deliver(const Observe& observe) {
        if (!isAlive || !observers.admits()) return;
        observers.forEach([&](SelectionObserver& observer) {
            if (isAlive) observe(observer);
        });
    }

    // Calls act with the part that the record names and gives its result; false where it names nothing. Copies no
    // shared pointer: the record keeps the part.
    template<class Record, class Act>
    static bool withPart(const Record& record, const Act& act) {
        const auto actOn = [&](auto* part) { return part && act(*part); };
        switch (record.getType()) {
        case Record::CURVE:
            return actOn(record.m_curve.get());
        case Record::SEGMENT:
            return actOn(record.m_segment.get());
        case Record::KEYFRAME:
            return actOn(record.m_keyframe.get());
        case Record::TANGENT:
        case Record::TANGENT_UNFLAGGED:
            return actOn(record.m_tangent.get());
        case Record::NONE:
            break;
        }
        return false;
    }

    // Select or deselect a part and tell of it. The Selection, the part and whatever refers to them may be destroyed by
    // observers, except the record of deselectHeld.
    template<class Part>
    static void change(const std::shared_ptr<SelectionState>& state, Part& part, bool select);
    static void change(const std::shared_ptr<SelectionState>& state, const HitRecord& record, bool select);
    void deselectHeld(const HitRecord& record);

    // Deselects every selected part of the container, except curves if partsOnly.
    static void clear(const Selection& selection, bool partsOnly);
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
