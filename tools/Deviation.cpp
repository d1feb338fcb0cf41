#include "tools/Deviation.h"

#include "model/NotFinite.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

// The heights of a cubic's control points over a part of its parameter's range (its blossom at the part's ends),
// relative to y0.
struct Control {
    std::array<double, 4> y;

    Control(const BezierArgs& p, double from, double to) noexcept {
        const std::array<double, 4> c{0.0, p.outY, p.y3 - p.y0 + p.inY, p.y3 - p.y0};
        for (std::size_t k = 0; k < 4; ++k) {
            std::array<double, 4> b = c;
            for (std::size_t level = 0; level < 3; ++level) {
                const double t = level < k ? to : from;
                for (std::size_t i = 0; i + level < 3; ++i) b[i] = (1.0 - t) * b[i] + t * b[i + 1];
            }
            y[k] = b[0];
        }
    }
};

// All values of a quadratic in Bernstein form between two parameters.
Interval QuadraticOver(double first, double middle, double last, double from, double to) noexcept {
    const auto blossom = [&](double s, double t) {
        return (1.0 - s) * ((1.0 - t) * first + t * middle) + s * ((1.0 - t) * middle + t * last);
    };
    const double a = blossom(from, from), b = blossom(from, to), c = blossom(to, to);
    return {std::min({a, b, c}), std::max({a, b, c})};
}

bool IsLine(const BezierArgs& p) noexcept {
    const BezierArgs line = LineArgs(p.x0, p.y0, p.x3, p.y3);
    return p.outX == line.outX && p.outY == line.outY && p.inX == line.inX && p.inY == line.inY;
}

bool IsFlat(const BezierArgs& p) noexcept {
    return p.y0 == p.y3 && p.outY == 0.0 && p.inY == 0.0;
}

bool AreSame(const BezierArgs& a, const BezierArgs& b) noexcept {
    return a.x0 == b.x0 && a.y0 == b.y0 && a.x3 == b.x3 && a.y3 == b.y3 && a.outX == b.outX && a.outY == b.outY
           && a.inX == b.inX && a.inY == b.inY;
}

struct Extreme {
    double at; // the parameter
    double size;
};

// The largest absolute value between 0 and 1 of a cubic in Bernstein form: at an end or a root of the derivative.
Extreme LargestOf(const std::array<double, 4>& d) noexcept {
    Extreme worst{0.0, -1.0};
    const auto look = [&](double t) {
        const double u = 1.0 - t;
        const double y = u * u * (u * d[0] + 3.0 * t * d[1]) + t * t * (3.0 * u * d[2] + t * d[3]);
        if (!(std::abs(y) <= worst.size)) worst = {t, std::abs(y)};
    };
    look(0.0);
    look(1.0);
    const double first = d[1] - d[0], middle = d[2] - d[1], last = d[3] - d[2];
    const double disc = middle * middle - first * last;
    if (disc >= 0.0) {
        const double m = first - middle;
        const double z = m + std::copysign(std::sqrt(disc), m);
        for (const double t : {z / (first - 2.0 * middle + last), first / z})
            if (t > 0.0 && t < 1.0) look(t);
    }
    return worst;
}

// Both are cubic polynomials of x, so their difference is one.
Deviation PolynomialDeviation(const BezierArgs& a, const BezierArgs& b, double from, double to) noexcept {
    const auto part = [&](const BezierArgs& p) {
        const double width = p.x3 - p.x0;
        return Control(p, (from - p.x0) / width, (to - p.x0) / width);
    };
    const Control ca = part(a), cb = part(b);
    std::array<double, 4> d{};
    for (std::size_t i = 0; i < 4; ++i) d[i] = (ca.y[i] - cb.y[i]) + (a.y0 - b.y0);

    const auto [t, size] = LargestOf(d);
    return {size, from + t * (to - from)};
}

// The parameters that hold a range of x, with more than they can be wrong by.
Interval Parameters(const BezierArgs& p, double from, double to) noexcept {
    constexpr double margin = 0x1p-40;
    const auto place = [&](double x) { return HasThirds(p) ? (x - p.x0) / (p.x3 - p.x0) : SolveBezier(x, p).t; };
    return {std::max(0.0, place(from) - margin), std::min(1.0, place(to) + margin)};
}

// One is a straight line, so along the parameter of the other the difference is a cubic: its extremes as above, between
// places that hold the range whatever the parameter is wrong by.
Deviation DeviationFromLine(const BezierArgs& line, const BezierArgs& p, double from, double to) noexcept {
    const auto [first, last] = Parameters(p, from, to);
    BezierArgs abscissae = p;
    abscissae.y0 = p.x0, abscissae.y3 = p.x3, abscissae.outY = p.outX, abscissae.inY = p.inX;
    const Control cy(p, first, last), cx(abscissae, first, last);
    const double slope = (line.y3 - line.y0) / (line.x3 - line.x0);
    const double start = (p.y0 - line.y0) - (p.x0 - line.x0) * slope;
    std::array<double, 4> d{};
    for (std::size_t i = 0; i < 4; ++i) d[i] = cy.y[i] - cx.y[i] * slope + start;
    const auto [t, worst] = LargestOf(d);
    const double at = BezierX({first + t * (last - first), (1.0 - first) - t * (last - first)}, p);
    return {worst, std::clamp(at, from, to)};
}

} // namespace

