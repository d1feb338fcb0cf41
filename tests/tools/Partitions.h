#pragma once

// The fewest keys that samples can be left with, found without the library's code. Keys stand on samples; between two
// of them runs a cubic through both, with the slopes that suit it best.

#include "FCurveLib/Vector2D.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
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

} // namespace Test
