// Saving and loading a curve of 10^6 keys, beside building it in memory.

#include "FCurveLib/FCurveLib.h"

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <type_traits>

using namespace VEM_FN::FCurveLib;

namespace {

constexpr int kKeys = 1000000;

// One sample a frame, joined by straight lines, as motion capture has it.
std::shared_ptr<FCurve> Build(const std::shared_ptr<Interpolator>& kind) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> value(-180, 180);
    auto curve = FCurve::create();
    Keyframe key;
    for (int i = 0; i < kKeys; ++i) {
        key.set(i, value(random));
        curve->insertSegment(key, kind);
    }
    return curve;
}

const FCurve& Straight() {
    static const std::shared_ptr<FCurve> curve = Build(Linear::create());
    return *curve;
}

// Every handle set by hand.
const FCurve& Shaped() {
    static const std::shared_ptr<FCurve> curve = [] {
        auto shaped = Build(Bezier::create());
        std::mt19937_64 random(2);
        std::uniform_real_distribution<double> slope(-5, 5);
        for (Segment& segment : *shaped) {
            segment.getOutTangent()->setY(slope(random));
            segment.getInTangent()->setY(slope(random));
        }
        return shaped;
    }();
    return *curve;
}

using Source = const FCurve& (*)();

void CountKeys(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * kKeys);
}

void BuildInMemory(benchmark::State& state) {
    const auto kind = Linear::create();
    for (auto _ : state) {
        auto curve = Build(kind);
        benchmark::DoNotOptimize(curve);
        state.PauseTiming();
        curve.reset();
        state.ResumeTiming();
    }
    CountKeys(state);
}

// The destination of one save, and the source of one load.
struct InMemory {
    explicit InMemory(const std::string&) {}
    MemoryStream stream;
};
struct InFile {
    explicit InFile(const std::string& path)
        : stream(path.c_str(), FileStream::ReadWrite, File::Create | File::Truncate) {}
    FileStream stream;
};

std::string TemporaryPath() {
    return (std::filesystem::temp_directory_path() / ("fcurvelib_bench_" + std::to_string(::getpid()))).string();
}

template<class Place>
void Save(benchmark::State& state, const char* format, Source source) {
    const FCurve& curve = source();
    const std::string path = TemporaryPath();
    int size = 0;
    for (auto _ : state) {
        auto place = std::make_unique<Place>(path);
        WriteCurve(curve, place->stream, format);
        size = place->stream.getPosition();
        if constexpr (std::is_same_v<Place, InFile>) place.reset(); // closing is part of saving
        state.PauseTiming();
        place.reset();
        state.ResumeTiming();
    }
    std::remove(path.c_str());
    CountKeys(state);
    state.counters["bytes per key"] = static_cast<double>(size) / kKeys;
}

template<class Place>
void Load(benchmark::State& state, const char* format, Source source) {
    const std::string path = TemporaryPath();
    Place place(path);
    WriteCurve(source(), place.stream, format);
    for (auto _ : state) {
        place.stream.setPosition(0);
        const auto curve = FCurve::create();
        ReadCurve(place.stream, format, *curve);
        state.PauseTiming();
        curve->clear();
        state.ResumeTiming();
    }
    std::remove(path.c_str());
    CountKeys(state);
}

// The formats without a writer: the same keys as they are written by hand and by scripts.
std::string Document(const std::string& format) {
    std::string values;
    for (const Segment& segment : Straight()) {
        const auto key = segment.getRightKey();
        if (!key) continue;
        if (format == "text") values += "key " + std::to_string(key->getX()) + ' ';
        if (format == "hchan") values += std::to_string(key->getX()) + ' ';
        values += std::to_string(key->getY()) + (format == "hClip" ? ' ' : '\n');
    }
    if (format == "text") return "fcurvetext 1.0\ncurve a {\n" + values + "}\n";
    if (format == "hchan") return values;
    return "{ tracklength = " + std::to_string(kKeys) + " { name = a data = " + values + "} }";
}

void LoadText(benchmark::State& state, const char* format) {
    const std::string document = Document(format);
    for (auto _ : state) {
        const auto curve = FCurve::create();
        ReadFCurveFromString(document, format, *curve);
        state.PauseTiming();
        curve->clear();
        state.ResumeTiming();
    }
    CountKeys(state);
    state.counters["bytes per key"] = static_cast<double>(document.size()) / kKeys;
}

constexpr auto SaveToMemory = &Save<InMemory>;
constexpr auto SaveToFile = &Save<InFile>;
constexpr auto LoadFromMemory = &Load<InMemory>;
constexpr auto LoadFromFile = &Load<InFile>;

BENCHMARK(BuildInMemory)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SaveToMemory, binary, "binary", &Straight)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadFromMemory, binary, "binary", &Straight)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SaveToFile, binary, "binary", &Straight)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadFromFile, binary, "binary", &Straight)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SaveToFile, binary_shaped, "binary", &Shaped)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadFromFile, binary_shaped, "binary", &Shaped)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(SaveToFile, xml, "xml", &Straight)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadFromFile, xml, "xml", &Straight)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadText, text, "text")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadText, hchan, "hchan")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(LoadText, hClip, "hClip")->Unit(benchmark::kMillisecond);

} // namespace
