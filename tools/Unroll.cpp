#include "FCurveLib/Unroll.h"

#include "FCurveLib/FCurve.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Tolerance.h"
#include "model/Raw.h"
#include "tools/QuietEdit.h"

#include <array>
#include <cmath>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Raw;
using Private::Read;

namespace {

std::vector<Keyframe*> KeysOf(FCurve& curve) {
    std::vector<Keyframe*> keys;
    for (Segment& segment : curve)
        if (Keyframe* key = Read::leftKey(segment)) keys.push_back(key);
    return keys;
}

constexpr double kRounding = 1e-9; // turns by which one angle counts as no nearer than another

// The same angle, whole turns apart, that is nearest to another; of two that are as near, the one with fewer turns.
double Nearest(double angle, double to, double turn) noexcept {
    const double way = (to - angle) / turn;
    const double turns = std::copysign(std::ceil(std::abs(way) - 0.5 - kRounding), way);
    const double moved = angle + turns * turn;
    return turns == 0.0 || !std::isfinite(moved) ? angle : moved;
}

// What becomes of one channel's key.
struct Move {
    double y;
    bool reflected;
};

// Fixed handles are turned over; the other types compute theirs from the keys.
bool Apply(FCurve& curve, const std::vector<Keyframe*>& keys, const std::vector<Move>& moves) {
    bool changed = false;
    Private::QuietEdit(curve, [&] {
        for (std::size_t i = 0; i < keys.size(); ++i) {
            if (moves[i].reflected) {
                Tangent& in = *Read::inTangent(*Read::leftSegment(*keys[i]));
                Tangent& out = *Read::outTangent(*Read::rightSegment(*keys[i]));
                for (Tangent* tangent : {&in, &out}) Raw::setHandle(*tangent, tangent->getX(), -tangent->getY());
            }
            changed = changed || moves[i].reflected || moves[i].y != keys[i]->getY();
            keys[i]->setY(moves[i].y);
        }
        return changed;
    });
    return changed;
}

} // namespace

std::size_t UnrollAngles(FCurve& curve, double turn) {
    const std::vector<Keyframe*> keys = KeysOf(curve);
    if (!(turn > 0.0) || !std::isfinite(turn) || keys.size() < 2) return 0;
    std::vector<Move> moves{{keys.front()->getY(), false}};
    std::size_t moved = 0;
    for (std::size_t i = 1; i < keys.size(); ++i) {
        moves.push_back({Nearest(keys[i]->getY(), moves.back().y, turn), false});
        if (moves.back().y != keys[i]->getY()) ++moved;
    }
    Apply(curve, keys, moves);
    return moved;
}

std::size_t UnrollAngles(FCurve& x, FCurve& y, FCurve& z, RotationOrder order, double turn) {
    if (order > ROTATION_ZYX || &x == &y || &y == &z || &x == &z || !(turn > 0.0) || !std::isfinite(turn)) return 0;
    static constexpr std::array<std::size_t, 6> second{1, 2, 0, 2, 0, 1}; // by order
    const std::array<FCurve*, 3> curves{&x, &y, &z};
    std::array<std::vector<Keyframe*>, 3> keys;
    for (std::size_t c = 0; c < 3; ++c) keys[c] = KeysOf(*curves[c]);
    const std::size_t count = keys[0].size();
    if (count < 2 || keys[1].size() != count || keys[2].size() != count) return 0;
    for (std::size_t i = 0; i < count; ++i)
        if (!NearEqual(keys[0][i]->getX(), keys[1][i]->getX()) || !NearEqual(keys[0][i]->getX(), keys[2][i]->getX()))
            return 0;

    std::array<std::vector<Move>, 3> moves;
    for (std::size_t c = 0; c < 3; ++c) moves[c].push_back({keys[c][0]->getY(), false});
    std::size_t moved = 0;
    for (std::size_t i = 1; i < count; ++i) {
        std::array<double, 3> same{}, other{};
        double farSame = 0.0, farOther = 0.0;
        for (std::size_t c = 0; c < 3; ++c) {
            const double angle = keys[c][i]->getY(), before = moves[c].back().y, half = 0.5 * turn;
            same[c] = Nearest(angle, before, turn);
            other[c] = Nearest(c == second[order] ? half - angle : angle + half, before, turn);
            farSame += std::abs(same[c] - before);
            farOther += std::abs(other[c] - before);
        }
        const bool takesOther = farOther < farSame - kRounding * turn; // of two that are as near, what is there
        bool differs = false;
        for (std::size_t c = 0; c < 3; ++c) {
            moves[c].push_back({takesOther ? other[c] : same[c], takesOther && c == second[order]});
            differs = differs || moves[c].back().y != keys[c][i]->getY();
        }
        if (differs) ++moved;
    }
    for (std::size_t c = 0; c < 3; ++c) Apply(*curves[c], keys[c], moves[c]);
    return moved;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
