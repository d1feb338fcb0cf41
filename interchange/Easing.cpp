#include "interchange/Easing.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

bool IsWithin(const Cubic& cubic) {
    const double rounding = 1e-9 * cubic.width();
    return cubic.p[1].x <= cubic.p[3].x + rounding && cubic.p[2].x >= cubic.p[0].x - rounding;
}

// Where the cubic's y turns: the roots of a t^2 + b t + d0, up to a factor y'(t).
std::array<double, 2> TurnsOf(double d0, double d1, double d2) {
    const double a = d0 - 2.0 * d1 + d2;
    const double b = 2.0 * (d1 - d0);
    if (a == 0.0) return {b != 0.0 ? -d0 / b : 0.0, 0.0};
    const double discriminant = b * b - 4.0 * a * d0;
    if (!(discriminant >= 0.0)) return {0.0, 0.0};
    const double q = -0.5 * (b + std::copysign(std::sqrt(discriminant), b));
    return {q / a, q != 0.0 ? d0 / q : 0.0};
}

// Where the cubic must be cut, if anywhere within 0 and 1, in rising order.
std::array<double, 2> CutsOf(const Cubic& cubic) {
    const auto& p = cubic.p;
    // As high at its end as at its start: at its extreme values.
    const double d0 = p[1].y - p[0].y;
    const double d2 = p[3].y - p[2].y;
    const double height = std::max(std::fabs(d0), std::fabs(d2));
    if (height > 0.0 && std::fabs(p[3].y - p[0].y) <= 1e-9 * height) {
        auto turns = TurnsOf(d0, p[2].y - p[1].y, d2);
        std::sort(turns.begin(), turns.end());
        return turns;
    }
    if (IsWithin(cubic)) return {};
    // Where x is slowest. On both sides x'(t) only rises or falls from there, so that its Bezier coefficients, the
    // distances of the control points, cannot be negative; nor can those of any part.
    const double dx0 = p[1].x - p[0].x;
    const double dx1 = p[2].x - p[1].x;
    return {(dx0 - dx1) / (dx0 - 2.0 * dx1 + p[3].x - p[2].x), 0.0};
}

// Keeps a handle's direction.
void Shorten(Vector2D<double>& tip, const Vector2D<double>& key, double x) {
    tip = {x, key.y + (tip.y - key.y) * ((x - key.x) / (tip.x - key.x))};
}

// Appends pieces that fit; returns whether all do, and none had to be changed.
bool Fit(const Cubic& cubic, int depth, std::vector<Cubic>& pieces) {
    constexpr double kGap = Keyframe::getMinSeparation();
    constexpr int kDeepest = 4; // extremes, slowest place, extremes; once more for rounding
    const std::array<double, 2> cuts = CutsOf(cubic);
    Cubic rest = cubic;
    bool fits = true;
    if (depth < kDeepest) {
        double from = 0.0;
        for (double place : cuts) {
            if (!(place > 0.0 && place < 1.0) || !(rest.width() > 2.0 * kGap)) continue;
            // Keys closer than that to each other are none; what is left of the piece beside one is that wide.
            const double x = PointAt(cubic, place).x;
            if (x < rest.p[0].x + kGap) place = ParameterAt(cubic, rest.p[0].x + kGap);
            if (x > rest.p[3].x - kGap) place = ParameterAt(cubic, rest.p[3].x - kGap);
            if (!(place > from && place < 1.0)) continue;
            const auto [left, right] = Cut(rest, (place - from) / (1.0 - from));
            if (!(left.width() > 0.0 && right.width() > 0.0)) continue;
            fits = Fit(left, depth + 1, pieces) && fits;
            rest = right;
            from = place;
        }
        if (from > 0.0) return Fit(rest, depth + 1, pieces) && fits;
    }
    fits = cuts == std::array<double, 2>{};
    if (rest.p[1].x > rest.p[3].x) Shorten(rest.p[1], rest.p[0], rest.p[3].x);
    if (rest.p[2].x < rest.p[0].x) Shorten(rest.p[2], rest.p[3], rest.p[0].x);
    pieces.push_back(rest);
    return fits;
}

} // namespace

void CutToEasings(Track& track, const FCurve& curve, Notes& notes) {
    // Most curves need no cut and stay as they are, handles to the last digit; the first cut moves what was walked to
    // `knots`.
    std::vector<Knot> knots;
    std::vector<Cubic> pieces;
    for (std::size_t i = 0; i < track.knots.size(); ++i) {
        Knot& right = track.knots[i];
        if (i > 0 && track.knots[i - 1].piece == Piece::Bezier) {
            const Cubic cubic = CubicOf(track, i - 1);
            pieces.clear();
            if (!Fit(cubic, 0, pieces)) {
                notes.add(curve, cubic.p[0].x, cubic.p[3].x, Loss::Tangents, Loss::Shortened,
                          "handles of a piece too narrow to be cut");
                if (pieces.size() == 1) {
                    const auto& p = pieces[0].p;
                    (knots.empty() ? track.knots[i - 1] : knots.back()).out.handle = {p[1].x - p[0].x, p[1].y - p[0].y};
                    right.in.handle = {p[2].x - p[3].x, p[2].y - p[3].y};
                }
            }
            if (pieces.size() > 1 && knots.empty()) {
                knots.reserve(track.knots.size() + pieces.size());
                knots.assign(track.knots.begin(), track.knots.begin() + static_cast<std::ptrdiff_t>(i));
            }
            for (std::size_t j = 0; j < pieces.size() && pieces.size() > 1; ++j) {
                const auto& p = pieces[j].p;
                knots.back().out.handle = {p[1].x - p[0].x, p[1].y - p[0].y};
                if (j + 1 == pieces.size()) {
                    right.in.handle = {p[2].x - p[3].x, p[2].y - p[3].y};
                    continue;
                }
                Knot knot;
                knot.x = p[3].x;
                knot.y = knot.before = p[3].y;
                knot.piece = Piece::Bezier;
                knot.in.handle = {p[2].x - p[3].x, p[2].y - p[3].y};
                knots.push_back(knot);
            }
        }
        if (!knots.empty()) knots.push_back(right);
    }
    if (!knots.empty()) track.knots = std::move(knots);
}

Easing EasingOf(const Track& track, std::size_t index) {
    const Knot& left = track.knots[index];
    const Knot& right = track.knots[index + 1];
    const double width = right.x - left.x;
    const double rise = right.before - left.y;
    Easing easing;
    easing.x1 = std::clamp(left.out.handle.x / width, 0.0, 1.0);
    easing.x2 = std::clamp(1.0 + right.in.handle.x / width, 0.0, 1.0);
    if (rise == 0.0) return easing;
    easing.y1 = left.out.handle.y / rise;
    easing.y2 = 1.0 + right.in.handle.y / rise;
    if (!std::isfinite(easing.y1)) easing.y1 = 0.0;
    if (!std::isfinite(easing.y2)) easing.y2 = 1.0;
    return easing;
}

void SetEasing(Knot& left, Knot& right, const Easing& easing) {
    const double width = right.x - left.x;
    const double rise = right.y - left.y;
    if (easing.isLine()) {
        left.piece = Piece::Linear;
        return;
    }
    const bool isThirds = easing.isThirds();
    SetBezier(left, right, {isThirds ? width / 3.0 : easing.x1 * width, easing.y1 * rise},
              {isThirds ? -(width / 3.0) : (easing.x2 - 1.0) * width, (easing.y2 - 1.0) * rise}, !isThirds);
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