bool HasThirds(const BezierArgs& p) noexcept {
    const double width = p.x3 - p.x0;
    const double third = width / 3.0;
    return std::abs(p.outX - third) <= 1e-14 * width && std::abs(p.inX + third) <= 1e-14 * width;
}

BezierArgs LineArgs(double x0, double y0, double x3, double y3) noexcept {
    const double third = (x3 - x0) / 3.0, rise = (y3 - y0) / 3.0;
    return {x0, y0, x3, y3, third, rise, -third, -rise};
}

BezierFunction::BezierFunction(const BezierArgs& args) noexcept : m_args(args), m_thirds(HasThirds(args)) {
    // FindBezierPlace promises 4e-12 of the value range; the sum adds a few units in the last place.
    const double range = std::abs(args.outY) + std::abs(args.inY) + std::abs(args.y3 - args.y0);
    m_rounding = IsFlat(args) ? 0.0 : 5e-12 * range + 0x1p-51 * std::max(std::abs(args.y0), std::abs(args.y3));
}

Function::Enclosure BezierFunction::over(double from, double to) const {
    const double width = m_args.x3 - m_args.x0;
    const auto [first, last] = Parameters(m_args, from, to);
    const Control c(m_args, first, last);
    const auto [low, high] = std::minmax_element(c.y.begin(), c.y.end());
    const double rise = m_args.y3 - m_args.y0;
    const Interval dy = QuadraticOver(m_args.outY, rise + m_args.inY - m_args.outY, -m_args.inY, first, last);
    const Interval dx = m_thirds
                            ? Interval{width / 3.0, width / 3.0}
                            : QuadraticOver(m_args.outX, width + m_args.inX - m_args.outX, -m_args.inX, first, last);
    Enclosure result{{m_args.y0 + *low, m_args.y0 + *high}, {-kInfinity, kInfinity}};
    if (dx.low > 0.0) {
        result.slope.low = dy.low / (dy.low < 0.0 ? dx.low : dx.high);
        result.slope.high = dy.high / (dy.high > 0.0 ? dx.low : dx.high);
    }
    return result;
}

Deviation BoundDeviation(const Function& a, const Function& b, double from, double to, double limit) {
    const double rounding = a.rounding() + b.rounding();
    if (a.bezier() && b.bezier()) {
        if (AreSame(*a.bezier(), *b.bezier())) return {rounding, from};
        if (rounding == 0.0) return {std::abs(a.bezier()->y0 - b.bezier()->y0), from}; // both are flat
        std::optional<Deviation> worst;
        if (HasThirds(*a.bezier()) && HasThirds(*b.bezier()))
            worst = PolynomialDeviation(*a.bezier(), *b.bezier(), from, to);
        else if (IsLine(*a.bezier()))
            worst = DeviationFromLine(*a.bezier(), *b.bezier(), from, to);
        else if (IsLine(*b.bezier()))
            worst = DeviationFromLine(*b.bezier(), *a.bezier(), from, to);
        if (worst) return {worst->bound + rounding, worst->at};
    }

    // Branch and bound. In a cell around m, with e = a - b: |e| <= |e(m)| + radius * max |e'|, which closes in with the
    // square of the radius where e' is small, as it is around the largest deviation.
    Deviation worst{-1.0, from};
    const auto look = [&](double x) {
        const double e = std::abs(a.at(x) - b.at(x));
        if (!(e <= worst.bound)) worst = {e, x};
        return e;
    };
    look(from);
    look(to);
    struct Cell {
        double from, to;
    };
    std::vector<Cell> cells;
    constexpr int start = 8;
    for (int i = 0; i < start; ++i) {
        const double width = (to - from) / start;
        cells.push_back({i == 0 ? from : from + i * width, i + 1 == start ? to : from + (i + 1) * width});
        look(cells.back().from);
    }
    const Interval heightA = a.over(from, to).value, heightB = b.over(from, to).value;
    const double height = std::max(heightA.high, heightB.high) - std::min(heightA.low, heightB.low);
    const double slack = std::min(0x1p-10 * limit, 0x1p-18 * height);
    double beyond = 0.0; // of cells too small to divide
    for (int budget = 1 << 16; !cells.empty(); --budget) {
        if (budget == 0 || !(worst.bound <= limit)) return {kInfinity, worst.at};
        const Cell cell = cells.back();
        cells.pop_back();
        const double middle = cell.from + 0.5 * (cell.to - cell.from);
        const Function::Enclosure ea = a.over(cell.from, cell.to), eb = b.over(cell.from, cell.to);
        const double hull = std::max(ea.value.high - eb.value.low, eb.value.high - ea.value.low);
        const double steepest = std::max(ea.slope.high - eb.slope.low, eb.slope.high - ea.slope.low);
        const double radius = std::max(middle - cell.from, cell.to - middle);
        const double bound = std::min(hull, look(middle) + (steepest < kInfinity ? radius * steepest : kInfinity));
        if (bound <= worst.bound * (1.0 + 0x1p-10) + slack) continue;
        if (!(middle > cell.from && middle < cell.to)) {
            beyond = std::max(beyond, bound);
            continue;
        }
        cells.push_back({cell.from, middle});
        cells.push_back({middle, cell.to});
    }
    worst.bound = std::max(worst.bound * (1.0 + 0x1p-10) + slack, beyond) + rounding;
    return worst;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
