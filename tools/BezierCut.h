#pragma once

#include "FCurveLib/Segment.h"
#include "FCurveLib/Vector2D.h"
#include "interp/BezierMath.h"

#include <optional>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// The handles with which two Bezier segments, joined by a key at the cut, are the same curve as the one before.
//
//      key o--leftOut ... leftIn--o--rightOut ... rightIn--o key
//                                cut
struct BezierCut {
    double y;
    Vector2D<double> leftOut, leftIn, rightOut, rightIn;
};

// The control points of a segment with both keys and a Bezier-shaped interpolator, folds already removed.
BezierArgs BezierArgsOf(const Segment& segment);

// De Casteljau's cut at an x between the keys.
BezierCut CutBezierArgs(const BezierArgs& p, double x);

// The cut of a segment that its tangents shape, also of one that lacks a key and so runs along the other key's tangent,
// or lacks both and so is 0. Nothing for other kinds. Precondition: x lies strictly inside the segment.
std::optional<BezierCut> CutBezierSegment(const Segment& segment, double x);

// Stores a handle that the cut gave. A tangent that cannot have this length by itself becomes weighted.
void SetCutHandle(Tangent& tangent, const Vector2D<double>& handle, double span);

// Makes the tangents fixed ones with these handles, weighted where these are not a third of the segment long.
void SetFixedHandles(Segment& segment, const BezierArgs& args);

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
