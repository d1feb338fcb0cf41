#include "playback/PlaybackCurve.h"

#include "interp/Repeat.h"
#include "model/Read.h"
#include "playback/ScalarLanes.h"

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {

// --- Bezier pieces ---------------------------------------------------------------------------------------------------

BezierArgs ArgsOf(const Piece& piece) noexcept {
    BezierArgs args = piece;
    if (piece.isEven()) {
        args.outX = (piece.x3 - piece.x0) / 3.0;
        args.inX = -args.outX;
    } else {
        args.outX = std::abs(piece.outX);
    }
    return args;
}

// Where x lies on a piece that is neither free nor read at a distance: s, counted from the nearer key, as EvalLanes
// finds it. Sides are picked by index: a branch on them would be mispredicted half of the time.
struct Spot {
    double s;
    bool right; // the right key is nearer
};

// Addresses, unlike doubles, are picked without a branch.
const double& Pick(bool right, const double& r, const double& l) noexcept {
    return right ? r : l;
}

Spot SpotOf(const Piece& piece, double x) noexcept {
    const double width = piece.x3 - piece.x0;
    const bool even = piece.isEven();
    const double middle = even ? 0.5 * width : Scalar::MiddleLanes({}, width, piece.outX, piece.inX);
    const bool right = x - piece.x0 > middle;
    const double offset = std::abs(Pick(right, piece.x3, piece.x0) - x);
    if (offset <= (even ? piece.outX : GetEpsilon())) return {0.0, right};
    if (even) return {offset / width, right};
    const double near = std::abs(Pick(right, piece.inX, piece.outX));
    const double far = std::abs(Pick(right, piece.outX, piece.inX));
    return {Scalar::SolveLanes({}, width, near, far, offset, false), right};
}

BezierPlace PlaceOf(const Piece& piece, const BezierArgs& args, double x) noexcept {
    if (!piece.isFree()) {
        const Spot spot = SpotOf(piece, x);
        return spot.right ? BezierPlace{1.0 - spot.s, spot.s} : BezierPlace{spot.s, 1.0 - spot.s};
    }
    if (x - args.x0 <= GetEpsilon()) return {0.0, 1.0};
    if (args.x3 - x <= GetEpsilon()) return {1.0, 0.0};
    return RepairBezierPlace(x, args, 0.5);
}

// --- repetitions -----------------------------------------------------------------------------------------------------

// What the repetitions of interp/Repeat.h read.
struct KeyedPart {
    const PlaybackCurve& curve;

    double begin() const noexcept { return curve.first; }
    double end() const noexcept { return curve.last; }
    double eval(double x) const {
        return EvalPiece(curve, curve.pieces[pieceNear(x)], std::clamp(x, curve.first, curve.last));
    }
    double differentiate(double x, bool fromRight, int order) const {
        std::size_t piece = pieceNear(x);
        if (!fromRight && piece > 1 && curve.pieces[piece].x0 == x) --piece;
        return DifferentiatePiece(curve, curve.pieces[piece], std::clamp(x, curve.first, curve.last), order);
    }
    std::size_t pieceNear(double x) const noexcept {
        return std::clamp<std::size_t>(curve.find(x), 1, curve.count - 1);
    }
};

// --- formulas and hosts' interpolators -------------------------------------------------------------------------------

double AskForDerivative(const Interpolator& interpolator, const Segment& segment, double x, int order) {
    return order == 1 ? interpolator.getFirstDerivative(x, segment) : interpolator.getSecondDerivative(x, segment);
}

// A formula wants to know where its segment ends only where it is differentiated by differences.
double DifferentiateFormula(const Interpolator& formula, const Piece& piece, double x, int order) {
    const auto keyAt = [](double at) { return std::isfinite(at) ? Keyframe::create(at, 0.0) : nullptr; };
    const Segment bounds(nullptr, keyAt(piece.x0), nullptr, keyAt(piece.x3));
    return AskForDerivative(formula, bounds, x, order);
}

const PlaybackInterpolator& InterpolatorOf(const PlaybackCurve& curve, const Piece& piece) noexcept {
    return curve.interpolators[static_cast<std::size_t>(piece.y0)];
}

// Values of up to Gathered::capacity pairs of curve and x. Each step asks for the memory that the next one reads, for
// all pairs: in a scene of many curves, what is waited for is memory.
template<class CurveAt, class XAt>
void EvalScattered(const LaneSet& lanes, std::size_t count, const CurveAt& curveAt, const XAt& xAt, double* y) {
    std::size_t guesses[Gathered::capacity];
    for (std::size_t i = 0; i < count; ++i) Prefetch(curveAt(i).bucketAt(xAt(i)));
    for (std::size_t i = 0; i < count; ++i) {
        guesses[i] = curveAt(i).guess(xAt(i));
        Prefetch(curveAt(i).pieces + guesses[i]);
        Prefetch(curveAt(i).pieces + guesses[i] + 1);
    }
    Gathered gathered;
    for (std::size_t i = 0; i < count; ++i) {
        const PlaybackCurve& curve = curveAt(i);
        const double x = xAt(i);
        const Piece& piece = curve.pieces[curve.settle(guesses[i], x)];
        if (piece.isFree())
            y[i] = EvalFreePiece(curve, piece, x);
        else
            gathered.add(piece, x, i);
    }
    const std::size_t found = gathered.count;
    if (found == 0) return;
    gathered.fill(lanes.width);
    alignas(64) double values[Gathered::capacity];
    lanes.gathered(gathered, values);
    for (std::size_t i = 0; i < found; ++i) y[gathered.places[i]] = values[i];
}

} // namespace

