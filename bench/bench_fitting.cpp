// Fitting and reduction of 100 000 samples and keys, by signal, options and tolerance. Fitting is to take a second at
// most, whatever the signal.

#include "FCurveLib/FCurveLib.h"
#include "Signals.h"

#include <benchmark/benchmark.h>

#include <string>

using namespace VEM_FN::FCurveLib;

namespace {

using Bench::Samples;

constexpr int kSampleCount = 100'000;

void Fit(benchmark::State& state, const Samples& samples, double tolerance, const FitOptions& options) {
    std::size_t keys = 0;
    for (auto _ : state) keys = FitCurve(samples, tolerance, options).report.keysAfter;
    state.counters["keys"] = static_cast<double>(keys);
}

void Reduce(benchmark::State& state, const Samples& samples, double tolerance, const FitOptions& options) {
    const auto baked = FCurve::create();
    BakeSamples(*baked, samples);
    std::size_t keys = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto curve = FCurve::createCopy(*baked);
        state.ResumeTiming();
        keys = ReduceCurve(*curve, samples.front().x, samples.back().x, tolerance, options).keysAfter;
        state.PauseTiming();
        curve.reset();
        state.ResumeTiming();
    }
    state.counters["keys"] = static_cast<double>(keys);
}

const bool registered = [] {
    for (const auto& [signal, samples] : Bench::Signals(kSampleCount))
        for (const auto handles : {FitOptions::Thirds, FitOptions::Weighted})
            for (const auto keys : {FitOptions::Smooth, FitOptions::Broken})
                for (const char* percent : {"0.1", "1", "5"}) {
                    FitOptions options;
                    options.handles = handles;
                    options.keys = keys;
                    const double tolerance = std::stod(percent) / 100.0 * Bench::RangeOf(samples);
                    const std::string name = "/" + signal + (keys == FitOptions::Smooth ? "/smooth" : "/broken")
                                             + (handles == FitOptions::Weighted ? " weighted/" : "/") + percent;
                    benchmark::RegisterBenchmark(("FitCurve" + name).c_str(), Fit, samples, tolerance, options)
                        ->Unit(benchmark::kMillisecond);
                    if (std::string(percent) == "1")
                        benchmark::RegisterBenchmark(("ReduceCurve" + name).c_str(), Reduce, samples, tolerance,
                                                     options)
                            ->Unit(benchmark::kMillisecond);
                }
    return true;
}();

} // namespace
