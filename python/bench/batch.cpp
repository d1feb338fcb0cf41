// What python/bench/arrays.py measures, in C++: 10^6 values of the curve in the file that is named, in one call.

#include <FCurveLib/FCurveLib.h>

#include <chrono>
#include <cstdio>
#include <vector>

using namespace VEM_FN::FCurveLib;

namespace {

template<class Function>
void Show(const char* what, const Function& function) {
    double best = 1e9;
    for (int run = 0; run < 15; ++run) {
        const auto start = std::chrono::steady_clock::now();
        function();
        const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
        if (took.count() < best) best = took.count();
    }
    std::printf("%-44s%10.3f ms\n", what, best);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const auto curves = FCurveContainer::create();
    FileStream file(argv[1], FileStream::Read, 0);
    ReadCurves(file, *curves);
    const FCurve& curve = *curves->begin();
    const CompiledCurve compiled(curve);

    constexpr std::size_t n = 1000000;
    std::vector<double> x(n);
    std::vector<double> y(n);
    for (std::size_t i = 0; i < n; ++i) x[i] = 999.0 * static_cast<double>(i) / (n - 1);
    Show("C++: compiled.eval(x, y, n)", [&] { compiled.eval(x.data(), y.data(), n); });
    Show("C++: curve.eval(x[i]) in a loop", [&] {
        for (std::size_t i = 0; i < n; ++i) y[i] = curve.eval(x[i]);
    });
}
