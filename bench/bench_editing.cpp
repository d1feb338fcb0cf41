// What an editor does to keys: moving and scaling some of them among many, copying and pasting, setting, comparing.
// Time per key that is edited; nobody observes the curves.

#include "FCurveLib/FCurveLib.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

using namespace VEM_FN::FCurveLib;

namespace {

constexpr int kKeys = 1'000'000;

// A key a frame, with smooth tangents.
std::shared_ptr<FCurve> MakeCurve() {
    auto curve = FCurve::create();
    const auto bezier = Bezier::create();
    for (int i = 0; i < kKeys; ++i) curve->insertSegment(*Keyframe::create(i, std::sin(i)), bezier);
    for (const KeyView key : Keys(*curve))
        for (Tangent* tangent : {&key.getInTangent(), &key.getOutTangent()}) tangent->setType(Tangent::Smooth);
    return curve;
}
FCurve& Curve() {
    static const std::shared_ptr<FCurve> curve = MakeCurve();
    return *curve;
}

KeyGroup GroupOf(std::int64_t keys) {
    const double first = kKeys / 2.0;
    return KeyGroup(Curve(), first, first + static_cast<double>(keys) - 1.0);
}

void CountKeys(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void MoveSteps(benchmark::State& state) {
    KeyGroup group = GroupOf(state.range(0));
    double way = 0.0;
    for (auto _ : state) {
        way = way == 0.25 ? 0.5 : 0.25;
        MoveKeys(group, {way, way});
    }
    MoveKeys(group, {});
    CountKeys(state);
}
BENCHMARK(MoveSteps)->Arg(10)->Arg(1000)->Arg(100000);

void ScaleSteps(benchmark::State& state) {
    KeyGroup group = GroupOf(state.range(0));
    double factor = 1.0;
    for (auto _ : state) {
        factor = factor == 0.75 ? 0.5 : 0.75;
        ScaleKeys(group, group.getAnchor(), {factor, factor});
    }
    ScaleKeys(group, group.getAnchor(), {1.0, 1.0});
    CountKeys(state);
}
BENCHMARK(ScaleSteps)->Arg(10)->Arg(1000)->Arg(100000);

void CopyAndPaste(benchmark::State& state) {
    const KeyGroup group = GroupOf(state.range(0));
    const std::vector<std::shared_ptr<FCurve>> target{FCurve::createCopy(Curve())};
    PasteOptions options;
    options.mode = PasteOptions::Replace;
    for (auto _ : state) PasteKeys(CopyKeys(group), target, options);
    CountKeys(state);
}
BENCHMARK(CopyAndPaste)->Arg(10)->Arg(1000)->Arg(100000);

void SetKeys(benchmark::State& state) {
    const auto curve = FCurve::createCopy(Curve());
    double x = 0.5;
    for (auto _ : state) {
        benchmark::DoNotOptimize(SetKey(*curve, x, 1.0).key.get());
        x = std::fmod(x + 7.01, kKeys);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(SetKeys);

void DiffOfCopies(benchmark::State& state) {
    const auto copy = FCurve::createCopy(Curve());
    for (auto _ : state) benchmark::DoNotOptimize(Diff(Curve(), *copy).largest);
    state.SetItemsProcessed(state.iterations() * kKeys);
}
BENCHMARK(DiffOfCopies);

} // namespace
