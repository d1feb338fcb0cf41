// What a view asks for each time it draws: the line of a curve, also while keys are dragged, and what lies under the
// pointer.

#include "bench/Curves.h"

#include <cstdint>

using namespace Bench;

namespace {

CurveView Whole(const FCurve& curve) {
    Rectangle<double> box;
    GetInteriorExtents(curve, box);
    return {box.x, box.x + box.width, box.y, box.y + box.height, 1920, 1000};
}

std::shared_ptr<FCurve> Wave(std::int64_t keys) {
    Random random(1);
    auto curve = FCurve::create();
    const auto bezier = Bezier::create();
    for (std::int64_t i = 0; i < keys; ++i)
        curve->insertSegment(*Keyframe::create(static_cast<double>(i), random.between(-1, 1)), bezier);
    return curve;
}

// Every key is looked at.
void Line(benchmark::State& state) {
    const auto curve = Wave(state.range(0));
    const CurveView view = Whole(*curve);
    ViewPolyline line;
    for (auto _ : state) ViewLine(*curve, view, line);
    state.counters["points"] = static_cast<double>(line.points.size());
}
BENCHMARK(Line)->Arg(100)->Arg(2000)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);

// The overview knows the extents of them all. Views of all keys, and of fewer.
void LineFromOverview(benchmark::State& state) {
    const auto curve = Wave(state.range(0));
    CurveOverview overview(curve);
    CurveView view = Whole(*curve);
    view.right /= static_cast<double>(state.range(1));
    ViewPolyline line;
    ViewLine(overview, view, line);
    for (auto _ : state) ViewLine(overview, view, line);
    state.counters["points"] = static_cast<double>(line.points.size());
}
BENCHMARK(LineFromOverview)
    ->Args({100'000, 1})
    ->Args({1'000'000, 1})
    ->Args({1'000'000, 10})
    ->Args({1'000'000, 100})
    ->Args({1'000'000, 1000})
    ->Unit(benchmark::kMicrosecond);

void MakeOverview(benchmark::State& state) {
    const auto curve = Wave(state.range(0));
    double low = 0, high = 0;
    for (auto _ : state) benchmark::DoNotOptimize(CurveOverview(curve).getExtents(0, 1, low, high));
}
BENCHMARK(MakeOverview)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

// A step of a drag: a key moves, the line is drawn anew. The second number is how many keys move.
void DragStep(benchmark::State& state) {
    const auto curve = Wave(state.range(0));
    ObservedOverview overview(curve);
    const CurveView view = Whole(*curve);
    ViewPolyline line;
    ViewLine(overview, view, line);
    const auto first = curve->findSegment(static_cast<double>(state.range(0) / 2));
    double lift = 0.1;
    for (auto _ : state) {
        auto segment = first;
        for (std::int64_t i = 0; i < state.range(1); ++i, ++segment) {
            Keyframe& key = *segment->getLeftKey();
            key.setY(key.getY() + lift);
        }
        lift = -lift;
        ViewLine(overview, view, line);
    }
}
BENCHMARK(DragStep)->Args({100'000, 1})->Args({1'000'000, 1})->Args({1'000'000, 1000})->Unit(benchmark::kMicrosecond);

// One curve of so many keys, or a hundred that have them together; all in view, and the pointer on a key, or on none.
void PickIn(benchmark::State& state, std::size_t count, bool isOnKey) {
    const auto curves = FCurveContainer::create();
    for (std::size_t i = 0; i < count; ++i) curves->addCurve(Wave(state.range(0) / static_cast<std::int64_t>(count)));
    CurveView view = Whole(*curves->begin());
    if (!isOnKey) view.top = 1e6; // then all curves lie at the lower edge
    double x = 0.0;
    for (auto _ : state) {
        x = x > 1900.0 ? 10.0 : x + 37.0;
        benchmark::DoNotOptimize(Pick(*curves, view, {x, isOnKey ? 500.0 : 900.0}, 6.0));
    }
}
BENCHMARK_CAPTURE(PickIn, KeyOfOneCurve, 1, true)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(PickIn, NothingOfOneCurve, 1, false)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(PickIn, KeyOfAHundred, 100, true)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(PickIn, NothingOfAHundred, 100, false)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);

} // namespace
