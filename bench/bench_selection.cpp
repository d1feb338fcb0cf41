// Walking, selecting and clearing 100 curves of 10 000 keys, against the bare iteration over their segments and the
// bare writes of the property. Time per part that the walk shows (4 000 100 parts where tangents are used, 2 000 200
// where not); the bare iteration is counted over the same parts, so that the numbers of one column compare.
//
// Selecting and clearing allocate and free as much as everything else they do; the two directions are timed together,
// since what freeing costs depends on how the memory was taken.

#include "FCurveLib/FCurveLib.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cstddef>
#include <memory>

using namespace VEM_FN::FCurveLib;

namespace {

// Keeps freed memory, so that no run pays for another's returning it to the system.
const bool g_keepMemory = mallopt(M_TRIM_THRESHOLD, 1 << 30) != 0 && mallopt(M_MMAP_THRESHOLD, 1 << 30) != 0;

FCurveContainer& Curves(bool tangents) {
    static std::shared_ptr<FCurveContainer> containers[2];
    std::shared_ptr<FCurveContainer>& curves = containers[tangents ? 1 : 0];
    if (!curves) {
        curves = FCurveContainer::create();
        const auto kind = InterpolatorFactory::create(tangents ? "bezier()" : "linear()");
        for (int c = 0; c < 100; ++c) {
            auto curve = FCurve::create();
            for (int k = 0; k < 10000; ++k) {
                Keyframe key;
                key.set(k, k % 7);
                curve->insertSegment(key, kind);
            }
            curves->addCurve(curve);
        }
    }
    return *curves;
}

std::size_t CountParts(FCurveContainer& curves) {
    std::size_t count = 0;
    for (auto it = HitRecordIterator::begin(curves); it != HitRecordIterator::end(curves); ++it) ++count;
    return count;
}

// Writes the property into every part that the walk shows, by the parts' own setters.
void WriteAll(FCurveContainer& curves, bool tangents, const char* value) {
    for (FCurve& curve : curves) {
        curve.setProperty("fc_sel", value);
        for (Segment& segment : curve) {
            segment.setProperty("fc_sel", value);
            const auto key = segment.getRightKey();
            if (tangents && segment.getLeftKey()) segment.getOutTangent()->setProperty("fc_sel", value);
            if (tangents && key) segment.getInTangent()->setProperty("fc_sel", value);
            if (key) key->setProperty("fc_sel", value);
        }
    }
}

void SelectAll(Selection& selection, FCurveContainer& curves) {
    const auto end = HitRecordIterator::end(curves);
    for (auto it = HitRecordIterator::begin(curves); it != end; ++it) selection.select(*it);
}

template<class Run>
void Measure(benchmark::State& state, const Run& run) {
    const bool tangents = state.range(0) != 0;
    FCurveContainer& curves = Curves(tangents);
    const std::size_t parts = CountParts(curves);
    Selection selection(curves.getShared());
    for (auto _ : state) run(curves, selection, tangents);
    state.counters["per_part"] = benchmark::Counter(
        static_cast<double>(parts), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

#define FCURVELIB_MEASURE(name, ...)                                                                                   \
    void name(benchmark::State& state) {                                                                               \
        Measure(state, []([[maybe_unused]] FCurveContainer& curves, [[maybe_unused]] Selection& selection,             \
                          [[maybe_unused]] bool tangents) { __VA_ARGS__ });                                            \
    }                                                                                                                  \
    BENCHMARK(name)->Arg(0)->Arg(1)->ArgName("tangents")->Unit(benchmark::kMillisecond)

FCURVELIB_MEASURE(BareIteration, {
    std::size_t sum = 0;
    for (FCurve& curve : curves)
        for (Segment& segment : curve) sum += reinterpret_cast<std::size_t>(&segment);
    benchmark::DoNotOptimize(sum);
});

FCURVELIB_MEASURE(Walk, benchmark::DoNotOptimize(CountParts(curves)););

FCURVELIB_MEASURE(WalkWithRecords, {
    std::size_t sum = 0;
    const auto end = HitRecordIterator::end(curves);
    for (auto it = HitRecordIterator::begin(curves); it != end; ++it) sum += it->getType();
    benchmark::DoNotOptimize(sum);
});

FCURVELIB_MEASURE(WalkSelectedOfNone, {
    std::size_t count = 0;
    for (auto it = selection.begin(), end = selection.end(); it != end; ++it) ++count;
    benchmark::DoNotOptimize(count);
});

FCURVELIB_MEASURE(BareWritesAndErasures, {
    WriteAll(curves, tangents, "1");
    WriteAll(curves, tangents, "");
});

FCURVELIB_MEASURE(SelectAllAndClear, {
    SelectAll(selection, curves);
    selection.clear();
});

FCURVELIB_MEASURE(SelectAllAndClearObserved, {
    SelectionObserver observer;
    selection.subscribe(observer);
    SelectAll(selection, curves);
    selection.clear();
});

// What a panel costs: the first question after everything was selected, and one after each move of a key.
void ExamineAll(benchmark::State& state) {
    FCurveContainer& curves = Curves(true);
    Selection selection(curves.getShared());
    SelectAll(selection, curves);
    SelectionExaminer examiner(selection);
    for (auto _ : state) {
        examiner.invalidate();
        benchmark::DoNotOptimize(examiner.getKeyframes().count);
    }
    selection.clear();
}
BENCHMARK(ExamineAll)->Unit(benchmark::kMillisecond);

void ExamineAfterAMove(benchmark::State& state) {
    FCurveContainer& curves = Curves(true);
    Selection selection(curves.getShared());
    SelectAll(selection, curves);
    SelectionExaminer examiner(selection);
    Keyframe& key = *GetIndexedKeyframe(*curves.begin(), 5000);
    double y = 0.0;
    benchmark::DoNotOptimize(examiner.getKeyframes().count); // walks
    for (auto _ : state) {
        key.setY(y += 1.0);
        benchmark::DoNotOptimize(examiner.getKeyframes().count);
    }
    selection.clear();
}
BENCHMARK(ExamineAfterAMove)->Unit(benchmark::kMicrosecond);

} // namespace
