#include "tools/Fitter.h"

#include "tools/Deviation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <tuple>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

constexpr double kThird = 1.0 / 3.0;
constexpr double kAnySlope = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kBreadth = 4; // places that the search goes on from

// Rises over the whole piece that its two end slopes would make.
struct Rises {
    double a;
    double b;
};

// Handles as parts of the piece's width.
struct Lengths {
    double out = kThird;
    double in = kThird;
    bool areThirds() const noexcept { return out == kThird && in == kThird; }
};

// A convex polygon of end slopes, cut by one strip after the other.
class Polygon {
public:
    Polygon(const Interval& a, const Interval& b) noexcept
        : m_corners{Rises{a.low, b.low}, {a.high, b.low}, {a.high, b.high}, {a.low, b.high}} {}

    // Keeps what has |A a + B b - r| <= tolerance; returns whether anything is left.
    bool cut(double A, double B, double r, double tolerance) noexcept {
        return cutBelow(A, B, r + tolerance) && cutBelow(-A, -B, tolerance - r);
    }

    Interval shadow() const noexcept {
        Interval range{m_corners[0].b, m_corners[0].b};
        for (std::size_t i = 1; i < m_count; ++i) {
            range.low = std::min(range.low, m_corners[i].b);
            range.high = std::max(range.high, m_corners[i].b);
        }
        return range;
    }

    // Of a, where b is given; b is moved into the shadow first.
    Interval slice(double& b) const noexcept {
        const Interval range = shadow();
        b = std::clamp(b, range.low, range.high);
        Interval result{HUGE_VAL, -HUGE_VAL};
        const auto fold = [&](double a) {
            result.low = std::min(result.low, a);
            result.high = std::max(result.high, a);
        };
        for (std::size_t i = 0; i < m_count; ++i) {
            const Rises& p = m_corners[i];
            const Rises& q = m_corners[(i + 1) % m_count];
            if (p.b == b) fold(p.a);
            if ((p.b < b) != (q.b < b) && p.b != q.b) fold(p.a + (q.a - p.a) * ((b - p.b) / (q.b - p.b)));
        }
        return result;
    }

    Rises middle() const noexcept {
        Rises sum{0.0, 0.0};
        for (std::size_t i = 0; i < m_count; ++i) {
            sum.a += m_corners[i].a;
            sum.b += m_corners[i].b;
        }
        return {sum.a / static_cast<double>(m_count), sum.b / static_cast<double>(m_count)};
    }

    // The last point inside on the way from the middle to the target.
    Rises towards(const Rises& target) const noexcept {
        const Rises middle = this->middle();
        double part = 1.0;
        for (std::size_t i = 0; i < m_count; ++i) {
            const Rises& p = m_corners[i];
            const Rises& q = m_corners[(i + 1) % m_count];
            const auto side = [&](const Rises& x) { return (q.a - p.a) * (x.b - p.b) - (q.b - p.b) * (x.a - p.a); };
            const double inside = side(middle), reached = side(target);
            if (reached < 0.0 && inside > reached) part = std::min(part, std::max(inside, 0.0) / (inside - reached));
        }
        if (part == 1.0) return target;
        part *= 0.999; // so that rounding does not leave it
        return {middle.a + part * (target.a - middle.a), middle.b + part * (target.b - middle.b)};
    }

private:
    bool cutBelow(double A, double B, double limit) noexcept {
        std::array<double, capacity> over; // NOLINT(cppcoreguidelines-pro-type-member-init): the first m_count are used
        bool any = false, all = true;
        for (std::size_t i = 0; i < m_count; ++i) {
            over[i] = A * m_corners[i].a + B * m_corners[i].b - limit;
            any = any || over[i] > 0.0;
            all = all && over[i] > 0.0;
        }
        if (!any) return true;
        if (all) return false;
        std::array<Rises, capacity> kept; // NOLINT(cppcoreguidelines-pro-type-member-init): likewise
        std::size_t count = 0;
        for (std::size_t i = 0; i < m_count; ++i) {
            const std::size_t next = i + 1 == m_count ? 0 : i + 1;
            if (!(over[i] > 0.0)) kept[count++] = m_corners[i];
            if ((over[i] > 0.0) != (over[next] > 0.0)) {
                const double part = over[i] / (over[i] - over[next]);
                kept[count++] = {m_corners[i].a + part * (m_corners[next].a - m_corners[i].a),
                                 m_corners[i].b + part * (m_corners[next].b - m_corners[i].b)};
            }
        }
        std::copy_n(kept.begin(), count, m_corners.begin());
        m_count = count;
        if (m_count + 2 > capacity) dropCorner();
        return count > 0;
    }

