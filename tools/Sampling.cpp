#include "FCurveLib/Sampling.h"

#include "model/Read.h"
#include "tools/ManyValues.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;
using Points = std::vector<Vector2D<double>>;

namespace {

// The distance from x to the next double above it.
double GapAbove(double x) noexcept {
    return std::nextafter(x, std::numeric_limits<double>::infinity()) - x;
}

// How many samples there are at most from start to end; 0 where sampling is refused.
//
// A rounded sum moves x by at least the step less half a gap between doubles, and the gaps are widest at one of the
// ends. So a positive least move proves that the sum never stalls, and bounds the number of samples.
std::size_t CountSamples(double start, double end, double step) noexcept {
    constexpr double limit = 2147483647.0 - 1.0; // one less than allowed, for the rounding of the quotient
    if (!(start <= end)) return 0;
    const double leastMove = step - 0.5 * std::max(GapAbove(start), GapAbove(end));
    if (!(leastMove > 0.0)) return 0;
    const double moves = (0.5 * end - 0.5 * start) / (0.5 * leastMove); // halves, so that nothing overflows
    if (!(moves < limit)) return 0;
    return static_cast<std::size_t>(moves) + 1;
}

// The abscissae; every y is 0.
void SetAbscissae(double start, double end, double step, Points& out) {
    out.clear();
    const std::size_t count = CountSamples(start, end, step);
    if (count == 0) return;
    out.reserve(count);
    // deliberate: accumulated, not start + i * step, so that drift decides about the last sample
    for (double x = start; x <= end; x += step) out.push_back({x, 0.0});
}

} // namespace

void SampleCurve(const FCurve& curve, double start, double end, double step, Points& out) {
    SetAbscissae(start, end, step, out);
    Private::EvalPoints(curve, out.data(), out.size());
}

void SampleCurveExtrapolated(const FCurve& curve, double start, double end, double step, double margin, Points& out) {
    SetAbscissae(start - margin, end + margin, step, out);
    const double ys = curve.eval(start);
    const double ye = curve.eval(end);
    const auto chord = [&](Vector2D<double>& point) { point.y = (point.x - start) * ((ye - ys) / (end - start)) + ys; };
    const auto inside = std::find_if(out.begin(), out.end(), [&](const auto& point) { return !(point.x < start); });
    const auto after = std::find_if(inside, out.end(), [&](const auto& point) { return point.x > end; });
    std::for_each(out.begin(), inside, chord);
    Private::EvalPoints(curve, out.data() + (inside - out.begin()), static_cast<std::size_t>(after - inside));
    std::for_each(after, out.end(), chord);
}

void SampleCurveInterior(const FCurve& curve, double step, Points& out) {
    out.clear();
    if (curve.size() == 1) return;
    const double first = Read::rightKey(Read::firstSegment(curve))->getX();
    if (curve.size() == 2) {
        out.push_back({first, curve.eval(first)});
        return;
    }
    const double last = Read::leftKey(Read::lastSegment(curve))->getX();
    const double start = std::floor(first / step) * step;
    const double end = std::ceil(last / step) * step;
    if (start < end) SampleCurve(curve, start, end, step, out);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
