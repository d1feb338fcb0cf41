#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Vector2D.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// What may be done with keys and handles to need few of them.
struct FitOptions {
    enum Handles : std::uint8_t {
        Thirds = 0,  ///< a third of the segment in x: unweighted tangents
        Weighted = 1 ///< any length, which saves keys; x(t) never folds, so no correction is applied on evaluation
    };
    enum Keys : std::uint8_t {
        Smooth = 0, ///< both handles of a key on one straight line: unified tangents
        Broken = 1  ///< independent handles
    };
    Handles handles = Thirds;
    Keys keys = Smooth;
    /// Keys stay where the samples, or the old keys, are higher or lower than those on both sides.
    bool keepExtremes = false;
    /// Keys only at whole x, but for those that have to stay.
    bool wholeFrames = false;
    /// The largest number of keys, 0 for any. Where it is too small for the tolerance it is kept, and the error is
    /// larger (FitReport::withinTolerance); only keys that have to stay may exceed it.
    std::size_t maxKeys = 0;
};

struct FitReport {
    std::size_t keysBefore = 0; ///< usable samples, or keys in the range
    std::size_t keysAfter = 0;
    /// The largest distance in value, and where. For samples: from them, as evaluated. For a curve: no place of the
    /// range is farther from the old curve, rounding of the evaluation included, but beside keys (ReduceCurve); at
    /// errorAt it nearly is.
    double error = 0.0;
    double errorAt = 0.0;
    bool withinTolerance = true;
};

struct FitResult {
    std::shared_ptr<FCurve> curve; ///< never null
    FitReport report;
};

/// \name Fitting: few Bezier keys instead of many points
///
///     x x x x x x x x x x x x         o~~~~~~~~~~~~~o~~~~~~~o         o key, with fixed tangents
///
/// Keys stand on points of what is fitted, the first and the last always, and never closer than
/// Keyframe::getMinSeparation(); what is free are the handles. The fewest keys are not promised; docs/reducing.md
/// measures how near they come.
///
/// Runs of six and more points with the same value, or on one straight line, come out as exactly that. Elsewhere the
/// curve keeps within the tolerance, and nothing more.
///
/// A negative or NaN tolerance counts as 0, an infinite one leaves what has to stay.
/// @{

/// A curve that is nowhere farther than the tolerance (in the unit of y) from the samples, constant outside them.
///
/// Samples that are not finite or beyond 1e300, and those whose x is not above all before, are left out. One that is
/// left becomes a curve of one key, none an empty curve. The tolerance is not held, and the report says so, where
/// options.maxKeys or options.wholeFrames forbid it, or samples are closer together than keys can be.
///
/// Near linear in the number of samples.
FCURVELIB_API FitResult FitCurve(const std::vector<Vector2D<double>>& samples, double tolerance,
                                 const FitOptions& options = {});

/// Removes keys from [start, end] as long as the curve is nowhere in it farther than the tolerance (in the unit of y)
/// from what it was: proved for every x, not measured at some. Only within 1e-07 frames of an old key or a new one,
/// where curves have the key's value, it may be farther by as much as they rise in 1e-07 frames.
///
/// The keys that stay are the same objects, with their position, flags and properties. The segments between them become
/// "bezier()" with fixed tangents; those between two keys that stay do so only where a smooth key asks for it. With
/// options.wholeFrames, the whole frames next to old keys may take keys too, at the old curve's value.
///
/// What stays
/// ----------
///  - Everything outside, to the last bit; segments that an end of the range cuts count as outside. Segments there that
///    read keys of their neighbours keep these neighbours. What repeats the keyed part (cycle, mirror) repeats the
///    reduced one.
///  - Keys that are locked ("fc_lock"), selected ("fc_sel", their own or a tangent's), breakdowns, or at which the
///    curve jumps; extremes if asked for.
///  - Segments that are stepped, numbers, formulas or a host's own kinds, or have values beyond 1e300, with their keys.
///  - The first and the last key in the range. Their tangents inside keep the slope of the tangents outside where they
///    are unified; where that cannot be, they cease to be unified.
///
/// With options.keys Smooth, keys at which the old curve had a corner keep it, but for those between two linear
/// segments.
///
/// Nothing changes where start is not below end (or NaN), there are less than three keys, or none can be removed. The
/// edit is told once, as FCurve::notifyChanged, if anything changed. Near linear in the number of keys.
FCURVELIB_API FitReport ReduceCurve(FCurve& curve, double start, double end, double tolerance,
                                    const FitOptions& options = {});
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