    // The one that matters least: what is left is smaller, so nothing becomes wrong.
    void dropCorner() noexcept {
        std::size_t least = 0;
        double smallest = HUGE_VAL;
        for (std::size_t i = 0; i < m_count; ++i) {
            const Rises &p = m_corners[i == 0 ? m_count - 1 : i - 1], &q = m_corners[i];
            const Rises& r = m_corners[i + 1 == m_count ? 0 : i + 1];
            const double area = std::abs((q.a - p.a) * (r.b - p.b) - (q.b - p.b) * (r.a - p.a));
            if (area < smallest) smallest = area, least = i;
        }
        std::copy(m_corners.begin() + static_cast<std::ptrdiff_t>(least) + 1,
                  m_corners.begin() + static_cast<std::ptrdiff_t>(m_count),
                  m_corners.begin() + static_cast<std::ptrdiff_t>(least));
        --m_count;
    }

    static constexpr std::size_t capacity = 32;
    std::array<Rises, capacity> m_corners;
    std::size_t m_count = 4;
};

// What a site asks for: A a + B b is to be r.
struct Row {
    double A, B, r;
};

// Cuts the polygon by all rows; returns whether anything is left.
bool CutByAll(Polygon& polygon, const std::vector<Row>& rows, double tolerance) noexcept {
    return std::all_of(rows.begin(), rows.end(),
                       [&](const Row& row) { return polygon.cut(row.A, row.B, row.r, tolerance); });
}

// Cuts by few rows, those that the polygon's middle violates most, until it violates none; returns whether that comes.
bool HoldsAll(Polygon& polygon, const std::vector<Row>& rows, double tolerance) noexcept {
    const std::size_t stride = rows.size() / 8 + 1;
    for (std::size_t k = stride / 2; k < rows.size(); k += stride)
        if (!polygon.cut(rows[k].A, rows[k].B, rows[k].r, tolerance)) return false;
    constexpr int enough = 40; // the polygon shrinks by a part each time; what is left then is next to nothing
    for (int step = 0; step < enough; ++step) {
        const Rises middle = polygon.middle();
        const Row *lowest = nullptr, *highest = nullptr;
        double low = -tolerance, high = tolerance;
        for (const Row& row : rows) {
            const double error = row.A * middle.a + row.B * middle.b - row.r;
            if (error < low) low = error, lowest = &row;
            if (error > high) high = error, highest = &row;
        }
        if (!lowest && !highest) return true;
        for (const Row* row : {lowest, highest})
            if (row && !polygon.cut(row->A, row->B, row->r, tolerance)) return false;
    }
    return false;
}

// The parameter at a place between 0 and 1, for handles of given lengths.
class Parameter {
public:
    explicit Parameter(const Lengths& lengths) noexcept
        : m_cubic(3.0 * (lengths.out + lengths.in) - 2.0), m_square(3.0 - 6.0 * lengths.out - 3.0 * lengths.in),
          m_linear(3.0 * lengths.out) {}

    double speed(double t) const noexcept { return (3.0 * m_cubic * t + 2.0 * m_square) * t + m_linear; }

    // A step of Householder's method of third order, which multiplies the correct digits by four.
    double nearer(double x, double t) const noexcept {
        const double f = ((m_cubic * t + m_square) * t + m_linear) * t - x;
        const double f1 = speed(t), f2 = 3.0 * m_cubic * t + m_square; // half the second derivative
        return t - f * (f1 * f1 - f * f2) / (f1 * (f1 * f1 - 2.0 * f * f2) + f * f * m_cubic);
    }

    // By such steps from a guess, until one is smaller than `sure`. One that leaves the bracket becomes a bisection.
    double at(double x, double guess, double sure = 1e-4) const noexcept {
        double t = std::clamp(guess, 0.0, 1.0), low = 0.0, high = 1.0;
        constexpr int most = 40;
        for (int step = 0; step < most; ++step) {
            (((m_cubic * t + m_square) * t + m_linear) * t > x ? high : low) = t;
            double next = nearer(x, t);
            if (!(next >= low && next <= high)) next = 0.5 * (low + high);
            const double moved = std::abs(next - t);
            t = next;
            if (moved < sure) break;
        }
        return t;
    }

private:
    double m_cubic, m_square, m_linear;
};

// The normal equations of four unknowns.
class NormalEquations {
public:
    static constexpr std::size_t most = 16;
    using Column = std::array<double, most>; // 0 beyond what is used

    double square = 0.0; // the sum over all residuals

    NormalEquations() noexcept = default;
    // Four columns of derivatives, and the residuals.
    NormalEquations(const std::array<Column, 5>& columns, std::size_t rows) noexcept
        : square(product(columns[4], columns[4], rows)) {
        for (std::size_t i = 0; i < 4; ++i)
            for (std::size_t j = i; j < 5; ++j) m_sums[i][j] = product(columns[i], columns[j], rows);
    }

