// Evaluation, building and memory of whole curves, against K: the Bezier kernel alone.

#include "Curves.h"
#include "interp/BezierMath.h" // internal: the kernel that times are given in

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <random>
#include <vector>

using namespace Bench;

namespace {

void BezierKernel(benchmark::State& state) {
    Random random(1);
    std::vector<Private::BezierArgs> segments(kLooks);
    std::vector<double> xs(kLooks);
    Vector2D<double> at;
    for (std::size_t i = 0; i < kLooks; ++i) {
        const double span = random.between(1, 10);
        const double rise = random.between(0, 5);
        segments[i] = {at.x,
                       at.y,
                       at.x + span,
                       at.y + rise,
                       span * HandleShare(random),
                       rise * random.between(0, 0.5),
                       -span * HandleShare(random),
                       -rise * random.between(0, 0.5)};
        xs[i] = at.x + span * random.between(0, 1);
        at = at + Vector2D<double>(span, rise);
    }
    for (auto _ : state) {
        double sum = 0;
        for (std::size_t i = 0; i < kLooks; ++i) sum += Private::EvalBezierY(xs[i], segments[i]);
        benchmark::DoNotOptimize(sum);
    }
    CountEvaluations(state, kLooks);
}
BENCHMARK(BezierKernel);

void EvalRandomX(benchmark::State& state) {
    Random random(2);
    const auto curve = BezierCurve(static_cast<std::size_t>(state.range(0)), random);
    const auto xs = RandomAbscissae(LastX(*curve), random);
    for (auto _ : state) {
        double sum = 0;
        for (const double x : xs) sum += curve->eval(x);
        benchmark::DoNotOptimize(sum);
    }
    CountEvaluations(state, kLooks);
}
BENCHMARK(EvalRandomX)->Arg(10)->Arg(1000)->Arg(100000);

void EvalPlayback(benchmark::State& state) {
    Random random(3);
    const auto curve = BezierCurve(static_cast<std::size_t>(state.range(0)), random);
    auto xs = RandomAbscissae(LastX(*curve), random);
    std::sort(xs.begin(), xs.end());
    for (auto _ : state) {
        double sum = 0;
        for (const double x : xs) sum += curve->eval(x);
        benchmark::DoNotOptimize(sum);
    }
    CountEvaluations(state, kLooks);
}
BENCHMARK(EvalPlayback)->Arg(1000);

// 10 000 curves of 50 keys.
using Scene = std::vector<std::shared_ptr<FCurve>>;

Scene FreshScene(Random& random) {
    Scene curves;
    for (int i = 0; i < 10000; ++i) curves.push_back(BezierCurve(50, random));
    return curves;
}

// Half of the keys replaced, here and there: the parts of a curve lie wherever there was room.
void Wear(Scene& curves, Random& random) {
    const auto bezier = Bezier::create();
    for (std::size_t i = 0; i < curves.size() * 25; ++i) {
        FCurve& losing = *curves[static_cast<std::size_t>(random.between(0, static_cast<double>(curves.size())))];
        FCurve& gaining = *curves[static_cast<std::size_t>(random.between(0, static_cast<double>(curves.size())))];
        losing.removeSegment(losing.findSegment(random.between(0, LastX(losing))));
        Keyframe key;
        key.set(random.between(0, LastX(gaining)), random.between(0, 50));
        gaining.insertSegment(key, bezier);
    }
}

// All curves of a scene at one frame, then at the next: the median of several layouts of the heap, every other one
// worn. One layout alone may be lucky.
void EvalPose(benchmark::State& state) {
    std::vector<double> seconds;
    for (unsigned layout = 0; layout < 7; ++layout) {
        Random random(4 + layout);
        Scene curves = FreshScene(random);
        if (layout % 2 != 0) Wear(curves, random);
        constexpr int frames = 100;
        double sum = 0;
        const auto start = std::chrono::steady_clock::now();
        for (int frame = 0; frame < frames; ++frame)
            for (const auto& curve : curves) sum += curve->eval(frame);
        benchmark::DoNotOptimize(sum);
        seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / frames);
    }
    std::sort(seconds.begin(), seconds.end());
    for (auto _ : state) state.SetIterationTime(seconds[seconds.size() / 2]);
    state.counters["best"] = seconds.front() / 1e4;
    state.counters["worst"] = seconds.back() / 1e4;
    CountEvaluations(state, 10000);
}
BENCHMARK(EvalPose)->UseManualTime()->Iterations(1);

