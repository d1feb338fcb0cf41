#pragma once

// Curves of sober values whose tangents have every type, flag and relation, made at random from a seed.

#include "FCurveLib/FCurveLib.h"

#include <random>
#include <vector>

namespace Test {

using namespace VEM_FN::FCurveLib;

class RandomShape {
public:
    explicit RandomShape(unsigned seed) : m_random(seed) {}

    std::shared_ptr<FCurve> make(const std::vector<const char*>& kinds) {
        auto curve = FCurve::create();
        const auto kind = [&] {
            return InterpolatorFactory::create(kinds[static_cast<std::size_t>(below(static_cast<int>(kinds.size())))]);
        };
        double x = number(-10, 10);
        for (int i = 2 + below(7); i > 0; --i) {
            Keyframe key;
            key.set(x, below(4) == 0 ? 2.0 : number(-5, 5));
            key.setBreakdown(below(5) == 0);
            curve->insertSegment(key, kind());
            x += below(6) == 0 ? 0.01 : number(0.5, 5);
        }
        curve->begin()->setInterpolator(kind());
        for (Segment& segment : *curve) {
            shape(*segment.getInTangent(), -1);
            shape(*segment.getOutTangent(), 1);
        }
        for (Segment& segment : *curve)
            if (const auto key = segment.getRightKey()) key->setTangentsUnified(below(2) == 0);
        return curve;
    }

    double number(double low, double high) { return std::uniform_real_distribution<double>(low, high)(m_random); }
    int below(int count) { return std::uniform_int_distribution<int>(0, count - 1)(m_random); }

private:
    void shape(Tangent& tangent, double side) {
        tangent.setType(static_cast<std::uint8_t>(below(7)));
        tangent.setWeighted(below(2) == 0);
        tangent.set(side * number(0, 4), number(-4, 4));
        tangent.setWeightLocked(below(4) == 0);
    }

    std::mt19937 m_random;
};

} // namespace Test
