// The editing utilities on large curves. Baking is measured against building its keys one after the other: it should
// stay below five times that, whatever it bakes into.

#include "FCurveLib/FCurveLib.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

using namespace VEM_FN::FCurveLib;

namespace {

std::shared_ptr<FCurve> CurveOf(std::int64_t keys, const std::shared_ptr<Interpolator>& kind, double spacing) {
    auto curve = FCurve::create();
    Keyframe key;
    for (std::int64_t i = 0; i < keys; ++i) {
        key.set(static_cast<double>(i) * spacing, std::sin(static_cast<double>(i)));
        curve->insertSegment(key, kind);
    }
    return curve;
}

// What baking is compared with.
void BuildInOrder(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(CurveOf(state.range(0), Linear::create(), 1.0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BuildInOrder)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

// As many samples as the first number says into a Bezier curve of a tenth of the keys.
void BakeIntoTenthOfTheKeys(benchmark::State& state) {
    const auto shape = CurveOf(state.range(0) / 10, Bezier::create(), 10.0);
    for (auto _ : state) {
        state.PauseTiming();
        auto curve = FCurve::createCopy(*shape);
        state.ResumeTiming();
        BakeCurve(*curve, 0.0, static_cast<double>(state.range(0) - 10), 1.0);
        state.PauseTiming();
        curve.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BakeIntoTenthOfTheKeys)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void SampleBezier(benchmark::State& state) {
    const auto curve = CurveOf(state.range(0) / 10, Bezier::create(), 10.0);
    std::vector<Vector2D<double>> samples;
    for (auto _ : state) SampleCurve(*curve, 0.0, static_cast<double>(state.range(0) - 1), 1.0, samples);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(SampleBezier)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void SmoothMotionCapture(benchmark::State& state) {
    const auto curve = CurveOf(state.range(0), Linear::create(), 1.0);
    for (auto _ : state) SmoothCurveInterior(*curve, 1.0, 10, SMOOTH_GAUSSIAN);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(SmoothMotionCapture)->Arg(100'000)->Unit(benchmark::kMillisecond);

void InteriorExtents(benchmark::State& state) {
    const auto curve = CurveOf(state.range(0), Bezier::create(), 1.0);
    Rectangle<double> extents;
    for (auto _ : state) benchmark::DoNotOptimize(GetInteriorExtents(*curve, extents));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(InteriorExtents)->Arg(100'000)->Unit(benchmark::kMillisecond);

} // namespace
