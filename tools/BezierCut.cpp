#include "tools/BezierCut.h"

#include "FCurveLib/Interpolator.h"
#include "interp/Kinds.h"
#include "model/Raw.h"

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

BezierArgs BezierArgsOf(const Segment& segment) {
    const Interpolator& interpolator = *Read::interpolator(segment);
    return KindOf(interpolator).args(interpolator, segment);
}

namespace {

// The place to the last bit, not only as closely as an evaluation needs it: both halves inherit its error.
BezierPlace ExactPlace(const BezierArgs& p, double x) {
    BezierPlace best = RepairBezierPlace(x, p, SolveBezier(x, p).t);
    BezierArgs fromKey = p; // x counted from the left key
    fromKey.x0 = 0.0;
    fromKey.x3 = p.x3 - p.x0;
    double miss = BezierX(best, fromKey) - (x - p.x0);
    for (int step = 0; step < 3 && miss != 0.0; ++step) {
        const double middle = fromKey.x3 + p.inX - p.outX;
        const double speed =
            3.0 * (best.u * best.u * p.outX + 2.0 * best.t * best.u * middle - best.t * best.t * p.inX);
        const double t = best.t - miss / speed;
        if (!(t > 0.0 && t < 1.0)) break;
        const BezierPlace next{t, 1.0 - t};
        const double nextMiss = BezierX(next, fromKey) - (x - p.x0);
        if (!(std::abs(nextMiss) < std::abs(miss))) break;
        best = next;
        miss = nextMiss;
    }
    return best;
}

} // namespace

BezierCut CutBezierArgs(const BezierArgs& p, double x) {
    const BezierPlace at = ExactPlace(p, x);
    const double t = at.t;
    const double u = at.u;

    // First differences of the control points. The cut's tangent direction, B'(t) / 3, is their quadratic in t.
    const Vector2D<double> first{p.outX, p.outY};
    const Vector2D<double> middle{p.x3 - p.x0 + p.inX - p.outX, p.y3 - p.y0 + p.inY - p.outY};
    const Vector2D<double> last{-p.inX, -p.inY};
    const Vector2D<double> direction = u * u * first + 2.0 * t * u * middle + t * t * last;

    BezierCut cut;
    cut.y = BezierY(at, p);
    cut.leftOut = t * first;
    cut.leftIn = -t * direction;
    cut.rightOut = u * direction;
    cut.rightIn = -u * last;
    // Where the curve is vertical, rounding must not turn a handle across its key.
    cut.leftIn.x = std::min(cut.leftIn.x, 0.0);
    cut.rightOut.x = std::max(cut.rightOut.x, 0.0);
    return cut;
}

std::optional<BezierCut> CutBezierSegment(const Segment& segment, double x) {
    const Interpolator* interpolator = Read::interpolator(segment);
    if (KindOf(interpolator).beyond != Beyond::Handle) return std::nullopt;
    const Keyframe* left = Read::leftKey(segment);
    const Keyframe* right = Read::rightKey(segment);
    if (left && right) return CutBezierArgs(BezierArgsOf(segment), x);
    if (!left && !right) { // 0 everywhere, whatever the handles
        const double out = Read::outTangent(segment)->getX();
        const double in = Read::inTangent(segment)->getX();
        return BezierCut{0.0, {out, 0.0}, {in, 0.0}, {out, 0.0}, {in, 0.0}};
    }

    // The straight line from the only key: thirds of the way on it up to the cut, the present handle beyond.
    const Keyframe& key = left ? *left : *right;
    const Vector2D<double> handle = (left ? Read::outTangent(segment) : Read::inTangent(segment))->get();
    const double reach = std::max(left ? handle.x : -handle.x, Keyframe::getMinSeparation());
    const double slope = (left ? handle.y : -handle.y) / reach;
    const double third = std::abs(x - key.getX()) / 3.0;
    const Vector2D<double> along{third, third * slope};

    BezierCut cut;
    cut.y = interpolator->eval(x, segment);
    cut.leftOut = left ? along : -handle;
    cut.leftIn = left ? -along : handle;
    cut.rightOut = left ? handle : along;
    cut.rightIn = left ? -handle : -along;
    return cut;
}

void SetCutHandle(Tangent& tangent, const Vector2D<double>& handle, double span) {
    constexpr double rounding = 1e-12;
    if (std::abs(std::abs(handle.x) - span / 3.0) > rounding * span) Raw::setWeighted(tangent, true);
    Raw::setHandle(tangent, handle.x, handle.y);
}

void SetFixedHandles(Segment& segment, const BezierArgs& args) {
    const double reach = (args.x3 - args.x0) / 3.0;
    const auto set = [&](Tangent& tangent, double x, double y) {
        Raw::setType(tangent, Tangent::Fixed);
        Raw::setWeighted(tangent, std::abs(std::abs(x) - reach) > 1e-12 * reach);
        Raw::setHandle(tangent, x, y);
    };
    set(*Read::outTangent(segment), args.outX, args.outY);
    set(*Read::inTangent(segment), args.inX, args.inY);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
