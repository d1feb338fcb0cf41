#include "interchange/Cubic.h"

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

Vector2D<double> Between(const Vector2D<double>& a, const Vector2D<double>& b, double t) noexcept {
    return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
}

constexpr int kMostHalvings = 24;

// One coordinate without its start, by the powers of t.
struct Powers {
    double one;
    double two;
    double three;

    double at(double t) const noexcept { return ((three * t + two) * t + one) * t; }
};
Powers PowersOf(double a, double b, double c, double d) noexcept {
    return {3.0 * (b - a), 3.0 * (c - 2.0 * b + a), d - a - 3.0 * (c - b)};
}

// The chord, with handles of a third.
Cubic AsLine(const Cubic& cubic) noexcept {
    const Vector2D<double>& a = cubic.p[0];
    const Vector2D<double>& b = cubic.p[3];
    return {{a, Between(a, b, 1.0 / 3.0), Between(a, b, 2.0 / 3.0), b}};
}

} // namespace

Vector2D<double> PointAt(const Cubic& cubic, double t) noexcept {
    const Vector2D<double> a = Between(cubic.p[0], cubic.p[1], t);
    const Vector2D<double> b = Between(cubic.p[1], cubic.p[2], t);
    const Vector2D<double> c = Between(cubic.p[2], cubic.p[3], t);
    return Between(Between(a, b, t), Between(b, c, t), t);
}

Vector2D<double> VelocityAt(const Cubic& cubic, double t) noexcept {
    const auto& p = cubic.p;
    const double a = 3.0 * (1.0 - t) * (1.0 - t);
    const double b = 6.0 * (1.0 - t) * t;
    const double c = 3.0 * t * t;
    return {a * (p[1].x - p[0].x) + b * (p[2].x - p[1].x) + c * (p[3].x - p[2].x),
            a * (p[1].y - p[0].y) + b * (p[2].y - p[1].y) + c * (p[3].y - p[2].y)};
}

