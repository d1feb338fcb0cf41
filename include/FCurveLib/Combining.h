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
/// properties of the first curve; its parts are all new. The given curves may be one and the same. Exact wherever a
/// constant, linear or Bezier segment has these values; elsewhere fitted to within the tolerance, in the unit of y (not
/// below 2^-30 of the values' range). The report says which; docs/combining.md has the rules.
///
/// OffsetCurve carries kinds, tangent types, flags and properties over, as TransformCurve does. It refuses offsets that
/// are not finite: then the curve is a copy, not within tolerance.
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
