// One evaluation by every kind, on curves of 10 and 1 000 keys, and a formula beside the same expression in C++.

#include "FCurveLib/FCurveLib.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace VEM_FN::FCurveLib;

namespace {

constexpr std::size_t looks = 1 << 14;

// Keys at random distances, every segment of the kind; what repeats a curve does it before and after Bezier segments.
std::shared_ptr<FCurve> CurveOf(const char* kind, std::int64_t keys, bool atEnds) {
    std::mt19937_64 random(1);
    const auto between = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    auto curve = FCurve::create();
    const auto interpolator = InterpolatorFactory::create(kind);
    const auto inside = atEnds ? InterpolatorFactory::create("bezier()") : interpolator;
    (*curve->begin()).setInterpolator(interpolator);
    Keyframe key;
    for (std::int64_t i = 0; i < keys; ++i) {
        key.set(key.getX() + between(1, 10), between(-5, 5));
        curve->insertSegment(key, i + 1 < keys ? inside : interpolator);
    }
    for (Segment& segment : *curve) {
        const auto left = segment.getLeftKey();
        const auto right = segment.getRightKey();
        if (!left || !right) continue;
        const double span = right->getX() - left->getX();
        segment.getOutTangent()->setWeighted(true);
        segment.getInTangent()->setWeighted(true);
        segment.getOutTangent()->set(span * between(0.15, 0.45), between(-2, 2));
        segment.getInTangent()->set(-span * between(0.15, 0.45), between(-2, 2));
    }
    return curve;
}

void Eval(benchmark::State& state, const char* kind, bool atEnds) {
    const auto curve = CurveOf(kind, state.range(0), atEnds);
    const double first = (*curve->begin()).getRightKey()->getX();
    const double last = (*std::prev(curve->end())).getLeftKey()->getX();
    std::mt19937_64 random(2);
    std::uniform_real_distribution<double> inside(first, last);
    std::uniform_real_distribution<double> behind(last, last + 20 * (last - first));
    std::vector<double> xs(looks);
    for (double& x : xs) x = atEnds ? behind(random) : inside(random);
    for (auto _ : state) {
        double sum = 0;
        for (const double x : xs) sum += curve->eval(x);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(looks));
}

constexpr char formula[] = "sin(x*0.1)*10 + 3*x**2 - abs(x)";

double ByHand(double x) {
    return std::sin(x * 0.1) * 10 + 3 * (x * x) - std::abs(x);
}
// Behind a pointer, as an interpolator is: a loop that the compiler inlines would be another measurement.
double (*volatile byHand)(double) = &ByHand;

std::vector<double> Abscissae() {
    std::mt19937_64 random(3);
    std::vector<double> xs(looks);
    for (double& x : xs) x = std::uniform_real_distribution<double>(-500, 500)(random);
    return xs;
}

template<class Function>
void Measure(benchmark::State& state, const Function& function) {
    const auto xs = Abscissae();
    for (auto _ : state) {
        double sum = 0;
        for (const double x : xs) sum += function(x);
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(looks));
}

void FormulaByHand(benchmark::State& state) {
    Measure(state, [function = byHand](double x) { return function(x); });
}
BENCHMARK(FormulaByHand);

void FormulaParsed(benchmark::State& state) {
    const auto interpolator = InterpolatorFactory::create(formula);
    const Segment segment;
    Measure(state, [&](double x) { return interpolator->eval(x, segment); });
}
BENCHMARK(FormulaParsed);

void FormulaDerivative(benchmark::State& state) {
    const auto interpolator = InterpolatorFactory::create(formula);
    const Segment segment;
    Measure(state, [&](double x) { return interpolator->getFirstDerivative(x, segment); });
}
BENCHMARK(FormulaDerivative);

void FormulaParsing(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(InterpolatorFactory::create(formula));
}
BENCHMARK(FormulaParsing);

void RegisterKinds() {
    for (auto kind = InterpolatorFactory::begin(); kind != InterpolatorFactory::end(); ++kind) {
        const char* const text = kind->first.c_str();
        const bool atEnds = kind->first == "cycle()" || kind->first == "cycle_offset()" || kind->first == "mirror()";
        benchmark::RegisterBenchmark(("Eval/" + kind->first).c_str(), Eval, text, atEnds)->Arg(10)->Arg(1000);
    }
    for (const char* text : {"2.5", formula, "cycle() + 2*x"})
        benchmark::RegisterBenchmark((std::string("Eval/") + text).c_str(), Eval, text, *text == 'c')
            ->Arg(10)
            ->Arg(1000);
}

} // namespace

int main(int argc, char** argv) {
    RegisterKinds();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