double ParameterAt(const Cubic& cubic, double x) noexcept {
    double low = 0.0;
    double high = 1.0;
    for (int i = 0; i < 60; ++i) {
        const double middle = 0.5 * (low + high);
        (PointAt(cubic, middle).x < x ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

std::pair<Cubic, Cubic> Cut(const Cubic& cubic, double t) noexcept {
    const Vector2D<double> a = Between(cubic.p[0], cubic.p[1], t);
    const Vector2D<double> b = Between(cubic.p[1], cubic.p[2], t);
    const Vector2D<double> c = Between(cubic.p[2], cubic.p[3], t);
    const Vector2D<double> ab = Between(a, b, t);
    const Vector2D<double> bc = Between(b, c, t);
    const Vector2D<double> middle = Between(ab, bc, t);
    return {Cubic{{cubic.p[0], a, ab, middle}}, Cubic{{middle, bc, c, cubic.p[3]}}};
}

bool IsThirds(const Cubic& cubic) noexcept {
    const double third = cubic.width() / 3.0;
    const double close = 1e-12 * cubic.width();
    return std::fabs(cubic.p[1].x - cubic.p[0].x - third) <= close
           && std::fabs(cubic.p[3].x - cubic.p[2].x - third) <= close;
}

Cubic AsThirds(const Cubic& cubic, double mostSlope) noexcept {
    const double third = cubic.width() / 3.0;
    // Where the near handle has no length, the next point tells the direction.
    const auto slope = [&](const Vector2D<double>& a, const Vector2D<double>& b, const Vector2D<double>& c,
                           const Vector2D<double>& d) {
        for (const auto& [dx, dy] :
             {std::pair(b.x - a.x, b.y - a.y), std::pair(c.x - a.x, c.y - a.y), std::pair(d.x - a.x, d.y - a.y)}) {
            if (std::fabs(dx) <= 1e-12 * cubic.width() && dy == 0.0) continue;
            const double steepness = dx == 0.0 ? std::copysign(mostSlope, dy) : dy / dx;
            return std::clamp(steepness, -mostSlope, mostSlope);
        }
        return 0.0;
    };
    const auto& p = cubic.p;
    const double left = slope(p[0], p[1], p[2], p[3]);
    // Seen from the right end both differences turn their signs; a vertical handle then rises where it points down.
    const auto turned = [](const Vector2D<double>& v) { return Vector2D<double>{-v.x, -v.y}; };
    const double right = slope(turned(p[3]), turned(p[2]), turned(p[1]), turned(p[0]));
    return {{p[0], {p[0].x + third, p[0].y + left * third}, {p[3].x - third, p[3].y - right * third}, p[3]}};
}

Distance MeasureDistance(const Cubic& cubic, const Cubic& thirds, double enough) noexcept {
    constexpr int kPlaces = 34;
    Distance largest;
    const double width = cubic.width();
    if (!(width > 0.0)) return largest;
    const Powers x = PowersOf(cubic.p[0].x, cubic.p[1].x, cubic.p[2].x, cubic.p[3].x);
    const Powers y = PowersOf(cubic.p[0].y, cubic.p[1].y, cubic.p[2].y, cubic.p[3].y);
    const Powers other = PowersOf(thirds.p[0].y, thirds.p[1].y, thirds.p[2].y, thirds.p[3].y);
    for (int i = 1; i < kPlaces; ++i) {
        const double t = static_cast<double>(i) / kPlaces;
        const double way = x.at(t);
        const double off = std::fabs(other.at(std::clamp(way / width, 0.0, 1.0)) - y.at(t));
        if (!(off <= largest.y)) largest = {off, cubic.p[0].x + way}; // NaN counts
        if (!(off <= enough)) break;
    }
    return largest;
}

// At the same x the distance is 3 t (1 - t) ((1 - t) a + t b), a and b being those of the handles' ends; it is extreme
// where 3 (a - b) t^2 + (2 b - 4 a) t + a = 0.
double DistanceFromChord(const Cubic& cubic) noexcept {
    const auto& p = cubic.p;
    const double slope = (p[3].y - p[0].y) / cubic.width();
    const double a = p[1].y - p[0].y - slope * (p[1].x - p[0].x);
    const double b = p[2].y - p[3].y - slope * (p[2].x - p[3].x);
    const double linear = 2.0 * b - 4.0 * a;
    const double q = -0.5 * (linear + std::copysign(2.0 * std::sqrt(std::max(a * a - a * b + b * b, 0.0)), linear));
    double largest = 0.0;
    for (const double t : {q / (3.0 * (a - b)), a / q})
        if (t > 0.0 && t < 1.0) largest = std::max(largest, std::fabs(3.0 * t * (1.0 - t) * ((1.0 - t) * a + t * b)));
    return largest;
}

void AppendCorners(const Cubic& cubic, double tolerance, double minWidth, std::vector<Vector2D<double>>& corners) {
    constexpr double kShortest = 1.0 / (1 << 14);
    double step = 1.0;
    for (double from = 0.0; from < 1.0;) {
        const Cubic rest = from > 0.0 ? Cut(cubic, from).second : cubic;
        double to = 1.0;
        double factor = 1.0; // by which the next line may be longer: the distance grows with the square
        for (;;) {
            to = from + step < 1.0 ? from + step : 1.0;
            const Cubic piece = to < 1.0 ? Cut(rest, (to - from) / (1.0 - from)).first : rest;
            const double off = piece.width() > 0.0 ? DistanceFromChord(piece) : 0.0;
            const bool isUseful = off > 0.0 && std::isfinite(off);
            factor = std::clamp(isUseful ? 0.95 * std::sqrt(tolerance / off) : 2.0, 0.1, 2.0);
            if (!(off > tolerance) || !isUseful || piece.width() < 2.0 * minWidth || to - from < kShortest) {
                if (to < 1.0) corners.push_back(piece.p[3]);
                break;
            }
            step = (to - from) * std::min(factor, 0.9);
        }
        step = std::max((to - from) * factor, kShortest);
        from = to;
    }
}

Distance SplitToThirds(const Cubic& cubic, double tolerance, double minWidth, std::vector<Cubic>& pieces) {
    const double mostSlope = 1e9; // beyond, doubles hold no slope worth having
    Distance largest;
    const auto split = [&](const auto& self, const Cubic& part, int depth) -> void {
        Cubic thirds = part;
        if (!IsThirds(part)) {
            thirds = AsThirds(part, mostSlope);
            Distance off = MeasureDistance(part, thirds, tolerance);
            if (!(off.y <= tolerance)) {
                const auto [left, right] = Cut(part, 0.5);
                if (depth < kMostHalvings && left.width() >= minWidth && right.width() >= minWidth) {
                    self(self, left, depth + 1);
                    self(self, right, depth + 1);
                    return;
                }
                // Too narrow to be cut, beside a place where the curve is vertical: its slope would lead far away.
                off = MeasureDistance(part, thirds);
                const Cubic line = AsLine(part);
                const Distance lineOff = MeasureDistance(part, line);
                if (!(off.y <= lineOff.y)) {
                    thirds = line;
                    off = lineOff;
                }
            }
            if (off.y > largest.y) largest = off;
        }
        pieces.push_back(thirds);
    };
    split(split, cubic, 0);
    return largest;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
