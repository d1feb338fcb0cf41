#include "interchange/Easing.h"

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

constexpr int kDeepest = 4;

bool IsWithin(const Cubic& cubic) {
    const double rounding = 1e-9 * cubic.width();
    return cubic.p[1].x <= cubic.p[3].x + rounding && cubic.p[2].x >= cubic.p[0].x - rounding;
}

// Returns whether all pieces fit.
bool Halve(const Cubic& cubic, int depth, std::vector<Cubic>& pieces) {
    if (IsWithin(cubic) || depth == kDeepest) {
        pieces.push_back(cubic);
        Cubic& last = pieces.back();
        const bool fits = IsWithin(cubic);
        last.p[1].x = std::min(last.p[1].x, last.p[3].x);
        last.p[2].x = std::max(last.p[2].x, last.p[0].x);
        return fits;
    }
    const auto [left, right] = Cut(cubic, 0.5);
    const bool leftFits = Halve(left, depth + 1, pieces);
    return Halve(right, depth + 1, pieces) && leftFits;
}

// Where it ends as high as it starts, cut at its extreme values.
void CutAtExtremes(const Cubic& cubic, std::vector<Cubic>& pieces) {
    const double d0 = cubic.p[1].y - cubic.p[0].y;
    const double d1 = cubic.p[2].y - cubic.p[1].y;
    const double d2 = cubic.p[3].y - cubic.p[2].y;
    const double rise = std::fabs(cubic.p[3].y - cubic.p[0].y);
    const double height = std::max(std::fabs(d0), std::fabs(d2));
    std::vector<double> places;
    if (height > 0.0 && rise <= 1e-9 * height) {
        const double a = d0 - 2.0 * d1 + d2;
        const double b = 2.0 * (d1 - d0);
        const double discriminant = b * b - 4.0 * a * d0;
        if (a == 0.0 && b != 0.0) {
            places.push_back(-d0 / b);
        } else if (discriminant >= 0.0) {
            const double q = -0.5 * (b + std::copysign(std::sqrt(discriminant), b));
            if (a != 0.0) places.push_back(q / a);
            if (q != 0.0) places.push_back(d0 / q);
        }
    }
    std::sort(places.begin(), places.end());
    Cubic rest = cubic;
    double from = 0.0;
    for (const double place : places) {
        if (!(place > from + 1e-9 && place < 1.0 - 1e-9)) continue;
        const auto [left, right] = Cut(rest, (place - from) / (1.0 - from));
        if (!(left.width() > 0.0 && right.width() > 0.0)) continue;
        pieces.push_back(left);
        rest = right;
        from = place;
    }
    pieces.push_back(rest);
}

} // namespace

void CutToEasings(Track& track, const FCurve& curve, Notes& notes) {
    // Most curves need no cut and stay as they are, handles to the last digit; the first cut moves what was walked to
    // `knots`.
    std::vector<Knot> knots;
    std::vector<Cubic> halves;
    std::vector<Cubic> pieces;
    for (std::size_t i = 0; i < track.knots.size(); ++i) {
        Knot& right = track.knots[i];
        if (i > 0 && track.knots[i - 1].piece == Piece::Bezier) {
            const Cubic cubic = CubicOf(track, i - 1);
            halves.clear();
            pieces.clear();
            if (!Halve(cubic, 0, halves))
                notes.add(curve, cubic.p[0].x, cubic.p[3].x, Loss::Tangents, Loss::Shortened,
                          "handles that reach far beyond the segment");
            for (const Cubic& half : halves) CutAtExtremes(half, pieces);
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
