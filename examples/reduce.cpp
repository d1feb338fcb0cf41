// Few keys instead of many: a captured channel becomes a curve that an animator can edit.
//
//     reduce                     shows it, and checks that the tolerance holds
//     reduce IN OUT PERCENT      writes IN's curves to OUT, each before and after, within PERCENT of its range

#include "FCurveLib/FCurveLib.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace VEM_FN::FCurveLib;

namespace {

int Show() {
    std::vector<Vector2D<double>> captured;
    for (int frame = 0; frame <= 240; ++frame)
        captured.emplace_back(frame, 10.0 * std::sin(frame / 30.0) + 0.05 * std::sin(frame * 7.0));

    const FitResult fit = FitCurve(captured, 0.1);
    std::printf("%zu samples, %zu keys, %.3f away at frame %g\n", fit.report.keysBefore, fit.report.keysAfter,
                fit.report.error, fit.report.errorAt);

    FitOptions options;
    options.keys = FitOptions::Broken; // and fewer, but coarser
    const FitReport report = ReduceCurve(*fit.curve, 0.0, 240.0, 0.5, options);
    std::printf("then %zu keys, within %.3f everywhere\n", report.keysAfter, report.error);

    const auto tooFar = [&](const Vector2D<double>& at) { return !(std::abs(fit.curve->eval(at.x) - at.y) <= 0.6); };
    return std::any_of(captured.begin(), captured.end(), tooFar) ? 1 : 0;
}

int Reduce(const char* in, const char* out, double percent) {
    const auto before = FCurveContainer::create(), both = FCurveContainer::create();
    FileStream stream(in, FileStream::Read, 0);
    ReadCurves(stream, *before);
    for (const FCurve& curve : *before) {
        std::vector<Vector2D<double>> samples;
        SampleCurveInterior(curve, 1.0, samples);
        if (samples.size() < 2) continue;
        const auto [low, high] =
            std::minmax_element(samples.begin(), samples.end(), [](const auto& a, const auto& b) { return a.y < b.y; });
        const FitResult fit = FitCurve(samples, percent / 100.0 * (high->y - low->y));
        const auto baked = FCurve::createCopy(curve);
        BakeInterior(*baked, 1.0);
        fit.curve->setName((std::string(curve.getName()) + ", reduced").c_str());
        both->addCurve(baked);
        both->addCurve(fit.curve);
    }
    SaveCurves(out, *both, "xml");
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    return count == 4 ? Reduce(arguments[1], arguments[2], std::strtod(arguments[3], nullptr)) : Show();
}
