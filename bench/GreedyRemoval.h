#pragma once

// What is usually done to leave keys out of samples, for comparison.

#include "tests/tools/Partitions.h" // internal: the cubic between two samples

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <queue>
#include <utility>
#include <vector>

namespace Bench {

using Test::Samples;

/// Removes the key that costs least, again and again. The cost of one, after it is gone: cost(before, key, after).
class Removal {
public:
    template<class Cost>
    std::size_t run(std::size_t count, double tolerance, const Cost& cost) {
        m_before.resize(count);
        m_after.resize(count);
        std::vector<std::size_t> version(count, 0);
        using Entry = std::pair<double, std::pair<std::size_t, std::size_t>>;
        std::priority_queue<Entry, std::vector<Entry>, std::greater<>> queue;
        for (std::size_t i = 0; i < count; ++i) {
            m_before[i] = i == 0 ? 0 : i - 1;
            m_after[i] = std::min(i + 1, count - 1);
        }
        const auto push = [&](std::size_t i) {
            if (i != 0 && i + 1 != count) queue.push({cost(*this, i), {i, ++version[i]}});
        };
        for (std::size_t i = 0; i < count; ++i) push(i);
        std::size_t keys = count;
        while (!queue.empty()) {
            const auto [error, entry] = queue.top();
            queue.pop();
            if (entry.second != version[entry.first]) continue;
            if (error > tolerance) break;
            ++version[entry.first];
            std::size_t left = before(entry.first), right = after(entry.first);
            m_after[left] = right;
            m_before[right] = left;
            --keys;
            for (int reach = 0; reach < 3; ++reach, left = before(left), right = after(right)) {
                push(left);
                push(right);
            }
        }
        return keys;
    }
    std::size_t before(std::size_t i) const { return m_before[i]; }
    std::size_t after(std::size_t i) const { return m_after[i]; }

private:
    std::vector<std::size_t> m_before, m_after;
};

/// Of broken keys: the span without the key gets the cubic that suits it best.
inline std::size_t GreedyRemoval(const Samples& samples, double tolerance) {
    return Removal().run(samples.size(), tolerance, [&](const Removal& keys, std::size_t i) {
        return Test::BestError(samples, keys.before(i), keys.after(i), std::numeric_limits<double>::infinity());
    });
}

/// Of smooth keys: they keep the slope of the line between their neighbours, as automatic tangents do.
inline std::size_t GreedySmoothRemoval(const Samples& samples, double tolerance) {
    const auto slope = [&](std::size_t a, std::size_t b) {
        return a == b ? 0.0 : (samples[b].y - samples[a].y) / (samples[b].x - samples[a].x);
    };
    const auto error = [&](std::size_t a, double slopeA, std::size_t b, double slopeB) {
        const double width = samples[b].x - samples[a].x, rise = samples[b].y - samples[a].y;
        double worst = 0.0;
        for (std::size_t k = a + 1; k < b; ++k) {
            const double t = (samples[k].x - samples[a].x) / width, u = 1.0 - t;
            const double y = rise * t * t * (3.0 - 2.0 * t) + width * (t * u * u * slopeA - t * t * u * slopeB);
            worst = std::max(worst, std::abs(samples[a].y + y - samples[k].y));
        }
        return worst;
    };
    return Removal().run(samples.size(), tolerance, [&](const Removal& keys, std::size_t i) {
        const std::size_t b = keys.before(i), c = keys.after(i), a = keys.before(b), d = keys.after(c);
        const double atB = slope(a, c), atC = slope(b, d);
        return std::max({error(a, slope(keys.before(a), b), b, atB), error(b, atB, c, atC),
                         error(c, atC, d, slope(c, keys.after(d)))});
    });
}

} // namespace Bench
