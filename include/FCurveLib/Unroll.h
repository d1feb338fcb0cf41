#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstddef>
#include <cstdint>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \name Unrolling angles: the same rotations without jumps
///
///     170   175 | -180  -175          170   175   180   185
///
/// A rotation has many angles: whole turns more or less, and for three angles about three axes, with the second one
/// reflected at a quarter turn, another three: (a, b, c) and (a + 180, 180 - b, c + 180) are the same. From the second
/// key on, each key takes those that are nearest to the key before (least sum of distances over the channels). Of two
/// that are as near it keeps what it has: half a turn stays half a turn that way round, and a second call changes
/// nothing.
///
/// The rotation at each key stays what it was; only what is interpolated in between changes. Keys move in value, with
/// their tangents; where the second angle is reflected, its handles are turned over, so that its slopes go with it. The
/// first key stays. Each curve that changed tells it once, as FCurve::notifyChanged. Linear in the number of keys.
///
/// A turn is 360 for degrees, 2 pi for radians; one that is not above 0, or not finite, changes nothing. So do curves
/// with less than two keys.
/// @{

/// The order in which rotations about the axes are applied, the first letter first. Which comes second matters.
enum RotationOrder : std::uint8_t {
    ROTATION_XYZ = 0,
    ROTATION_XZY = 1,
    ROTATION_YXZ = 2,
    ROTATION_YZX = 3,
    ROTATION_ZXY = 4,
    ROTATION_ZYX = 5
};

/// One channel: whole turns only. Returns how many keys moved.
FCURVELIB_API std::size_t UnrollAngles(FCurve& curve, double turn = 360.0);

/// Three channels of one rotation. Their keys must stand at the same x (within 1e-07), else nothing changes; bake them
/// first. Returns at how many of these places keys moved. An unknown order, or one curve given twice, changes nothing.
FCURVELIB_API std::size_t UnrollAngles(FCurve& x, FCurve& y, FCurve& z, RotationOrder order, double turn = 360.0);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
