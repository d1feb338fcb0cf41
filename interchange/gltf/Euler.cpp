#include "interchange/gltf/Euler.h"

#include "interchange/gltf/Quaternion.h"
#include "interchange/gltf/Sampler.h"

#include <FCurveLib/FCurve.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

namespace {

// qz qy qx: x turns first.
Quaternion RotationAt(const EulerAngles& angles, double x) {
    double sine[3];
    double cosine[3];
    for (std::size_t i = 0; i < 3; ++i) {
        const double angle = angles.curves[i] ? angles.curves[i]->eval(x) * angles.radians : 0.0;
        const double half = std::isfinite(angle) ? 0.5 * angle : 0.0;
        sine[i] = std::sin(half);
        cosine[i] = std::cos(half);
    }
    return {sine[0] * cosine[1] * cosine[2] - cosine[0] * sine[1] * sine[2],
            cosine[0] * sine[1] * cosine[2] + sine[0] * cosine[1] * sine[2],
            cosine[0] * cosine[1] * sine[2] - sine[0] * sine[1] * cosine[2],
            cosine[0] * cosine[1] * cosine[2] + sine[0] * sine[1] * sine[2]};
}

// With the sign that is nearer to another.
Quaternion Nearer(const Quaternion& rotation, const Quaternion& other) {
    return Dot(rotation, other) < 0.0 ? Sum(-1.0, rotation, 0.0, rotation) : rotation;
}

// The turn that leads from one to the other.
double TurnBetween(const Quaternion& a, const Quaternion& b) {
    // By the chord: precise for small turns, which a cosine is not.
    const Quaternion chord = Sum(1.0, a, -1.0, Nearer(b, a));
    return 4.0 * std::asin(std::min(0.5 * std::sqrt(Dot(chord, chord)), 1.0));
}

struct Sample {
    double x;
    Quaternion rotation;
};

class Sampler {
public:
    Sampler(const EulerAngles& angles, double tolerance) : m_angles(angles), m_tolerance(tolerance) {}

    // Up to x, exclusive of what is there.
    void addUpTo(double x) {
        const Sample next{x, RotationAt(m_angles, x)};
        if (!samples.empty()) refine(samples.back(), next);
        samples.push_back(next);
    }

    std::vector<Sample> samples;
    double furthest = 0.0;

private:
    void refine(const Sample& left, const Sample& right) {
        constexpr double kClosest = 0.001;
        constexpr std::size_t kMostSamples = 1000000;
        const Arc arc(left.rotation, Nearer(right.rotation, left.rotation));
        double worst = 0.0;
        for (const double s : {0.25, 0.5, 0.75})
            worst = std::max(worst, TurnBetween(arc.at(s), RotationAt(m_angles, left.x + s * (right.x - left.x))));
        const double middle = left.x + 0.5 * (right.x - left.x);
        // Where the angles jump the last piece is as steep as can be.
        if (worst <= m_tolerance || right.x - left.x < 2.0 * kClosest || !(left.x < middle && middle < right.x)
            || samples.size() >= kMostSamples) {
            if (worst <= m_tolerance) furthest = std::max(furthest, worst);
            return;
        }
        const Sample between{middle, RotationAt(m_angles, middle)};
        const Sample start = left; // the vector grows
        refine(start, between);
        samples.push_back(between);
        refine(between, right);
    }

    const EulerAngles& m_angles;
    double m_tolerance;
};

} // namespace

EulerChannel ChannelOf(const EulerAngles& angles, double rate, double offset, double from, double to,
                       double tolerance) {
    constexpr double kMostFrames = 1e5;
    std::vector<double> places;
    for (const FCurve* curve : angles.curves) {
        if (!curve) continue;
        for (const Segment& segment : *curve)
            if (const auto key = segment.getLeftKey()) places.push_back(key->getX());
    }
    if (from < to) places.insert(places.end(), {from, to});
    if (places.empty()) places.push_back(offset);
    std::sort(places.begin(), places.end());
    const double first = std::ceil(places.front());
    const double last = places.back();
    const double step = std::max(1.0, std::ceil((last - first) / kMostFrames));
    for (double i = 0.0; first + i * step < last && i <= kMostFrames; ++i) places.push_back(first + i * step);
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());

    Sampler sampler(angles, tolerance);
    for (const double x : places) sampler.addUpTo(x);
    EulerChannel result;
    result.furthest = sampler.furthest;
    Channel& channel = result.channel;
    channel.components = 4;
    Quaternion before{0.0, 0.0, 0.0, 1.0};
    const std::vector<Sample>& samples = sampler.samples;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const Quaternion& rotation = samples[i].rotation;
        // What stays needs no samples between its first and its last.
        if (i > 0 && i + 1 < samples.size() && samples[i - 1].rotation == rotation
            && samples[i + 1].rotation == rotation)
            continue;
        const float time = TimeOf(samples[i].x, rate, offset);
        if (!channel.times.empty() && !(time > channel.times.back())) continue;
        before = Nearer(rotation, before);
        channel.times.push_back(time);
        channel.values.insert(channel.values.end(), before.begin(), before.end());
    }
    if (channel.keys() == 1) channel.interpolation = Interpolation::Step;
    return result;
}

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
