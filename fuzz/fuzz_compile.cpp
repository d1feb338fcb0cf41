// A curve from the bytes, compiled and compared with the model: values and derivatives within rounding, and the same
// bits from single look-ups, cursors, batches and poses.

#include "Require.h"
#include "support/SameCurve.h"
#include "support/ScriptBytes.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace Fuzz {

namespace {

const char* const kExpressions[] = {"bezier()",  "bezier()",       "linear()",    "constant()",  "constant_next()",
                                    "spline()",  "ease()",         "easein()",    "easeout()",   "match()",
                                    "matchin()", "matchout()",     "cycle()",     "mirror()",    "2.5",
                                    "x / 3 - 1", "cycle_offset()", "cycle() + x", "abs(x) ** 2", "nonsense("};

std::shared_ptr<Interpolator> AnyInterpolator(ScriptBytes& bytes) {
    return bytes.below(40) == 0 ? nullptr : InterpolatorFactory::create(bytes.oneOf(kExpressions));
}

// Mostly within a thousand frames; any double whatever now and then.
double Coordinate(ScriptBytes& bytes) {
    const double number = bytes.below(4) == 0 ? bytes.coordinate() : bytes.small();
    return std::isfinite(number) ? number : 0.0;
}

std::shared_ptr<FCurve> AnyCurve(ScriptBytes& bytes) {
    const auto curve = FCurve::create();
    curve->begin()->setInterpolator(AnyInterpolator(bytes));
    for (int keys = bytes.below(12); keys > 0; --keys)
        curve->insertSegment(*Keyframe::create(Coordinate(bytes), Coordinate(bytes)), AnyInterpolator(bytes));
    for (Segment& segment : *curve)
        for (const auto& tangent : {segment.getInTangent(), segment.getOutTangent()}) {
            if (bytes.coin()) continue;
            tangent->setWeighted(bytes.coin());
            tangent->set(Coordinate(bytes), Coordinate(bytes));
        }
    return curve;
}

// Beside a key, and where the numbers leave no digits, rounding decides.
bool IsComparable(const FCurve& curve, double x) {
    for (const Segment& segment : curve)
        if (const auto key = segment.getLeftKey())
            if (std::abs(key->getX()) > 1e9 || std::abs(key->getY()) > 1e9
                || std::abs(x - key->getX()) <= 1e-6 * std::max(1.0, std::abs(x)))
                return false;
    return std::abs(x) < 1e9;
}

void Compare(const FCurve& curve, const CompiledCurve& compiled, double x) {
    if (!IsComparable(curve, x)) return;
    const double y = curve.eval(x);
    const double found = compiled.eval(x);
    if (!std::isfinite(y) || std::abs(y) > 1e12) return;
    double size = 1.0;
    for (const Segment& segment : curve) {
        if (const auto key = segment.getLeftKey()) size = std::max(size, std::abs(key->getY()));
        for (const auto& tangent : {segment.getInTangent(), segment.getOutTangent()})
            size = std::max(size, std::abs(tangent->getY()));
    }
    if (size > 1e12) return;
    const double ulps = 1e-14 * std::max(1.0, std::abs(x));
    const double blur = std::abs(curve.eval(x + ulps) - curve.eval(x - ulps));
    Require(std::abs(found - y) <= 1e-11 * std::max(size, std::abs(y)) + blur, "compiled values are the curve's",
            std::to_string(found) + " for " + std::to_string(y) + " at " + std::to_string(x));
}

void Use(ScriptBytes& bytes) {
    const auto curve = AnyCurve(bytes);
    const CompiledCurve compiled(*curve);
    const CompiledSet set(std::vector<const FCurve*>{curve.get()});

    std::vector<double> xs{0.0, -1e300, 1e300, HUGE_VAL, -HUGE_VAL, std::nan("")};
    for (const Segment& segment : static_cast<const FCurve&>(*curve)) {
        const auto left = segment.getLeftKey();
        const auto right = segment.getRightKey();
        if (left) xs.insert(xs.end(), {left->getX(), std::nextafter(left->getX(), -1e308), left->getX() + 1e-8});
        if (left && right)
            for (int i = 1; i < 8; ++i) xs.push_back(left->getX() + (right->getX() - left->getX()) * i / 8.0);
    }
    for (int i = 0; i < 8; ++i) xs.push_back(bytes.coordinate());

    std::vector<double> ys(xs.size());
    compiled.eval(xs.data(), ys.data(), xs.size());
    CompiledCurve::Cursor cursor;
    for (std::size_t i = 0; i < xs.size(); ++i) {
        Compare(*curve, compiled, xs[i]);
        const double y = compiled.eval(xs[i]);
        double inSet = 0.0;
        set.eval(xs[i], &inSet);
        Require(SameBits(y, ys[i]), "a batch has the bits of single look-ups");
        Require(SameBits(y, inSet), "a set has the bits of its curves");
        Require(SameBits(y, compiled.eval(xs[i], cursor)), "a cursor has no say in the value");
        Require(SameBits(compiled.getFirstDerivative(xs[i]), set.getCurve(0).getFirstDerivative(xs[i])),
                "a set's curve has the derivatives of the curve");
        compiled.getSecondDerivative(xs[i]);
    }
}

} // namespace

} // namespace Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::ScriptBytes bytes(data, size);
    Fuzz::Use(bytes);
    return 0;
}