    double right(std::size_t i) const noexcept { return m_sums[i][4]; }

    // Keeps an unknown where it is.
    void hold(std::size_t i) noexcept {
        for (std::size_t j = 0; j < 4; ++j) m_sums[std::min(i, j)][std::max(i, j)] = i == j ? 1.0 : 0.0;
        m_sums[i][4] = 0.0;
    }

    // By Gauss's elimination.
    std::array<double, 4> solve(double damping) const noexcept {
        auto m = m_sums;
        for (std::size_t i = 0; i < 4; ++i) m[i][i] += damping * m[i][i] + 1e-30;
        for (std::size_t i = 0; i < 4; ++i) {
            const double inverse = 1.0 / m[i][i];
            for (std::size_t j = i + 1; j < 4; ++j) {
                const double factor = m[i][j] * inverse;
                for (std::size_t k = j; k < 5; ++k) m[j][k] -= factor * m[i][k];
            }
            m[i][i] = inverse;
        }
        std::array<double, 4> x{};
        for (std::size_t i = 4; i-- > 0;) {
            x[i] = m[i][4];
            for (std::size_t j = i + 1; j < 4; ++j) x[i] -= m[i][j] * x[j];
            x[i] *= m[i][i];
        }
        return x;
    }

private:
    static double product(const Column& a, const Column& b, std::size_t rows) noexcept {
        double even = 0.0, odd = 0.0; // as one vector
        for (std::size_t k = 0; k < rows; k += 2) {
            even += a[k] * b[k];
            odd += a[k + 1] * b[k + 1];
        }
        return even + odd;
    }

    std::array<std::array<double, 5>, 4> m_sums{}; // the upper triangle, and the right side
};

// How often a function that passes one interval after the other has to turn, at least.
struct Turns {
    int count = 0;

    void pass(double low, double high) noexcept {
        const bool falls = high < m_reached.low;
        const bool rises = low > m_reached.high;
        if (falls || rises) {
            if (m_goes != 0) ++count;
            m_goes = falls ? -1 : 1;
            m_reached = falls ? Interval{-HUGE_VAL, high} : Interval{low, HUGE_VAL};
        } else {
            if (m_goes >= 0) m_reached.low = std::max(m_reached.low, low);
            if (m_goes <= 0) m_reached.high = std::min(m_reached.high, high);
        }
    }

private:
    int m_goes = 0;
    Interval m_reached{-HUGE_VAL, HUGE_VAL}; // what it can have without turning
};

// One stretch between two keys, in units of its own: t from 0 to 1, heights above its left key.
class Stretch {
public:
    Stretch(const std::vector<FitSite>& sites, const std::vector<FitKey>& keys, std::size_t from, std::size_t to)
        : m_sites(sites), m_left(sites[keys[from].site]), m_first(keys[from].site + 1), m_last(keys[to].site),
          m_width(sites[keys[to].site].x - m_left.x), m_inverse(1.0 / m_width),
          m_rise(sites[keys[to].site].y - m_left.y) {}

    double width() const noexcept { return m_width; }
    double rise() const noexcept { return m_rise; }
    std::size_t size() const noexcept { return m_last - m_first; } // sites between the keys

    void fillRows(const Lengths& lengths, std::vector<Row>& rows) const {
        rows.resize(size());
        if (lengths.areThirds()) {
            for (std::size_t k = 0; k < size(); ++k) rows[k] = row(k, place(k), lengths);
            return;
        }
        // Each site starts from what the one before found. That takes its time, so several stretches go side by side.
        const Parameter parameter(lengths);
        constexpr std::size_t lanes = 4;
        const std::size_t share = (size() + lanes - 1) / lanes;
        std::array<double, lanes> xs{}, ts{};
        for (std::size_t lane = 1; lane < lanes && lane * share < size(); ++lane) {
            xs[lane] = place(lane * share);
            ts[lane] = parameter.at(xs[lane], xs[lane]);
        }
        constexpr double sure = 1e-4;
        for (std::size_t i = 0; i < share; ++i)
            for (std::size_t lane = 0; lane < lanes; ++lane) {
                const std::size_t k = lane * share + i;
                if (k >= size()) break;
                const double x = place(k);
                const double guess = ts[lane] + (x - xs[lane]) / std::max(parameter.speed(ts[lane]), 0.1);
                double t = parameter.nearer(x, guess);
                if (!(t >= 0.0 && t <= 1.0 && std::abs(t - guess) < sure)) t = parameter.at(x, guess, sure);
                xs[lane] = x;
                ts[lane] = t;
                rows[k] = row(k, t, lengths);
            }
    }

