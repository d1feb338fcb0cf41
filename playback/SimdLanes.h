#pragma once

// What Highway has to offer, or in its place VectorLanes.cpp; there only with FCURVELIB_SIMD.

#include "playback/Lanes.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

const LaneSet& WidestSimdLanes();
std::vector<const LaneSet*> AllSimdLanes();

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
