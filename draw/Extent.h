#pragma once

#include "FCurveLib/FCurve.h"
#include "FCurveLib/Vector2D.h"
#include "FCurveLib/ViewLine.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

/// What of a curve is drawn.
using Quantity = ViewPolyline::Quantity;

/// A point of a curve: frame and value.
using Sample = VEM_FN::FCurveLib::Vector2D<double>;

/// Lowest and highest value; none where low > high.
struct Extent {
    double low;
    double high;

    bool empty() const { return !(low <= high); }
    /// Passes over what is not finite.
    void include(double value);
    void include(const Extent& other);
};

extern const Extent kNoExtent;

/// The values that a picture should show of a curve between two frames, that many pixels apart: all, except that a
/// pole, or what the curve reaches outside its keys, does not flatten the rest. Values of unknown segments do not
/// count. Empty when no value is left.
Extent FindExtentToShow(const FCurve& curve, Quantity quantity, double low, double high, double width);

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
