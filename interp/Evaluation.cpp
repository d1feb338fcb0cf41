#include "FCurveLib/Evaluation.h"

#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Tolerance.h"
#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

namespace {

using Derivative = double (Interpolator::*)(double x, const Segment& segment) const;

double Differentiate(const Segment& segment, double x, Derivative derivative) {
    const Interpolator* const interpolator = Read::interpolator(segment);
    return interpolator ? (interpolator->*derivative)(x, segment) : 0.0;
}

// The segment for x; of the two that meet at a key, the one on its left.
const Segment& FindSegmentLeft(const FCurve& curve, double x) {
    const Segment& segment = Read::findSegment(curve, x);
    const Keyframe* const key = Read::leftKey(segment);
    return key && NearEqual(x, key->getX()) ? *Read::leftSegment(*key) : segment;
}

} // namespace

double EvalSegment(double x, const Segment& segment) {
    const Interpolator* const interpolator = Read::interpolator(segment);
    return interpolator ? interpolator->eval(x, segment) : 0.0;
}

double EvalInInterior(double x, const FCurve& curve) {
    const Segment& leading = Read::firstSegment(curve);
    const Keyframe* const first = Read::rightKey(leading);
    if (!first) return EvalSegment(x, leading);
    const Keyframe* const last = Read::leftKey(Read::lastSegment(curve));
    if (first == last) return first->getY();

    if (x >= last->getX()) return EvalSegment(last->getX(), *Read::leftSegment(*last));
    if (x < first->getX()) return EvalSegment(first->getX(), *Read::rightSegment(*first));
    // For NaN findSegment would give the leading segment.
    // NOLINTNEXTLINE(clang-analyzer-core.NonNullParamChecker): a key in a curve has segments on both sides
    return EvalSegment(x, x >= first->getX() ? Read::findSegment(curve, x) : *Read::rightSegment(*first));
}

double GetFirstDerivative(const FCurve& curve, double x) {
    return Differentiate(Read::findSegment(curve, x), x, &Interpolator::getFirstDerivative);
}

double GetFirstDerivativeLeft(const FCurve& curve, double x) {
    return Differentiate(FindSegmentLeft(curve, x), x, &Interpolator::getFirstDerivative);
}

double GetFirstDerivativeRight(const FCurve& curve, double x) {
    return GetFirstDerivative(curve, x);
}

double GetSecondDerivative(const FCurve& curve, double x) {
    return Differentiate(Read::findSegment(curve, x), x, &Interpolator::getSecondDerivative);
}

double GetSecondDerivativeLeft(const FCurve& curve, double x) {
    return Differentiate(FindSegmentLeft(curve, x), x, &Interpolator::getSecondDerivative);
}

double GetSecondDerivativeRight(const FCurve& curve, double x) {
    return GetSecondDerivative(curve, x);
}

std::shared_ptr<Tangent> GetOpposingTangent(Tangent& tangent) {
    return tangent.getOppositeTangent();
}

std::shared_ptr<const Tangent> GetOpposingTangent(const Tangent& tangent) {
    return tangent.getOppositeTangent();
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
