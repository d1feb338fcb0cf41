#pragma once

// Follows a curve through a window, for lines that show it.

#include "FCurveLib/ViewLine.h"
#include "model/Read.h"
#include "tools/SegmentSummaries.h"

#include <cstddef>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// Where to follow the curve, and how closely.
struct TraceArea {
    double left; // frames
    double right;
    double width;  // pixels
    double bottom; // values beyond which nothing is looked at closely
    double top;
    double pixelsPerValue; // 0: no closer than the looks that tell where the values are
};

// Hears of the curve's points, which ascend in x (pixels from the left).
class TraceSink {
public:
    virtual ~TraceSink() = default;
    // Connected with the point before, unless the curve was cut since. y is finite.
    virtual void add(ViewPolyline::Place place, double x, double y) = 0;
    // A jump is told before the cut.
    virtual void jump(double x, double from, double to) = 0;
    virtual void cut() = 0;
};

// The summaries are those of the values; null: every segment is looked at.
void TraceCurve(const FCurve& curve, const SegmentSummaries* summaries, ViewPolyline::Quantity quantity,
                const TraceArea& area, TraceSink& sink);

// Whether the segment has no interpolator, or one that stands for a text that nobody understood.
bool IsUnknown(const Segment& segment);

// One look, as the tracer takes it: infinite where a derivative is that of a vertical tangent.
double Look(ViewPolyline::Quantity quantity, double x, const Segment& segment, const Interpolator* interpolator);

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
