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

constexpr int kDeepest = 24;

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

Distance MeasureDistance(const Cubic& cubic, const Cubic& thirds) noexcept {
    constexpr int kPlaces = 34;
    Distance largest;
    const double width = cubic.width();
    if (!(width > 0.0)) return largest;
    for (int i = 1; i < kPlaces; ++i) {
        const Vector2D<double> point = PointAt(cubic, static_cast<double>(i) / kPlaces);
        const double y = PointAt(thirds, std::clamp((point.x - cubic.p[0].x) / width, 0.0, 1.0)).y;
        const double off = std::fabs(y - point.y);
        if (!(off <= largest.y)) largest = {off, point.x}; // NaN counts
    }
    return largest;
}

bool SplitUntil(const Cubic& cubic, double minWidth, const std::function<bool(const Cubic&)>& fits,
                std::vector<Cubic>& pieces) {
    const std::function<bool(const Cubic&, int)> split = [&](const Cubic& piece, int depth) {
        const bool isFitting = fits(piece);
        if (isFitting || depth >= kDeepest) {
            pieces.push_back(piece);
            return isFitting;
        }
        const auto [left, right] = Cut(piece, 0.5);
        if (!(left.width() >= minWidth && right.width() >= minWidth)) {
            pieces.push_back(piece);
            return false;
        }
        const bool leftFits = split(left, depth + 1);
        return split(right, depth + 1) && leftFits;
    };
    return split(cubic, 0);
}

Distance SplitToThirds(const Cubic& cubic, double tolerance, double minWidth, std::vector<Cubic>& pieces) {
    const double mostSlope = 1e9; // beyond, doubles hold no slope worth having
    std::vector<Cubic> parts;
    SplitUntil(
        cubic, minWidth,
        [&](const Cubic& piece) {
            return IsThirds(piece) || MeasureDistance(piece, AsThirds(piece, mostSlope)).y <= tolerance;
        },
        parts);
    Distance largest;
    for (const Cubic& part : parts) {
        pieces.push_back(IsThirds(part) ? part : AsThirds(part, mostSlope));
        Distance off = MeasureDistance(part, pieces.back());
        if (off.y > tolerance) {
            // Too narrow to be cut, beside a place where the curve is vertical: its slope would lead far away.
            const Cubic line = AsLine(part);
            const Distance lineOff = MeasureDistance(part, line);
            if (!(off.y <= lineOff.y)) {
                pieces.back() = line;
                off = lineOff;
            }
        }
        if (off.y > largest.y) largest = off;
    }
    return largest;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