    // The slopes with the least sum of squares; what the sites leave open comes from the keys' own slopes. A straight
    // stretch gets the line's.
    Rises leastSquares(const std::vector<Row>& rows, const Rises& own, std::optional<double> fixedB) const noexcept {
        if (size() > 0 && isStraight() && (!fixedB || *fixedB == m_rise)) return {m_rise, m_rise};
        constexpr double weak = 1e-6;
        double aa = weak, ab = 0.0, bb = weak, ra = weak * own.a, rb = weak * own.b;
        for (const Row& w : rows) {
            aa += w.A * w.A;
            ab += w.A * w.B;
            bb += w.B * w.B;
            ra += w.A * w.r;
            rb += w.B * w.r;
        }
        if (fixedB) return {(ra - ab * *fixedB) / aa, *fixedB};
        const double det = aa * bb - ab * ab;
        return {(ra * bb - rb * ab) / det, (rb * aa - ra * ab) / det};
    }

    // Whether a cubic through both keys may pass all strips. A line meets it three times at most: a line through one of
    // the keys twice elsewhere, so that seen from a key the slope of the line to the point turns once at most; and the
    // cubic itself turns twice at most.
    bool mayFit(double tolerance) const noexcept {
        Turns height, fromLeft, fromRight;
        for (std::size_t k = 0; k < size(); ++k) {
            const double y = m_sites[m_first + k].y - m_left.y, x = place(k);
            const double left = 1.0 / x, right = 1.0 / (1.0 - x);
            fromLeft.pass((y - tolerance) * left, (y + tolerance) * left);
            fromRight.pass((m_rise - y - tolerance) * right, (m_rise - y + tolerance) * right);
            height.pass(y - tolerance, y + tolerance);
            if (fromLeft.count > 1 || fromRight.count > 1 || height.count > 2) return false;
        }
        return true;
    }

    // Lengths of the handles that suit the sites, with slopes near the given ones: least squares by the method of
    // Levenberg and Marquardt over a selection of the sites. The residual at a given x changes with a handle's length
    // by its Bernstein weight times (the handle's slope - the slope of the curve there). What has reached a bound and
    // wants to leave it stays there while the others move. Nothing where it leaves far more than the tolerance, or is
    // slow to come near it.
    std::optional<Lengths> suitableLengths(const Rises& rises, const Lengths& lengths, const Interval& a,
                                           const Interval& b, double tolerance) const noexcept {
        constexpr std::size_t enough = NormalEquations::most;
        NormalEquations::Column xs{}, ys{}, ts{}; // of the sites
        std::array<NormalEquations::Column, 5> columns{};
        auto& [byA, byB, byOut, byIn, off] = columns;
        const std::size_t stride = (size() + enough - 1) / enough;
        std::size_t count = 0;
        for (std::size_t k = stride / 2; k < size(); k += stride, ++count) {
            xs[count] = ts[count] = place(k);
            ys[count] = m_sites[m_first + k].y - m_left.y;
        }

        const std::array<Interval, 4> bounds{a, b, Interval{0.02, 1.0}, Interval{0.02, 1.0}};
        double damping = 1e-3;
        double best = HUGE_VAL;
        std::array<double, 4> p{rises.a, rises.b, lengths.out, lengths.in}, tried = p;
        NormalEquations equations;
        constexpr int steps = 10;
        for (int step = 0; step < steps; ++step) {
            double largest = 0.0;
            const double out = tried[2] * tried[0], in = tried[3] * tried[1];
            const Parameter parameter({tried[2], tried[3]});
            // In loops that compilers make vector instructions of.
            for (std::size_t k = 0; k < count; ++k) off[k] = parameter.nearer(xs[k], ts[k]);
            constexpr double sure = 0.03;
            for (std::size_t k = 0; k < count; ++k) {
                const bool isSure = off[k] >= 0.0 && off[k] <= 1.0 && std::abs(off[k] - ts[k]) < sure;
                ts[k] = isSure ? off[k] : parameter.at(xs[k], ts[k], sure);
            }
            for (std::size_t k = 0; k < count; ++k) {
                const double t = ts[k], u = 1.0 - t;
                const double b1 = 3.0 * t * u * u, b2 = 3.0 * t * t * u;
                off[k] = ys[k] - (b1 * out + b2 * (m_rise - in) + t * t * t * m_rise);
                const double dx = u * u * tried[2] + 2.0 * u * t * (1.0 - tried[3] - tried[2]) + t * t * tried[3];
                const double dy = u * u * out + 2.0 * u * t * (m_rise - in - out) + t * t * in;
                const bool isSteep = !(dx > 1e-9);
                const double slope = (isSteep ? 0.0 : dy) / (isSteep ? 1.0 : dx);
                byA[k] = b1 * tried[2];
                byB[k] = -b2 * tried[3];
                byOut[k] = b1 * (tried[0] - slope);
                byIn[k] = b2 * (slope - tried[1]);
            }
            for (std::size_t k = 0; k < count; ++k) largest = std::max(largest, std::abs(off[k]));
            const NormalEquations sums(columns, count);
            const double square = sums.square / static_cast<double>(count);
            if (square < best) {
                const bool done = square > 0.95 * best || largest < 0.9 * tolerance;
                const bool slow = step > 2 && square > 0.5 * best && square > 4.0 * tolerance * tolerance;
                best = square;
                p = tried;
                equations = sums;
                damping *= 0.2;
                if (done || slow) break;
                for (std::size_t i = 0; i < 4; ++i)
                    if (p[i] <= bounds[i].low ? equations.right(i) < 0.0
                                              : p[i] >= bounds[i].high && equations.right(i) > 0.0)
                        equations.hold(i);
            } else {
                damping *= 8.0;
            }
            const std::array<double, 4> moved = equations.solve(damping);
            for (std::size_t i = 0; i < 4; ++i) tried[i] = p[i] + moved[i];
            if (!std::isfinite(tried[0] + tried[1] + tried[2] + tried[3])) break;
            for (std::size_t i = 0; i < 4; ++i) tried[i] = std::clamp(tried[i], bounds[i].low, bounds[i].high);
        }
        if (best > tolerance * tolerance) return std::nullopt; // the mean square
        return Lengths{p[2], p[3]};
    }

