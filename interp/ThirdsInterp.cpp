#include "FCurveLib/ThirdsInterp.h"

#include "interp/BezierSampling.h"
#include "interp/ControlPoints.h"
#include "model/Read.h"

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {

template<class Heights>
BezierArgs ArgsOf(const Segment& segment, const Heights& heights) noexcept {
    const double left = Read::leftKey(segment)->getX();
    const double right = Read::rightKey(segment)->getX();
    const double third = (right - left) / 3.0;
    return {left, heights.left, right, heights.right, third, heights.out, -third, heights.in};
}

// The place at x, held between the keys. There is nothing to solve: t runs evenly.
BezierPlace PlaceAt(double x, const BezierArgs& p) noexcept {
    if (!(x > p.x0)) return std::isnan(x) ? BezierPlace{x, x} : BezierPlace{0.0, 1.0};
    if (x >= p.x3) return {1.0, 0.0};
    const double width = p.x3 - p.x0;
    return {(x - p.x0) / width, (p.x3 - x) / width};
}

} // namespace

BezierArgs ThirdsArgs(const Interpolator& thirds, const Segment& segment) {
    return ArgsOf(segment, static_cast<const ThirdsInterp&>(thirds).getHeights(segment));
}

ThirdsInterp::ThirdsInterp() = default;
ThirdsInterp::ThirdsInterp(const ThirdsInterp& other) = default;

double ThirdsInterp::eval(double x, const Segment& segment) const {
    if (!Read::hasBothKeys(segment)) return BezierInterpBase::eval(x, segment);
    const BezierArgs args = ArgsOf(segment, getHeights(segment));
    return MeetKey(x, BezierY(PlaceAt(x, args), args), args);
}

void ThirdsInterp::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    if (!Read::hasBothKeys(segment)) return BezierInterpBase::getRangeExtents(segment, x0, x1, minY, maxY);
    const BezierArgs args = ArgsOf(segment, getHeights(segment));
    BezierExtents(PlaceAt(x0, args), PlaceAt(x1, args), args, minY, maxY);
    // Evaluation beside a key meets the key.
    for (const double x : {x0, x1}) {
        const double y = MeetKey(x, BezierY(PlaceAt(x, args), args), args);
        minY = std::min(minY, y);
        maxY = std::max(maxY, y);
    }
}

void ThirdsInterp::computePolyline(const Segment& segment, double x0, double x1, int count,
                                   std::vector<Vector2D<double>>& points) const {
    if (!Read::hasBothKeys(segment)) return BezierInterpBase::computePolyline(segment, x0, x1, count, points);
    SampleBezier(ArgsOf(segment, getHeights(segment)), x0, x1, count, points, BezierY);
}

double ThirdsInterp::getFirstDerivative(double x, const Segment& segment) const {
    if (!Read::hasBothKeys(segment)) return BezierInterpBase::getFirstDerivative(x, segment);
    const BezierArgs args = ArgsOf(segment, getHeights(segment));
    return BezierSlope(PlaceAt(x, args), args);
}

void ThirdsInterp::firstDerivPolyline(const Segment& segment, double x0, double x1, int count,
                                      std::vector<Vector2D<double>>& points) const {
    if (!Read::hasBothKeys(segment)) return BezierInterpBase::firstDerivPolyline(segment, x0, x1, count, points);
    SampleBezier(ArgsOf(segment, getHeights(segment)), x0, x1, count, points, BezierSlope);
}

double ThirdsInterp::getSecondDerivative(double x, const Segment& segment) const {
    if (!Read::hasBothKeys(segment)) return BezierInterpBase::getSecondDerivative(x, segment);
    const BezierArgs args = ArgsOf(segment, getHeights(segment));
    return BezierSecond(PlaceAt(x, args), args);
}

void ThirdsInterp::secondDerivPolyline(const Segment& segment, double x0, double x1, int count,
                                       std::vector<Vector2D<double>>& points) const {
    if (!Read::hasBothKeys(segment)) return BezierInterpBase::secondDerivPolyline(segment, x0, x1, count, points);
    SampleBezier(ArgsOf(segment, getHeights(segment)), x0, x1, count, points, BezierSecond);
}

void ThirdsInterp::getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2,
                                 double& y2, double& x3, double& y3) const {
    const BezierArgs args = ArgsOf(segment, getHeights(segment));
    x0 = args.x0;
    y0 = args.y0;
    x1 = args.x0 + args.outX;
    y1 = args.y0 + args.outY;
    x2 = args.x3 + args.inX;
    y2 = args.y3 + args.inY;
    x3 = args.x3;
    y3 = args.y3;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
