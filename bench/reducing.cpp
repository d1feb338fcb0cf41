// Prints the table of docs/reducing.md: how many keys are left of sampled curves, and how far from the samples the
// largest error is. Each argument is a file that the library reads; noise is added to them.
//
// Compared are ways that share no code with the library's: greedy removal of the key that is missed least, and where
// there are few samples the best partition, by dynamic programming. Both keep keys on samples, with handles of a third
// fitted between each two of them alone.

#include "FCurveLib/FCurveLib.h"
#include "GreedyRemoval.h"
#include "Signals.h"
#include "tests/tools/Partitions.h" // internal: the best partition

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

using namespace VEM_FN::FCurveLib;
using Test::Samples;

namespace {

struct Data {
    std::string name;
    Samples samples;
};

void AddCurves(const FCurveContainer& container, const std::string& file, std::vector<Data>& data) {
    for (const FCurve& curve : container) {
        Data d{file + " " + curve.getName(), {}};
        SampleCurveInterior(curve, 1.0, d.samples);
        if (d.samples.size() > 2 && Bench::RangeOf(d.samples) > 0.0) data.push_back(d);
    }
}

} // namespace

int main(int count, char** arguments) {
    std::vector<Data> data;
    for (int i = 1; i < count; ++i) {
        const std::string path = arguments[i];
        auto container = FCurveContainer::create();
        try {
            FileStream in(path.c_str(), FileStream::Read, 0);
            ReadCurves(in, *container);
        } catch (const std::exception& e) {
            std::fprintf(stderr, "%s: %s\n", path.c_str(), e.what());
            return 1;
        }
        AddCurves(*container, path.substr(path.rfind('/') + 1), data);
    }
    for (auto& [name, samples] : Bench::Signals(200)) data.push_back({name, std::move(samples)});

    std::printf("| data | tolerance | samples | smooth | smooth, weighted | greedy, smooth | broken | broken, weighted "
                "| greedy, broken | best partition |\n| --- | --- | --- | --- | --- | --- | --- | --- | --- | --- |\n");
    for (const Data& d : data)
        for (const double percent : {0.1, 1.0, 5.0}) {
            const double range = Bench::RangeOf(d.samples);
            const double tolerance = percent / 100.0 * range;
            const auto fitted = [&](FitOptions::Keys keys) {
                for (const auto handles : {FitOptions::Thirds, FitOptions::Weighted}) {
                    FitOptions options;
                    options.handles = handles;
                    options.keys = keys;
                    const FitReport report = FitCurve(d.samples, tolerance, options).report;
                    std::printf(" %zu (%.2f %%)%s |", report.keysAfter, 100.0 * report.error / range,
                                report.withinTolerance ? "" : "!");
                }
            };
            std::printf("| %s | %g %% | %zu |", d.name.c_str(), percent, d.samples.size());
            fitted(FitOptions::Smooth);
            std::printf(" %zu |", Bench::GreedySmoothRemoval(d.samples, tolerance));
            fitted(FitOptions::Broken);
            std::printf(" %zu | ", Bench::GreedyRemoval(d.samples, tolerance));
            if (d.samples.size() <= 260) std::printf("%zu", Test::BestPartition(d.samples, tolerance));
            std::printf(" |\n");
        }
}
