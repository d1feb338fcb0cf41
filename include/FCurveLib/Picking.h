#pragma once

#include "FCurveLib/CurveView.h"
#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/HitRecord.h"
#include "FCurveLib/Vector2D.h"

#include <cstdint>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// What picking looks for.
struct PickOptions {
    enum Part : std::uint32_t { Keys = 1, Handles = 2, Segments = 4, Curves = 8 };

    /// Which parts, added up.
    std::uint32_t parts = Keys | Handles | Curves;

    /// Pixels per key of a curve in view below which its handles are not looked for, because nobody can tell them apart
    /// and no host draws them; 0: always. Then the time grows with the number of keys in view.
    double handleSpacing = 20.0;
};

/// \name Pick: what lies under the pointer
///
///     if (const HitRecord hit = Pick(*curves, view, {pointerX, pointerY}, 6); hit.getType() != HitRecord::NONE)
///         selection.select(hit);
///
/// The nearest key within the radius around a point, all in pixels; without one the nearest tip of a tangent handle,
/// then the nearest line: its segment, if segments are looked for, otherwise its curve. NONE where nothing is so near,
/// and for an invalid view, a negative radius and NaN. Of parts at the same distance that of the later curve wins, as
/// it is drawn above the others; within one curve the earlier one.
///
/// Hidden curves (IsVisible) are passed over, locked ones are not. Parts outside the view are found, too, as far as the
/// radius reaches. Handles are those that HitRecordIterator walks, at keys in view and the next key on either side, as
/// long as an editor shows them (GetTangentScale), and made with the flag true. Lines are those of ViewLine.
///
/// Nothing is edited or locked; any number of threads may pick. A curve costs a look-up, its keys within the radius
/// some 50 ns each, and its line between these.
/// @{
FCURVELIB_API HitRecord Pick(FCurveContainer& curves, const CurveView& view, const Vector2D<double>& point,
                             double radius, const PickOptions& options = PickOptions());
FCURVELIB_API ConstHitRecord Pick(const FCurveContainer& curves, const CurveView& view, const Vector2D<double>& point,
                                  double radius, const PickOptions& options = PickOptions());
/// @}

/// What a marquee holds: the parts within a rectangle of pixels, its borders included, in the order in which
/// HitRecordIterator walks them. Keys and handles (as for Pick) lie in it; segments and curves are those whose line
/// meets it. The rectangle may be drawn in any direction: width and height may be negative. Empties the vector first;
/// nothing is found in an invalid view, or where a number is not finite. Keys only, unless told otherwise.
FCURVELIB_API void PickRectangle(FCurveContainer& curves, const CurveView& view, const Rectangle<double>& rectangle,
                                 std::vector<HitRecord>& out, const PickOptions& options = {PickOptions::Keys});

} // namespace v19
} // namespace VEM_FN::FCurveLib
