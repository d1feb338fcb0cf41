#include "FCurveLib/Baking.h"

#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Linear.h"
#include "FCurveLib/Sampling.h"
#include "tools/HandleKeeper.h"
#include "tools/QuietEdit.h"
#include "tools/Resample.h"

#include <cmath>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Raw;
using Private::Read;

void BakeCurve(FCurve& curve, double start, double end, double step) {
    const double first = std::ceil(start / step) * step;
    const double last = std::floor(end / step) * step;
    if (!(first < last)) return;
    std::vector<Vector2D<double>> samples;
    SampleCurve(curve, first, last, step, samples);
    Private::QuietEdit(curve,
                       [&] { return Private::ReplaceBySamples(curve, std::move(samples), Private::Borders::Keep); });
}

void BakeInterior(FCurve& curve, double step) {
    if (curve.size() < 3) return;
    std::vector<Vector2D<double>> samples;
    SampleCurveInterior(curve, step, samples);
    Private::KeepUsableSamples(samples);
    if (samples.size() < 2) return;

    Private::QuietEdit(curve, [&] {
        Segment& leading = *curve.begin();
        Keyframe& key = *Read::rightKey(leading);
        Segment& trailing = *--curve.end();
        const auto interpolator = trailing.getInterpolator();
        const PropertyMap properties = Read::properties(trailing);
        Tangent out;
        Raw::copyTangent(out, *Read::outTangent(trailing));
        Private::HandleKeeper handles;
        handles.keep(leading);

        Segment& first = *Read::rightSegment(key);
        auto it = Read::iteratorAt(curve, first);
        for (++it; it != curve.end();) it = curve.removeSegment(it);
        key.clearProperties();
        key.set(samples.front());
        Raw::setProperties(first, {});
        const auto linear = Linear::create();
        first.setInterpolator(linear);
        for (std::size_t i = 1; i < samples.size(); ++i)
            curve.insertSegment(Private::FreeKey(samples[i].x, samples[i].y), linear);

        Segment& last = *--curve.end();
        last.setInterpolator(interpolator);
        Raw::setProperties(last, properties);
        Raw::copyTangent(*Read::outTangent(last), out);
        handles.restore();
        return true;
    });
}

void BakeSamples(FCurve& curve, std::vector<Vector2D<double>> samples) {
    Private::QuietEdit(curve,
                       [&] { return Private::ReplaceBySamples(curve, std::move(samples), Private::Borders::Keep); });
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
