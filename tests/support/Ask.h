#pragma once

// What an interpolator answers, as values.

#include "FCurveLib/FCurveLib.h"

#include <vector>

namespace Test {

using namespace VEM_FN::FCurveLib;

/// Named members for low and high, because tests look at both.
struct Bounds {
    double low = 99.0; ///< no test expects these
    double high = -99.0;
};

inline Bounds BoundsOf(const Interpolator& interpolator, const Segment& segment, double x0, double x1) {
    Bounds extents;
    interpolator.getRangeExtents(segment, x0, x1, extents.low, extents.high);
    return extents;
}

/// One of computePolyline, firstDerivPolyline and secondDerivPolyline. What was in the vector before must not matter.
using FillPolyline = void (Interpolator::*)(const Segment&, double, double, int, std::vector<Vector2D<double>>&) const;

inline std::vector<Vector2D<double>> PolylineOf(FillPolyline fill, const Interpolator& interpolator,
                                                const Segment& segment, double x0, double x1, int count) {
    std::vector<Vector2D<double>> points{{99, 99}};
    (interpolator.*fill)(segment, x0, x1, count, points);
    return points;
}

} // namespace Test
