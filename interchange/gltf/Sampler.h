#pragma once

// Curves as one sampler of an animation: common times, one interpolation.

#include "interchange/Track.h"
#include "interchange/gltf/Channel.h"

#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

// A component: a track that is resolved with jumps, or none, and then the value.
struct Component {
    const Track* track = nullptr;
    double value = 0.0;
    double tolerance = 0.0; // of its values, where pieces have to be split
};

// Of a frame, in seconds; not before 0. Throws NotWritable where single precision has no such number.
float TimeOf(double x, double rate, double offset);

// Steps if there are steps only; lines, with jumps, if there are lines too, but for rotations; cubics else. Rotations
// come out with length 1 at each key. Times count from the frame `offset`.
Channel ChannelOf(const std::vector<Component>& components, double rate, double offset, bool isRotation);

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