std::size_t PlaybackCurve::search(std::size_t from, double x) const noexcept {
    const std::size_t to = buckets[bucketOf(x) / BucketLine::size + 1].first;
    const Piece* const found = std::partition_point(pieces + from, pieces + std::max(from, to),
                                                    [x](const Piece& piece) { return piece.x3 <= x; });
    return static_cast<std::size_t>(found - pieces);
}

double EvalFreePiece(const PlaybackCurve& curve, const Piece& piece, double x) {
    switch (FreeKindOf(piece)) {
    case FreeKind::Steep: {
        const BezierArgs args = ArgsOf(piece);
        return BezierY(PlaceOf(piece, args, x), args);
    }
    case FreeKind::Constant:
        return piece.y0;
    case FreeKind::Line:
        return piece.y0 + piece.y3 * (x - piece.x0);
    case FreeKind::Cycle:
        return EvalCycle(KeyedPart{curve}, x, piece.y0);
    case FreeKind::Mirror:
        return EvalMirror(KeyedPart{curve}, x);
    case FreeKind::Interpolator: {
        const PlaybackInterpolator& own = InterpolatorOf(curve, piece);
        return own.interpolator->eval(x, *own.segment);
    }
    }
    return 0.0;
}

double EvalPiece(const PlaybackCurve& curve, const Piece& piece, double x) {
    if (piece.isFree()) return EvalFreePiece(curve, piece, x);
    const Spot spot = SpotOf(piece, x);
    return Scalar::ValueLanes({}, spot.s, Pick(spot.right, piece.y3, piece.y0), Pick(spot.right, piece.y0, piece.y3),
                              Pick(spot.right, piece.inY, piece.outY), Pick(spot.right, piece.outY, piece.inY));
}

double DifferentiatePiece(const PlaybackCurve& curve, const Piece& piece, double x, int order) {
    if (piece.isStraight()) return order == 1 ? (piece.y3 - piece.y0) / (piece.x3 - piece.x0) : 0.0;
    if (!piece.isFree() || FreeKindOf(piece) == FreeKind::Steep) {
        const BezierArgs args = ArgsOf(piece);
        const BezierPlace at = PlaceOf(piece, args, x);
        return order == 1 ? BezierSlope(at, args) : BezierSecond(at, args);
    }
    switch (FreeKindOf(piece)) {
    case FreeKind::Line:
        return order == 1 ? piece.y3 : 0.0;
    case FreeKind::Cycle:
        return DifferentiateCycle(KeyedPart{curve}, piece.x0 > 0.0, x, order);
    case FreeKind::Mirror:
        return DifferentiateMirror(KeyedPart{curve}, piece.x0 > 0.0, x, order);
    case FreeKind::Interpolator: {
        const PlaybackInterpolator& own = InterpolatorOf(curve, piece);
        const bool isFormula = !Read::leftKey(*own.segment) && !Read::rightKey(*own.segment);
        return isFormula ? DifferentiateFormula(*own.interpolator, piece, x, order)
                         : AskForDerivative(*own.interpolator, *own.segment, x, order);
    }
    case FreeKind::Steep:
    case FreeKind::Constant:
        break;
    }
    return 0.0;
}

void EvalMany(const PlaybackCurve& curve, const double* x, double* y, std::size_t n) {
    const LaneSet& lanes = CurrentLanes();
    std::size_t at = 0;
    std::size_t i = 0;
    while (i < n) {
        at = curve.find(x[i], at);
        const bool stays = curve.holds(at, x[std::min(i + lanes.width, n) - 1]);
        if (stays && !curve.pieces[at].isFree()) {
            i += lanes.run(curve.pieces[at], x + i, y + i, n - i);
        } else {
            const std::size_t count = std::min(Gathered::capacity, n - i);
            EvalScattered(
                lanes, count, [&](std::size_t) -> const PlaybackCurve& { return curve; },
                [&](std::size_t j) { return x[i + j]; }, y + i);
            i += count;
        }
    }
}

void EvalTogether(const PlaybackCurve* curves, double x, std::size_t first, std::size_t last, double* y) {
    const LaneSet& lanes = CurrentLanes();
    while (first < last) {
        const std::size_t count = std::min(Gathered::capacity, last - first);
        EvalScattered(
            lanes, count, [&](std::size_t j) -> const PlaybackCurve& { return curves[first + j]; },
            [&](std::size_t) { return x; }, y + first);
        first += count;
    }
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
