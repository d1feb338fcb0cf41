#pragma once

// What CSS easings and Lottie keyframes have in common: a piece between two keys is a cubic in a unit square,
// (0, 0), (x1, y1), (x2, y2), (1, 1), with x1 and x2 within it.

#include "interchange/Resolve.h"
#include "interchange/Track.h"

#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

struct Easing {
    double x1 = 0.0;
    double y1 = 0.0;
    double x2 = 1.0;
    double y2 = 1.0;

    bool isLine() const noexcept { return x1 == y1 && x2 == y2; }
    // As unweighted handles have it, but for rounding.
    bool isThirds() const noexcept { return std::fabs(x1 - 1.0 / 3.0) <= 1e-12 && std::fabs(x2 - 2.0 / 3.0) <= 1e-12; }
};

// Cuts Bezier pieces until each is an easing: where handles leave the width, and where a piece ends at the value at
// which it starts though it moves between. Exact but for rounding; only beside a key, where keys 0.001 frames apart
// leave no room for a cut, are handles shortened, which the notes say.
void CutToEasings(Track& track, const FCurve& curve, Notes& notes);

// Of a Bezier piece that was cut; a flat one has y1 = 0 and y2 = 1.
Easing EasingOf(const Track& track, std::size_t index);

// Makes the piece between two knots that easing; unweighted where both handles are thirds.
void SetEasing(Knot& left, Knot& right, const Easing& easing);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
