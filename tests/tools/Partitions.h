#pragma once

// Other ways to leave keys out of samples, which share no code with the library's: what the keys that are left could
// be. Keys stand on samples; between two of them runs a cubic through both, with the slopes that suit it best.

#include "FCurveLib/Vector2D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <queue>
#include <utility>
#include <vector>

namespace Test {

using Samples = std::vector<VEM_FN::FCurveLib::Vector2D<double>>;

/// The least that the farthest sample between two can be away from a cubic that meets these two; anything above enough
/// where that is exceeded.
///
/// The two slopes that are free weigh t u^2 and t^2 u, a Chebyshev system: the best cubic has errors of equal size and
/// alternating signs at three samples, which are found by exchanging one at a time (E. Remez, 1934).
inline double BestError(const Samples& samples, std::size_t from, std::size_t to, double enough) {
    struct Row {
        double a, b, r;
    };
    std::vector<Row> rows;
    const double width = samples[to].x - samples[from].x, rise = samples[to].y - samples[from].y;
    for (std::size_t k = from + 1; k < to; ++k) {
        const double t = (samples[k].x - samples[from].x) / width, u = 1.0 - t;
        rows.push_back({t * u * u, -t * t * u, samples[k].y - samples[from].y - rise * t * t * (3.0 - 2.0 * t)});
    }
    if (rows.size() < 3) return 0.0;

    struct Reference {
        std::array<double, 3> sign; // of the error at each
        double level;               // of the errors
    };
    using Basis = std::array<std::size_t, 3>;
    const auto referenceOf = [&](const Basis& basis) {
        std::array<double, 3> n{};
        double size = 0.0, level = 0.0;
        for (std::size_t i = 0; i < 3; ++i) {
            const Row &q = rows[basis[(i + 1) % 3]], &s = rows[basis[(i + 2) % 3]];
            n[i] = q.a * s.b - q.b * s.a;
            size += std::abs(n[i]);
            level += n[i] * rows[basis[i]].r;
        }
        return Reference{n, size > 0.0 ? level / size : 0.0};
    };

    Basis basis{0, rows.size() / 2, rows.size() - 1};
    double reached = std::numeric_limits<double>::infinity();
    for (int step = 0; step < 200; ++step) {
        const Reference now = referenceOf(basis);
        if (std::abs(now.level) > enough) return std::abs(now.level);
        // The slopes, from the two equations that are conditioned best.
        std::size_t left = 0;
        for (std::size_t i = 1; i < 3; ++i)
            if (std::abs(now.sign[i]) > std::abs(now.sign[left])) left = i;
        const std::size_t i = (left + 1) % 3, j = (left + 2) % 3;
        const Row &v = rows[basis[i]], &w = rows[basis[j]];
        const double rv = v.r - std::copysign(1.0, now.sign[i]) * now.level;
        const double rw = w.r - std::copysign(1.0, now.sign[j]) * now.level;
        const double det = v.a * w.b - v.b * w.a;
        const double a = (rv * w.b - rw * v.b) / det, b = (v.a * rw - w.a * rv) / det;

        const auto error = [&](const Row& row) { return std::abs(row.a * a + row.b * b - row.r); };
        const auto worst =
            std::max_element(rows.begin(), rows.end(), [&](const Row& p, const Row& q) { return error(p) < error(q); });
        reached = std::min(reached, error(*worst));
        if (reached <= enough || reached <= std::abs(now.level) * (1.0 + 1e-9)) return reached;
        Basis best = basis;
        double highest = 0.0;
        for (std::size_t k = 0; k < 3; ++k) {
            Basis tried = basis;
            tried[k] = static_cast<std::size_t>(worst - rows.begin());
            if (const double level = std::abs(referenceOf(tried).level); level > highest) {
                highest = level;
                best = tried;
            }
        }
        if (highest <= std::abs(now.level)) return reached;
        basis = best;
    }
    return reached;
}

/// The fewest keys of all, by dynamic programming.
inline std::size_t BestPartition(const Samples& samples, double tolerance) {
    std::vector<std::size_t> keys(samples.size(), samples.size());
    keys[0] = 1;
    for (std::size_t i = 0; i + 1 < samples.size(); ++i)
        for (std::size_t j = i + 1; j < samples.size(); ++j)
            if (keys[i] + 1 < keys[j] && BestError(samples, i, j, tolerance) <= tolerance) keys[j] = keys[i] + 1;
    return keys.back();
}

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
        return BestError(samples, keys.before(i), keys.after(i), std::numeric_limits<double>::infinity());
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

} // namespace Test
