#include "interchange/gltf/Channel.h"

#include "interchange/gltf/Quaternion.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

namespace {

// How far the cubic with the arc's ends and these slopes there is off, once normalised.
double MissedBy(const Arc& arc, const Quaternion& leaving, const Quaternion& arriving) {
    double largest = 0.0;
    for (const double s : {0.2, 0.35, 0.5}) { // symmetric
        const double t = 1.0 - s;
        const Quaternion ends = Sum(t * t * (1.0 + 2.0 * s), arc.from, s * s * (1.0 + 2.0 * t), arc.to);
        const Quaternion slopes = Sum(s * t * t, leaving, -s * s * t, arriving);
        const Quaternion off = Sum(1.0, Normalised(Sum(1.0, ends, 1.0, slopes)), -1.0, arc.at(s));
        largest = std::max(largest, std::sqrt(Dot(off, off)));
    }
    return largest;
}
double MissedBy(const Arc& arc) {
    return MissedBy(arc, arc.leaving(), arc.arriving());
}

bool AreNeighbours(const Channel& channel, std::size_t key, double rate) noexcept {
    const float a = channel.times[key];
    const float b = channel.times[key + 1];
    return std::nextafter(a, b) == b || (static_cast<double>(b) - static_cast<double>(a)) * rate < 1e-4;
}

} // namespace

Distance FollowArcs(Channel& channel, double tolerance) {
    constexpr double kStraight = 0.0873; // half a turn of ten degrees: a line is as good
    constexpr int kMostPieces = 64;
    Channel result;
    result.interpolation = Interpolation::Cubic;
    result.components = 4;
    const auto add = [&](float time, const Quaternion& value, const Quaternion& in, const Quaternion& out) {
        result.times.push_back(time);
        result.values.insert(result.values.end(), value.begin(), value.end());
        result.in.insert(result.in.end(), in.begin(), in.end());
        result.out.insert(result.out.end(), out.begin(), out.end());
    };
    Distance largest;
    Quaternion last{};
    Quaternion in{};
    for (std::size_t k = 0; k < channel.keys(); ++k) {
        Quaternion next{};
        std::copy_n(channel.values.begin() + static_cast<std::ptrdiff_t>(4 * k), 4, next.begin());
        next = Normalised(next);
        if (k > 0 && Dot(last, next) < 0.0) next = Sum(-1.0, next, 0.0, next);
        if (k > 0) {
            const Arc whole(last, next);
            int pieces = 1;
            while (pieces < kMostPieces && whole.half > kStraight
                   && MissedBy(Arc(last, whole.at(1.0 / pieces))) > tolerance)
                pieces *= 2;
            const double start = channel.times[k - 1];
            const double width = static_cast<double>(channel.times[k]) - start;
            const Arc first(last, whole.at(1.0 / pieces)); // as long as all others
            const Quaternion line = Sum(-1.0, first.from, 1.0, first.to);
            const double off = whole.half > kStraight ? MissedBy(first) : MissedBy(first, line, line);
            if (off > largest.y) largest = {off, start + 0.2 * width / pieces};
            for (int i = 0; i < pieces; ++i) {
                const Arc arc(whole.at(static_cast<double>(i) / pieces), whole.at((i + 1.0) / pieces));
                const bool isStraight = whole.half <= kStraight;
                const Quaternion chord = Sum(-1.0, arc.from, 1.0, arc.to);
                const double slower = pieces / width;
                const auto time = static_cast<float>(start + width * i / pieces);
                if (i > 0 && !(time > result.times.back())) continue; // no number between
                const Quaternion out = Sum(slower, isStraight ? chord : arc.leaving(), 0.0, chord);
                if (i == 0) {
                    std::copy(out.begin(), out.end(), result.out.end() - 4);
                } else {
                    add(time, arc.from, in, out);
                }
                in = Sum(slower, isStraight ? chord : arc.arriving(), 0.0, chord);
            }
        }
        add(channel.times[k], next, in, {});
        last = next;
    }
    channel = std::move(result);
    return largest;
}

double FrameOf(float time, double rate, double offset) noexcept {
    const double frame = static_cast<double>(time) * rate;
    const double whole = std::round(frame);
    if (std::fabs(frame - whole) <= std::fabs(frame) * std::ldexp(1.0, -23) + 1e-9) return whole + offset;
    for (const double scale : {10.0, 100.0, 1000.0, 10000.0}) {
        const double rounded = std::round(frame * scale) / scale;
        if (static_cast<float>(rounded / rate) == time) return std::round((rounded + offset) * scale) / scale;
    }
    return frame + offset;
}

Usda::SplineData SplineOf(const Channel& channel, std::size_t component, double rate, double offset) {
    using Usda::Mode;
    Usda::SplineData spline;
    spline.isHermite = true;
    const bool isCubic = channel.interpolation == Interpolation::Cubic;
    const auto at = [&](const std::vector<double>& numbers, std::size_t key) {
        return numbers[key * channel.components + component];
    };
    spline.knots.reserve(channel.keys());
    for (std::size_t k = 0; k < channel.keys(); ++k) {
        Usda::SplineKnot knot;
        knot.value = knot.preValue = at(channel.values, k);
        if (isCubic) knot.pre.slope = at(channel.in, k) / rate;
        if (k + 1 < channel.keys() && AreNeighbours(channel, k, rate)) {
            ++k;
            knot.value = at(channel.values, k);
            knot.isDual = knot.value != knot.preValue;
        }
        if (isCubic) knot.post.slope = at(channel.out, k) / rate;
        knot.time = FrameOf(channel.times[k], rate, offset);
        spline.knots.push_back(std::move(knot));
    }
    for (std::size_t i = 0; i + 1 < spline.knots.size(); ++i) {
        Usda::SplineKnot& left = spline.knots[i];
        const Usda::SplineKnot& right = spline.knots[i + 1];
        const double rise = right.preValue - left.value;
        const double span = right.time - left.time;
        // Slopes that are a line's, but for what single precision left of them.
        const double slack = 4e-7 * std::max(std::fabs(right.preValue), std::fabs(left.value));
        const bool isLine =
            !isCubic
            || (std::fabs(left.post.slope * span - rise) <= slack && std::fabs(right.pre.slope * span - rise) <= slack);
        const bool isStep = rise == 0.0 && (left.isDual || right.isDual)
                            && (!isCubic || (left.post.slope == 0.0 && right.pre.slope == 0.0));
        left.mode = channel.interpolation == Interpolation::Step || isStep ? Mode::Held
                    : isLine                                               ? Mode::Linear
                                                                           : Mode::Curve;
    }
    return spline;
}

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
