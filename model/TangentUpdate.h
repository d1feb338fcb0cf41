#pragma once

// How tangents follow edits. Each step records what it changes.

#include "model/PendingChanges.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// Stores a handle if it differs beyond the tolerance, and lets the tangents that depend on it follow.
void StoreHandle(Tangent& tangent, Segment* segment, const Vector2D<double>& handle, PendingChanges& changes);
// Stores what a handle proposed by a public setter becomes.
void EditHandle(Tangent& tangent, Segment* segment, double x, double y, PendingChanges& changes);
// Recomputes the tangent from its type.
void UpdateTangent(Tangent& tangent, Segment* segment, PendingChanges& changes);
// Recomputes both tangents of every key from first to last, from left to right.
void UpdateTangents(Keyframe* first, Keyframe* last, PendingChanges& changes);
// Recomputes what depends on the segment on one side of a key that stayed where it was: the tangent on that side, and
// the other one if its type looks at both neighbours. Most tangents do not, and their parts are then left alone: in a
// long curve they are not in the cache. Null key: nothing.
void UpdateBeforeChange(Keyframe* key, PendingChanges& changes); // the change lies on the key's right
void UpdateAfterChange(Keyframe* key, PendingChanges& changes);  // on its left
// Brings the tangents of a key that has just been unified into line.
void AlignTangents(Keyframe& key, PendingChanges& changes);
// Brings a tangent that has just been made fixed into line with the other one of a unified key.
void AlignTangent(Tangent& tangent, Segment* segment, PendingChanges& changes);

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
