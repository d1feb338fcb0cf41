#include "FCurveLib/Match.h"

#include "interp/ControlPoints.h"
#include "interp/Formula.h"
#include "interp/Kinds.h"
#include "interp/TwoPoints.h"
#include "model/Raw.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <type_traits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::BezierArgs;
using Private::Kind;
using Private::Raw;
using Private::Read;

namespace {

enum class Quantity { Value, Slope };
enum class Side { Left, Right };

double End(Quantity quantity, const Segment& segment, Side side);

// --- what a neighbour contributes ------------------------------------------------------------------------------------
// Below, the neighbour lies on the given side of the key at which it meets the match segment.

const Segment* Beside(const Keyframe& key, Side side) noexcept {
    return side == Side::Left ? Read::leftSegment(key) : Read::rightSegment(key);
}

double Own(Quantity quantity, double x, const Interpolator& interpolator, const Segment& segment) {
    return quantity == Quantity::Value ? interpolator.eval(x, segment) : interpolator.getFirstDerivative(x, segment);
}
double FlatAt(Quantity quantity, const Keyframe& key) noexcept {
    return quantity == Quantity::Value ? key.getY() : 0.0;
}

// The slope of a chord that is broken into (a, b) and (c, d); one key may be both b and c.
double ChordSlope(const Keyframe& a, const Keyframe& b, const Keyframe& c, const Keyframe& d) noexcept {
    return ((b.getY() - a.getY()) + (d.getY() - c.getY())) / ((b.getX() - a.getX()) + (d.getX() - c.getX()));
}

// Whether a match on that side of a key is flat there.
bool IsFlatEnd(Kind match, Side side) noexcept {
    return match == (side == Side::Left ? Kind::MatchIn : Kind::MatchOut);
}

double BesideMatch(Quantity quantity, Kind neighbour, const Keyframe& key, Side side) noexcept {
    const Segment* const left = Read::leftSegment(key);
    const Segment* const right = Read::rightSegment(key);
    const Keyframe* const previous = left ? Read::leftKey(*left) : nullptr;
    const Keyframe* const next = right ? Read::rightKey(*right) : nullptr;
    if (quantity == Quantity::Value || IsFlatEnd(neighbour, side) || !previous || !next) return FlatAt(quantity, key);
    return ChordSlope(*previous, key, key, *next);
}

// A host's kind, on a copy of the segment from which nothing else can be reached.
double Isolated(Quantity quantity, const Interpolator& interpolator, const Segment& segment, double x) {
    const auto copy = [](const Keyframe* key, Keyframe& target) {
        if (key) target.set(key->get());
        return key ? &target : nullptr;
    };
    Keyframe left;
    Keyframe right;
    const Private::BorrowedSegment isolated(copy(Read::leftKey(segment), left), copy(Read::rightKey(segment), right),
                                            Read::inTangent(segment), Read::outTangent(segment));
    return Own(quantity, x, interpolator, isolated.get());
}

// Whether an open segment takes the quantity from the curve's other end.
bool Wraps(Quantity quantity, const Interpolator* interpolator) noexcept {
    if (!interpolator) return false;
    switch (Private::KindOf(*interpolator).kind) {
    case Kind::Cycle:
        return true;
    case Kind::CycleOffset:
        return quantity == Quantity::Slope;
    case Kind::Formula: {
        const auto& leaves = static_cast<const Private::Formula*>(interpolator)->leaves();
        return std::any_of(leaves.begin(), leaves.end(), [=](const auto& leaf) { return Wraps(quantity, leaf.get()); });
    }
    default:
        return false;
    }
}

// Whether the interpolator can be asked on this segment without asking a match back.
bool IsSafe(const Private::KindRow& kind, const Interpolator& interpolator, const Segment& segment) noexcept {
    constexpr Private::Reads unsafe = Private::kReadsNeighbours | Private::kReadsCurve;
    return !(kind.reads & unsafe) || !(Private::ReadsOf(&interpolator, segment) & unsafe);
}

double Contribution(Quantity quantity, const Interpolator& interpolator, const Segment& neighbour, const Keyframe& key,
                    Side side);

// A Cycle or CycleOffset in the open segment at the key: the curve's other end.
double AcrossCycle(Quantity quantity, Kind cycle, const Segment& open, const Keyframe& key, Side side) {
    const FCurve* const curve = Read::curve(open);
    if (!curve || curve->size() < 3 || (quantity == Quantity::Value && cycle == Kind::CycleOffset))
        return FlatAt(quantity, key);

    const Segment& leading = Read::firstSegment(*curve);
    const Segment& trailing = Read::lastSegment(*curve);
    const Keyframe& first = *Read::rightKey(leading);
    const Keyframe& last = *Read::leftKey(trailing);
    const Keyframe& far = side == Side::Left ? last : first;
    const Segment& farSegment = *Beside(far, side);
    const Interpolator* const interpolator = Read::interpolator(farSegment);
    if (!interpolator) return 0.0;
    const Private::KindRow& farKind = Private::KindOf(*interpolator);
    if (!farKind.isMatch()) return Contribution(quantity, *interpolator, farSegment, far, side);

    // That end is a match's, too, and depends on the other open segment. If both lead to the other end, the left one is
    // decided here and the right one follows it, as a period is taken from its start.
    if (quantity == Quantity::Slope && IsFlatEnd(farKind.kind, side)) return 0.0;
    if (side == Side::Left && Wraps(quantity, Read::interpolator(trailing))) {
        if (quantity == Quantity::Value) return key.getY();
        return ChordSlope(*Read::leftKey(farSegment), last, first, *Read::rightKey(*Read::rightSegment(first)));
    }
    return End(quantity, farSegment, side == Side::Left ? Side::Right : Side::Left);
}

double InFormula(Quantity quantity, const Private::Formula& formula, const Segment& neighbour, const Keyframe& key,
                 Side side) {
    const Private::Jet jet = formula.run<Private::Jet>(key.getX(), [&](const Interpolator& leaf) {
        return Private::Jet{Contribution(Quantity::Value, leaf, neighbour, key, side),
                            Contribution(Quantity::Slope, leaf, neighbour, key, side), 0.0};
    });
    return quantity == Quantity::Value ? jet.v : jet.d1;
}

double Contribution(Quantity quantity, const Interpolator& interpolator, const Segment& neighbour, const Keyframe& key,
                    Side side) {
    const Private::KindRow& row = Private::KindOf(interpolator);
    if (row.isMatch()) return BesideMatch(quantity, row.kind, key, side);
    if (IsSafe(row, interpolator, neighbour)) return Own(quantity, key.getX(), interpolator, neighbour);
    if (row.isHost()) return Isolated(quantity, interpolator, neighbour, key.getX());
    switch (row.kind) {
    case Kind::Cycle:
    case Kind::CycleOffset:
        return AcrossCycle(quantity, row.kind, neighbour, key, side);
    case Kind::Formula:
        return InFormula(quantity, static_cast<const Private::Formula&>(interpolator), neighbour, key, side);
    default: // Mirror
        return FlatAt(quantity, key);
    }
}

// The value or the slope at a match segment's end. Precondition: it has a key there.
double End(Quantity quantity, const Segment& segment, Side side) {
    // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): the precondition
    const Keyframe& key = side == Side::Left ? *Read::leftKey(segment) : *Read::rightKey(segment);
    const Segment* const neighbour = Beside(key, side);
    if (!neighbour) return FlatAt(quantity, key);
    const Interpolator* const interpolator = Read::interpolator(*neighbour);
    if (!interpolator) return 0.0;

    const double found = Contribution(quantity, *interpolator, *neighbour, key, side);
    const bool vertical = quantity == Quantity::Slope && std::abs(found) == Private::kVerticalSlope;
    return std::isfinite(found) && !vertical ? found : FlatAt(quantity, key);
}

// The value of a segment that lacks a key.
double OpenValue(const Segment& segment) {
    if (Read::leftKey(segment)) return End(Quantity::Value, segment, Side::Left);
    if (Read::rightKey(segment)) return End(Quantity::Value, segment, Side::Right);
    return 0.0;
}

} // namespace

