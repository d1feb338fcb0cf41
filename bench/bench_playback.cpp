// Compiled curves, over the data of bench_curve: single values, values in order, whole poses, compiling.

#include "Curves.h"
#include "playback/Lanes.h" // internal: chooses the lanes

#include <algorithm>
#include <cstring>
#include <string>

using namespace Bench;

namespace {

// One value a call.
template<class Eval>
void Measure(benchmark::State& state, const std::vector<double>& xs, const Eval& eval) {
    for (auto _ : state) {
        double sum = 0;
        for (const double x : xs) sum += eval(x);
        benchmark::DoNotOptimize(sum);
    }
    CountEvaluations(state, xs.size());
}

// All values in one call.
void MeasureBatch(benchmark::State& state, const FCurve& curve, const std::vector<double>& xs) {
    const CompiledCurve compiled(curve);
    std::vector<double> ys(xs.size());
    for (auto _ : state) {
        compiled.eval(xs.data(), ys.data(), xs.size());
        benchmark::ClobberMemory();
    }
    CountEvaluations(state, xs.size());
}

std::vector<double> Ascending(std::vector<double> xs) {
    std::sort(xs.begin(), xs.end());
    return xs;
}

std::size_t KeysOf(const benchmark::State& state) {
    return static_cast<std::size_t>(state.range(0));
}

// Those of the picture in docs/playback.md.
void Sizes(benchmark::internal::Benchmark* benchmark) {
    for (const std::int64_t keys : {10, 100, 1000, 10000, 100000, 1000000}) benchmark->Arg(keys);
}

void CompiledRandomX(benchmark::State& state) {
    Random random(2);
    const auto curve = BezierCurve(KeysOf(state), random);
    const CompiledCurve compiled(*curve);
    Measure(state, RandomAbscissae(LastX(*curve), random), [&](double x) { return compiled.eval(x); });
}
BENCHMARK(CompiledRandomX)->Apply(Sizes);

void CompiledCursor(benchmark::State& state) {
    Random random(3);
    const auto curve = BezierCurve(KeysOf(state), random);
    const CompiledCurve compiled(*curve);
    CompiledCurve::Cursor cursor;
    Measure(state, Ascending(RandomAbscissae(LastX(*curve), random)),
            [&](double x) { return compiled.eval(x, cursor); });
}
BENCHMARK(CompiledCursor)->Apply(Sizes);

void CompiledBatchAscending(benchmark::State& state) {
    Random random(3);
    const auto curve = BezierCurve(KeysOf(state), random);
    MeasureBatch(state, *curve, Ascending(RandomAbscissae(LastX(*curve), random)));
}
BENCHMARK(CompiledBatchAscending)->Apply(Sizes);

void CompiledBatchRandom(benchmark::State& state) {
    Random random(2);
    const auto curve = BezierCurve(KeysOf(state), random);
    MeasureBatch(state, *curve, RandomAbscissae(LastX(*curve), random));
}
BENCHMARK(CompiledBatchRandom)->Apply(Sizes);

void CompiledLinearAscending(benchmark::State& state) {
    Random random(3);
    const auto curve = FCurve::create();
    const auto linear = Linear::create();
    for (const Keyframe& key : RisingKeys(KeysOf(state), random)) curve->insertSegment(key, linear);
    MeasureBatch(state, *curve, Ascending(RandomAbscissae(LastX(*curve), random)));
}
BENCHMARK(CompiledLinearAscending)->Arg(1000);

// 10 000 curves of 50 keys: all of them at one frame, then at the next.
void CompiledPose(benchmark::State& state) {
    Random random(4);
    std::vector<std::shared_ptr<FCurve>> curves;
    std::vector<const FCurve*> list;
    for (int i = 0; i < 10000; ++i) list.push_back(curves.emplace_back(BezierCurve(50, random)).get());
    const CompiledSet pose(list);
    curves.clear();
    std::vector<double> values(pose.size());
    double frame = 0;
    for (auto _ : state) {
        pose.eval(frame, values.data());
        benchmark::ClobberMemory();
        frame = frame < 200 ? frame + 1 : 0.5;
    }
    CountEvaluations(state, pose.size());
}
BENCHMARK(CompiledPose);

// 200 frames of them in one call.
void CompiledPoses(benchmark::State& state) {
    Random random(4);
    std::vector<std::shared_ptr<FCurve>> curves;
    std::vector<const FCurve*> list;
    for (int i = 0; i < 1000; ++i) list.push_back(curves.emplace_back(BezierCurve(50, random)).get());
    const CompiledSet pose(list);
    std::vector<double> frames(200);
    for (std::size_t i = 0; i < frames.size(); ++i) frames[i] = static_cast<double>(i);
    std::vector<double> values(pose.size() * frames.size());
    for (auto _ : state) {
        pose.eval(frames.data(), frames.size(), values.data());
        benchmark::ClobberMemory();
    }
    CountEvaluations(state, values.size());
}
BENCHMARK(CompiledPoses);

void CompileCurve(benchmark::State& state) {
    Random random(5);
    const auto curve = BezierCurve(KeysOf(state), random);
    for (auto _ : state) benchmark::DoNotOptimize(CompiledCurve(*curve));
    CountEvaluations(state, KeysOf(state));
}
BENCHMARK(CompileCurve)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

// The model built in the same order, of the same keys.
void BuildForCompile(benchmark::State& state) {
    Random random(5);
    const auto keys = RisingKeys(KeysOf(state), random);
    const auto bezier = Bezier::create();
    for (auto _ : state) {
        auto curve = FCurve::create();
        for (const Keyframe& key : keys) curve->insertSegment(key, bezier);
        benchmark::DoNotOptimize(curve);
    }
    CountEvaluations(state, KeysOf(state));
}
BENCHMARK(BuildForCompile)->Arg(1000)->Arg(100000)->Unit(benchmark::kMillisecond);

// By each kind of lane that this processor has.
void CompiledLanes(benchmark::State& state, const Private::LaneSet* lanes) {
    Private::UseLanes(*lanes);
    Random random(3);
    const auto curve = BezierCurve(1000, random);
    MeasureBatch(state, *curve, Ascending(RandomAbscissae(LastX(*curve), random)));
}

const bool registered = [] {
    for (const Private::LaneSet* lanes : Private::AllLanes())
        benchmark::RegisterBenchmark((std::string("CompiledLanes/") + lanes->name).c_str(), CompiledLanes, lanes);
    return true;
}();

} // namespace
