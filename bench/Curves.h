#pragma once

// The curves that are measured: the same ones in every program, so that their figures can be compared.

#include "FCurveLib/FCurveLib.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

namespace Bench {

using namespace VEM_FN::FCurveLib;

class Random {
public:
    explicit Random(unsigned seed) : m_engine(seed) {}
    double between(double low, double high) { return std::uniform_real_distribution<double>(low, high)(m_engine); }
    std::mt19937_64& engine() { return m_engine; }

private:
    std::mt19937_64 m_engine;
};

// Handles of 0.15 to 0.45 of the span: the cubic has three terms, and its closed form takes the long way.
inline double HandleShare(Random& random) {
    return random.between(0.15, 0.45);
}

inline std::vector<Keyframe> RisingKeys(std::size_t count, Random& random) {
    std::vector<Keyframe> keys(count);
    Vector2D<double> at;
    for (Keyframe& key : keys) {
        key.set(at);
        at.x += random.between(1, 10);
        at.y += random.between(0, 5);
    }
    return keys;
}

inline std::shared_ptr<FCurve> BezierCurve(std::size_t count, Random& random) {
    auto curve = FCurve::create();
    const auto bezier = Bezier::create();
    for (const Keyframe& key : RisingKeys(count, random)) curve->insertSegment(key, bezier);
    for (Segment& segment : *curve) {
        const auto left = segment.getLeftKey();
        const auto right = segment.getRightKey();
        if (!left || !right) continue;
        const double span = right->getX() - left->getX();
        const double rise = right->getY() - left->getY();
        segment.getOutTangent()->setWeighted(true);
        segment.getInTangent()->setWeighted(true);
        segment.getOutTangent()->set(span * HandleShare(random), rise * random.between(0, 0.5));
        segment.getInTangent()->set(-span * HandleShare(random), -rise * random.between(0, 0.5));
    }
    return curve;
}

inline double LastX(const FCurve& curve) {
    return std::prev(curve.end())->getLeftKey()->getX();
}

inline constexpr std::size_t kLooks = 1 << 16;

inline std::vector<double> RandomAbscissae(double end, Random& random) {
    std::vector<double> xs(kLooks);
    for (double& x : xs) x = random.between(0, end);
    return xs;
}

inline void CountEvaluations(benchmark::State& state, std::size_t perIteration) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(perIteration));
}

} // namespace Bench
