#pragma once

#include "FCurveLib/CurveView.h"
#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Vector2D.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The line that shows a curve in a view: strokes of points, between which are gaps.
struct ViewPolyline {
    /// What of a curve is shown.
    enum Quantity : std::uint8_t { Value, Velocity, Acceleration };

    /// Where a stroke lies: before the first key, between the keys (anywhere, if there is none), after the last; or
    /// that nobody knows how the curve runs there, and it evaluates to 0.
    enum Place : std::uint8_t { BeforeKeys, BetweenKeys, AfterKeys, Unknown };

    /// Points first to first + count - 1; at least two.
    struct Stroke {
        Place place;
        std::size_t first;
        std::size_t count;
    };

    /// Where the curve jumps, in pixels: for a host that joins strokes by a dotted line. Not nearer than 16 pixels
    /// outside the view.
    struct Jump {
        double x;
        double from;
        double to;
    };

    std::vector<Vector2D<double>> points; ///< of all strokes, in pixels, from left to right
    std::vector<Stroke> strokes;
    std::vector<Jump> jumps;

    void clear() noexcept {
        points.clear();
        strokes.clear();
        jumps.clear();
    }
};

/// \name ViewLine: the line that shows a curve in a view
///
///     ViewPolyline line;
///     ViewLine(*curve, {0, 240, -10, 10, 1920, 400}, line);
///     for (const auto& stroke : line.strokes) draw(&line.points[stroke.first], stroke.count);
///
/// Within a quarter of a pixel of the curve, with at most 4 points a pixel column; where these are too few, within a
/// column of it, from the lowest to the highest value there and across its gaps. It has a gap where the curve jumps or
/// has no finite value, and a new stroke where the place changes: from the same point, or from the next where four are
/// too few. docs/editing.md has the exceptions: jumps too close to show, formulas between two looks.
///
/// Empties the output first; an invalid view gives no stroke. Linear in the keys in view, at most some 50 ns each, and
/// in the view's width. Writes nothing but the output: any number of threads may look at a curve that nobody edits.
/// @{
FCURVELIB_API void ViewLine(const FCurve& curve, const CurveView& view, ViewPolyline& out,
                            ViewPolyline::Quantity quantity = ViewPolyline::Value);

/// The values of the overview's curve, which it brings up to date first. Keys that cannot be told apart cost next to
/// nothing: with a million of them in view this takes about a millisecond.
FCURVELIB_API void ViewLine(CurveOverview& overview, const CurveView& view, ViewPolyline& out);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
