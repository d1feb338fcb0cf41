#include "FCurveLib/Smoothing.h"

#include "FCurveLib/Sampling.h"
#include "model/Read.h"
#include "tools/QuietEdit.h"
#include "tools/Resample.h"

#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Borders;
using Private::Read;
using Points = std::vector<Vector2D<double>>;

namespace {

double Weight(SmoothFilter filter, double k, double width) noexcept {
    switch (filter) {
    case SMOOTH_BOX:
        return 1.0;
    case SMOOTH_TRIANGLE:
        return width + 1.0 - std::abs(k);
    case SMOOTH_GAUSSIAN:
        return std::exp(-2.0 * k * k / ((width + 1.0) * (width + 1.0)));
    case SMOOTH_SAVITZKY_GOLAY:
        return 3.0 * width * width + 3.0 * width - 1.0 - 5.0 * k * k;
    }
    return 0.0;
}

// Weights for k = 0 ... width; the other side is the same.
class Kernel {
public:
    Kernel(SmoothFilter filter, std::size_t width) {
        const auto w = static_cast<double>(width);
        m_weights.reserve(width + 1);
        for (std::size_t k = 0; k <= width; ++k) m_weights.push_back(Weight(filter, static_cast<double>(k), w));
        m_sum = m_weights[0];
        for (std::size_t k = 1; k <= width; ++k) m_sum += 2.0 * m_weights[k];
    }

    // The weighted mean around sample i, which has width neighbours on either side. Written as a correction of the
    // sample, from pairs: then a constant stays itself to the last bit, and a straight line nearly so.
    double mean(const Points& samples, std::size_t i) const noexcept {
        const double y = samples[i].y;
        double correction = 0.0;
        for (std::size_t k = 1; k < m_weights.size(); ++k)
            correction += m_weights[k] * ((samples[i - k].y - y) + (samples[i + k].y - y));
        return y + correction / m_sum;
    }

private:
    std::vector<double> m_weights;
    double m_sum = 0.0;
};

bool IsKnown(SmoothFilter filter) noexcept {
    return static_cast<std::uint32_t>(filter) <= SMOOTH_SAVITZKY_GOLAY;
}

// Replaces [start, end] by its filtered samples: those of [start, end), then the point at end, which may stand off
// their grid and so has a window of its own.
bool Smooth(FCurve& curve, double start, double end, double step, int width, SmoothFilter filter, bool extrapolate) {
    const double margin = width * step;
    Points samples;
    if (extrapolate)
        SampleCurveExtrapolated(curve, start, end, step, margin, samples);
    else
        SampleCurve(curve, start - margin, end + margin, step, samples);

    const auto w = static_cast<std::size_t>(width);
    if (samples.size() < 2 * w + 2) return false; // also bounds the kernel by the number of samples
    const Kernel kernel(filter, w);
    Points points;
    points.reserve(samples.size() - 2 * w);
    for (std::size_t i = w; i + w + 1 < samples.size(); ++i) points.push_back({samples[i].x, kernel.mean(samples, i)});

    Points window;
    window.reserve(2 * w + 1);
    const double first = curve.eval(start);
    const double slope = (curve.eval(end) - first) / (end - start);
    for (std::size_t k = 0; k <= 2 * w; ++k) {
        const double x = end + (static_cast<double>(k) - static_cast<double>(w)) * step;
        const bool continued = extrapolate && (x < start || x > end);
        window.push_back({x, continued ? (x - start) * slope + first : curve.eval(x)});
    }
    points.push_back({end, kernel.mean(window, w)});
    return Private::ReplaceBySamples(curve, std::move(points), Borders::Follow);
}

} // namespace

void SmoothCurve(FCurve& curve, double start, double end, double step, int width, SmoothFilter filter) {
    if (!(start < end) || width < 0 || !IsKnown(filter)) return;
    Private::QuietEdit(curve, [&] { return Smooth(curve, start, end, step, width, filter, false); });
}

void SmoothCurveInterior(FCurve& curve, double step, int width, SmoothFilter filter) {
    if (curve.size() < 3 || width < 0 || !IsKnown(filter)) return;
    const double start = Read::rightKey(Read::firstSegment(curve))->getX();
    const double end = Read::leftKey(Read::lastSegment(curve))->getX();
    Private::QuietEdit(curve, [&] { return Smooth(curve, start, end, step, width, filter, true); });
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
