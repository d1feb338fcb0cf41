#pragma once

// Samples to be fitted, the same with every compiler.

#include "FCurveLib/Vector2D.h"

#include <cmath>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Bench {

using Samples = std::vector<VEM_FN::FCurveLib::Vector2D<double>>;

// About normal.
inline double Normal(std::mt19937& engine) {
    double sum = -6.0;
    for (int i = 0; i < 12; ++i) sum += static_cast<double>(engine()) / 4294967296.0;
    return sum;
}

// Each as many samples as asked for, one a frame.
inline std::vector<std::pair<std::string, Samples>> Signals(int count) {
    Samples white, walk, wave, holds, motion;
    std::mt19937 engine(1), other(2);
    double sum = 0.0, level = 0.0, speed = 0.0, place = 0.0;
    for (int i = 0; i < count; ++i) {
        const double x = i;
        white.emplace_back(x, Normal(engine));
        walk.emplace_back(x, sum += Normal(engine));
        wave.emplace_back(x, std::sin(x / 15.0) + 0.01 * Normal(engine));
        if (other() % 15 == 0) level = std::round(3.0 * Normal(other));
        holds.emplace_back(x, level);
        speed = 0.9 * speed + 0.1 * Normal(other);
        motion.emplace_back(x, place = 0.999 * place + speed);
    }
    return {{"noise", white}, {"random walk", walk}, {"wave with noise", wave}, {"holds", holds}, {"motion", motion}};
}

inline double RangeOf(const Samples& samples) {
    double low = HUGE_VAL, high = -HUGE_VAL;
    for (const auto& sample : samples) low = std::fmin(low, sample.y), high = std::fmax(high, sample.y);
    return high - low;
}

} // namespace Bench