    BezierArgs args(const Lengths& lengths, const Rises& rises) const noexcept {
        const FitSite& right = m_sites[m_last];
        BezierArgs p{m_left.x, m_left.y, right.x, right.y, 0.0, 0.0, 0.0, 0.0};
        p.outX = lengths.out == kThird ? m_width / 3.0 : lengths.out * m_width;
        p.inX = -(lengths.in == kThird ? m_width / 3.0 : lengths.in * m_width);
        p.outY = lengths.out == kThird ? rises.a / 3.0 : lengths.out * rises.a;
        p.inY = -(lengths.in == kThird ? rises.b / 3.0 : lengths.in * rises.b);
        return p;
    }

private:
    double place(std::size_t k) const noexcept { return (m_sites[m_first + k].x - m_left.x) * m_inverse; }

    Row row(std::size_t k, double t, const Lengths& lengths) const noexcept {
        const double u = 1.0 - t;
        const double b1 = 3.0 * t * u * u, b2 = 3.0 * t * t * u;
        return {b1 * lengths.out, -b2 * lengths.in, (m_sites[m_first + k].y - m_left.y) - m_rise * (b2 + t * t * t)};
    }

    bool isStraight() const noexcept {
        for (std::size_t k = 0; k < size(); ++k) {
            const FitSite& site = m_sites[m_first + k];
            const double y = (site.x - m_left.x) / m_width * m_rise;
            const double rounding = 0x1p-48 * (std::abs(m_left.y) + std::abs(m_rise));
            if (!(std::abs(site.y - m_left.y - y) <= rounding)) return false;
        }
        return true;
    }

    const std::vector<FitSite>& m_sites;
    const FitSite m_left;
    const std::size_t m_first, m_last;
    const double m_width, m_inverse, m_rise;
};

class Search {
public:
    Search(const std::vector<FitSite>& sites, const std::vector<FitKey>& keys, const FitRules& rules)
        : m_sites(sites), m_keys(keys), m_rules(rules), m_nextMust(keys.size()) {
        std::size_t next = keys.size();
        for (std::size_t i = keys.size(); i-- > 0;) {
            m_nextMust[i] = next;
            if (keys[i].must) next = i;
        }
    }

    std::vector<FitPiece> run() {
        std::vector<FitPiece> result;
        m_nodes.push_back({0, none, ownSlopes(0), {}, FitSpan::Free, 0});
        appendPieces(search([](const std::vector<std::size_t>&) { return none; }), kAnySlope, result);
        return result;
    }

