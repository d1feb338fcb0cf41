#pragma once

// What Highway has to offer; there only with FCURVELIB_SIMD.

#include "playback/Lanes.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

const LaneSet& WidestSimdLanes();
std::vector<const LaneSet*> AllSimdLanes();

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
