#pragma once

// One channel of an animation as numbers, on its way from an accessor to splines.

#include "interchange/Cubic.h"
#include "interchange/usda/Layer.h"

#include <cstddef>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

enum class Interpolation { Step, Linear, Cubic };

struct Channel {
    Interpolation interpolation = Interpolation::Linear;
    std::size_t components = 1;
    std::vector<float> times;   // in seconds, rising
    std::vector<double> values; // key by key
    std::vector<double> in;     // slopes a second, likewise; empty unless cubic
    std::vector<double> out;

    std::size_t keys() const noexcept { return times.size(); }
};

// Rotations x y z w, linear ones as cubics that follow the great circle: normalised, with the signs that make
// neighbours the nearest, and with further keys where one piece is off by more than the tolerance. Returns how far they
// are off, once normalised, and at which second.
Distance FollowArcs(Channel& channel, double tolerance);

// The frame of a time: the whole one, or the one of few digits, that a writer rounded to this time.
double FrameOf(float time, double rate, double offset) noexcept;

// One component. Two keys next to each other in time become one knot with two values.
Usda::SplineData SplineOf(const Channel& channel, std::size_t component, double rate, double offset);

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