// --- the kind --------------------------------------------------------------------------------------------------------

Match::Match() {
    setExpression("match()");
}
Match::Match(const Match& other) = default;

std::shared_ptr<Interpolator> Match::create() {
    return std::shared_ptr<Interpolator>(new Match);
}

std::shared_ptr<Interpolator> Match::clone() {
    return std::shared_ptr<Interpolator>(new Match(*this));
}

double Match::eval(double x, const Segment& segment) const {
    return Read::hasBothKeys(segment) ? Private::EvalEvenBezierY(x, Private::MatchArgs(*this, segment))
                                      : OpenValue(segment);
}

void Match::getRangeExtents(const Segment& segment, double x0, double x1, double& minY, double& maxY) const {
    if (!Read::hasBothKeys(segment))
        minY = maxY = OpenValue(segment);
    else
        BezierInterpBase::getRangeExtents(segment, x0, x1, minY, maxY);
}

void Match::computePolyline(const Segment& segment, double x0, double x1, int count,
                            std::vector<Vector2D<double>>& points) const {
    if (!Read::hasBothKeys(segment)) {
        const double y = OpenValue(segment);
        Private::TwoPoints(points, x0, y, x1, y);
    } else {
        BezierInterpBase::computePolyline(segment, x0, x1, count, points);
    }
}

void Match::getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2,
                          double& y2, double& x3, double& y3) const {
    Private::MatchArgs(*this, segment).getPoints(x0, y0, x1, y1, x2, y2, x3, y3);
}

BezierArgs Private::MatchArgs(const Interpolator& interpolator, const Segment& segment) {
    const auto& match = static_cast<const Match&>(interpolator);
    double outX = 0.0, outY = 0.0, inX = 0.0, inY = 0.0;
    match.getLeftTangent(segment, outX, outY);
    match.getRightTangent(segment, inX, inY);
    return {Read::leftKey(segment)->getX(),
            match.getLeftValue(segment),
            Read::rightKey(segment)->getX(),
            match.getRightValue(segment),
            outX,
            outY,
            inX,
            inY};
}

double Match::getLeftValue(const Segment& segment) const {
    return End(Quantity::Value, segment, Side::Left);
}
double Match::getRightValue(const Segment& segment) const {
    return End(Quantity::Value, segment, Side::Right);
}
double Match::getLeftSlope(const Segment& segment) const {
    return End(Quantity::Slope, segment, Side::Left);
}
double Match::getRightSlope(const Segment& segment) const {
    return End(Quantity::Slope, segment, Side::Right);
}

void Match::getLeftTangent(const Segment& segment, double& x, double& y) const {
    x = (Read::rightKey(segment)->getX() - Read::leftKey(segment)->getX()) / 3.0;
    y = getLeftSlope(segment) * x;
}
void Match::getRightTangent(const Segment& segment, double& x, double& y) const {
    x = (Read::leftKey(segment)->getX() - Read::rightKey(segment)->getX()) / 3.0;
    y = getRightSlope(segment) * x;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