enum Order { Ascending, Descending, Shuffled };

void Build(benchmark::State& state, Order order) {
    Random random(5);
    auto keys = RisingKeys(static_cast<std::size_t>(state.range(0)), random);
    std::vector<const Keyframe*> sequence;
    for (const Keyframe& key : keys) sequence.push_back(&key);
    if (order == Descending) std::reverse(sequence.begin(), sequence.end());
    if (order == Shuffled) std::shuffle(sequence.begin(), sequence.end(), random.engine());
    const auto bezier = Bezier::create();
    for (auto _ : state) {
        auto curve = FCurve::create();
        for (const Keyframe* key : sequence) curve->insertSegment(*key, bezier);
        state.PauseTiming();
        curve.reset();
        state.ResumeTiming();
    }
    CountEvaluations(state, sequence.size());
}
BENCHMARK_CAPTURE(Build, ascending, Ascending)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Build, descending, Descending)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Build, random, Shuffled)->Arg(100000)->Unit(benchmark::kMillisecond);

// Insertions at random places of a curve that has that many keys already; a thousand of them barely make it larger.
void InsertInto(benchmark::State& state) {
    Random random(6);
    const auto curve = BezierCurve(static_cast<std::size_t>(state.range(0)), random);
    const double end = LastX(*curve);
    const auto bezier = Bezier::create();
    constexpr std::size_t count = 1000;
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<Keyframe> keys(count);
        for (Keyframe& key : keys) key.set(random.between(0, end), 1);
        state.ResumeTiming();
        for (const Keyframe& key : keys) benchmark::DoNotOptimize(curve->insertSegment(key, bezier));
        state.PauseTiming();
        for (const Keyframe& key : keys) curve->removeSegment(curve->findSegment(key.getX()));
        state.ResumeTiming();
    }
    CountEvaluations(state, count);
}
BENCHMARK(InsertInto)->Arg(10000)->Arg(1000000);

void DragKey(benchmark::State& state) {
    Random random(7);
    const auto curve = BezierCurve(static_cast<std::size_t>(state.range(0)), random);
    const auto key = curve->findSegment(LastX(*curve) / 2)->getLeftKey();
    const Vector2D<double> home = key->get();
    double step = 0;
    for (auto _ : state) {
        step = step < 0.5 ? step + 1e-3 : 0;
        key->set(home.x + step, home.y + step);
    }
    CountEvaluations(state, 1);
}
BENCHMARK(DragKey)->Arg(1000)->Arg(100000);

void Polyline(benchmark::State& state) {
    Random random(8);
    const auto curve = BezierCurve(1000, random);
    std::vector<Vector2D<double>> points;
    for (auto _ : state)
        for (const Segment& segment : *curve) {
            const auto left = segment.getLeftKey();
            const auto right = segment.getRightKey();
            if (left && right)
                segment.getInterpolator()->computePolyline(segment, left->getX(), right->getX(), 32, points);
        }
    CountEvaluations(state, 999 * 32);
}
BENCHMARK(Polyline);

// Bytes that a key costs, default tangents, no properties: what the heap holds more after building than before.
void BytesPerKey(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    Random random(9);
    const auto keys = RisingKeys(count, random);
    const auto bezier = Bezier::create();
    double bytes = 0;
    for (auto _ : state) {
        const auto held = [] {
            const struct mallinfo2 info = mallinfo2();
            return static_cast<double>(info.uordblks + info.hblkhd);
        };
        const double before = held();
        auto curve = FCurve::create();
        for (const Keyframe& key : keys) curve->insertSegment(key, bezier);
        bytes = (held() - before) / static_cast<double>(count);
        benchmark::DoNotOptimize(curve);
    }
    state.counters["bytes/key"] = bytes;
}
BENCHMARK(BytesPerKey)->Arg(1000000)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
