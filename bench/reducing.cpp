// Prints the table of docs/reducing.md: how many keys are left of sampled curves, and how far from the samples the
// largest error is. Each argument is a file that the library reads; noise is added to them.
//
// Compared are ways that share no code with the library's: greedy removal of the key that is missed least, and where
// there are few samples the best partition, by dynamic programming. Both keep keys on samples, with handles of a third
// fitted between each two of them alone.

#include "FCurveLib/FCurveLib.h"
#include "tests/tools/Partitions.h" // internal: the best partition

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

using namespace VEM_FN::FCurveLib;
using Test::Samples;

namespace {

struct Data {
    std::string name;
    Samples samples;
    double range;
};

// About normal, and the same numbers with every compiler.
double Normal(std::mt19937& engine) {
    double sum = -6.0;
    for (int i = 0; i < 12; ++i) sum += static_cast<double>(engine()) / 4294967296.0;
    return sum;
}

void AddCurves(const FCurveContainer& container, const std::string& file, std::vector<Data>& data) {
    for (const FCurve& curve : container) {
        Data d{file + " " + curve.getName(), {}, 0.0};
        SampleCurveInterior(curve, 1.0, d.samples);
        if (d.samples.size() > 2) data.push_back(d);
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
    std::mt19937 engine(1);
    Data white{"noise", {}, 0.0}, walk{"random walk", {}, 0.0}, wave{"wave with noise", {}, 0.0};
    double sum = 0.0;
    for (int i = 0; i < 200; ++i) {
        const double x = i;
        white.samples.emplace_back(x, Normal(engine));
        walk.samples.emplace_back(x, sum += Normal(engine));
        wave.samples.emplace_back(x, std::sin(x / 15.0) + 0.01 * Normal(engine));
    }
    for (const Data& d : {white, walk, wave}) data.push_back(d);

    for (Data& d : data) {
        double low = HUGE_VAL, high = -HUGE_VAL;
        for (const auto& s : d.samples) low = std::min(low, s.y), high = std::max(high, s.y);
        d.range = high - low;
        for (const double percent : {0.1, 1.0, 5.0}) {
            const double tolerance = percent / 100.0 * d.range;
            std::printf("| %s | %zu | %g %% |", d.name.c_str(), d.samples.size(), percent);
            for (const auto handles : {FitOptions::Thirds, FitOptions::Weighted})
                for (const auto keys : {FitOptions::Smooth, FitOptions::Broken}) {
                    FitOptions options;
                    options.handles = handles;
                    options.keys = keys;
                    const FitReport report = FitCurve(d.samples, tolerance, options).report;
                    std::printf(" %zu (%.2f %%)%s |", report.keysAfter,
                                d.range > 0 ? 100 * report.error / d.range : 0.0, report.withinTolerance ? "" : "!");
                }
            std::printf(" %zu | %zu |", Test::GreedySmoothRemoval(d.samples, tolerance),
                        Test::GreedyRemoval(d.samples, tolerance));
            if (d.samples.size() <= 260) std::printf(" %zu", Test::BestPartition(d.samples, tolerance));
            std::printf(" |\n");
        }
    }
}
