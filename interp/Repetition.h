#pragma once

#include "FCurveLib/FCurve.h"
#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Segment.h"
#include "interp/Kinds.h"
#include "interp/ValueRange.h"

#include <optional>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// A curve's keyed part, from first to last key, as an open segment's interpolator repeats it.
class Repetition {
public:
    // Nothing for a segment from which there is nothing to repeat: one with no key or two, or of a curve of one key.
    static std::optional<Repetition> find(const Segment& segment) noexcept;

    // Forwards again and again, period n lifted by n * offset: see Repeat.h.
    double evalCycle(double x, double offset) const;
    double differentiateCycle(double x, int order) const;
    ValueRange cycleExtents(double x0, double x1, double offset) const;

    // To and fro.
    double evalMirror(double x) const;
    double differentiateMirror(double x, int order) const;
    ValueRange mirrorExtents(double x0, double x1) const;

    // What Repeat.h asks.
    double begin() const noexcept { return m_begin; }
    double end() const noexcept { return m_end; }
    double eval(double x) const;
    double differentiate(double x, bool fromRight, int order) const;
    void fold(ValueRange& extents, double from, double to, double shift) const;

    // By how much y rises from the first to the last key.
    double rise() const;

private:
    Repetition(const FCurve& curve, const Keyframe& first, const Keyframe& last, bool leading) noexcept;

    const FCurve* m_curve;
    const Keyframe* m_first;
    const Keyframe* m_last;
    double m_begin; // x of the first key
    double m_end;   // x of the last key
    bool m_leading; // seen from the segment before the first key
};

// What the repeating kinds compute on a segment, a constant where there is nothing to repeat. The order is 1 or 2.
double EvalRepeated(Kind kind, double x, const Segment& segment);
double DifferentiateRepeated(Kind kind, double x, const Segment& segment, int order);
void RepeatedExtents(Kind kind, const Segment& segment, double x0, double x1, double& minY, double& maxY);

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
