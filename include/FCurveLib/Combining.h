#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Vector2D.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

struct CombineReport {
    struct Range {
        double from;
        double to;
    };
    /// Between the keys and outside them the curve is what was asked for, up to the rounding of its new numbers.
    bool exact = true;
    /// Where it is not, between the keys, in ascending order.
    std::vector<Range> fitted;
    /// Whether that holds before the first key and after the last one. Where it does not, the curve holds its value.
    bool endsExact = true;
    /// The error between the keys was bounded everywhere. Where formulas, a host's own kinds or repetitions had to be
    /// fitted it was measured instead, at 32 places and more between two keys.
    bool proved = true;
    /// The largest distance in value between the keys, and where; 0 if nothing was fitted.
    double error = 0.0;
    double errorAt = 0.0;
    bool withinTolerance = true;
};

struct CombineResult {
    std::shared_ptr<FCurve> curve; ///< never null
    CombineReport report;
};

/// \name Combining: a curve made of others
///
///     AddCurves      x -> a(x) + b(x)                        a layer on a base
///     BlendCurves    x -> a(x) + weight(x) * (b(x) - a(x))   from one take to another; weight 0 is a, 1 is b
///     RetimeCurve    x -> curve(by(x))                       a time warp: `by` says which frame is shown when
///     OffsetCurve    x -> curve(x - offset.x) + offset.y     later, higher
///
/// The result has keys from the first to the last of the curves' keys (of by's alone for RetimeCurve), and the name and
/// properties of the first curve. A curve without keys counts with its values. All its parts are new; the given curves
/// are only read, and may be one and the same.
///
/// Wherever the values are those of a constant, linear or Bezier segment, the result is that segment: sums with lines
/// and constants, sums of segments whose handles are alike in x (handles of a third, say), blends by a constant weight,
/// or by a linear one of what differs by a line or a parabola, anything along a straight stretch of `by`, and straight
/// stretches along anything. Elsewhere smooth Bezier keys with handles of a third are fitted, as FitCurve does, to
/// within the tolerance, in the unit of y. One that is negative, NaN or below 2^-30 of the values' range there counts
/// as that.
///
/// Where the result jumps and does not step, the 0.001 frames before the key hold their first value: that counts as
/// fitted, and into the error. Keys of the curves that are less than 0.001 frames after another are left out.
///
/// The tolerance is not held, and the report says so, where a formula turns faster than 256 keys between two of the
/// given keys could follow, and in the frames before a jump.
///
/// OffsetCurve carries kinds, tangent types, flags and properties over, as TransformCurve does, and fits only what has
/// no image there. It refuses offsets that are not finite: then the curve is a copy, not within tolerance.
///
/// Near linear in the number of keys. Whatever a host's interpolator throws passes through.
/// @{
FCURVELIB_API CombineResult AddCurves(const FCurve& a, const FCurve& b, double tolerance = 1e-3);
FCURVELIB_API CombineResult BlendCurves(const FCurve& a, const FCurve& b, const FCurve& weight,
                                        double tolerance = 1e-3);
FCURVELIB_API CombineResult RetimeCurve(const FCurve& curve, const FCurve& by, double tolerance = 1e-3);
FCURVELIB_API CombineResult OffsetCurve(const FCurve& curve, const Vector2D<double>& offset, double tolerance = 1e-3);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
