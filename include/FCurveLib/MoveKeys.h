#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Vector2D.h"

#include <cstddef>
#include <cstdint>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// How a group of keys moves among the others.
struct MoveOptions {
    enum Others : std::uint8_t {
        Stop,  ///< the group halts Keyframe::getMinSeparation() before the first key outside it
        Cross, ///< keys of the group pass others, which stay; none comes nearer to another than that separation
        Ripple ///< in each curve all keys after the group's first one shift along
    };
    Others others = Stop;
    /// Grids for the group's first key in time (KeyGroup::getAnchor); where keys are scaled, for the key farthest from
    /// the pivot. The others keep their distance, or proportion. 1 stands for whole frames; 0 and less, and what is not
    /// finite, for no grid.
    double frameStep = 0.0;
    double frameOrigin = 0.0;
    double valueStep = 0.0;
    double valueOrigin = 0.0;
};

/// What came of it.
struct MoveReport {
    std::size_t keys = 0;    ///< of the group, still in their curves
    std::size_t others = 0;  ///< keys outside the group that moved: those that shifted along, and breakdown keys
    std::size_t passed = 0;  ///< keys of the group that passed another one
    bool isLimited = false;  ///< something held the group back in time, or there was no place for one of its keys
    Vector2D<double> offset; ///< by how much the group's first key in time is now away from where it stood
    Vector2D<double> factor; ///< by which distances are now scaled
};

/// \name Move and scale keys as one group
/// From where the keys stood when the group was made, as one rigid whole over all its curves: where one key is held
/// back all are, and distances between keys of the group never change, or change all by one factor.
///
/// On a grid, a group that is held back halts at the last place before, seen from where it started; there, if there is
/// none between. Its place never depends on the way that a drag took, unless others edited the curves meanwhile: then
/// the way counts from where the keys are now. Where offsets or factors are so large that rounding would move keys
/// against each other by 0.001 (4e12 frames and more), or leave no number, nothing changes.
///
/// What stands outside the group stops it, is passed, or shifts along (MoveOptions); breakdown keys keep their
/// proportion of the way, automatic tangents follow, keys that others have put closer than 0.001 keep that distance.
/// All keys stay the same objects, with their segments and tangents, and so do iterators and references to them.
///
/// Observers hear what they hear of Keyframe::set. Keys that pass others leave their curve and come in again: observers
/// hear segmentRemoved, then segmentAdded, of the same segment; undoing that tells curveChanged. A curve in which no
/// key passes another is complete before the first observer is called. What observers throw passes through, and
/// std::bad_alloc: no key is lost.
///
/// Arguments that are not finite, and factors of time of 0 and less, change nothing. Time: n log n in the number of
/// keys that move (a little more where keys cross, to find room).
/// @{
FCURVELIB_API MoveReport MoveKeys(KeyGroup& group, const Vector2D<double>& offset, const MoveOptions& options = {});
/// (x, y) of a key goes to pivot + factor * (distance from the pivot).
FCURVELIB_API MoveReport ScaleKeys(KeyGroup& group, const Vector2D<double>& pivot, const Vector2D<double>& factor,
                                   const MoveOptions& options = {});

/// The selected keys, from where they are. For a drag, make a KeyGroup once.
FCURVELIB_API MoveReport MoveKeys(Selection& selection, const Vector2D<double>& offset,
                                  const MoveOptions& options = {});
FCURVELIB_API MoveReport ScaleKeys(Selection& selection, const Vector2D<double>& pivot, const Vector2D<double>& factor,
                                   const MoveOptions& options = {});
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