    // Around each failed piece: from a little before it to where the earlier pieces can go on.
    std::vector<FitPiece> runAgain(const std::vector<FitPiece>& earlier, const std::vector<bool>& failed) {
        std::vector<FitPiece> result;
        std::size_t done = 0; // earlier pieces
        const auto keepUpTo = [&](std::size_t end) {
            for (; done < end; ++done) {
                result.push_back(earlier[done]);
                result.back().earlier = done;
            }
        };
        for (;;) {
            const auto bad = static_cast<std::size_t>(
                std::find(failed.begin() + static_cast<std::ptrdiff_t>(done), failed.end(), true) - failed.begin());
            if (bad == earlier.size()) break;
            std::size_t first = bad - std::min(beside, bad - done);
            while (first > done && !isJoint(earlier[first])) --first;
            keepUpTo(first);
            const std::size_t key = earlier[first].from;
            Interval slopes = ownSlopes(key);
            if (first > 0 && !m_keys[key].corner) slopes.low = slopes.high = startSlope(earlier[first]);
            m_nodes.assign(1, {key, none, slopes, {}, FitSpan::Free, 0});

            int waited = 0;
            const std::size_t end = search([&](const std::vector<std::size_t>& level) {
                // Behind the farthest place of a level there may be less to come.
                const bool any = m_nodes[level.front()].key > earlier[bad].to && ++waited > wait;
                for (const std::size_t place : level) {
                    if (const std::size_t next = continuation(place, earlier, failed, bad); next != none) {
                        done = next;
                        return place;
                    }
                    if (!any) break;
                }
                return none;
            });
            double slope = kAnySlope;
            if (m_nodes[end].key + 1 == m_keys.size())
                done = earlier.size();
            else if (!m_keys[m_nodes[end].key].corner)
                slope = startSlope(earlier[done]);
            appendPieces(end, slope, result);
        }
        keepUpTo(earlier.size());
        return result;
    }

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    static constexpr std::size_t beside = 2; // pieces next to failed ones that are searched again
    static constexpr int wait = 4;           // levels

    // A key that can be reached, and the slopes that it can have then.
    struct Node {
        std::size_t key;
        std::size_t parent;
        Interval slopes;
        Lengths lengths; // of the piece that ends here
        FitSpan piece;
        std::size_t kept; // pieces up to here
    };

    Interval ownSlopes(std::size_t key) const noexcept { return {m_keys[key].lowSlope, m_keys[key].highSlope}; }
    Interval startSlopes(const Node& node) const noexcept {
        return m_keys[node.key].corner ? ownSlopes(node.key) : node.slopes;
    }
    static Interval scaled(const Interval& slopes, double width) noexcept {
        return {slopes.low * width, slopes.high * width};
    }
    static bool holds(const Interval& slopes, double slope) noexcept {
        return slopes.low <= slope && slope <= slopes.high;
    }

    static double startSlope(const FitPiece& piece) noexcept { return piece.args.outY / piece.args.outX; }
    bool isJoint(const FitPiece& after) const noexcept { return m_keys[after.from].corner || !after.kept; }

    // The earlier piece beyond a failed one with which it can go on from a place.
    std::size_t continuation(std::size_t place, const std::vector<FitPiece>& earlier, const std::vector<bool>& failed,
                             std::size_t bad) const noexcept {
        const Node& node = m_nodes[place];
        const auto begin = earlier.begin() + static_cast<std::ptrdiff_t>(bad) + 1;
        const auto it = std::lower_bound(begin, earlier.end(), node.key,
                                         [](const FitPiece& piece, std::size_t key) { return piece.from < key; });
        if (it == earlier.end() || it->from != node.key || !isJoint(*it)) return none;
        const auto next = static_cast<std::size_t>(it - earlier.begin());
        for (std::size_t i = next; i < earlier.size() && i <= next + beside; ++i)
            if (failed[i]) return none;
        return m_keys[node.key].corner || holds(node.slopes, startSlope(*it)) ? next : none;
    }

    // From the only node, in as few pieces as are found, to the place that `stop` chooses from a level, else to the
    // end.
    template<typename Stop>
    std::size_t search(const Stop& stop) {
        std::vector<std::size_t> level{0};
        for (std::size_t to = m_nodes.front().key;;) {
            if (const std::size_t from = m_nodes[level.front()].key; from == to) {
                if (to + 1 == m_keys.size()) return level.front();
                to = m_nextMust[to];
                level = m_keys[from].after == FitSpan::Free ? nextLevel(level, to) : step(level, to);
            } else {
                level = nextLevel(level, to);
            }
            if (const std::size_t place = stop(level); place != none) return place;
        }
    }

    // Over a span that is not searched.
    std::vector<std::size_t> step(const std::vector<std::size_t>& starts, std::size_t to) {
        const std::size_t from = m_nodes[starts.front()].key;
        Interval slopes = ownSlopes(to);
        std::size_t start = starts.front();
        if (m_keys[from].after == FitSpan::Straight) {
            const Stretch stretch(m_sites, m_keys, from, to);
            const double slope = stretch.rise() / stretch.width();
            for (const std::size_t candidate : starts)
                if (holds(m_nodes[candidate].slopes, slope)) start = candidate;
            slopes = {slope, slope};
        }
        m_nodes.push_back({to, start, slopes, {}, m_keys[from].after, m_nodes[start].kept});
        return {m_nodes.size() - 1};
    }

