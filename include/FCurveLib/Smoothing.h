#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstdint>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The weights w(k) that a smoothing filter gives to the samples k = -width ... width around a point. All are
/// symmetric, so a constant or straight stretch stays itself; what else each keeps is measured in docs/smoothing.md.
enum SmoothFilter : std::uint32_t {
    /// 1: the plain mean. Least noise, most blurred.
    SMOOTH_BOX = 0,
    /// width + 1 - |k|.
    SMOOTH_TRIANGLE = 1,
    /// exp(-2 k^2 / (width + 1)^2), that is a standard deviation of (width + 1) / 2 samples.
    SMOOTH_GAUSSIAN = 2,
    /// 3 width^2 + 3 width - 1 - 5 k^2: the value at k = 0 of the cubic that fits the samples best. Keeps the height of
    /// peaks that are wider than the filter; a width of 1 changes nothing. (A. Savitzky and M. Golay, "Smoothing and
    /// differentiation of data by simplified least squares procedures", Analytical Chemistry 36, 1964.)
    SMOOTH_SAVITZKY_GOLAY = 3
};

/// \name Smoothing: filter a stretch of a curve and replace it by linear keys through the result
///
/// The stretch is sampled, with width further samples on either side; each sample becomes the weighted mean of itself
/// and its neighbours, with weights scaled to a sum of one. The results become keys joined by linear segments; nothing
/// else is inserted. A sample within 1e-07 frames of a key at an end of the range moves that key.
///
/// Outside the range everything stays, to the last bit; the segments that the range cuts lead to its ends now. The
/// point at the end is filtered like the others, unless that makes a jump. docs/smoothing.md has both in detail.
///
/// Observers are told as by BakeCurve. Nothing changes where start is not below end, for a width below 0, an unknown
/// filter, or where sampling (under the rules of SampleCurve) gives no two points. A width of 0 bakes. Time: the number
/// of samples times width, and the edit.
/// @{

/// Smooths [start, end] on the grid start, start + step and so on. The point at end stands in for the last one of the
/// grid, which may lie up to a step before it. The filter reads what surrounds the range.
FCURVELIB_API void SmoothCurve(FCurve& curve, double start, double end, double step, int width, SmoothFilter filter);

/// Smooths the whole keyed range, from the first key on in steps to the last, both included. What surrounds it is not
/// read: the filter sees the straight line through the first and the last key continued. Nothing for a curve of less
/// than two keys.
FCURVELIB_API void SmoothCurveInterior(FCurve& curve, double step, int width, SmoothFilter filter);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
