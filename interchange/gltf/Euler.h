#pragma once

// Angles of a node, which animations cannot have, as the rotations that they can.

#include "interchange/gltf/Channel.h"

#include <FCurveLib/Forward.h>

#include <array>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

// Three angles about x, y and z, turned about in this order; null for none, which is 0.
struct EulerAngles {
    std::array<const FCurve*, 3> curves{};
    double radians = 1.0; // of their unit
};

struct EulerChannel {
    Channel channel;
    double furthest = 0.0; // in radians: the largest turn that was found between angles and arcs, but for jumps
};

// Samples at the curves' keys, at whole frames from the first to the last of them (100 000 at most), and between them
// until arcs are within the tolerance (radians), down to 0.001 frames. The frames from .. to are taken in, where
// from < to.
EulerChannel ChannelOf(const EulerAngles& angles, double rate, double offset, double from, double to, double tolerance);

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