    // The best places that one more piece reaches, the farthest first. The limit is the next key that must stand; once
    // it is reached, all are there.
    std::vector<std::size_t> nextLevel(const std::vector<std::size_t>& starts, std::size_t limit) {
        std::vector<Node> reached;
        std::size_t best = 0;
        m_tried.clear();
        for (const std::size_t from : starts) expand(from, limit, best, reached);
        std::sort(reached.begin(), reached.end(), [](const Node& a, const Node& b) {
            return std::tie(b.key, b.kept, a.parent) < std::tie(a.key, a.kept, b.parent);
        });
        std::vector<std::size_t> level;
        for (Node& node : reached) {
            const bool arrived = !level.empty() && m_nodes[level.front()].key == limit;
            if (level.size() == kBreadth || (arrived && node.key != limit)) break;
            const auto same = std::count_if(level.begin(), level.end(),
                                            [&](std::size_t other) { return m_nodes[other].key == node.key; });
            if (same >= (m_keys[node.key].corner ? 1 : 2)) continue;
            if (!narrowSlopes(node)) continue;
            m_nodes.push_back(node);
            level.push_back(m_nodes.size() - 1);
        }
        if (level.empty()) { // rounding left none of them
            const Node& start = m_nodes[starts.front()];
            m_nodes.push_back({start.key + 1, starts.front(), ownSlopes(start.key + 1), {}, FitSpan::Free, start.kept});
            level.push_back(m_nodes.size() - 1);
        }
        return level;
    }

    // Finds keys that can be reached from one: the farthest, and a few that are less far. From the first place of a
    // level by doubling and bisection, from the others around what that one has reached.
    void expand(std::size_t from, std::size_t limit, std::size_t& best, std::vector<Node>& reached) {
        const Node start = m_nodes[from];
        const std::size_t i = start.key;
        const std::size_t base = reached.size();
        Lengths lengths; // that were found last
        const auto attempt = [&](std::size_t j) {
            if (!fits(start, j, lengths)) return false;
            reached.push_back({j, from, ownSlopes(j), lengths, FitSpan::Free, start.kept});
            return true;
        };
        const FitKey& key = m_keys[i];
        std::size_t good = i + 1, bad = limit + 1;
        if (best <= i + 1) {
            const bool neighbour = attempt(i + 1);
            if (key.canKeep && (key.corner || holds(start.slopes, key.keptOut)))
                reached.push_back({i + 1, from, {key.keptIn, key.keptIn}, {}, FitSpan::Kept, start.kept + 1});
            else if (!neighbour)
                reached.push_back(
                    {i + 1, from, ownSlopes(i + 1), {}, key.canKeep ? FitSpan::Kept : FitSpan::Free, start.kept});
        }
        if (base == 0) {
            for (std::size_t length = 2; good < limit && bad > limit; length *= 2) {
                const std::size_t j = std::min(i + length, limit);
                (attempt(j) ? good : bad) = j;
            }
            while (bad - good > 1) {
                const std::size_t j = good + (bad - good) / 2;
                (attempt(j) ? good : bad) = j;
            }
        } else if (best > i + 1) {
            good = best - 1;
        }
        const std::size_t top = good;
        const std::size_t patience = 3 + std::min<std::size_t>(9, (good - i) / 8);
        for (std::size_t j = good + 1; j <= limit && j - good <= patience; ++j)
            if (j != bad && attempt(j)) good = j;
        for (std::size_t j = top; good < limit && j > i + 1 && reached.size() - base < kBreadth && top - j < kBreadth;
             --j)
            if (j != top || base > 0) attempt(j);
        for (std::size_t k = base; k < reached.size(); ++k) best = std::max(best, reached[k].key);
    }

    struct Bounds {
        Interval a, b;
    };
    Bounds boundsOf(const Stretch& stretch, const Node& start, std::size_t to) const noexcept {
        return {scaled(startSlopes(start), stretch.width()), scaled(ownSlopes(to), stretch.width())};
    }

    bool fits(const Node& start, std::size_t to, Lengths& lengths) {
        const Stretch stretch(m_sites, m_keys, start.key, to);
        const Bounds bounds = boundsOf(stretch, start, to);
        stretch.fillRows({}, m_rows);
        Polygon polygon(bounds.a, bounds.b);
        if (HoldsAll(polygon, m_rows, m_rules.tolerance)) {
            lengths = {};
            return true;
        }
        if (!m_rules.weighted || !stretch.mayFit(m_rules.tolerance)) return false;
        const Rises own{std::clamp(m_keys[start.key].slope * stretch.width(), bounds.a.low, bounds.a.high),
                        m_keys[to].slope * stretch.width()};
        // Of two places at one key the second takes what the first has found.
        const auto known = std::find_if(m_tried.begin(), m_tried.end(),
                                        [&](const Tried& tried) { return tried.from == start.key && tried.to == to; });
        const bool isKnown = known != m_tried.end();
        const std::optional<Lengths> suitable =
            isKnown ? known->lengths : stretch.suitableLengths(own, lengths, bounds.a, bounds.b, m_rules.tolerance);
        if (!isKnown) m_tried.push_back({start.key, to, suitable});
        if (!suitable) return false;
        lengths = *suitable;
        stretch.fillRows(lengths, m_rows);
        polygon = Polygon(bounds.a, bounds.b);
        return HoldsAll(polygon, m_rows, m_rules.tolerance);
    }

