#pragma once

// Curves of sober values whose tangents have every type, flag and relation, made at random from a seed.

#include "support/Basics.h"
#include "support/Random.h"

namespace Test {

class RandomShape : public Random {
public:
    using Random::Random;

    std::shared_ptr<FCurve> make(const std::vector<const char*>& kinds) {
        auto curve = FCurve::create();
        const auto kind = [&] { return InterpolatorFactory::create(oneOf(kinds)); };
        double x = between(-10, 10);
        for (int i = 2 + below(7); i > 0; --i) {
            Keyframe key;
            key.set(x, below(4) == 0 ? 2.0 : between(-5, 5));
            key.setBreakdown(below(5) == 0);
            curve->insertSegment(key, kind());
            x += below(6) == 0 ? 0.01 : between(0.5, 5);
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

private:
    void shape(Tangent& tangent, double side) {
        tangent.setType(static_cast<std::uint8_t>(below(7)));
        tangent.setWeighted(below(2) == 0);
        tangent.set(side * between(0, 4), between(-4, 4));
        tangent.setWeightLocked(below(4) == 0);
    }
};

} // namespace Test