    // Finds the slopes that a reached key can have; not needed where those of its two sides are independent.
    bool narrowSlopes(Node& node) {
        if (m_keys[node.key].corner || node.piece != FitSpan::Free) return true;
        const Node& start = m_nodes[node.parent];
        const Stretch stretch(m_sites, m_keys, start.key, node.key);
        const Bounds bounds = boundsOf(stretch, start, node.key);
        Polygon polygon(bounds.a, bounds.b);
        stretch.fillRows(node.lengths, m_rows);
        if (!HoldsAll(polygon, m_rows, m_rules.tolerance) || !CutByAll(polygon, m_rows, m_rules.tolerance))
            return node.key == start.key + 1; // as well as can be
        const Interval shadow = polygon.shadow();
        node.slopes = {shadow.low / stretch.width(), shadow.high / stretch.width()};
        return true;
    }

    // The pieces up to a node; the last one is to end with the slope.
    void appendPieces(std::size_t last, double slope, std::vector<FitPiece>& result) {
        const auto before = static_cast<std::ptrdiff_t>(result.size());
        for (std::size_t i = last; m_nodes[i].parent != none; i = m_nodes[i].parent) {
            const Node& node = m_nodes[i];
            const Node& start = m_nodes[node.parent];
            const Stretch stretch(m_sites, m_keys, start.key, node.key);
            FitPiece piece{start.key, node.key, node.piece == FitSpan::Kept, {}};
            if (node.piece == FitSpan::Straight) {
                const double line = stretch.rise() / stretch.width();
                piece.args = stretch.args({}, {stretch.rise(), stretch.rise()});
                slope = holds(start.slopes, line) ? line : kAnySlope;
            } else if (node.piece == FitSpan::Free) {
                const Rises rises = choose(stretch, start, node, slope);
                piece.args = stretch.args(node.lengths, rises);
                slope = rises.a / stretch.width();
            } else if (const double kept = m_keys[start.key].keptOut; holds(start.slopes, kept)) {
                slope = kept;
            } else {
                slope = kAnySlope;
            }
            if (m_keys[start.key].corner) slope = kAnySlope;
            result.push_back(piece);
        }
        std::reverse(result.begin() + before, result.end());
    }

    Rises choose(const Stretch& stretch, const Node& start, const Node& node, double endSlope) {
        const double width = stretch.width();
        const auto [a, b] = boundsOf(stretch, start, node.key);
        const Rises own{std::clamp(m_keys[start.key].slope * width, a.low, a.high), m_keys[node.key].slope * width};
        Polygon polygon(a, b);
        stretch.fillRows(node.lengths, m_rows);
        const bool holds = HoldsAll(polygon, m_rows, m_rules.tolerance);
        const Rises middle = polygon.middle();
        if (holds && !CutByAll(polygon, m_rows, m_rules.tolerance)) return middle;
        if (!holds) { // nothing better was to be had
            const Rises best = stretch.leastSquares(m_rows, own, {});
            return {std::clamp(best.a, a.low, a.high), std::clamp(best.b, b.low, b.high)};
        }
        if (std::isnan(endSlope)) return polygon.towards(stretch.leastSquares(m_rows, own, {}));
        double end = endSlope * width;
        const Interval range = polygon.slice(end);
        const double best = stretch.leastSquares(m_rows, own, end).a;
        const double margin = 1e-3 * (range.high - range.low);
        if (best > range.low + margin && best < range.high - margin) return {best, end};
        return {std::clamp(best, range.low + margin, range.high - margin), end};
    }

    struct Tried {
        std::size_t from, to;
        std::optional<Lengths> lengths;
    };

    const std::vector<FitSite>& m_sites;
    const std::vector<FitKey>& m_keys;
    const FitRules& m_rules;
    std::vector<std::size_t> m_nextMust; // after each key
    std::vector<Tried> m_tried;          // in the level that is looked at
    std::vector<Node> m_nodes;
    std::vector<Row> m_rows; // of the stretch that is looked at
};

} // namespace

std::vector<FitPiece> FitPieces(const std::vector<FitSite>& sites, const std::vector<FitKey>& keys,
                                const FitRules& rules) {
    if (keys.size() < 2) return {};
    return Search(sites, keys, rules).run();
}

std::vector<FitPiece> FitPiecesAgain(const std::vector<FitSite>& sites, const std::vector<FitKey>& keys,
                                     const FitRules& rules, const std::vector<FitPiece>& earlier,
                                     const std::vector<bool>& failed) {
    return Search(sites, keys, rules).runAgain(earlier, failed);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
