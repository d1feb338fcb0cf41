#include "interchange/Resolve.h"

#include "FCurveInterchange/Conversion.h"

#include <FCurveLib/Bezier.h>
#include <FCurveLib/BezierInterpBase.h>
#include <FCurveLib/Constant.h>
#include <FCurveLib/ConstantNext.h>
#include <FCurveLib/Cycle.h>
#include <FCurveLib/CycleOffset.h>
#include <FCurveLib/Evaluation.h>
#include <FCurveLib/Extents.h>
#include <FCurveLib/Fitting.h>
#include <FCurveLib/Linear.h>
#include <FCurveLib/Mirror.h>
#include <FCurveLib/NumberInterp.h>
#include <FCurveLib/Rectangle.h>
#include <FCurveLib/Segment.h>
#include <FCurveLib/UnknownExpression.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

template<class T>
const T* As(const Interpolator* interpolator) {
    return dynamic_cast<const T*>(interpolator);
}

// A segment between two keys: its knots, the first at the left key, and where it ends.
struct Stretch {
    std::vector<Knot> knots;
    double end = 0.0; // the limit at the right key
    Vector2D<double> in{};
    std::uint8_t inType = Tangent::Fixed;
};

Knot KnotAt(double x, double y, Piece piece) {
    Knot knot;
    knot.x = x;
    knot.y = y;
    knot.before = y;
    knot.piece = piece;
    return knot;
}

bool IsFinite(const Cubic& cubic) {
    return std::all_of(std::begin(cubic.p), std::end(cubic.p),
                       [](const auto& p) { return std::isfinite(p.x) && std::isfinite(p.y); });
}

Cubic ArgsOf(const BezierInterpBase& interpolator, const Segment& segment) {
    Cubic cubic{};
    auto& p = cubic.p;
    interpolator.getBezierArgs(segment, p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y, p[3].x, p[3].y);
    return cubic;
}

// The largest distance of what was fitted from the segment, at irregular places.
double DistanceBetween(const FCurve& fitted, const Segment& segment, double x0, double x1, int count) {
    double largest = 0.0;
    Walk walk(fitted);
    for (int i = 0; i < count; ++i) {
        const double x = x0 + (x1 - x0) * IrregularPlace(i, count);
        walk.goTo(x);
        const double off = std::fabs(EvalSegment(x, *walk) - EvalSegment(x, segment));
        if (off > largest && std::isfinite(off)) largest = off;
    }
    return largest;
}

std::vector<Vector2D<double>> SamplesOf(const Segment& segment, double x0, double x1, int count) {
    std::vector<Vector2D<double>> samples;
    samples.reserve(static_cast<std::size_t>(count) + 1);
    for (int i = 0; i <= count; ++i) {
        const double x = i == count ? x1 : x0 + (x1 - x0) * i / count;
        samples.emplace_back(x, EvalSegment(x, segment));
    }
    return samples;
}

double LargestStep(const std::vector<Vector2D<double>>& samples) {
    double largest = 0.0;
    for (std::size_t i = 1; i < samples.size(); ++i)
        largest = std::max(largest, std::fabs(samples[i].y - samples[i - 1].y));
    return largest;
}

// Of samples that are as dense as it takes, twice as many each time, while that makes the steps between them smaller:
// more of them do not help where the curve jumps. What is beyond the first fit is taken from the budget.
FitResult FitDensely(const Segment& segment, double x0, double x1, double tolerance, double& budget) {
    constexpr double kPerFrame = 8.0;
    constexpr double kFewest = 64.0;
    constexpr double kMost = 65536.0;
    constexpr int kVeryMost = 262144;
    constexpr int kTries = 3;
    auto count = static_cast<int>(std::clamp(std::ceil((x1 - x0) * kPerFrame), kFewest, kMost));
    std::vector<Vector2D<double>> samples = SamplesOf(segment, x0, x1, count);
    for (;;) {
        // Half of it for what lies between the samples.
        FitResult fit = FitCurve(samples, 0.5 * tolerance);
        if (!(DistanceBetween(*fit.curve, segment, x0, x1, count) > 0.9 * tolerance)) return fit;
        const double step = LargestStep(samples);
        int tries = 0;
        do {
            count *= 2;
            if (tries++ == kTries || count > kVeryMost || budget < count) return fit;
            budget -= count;
            samples = SamplesOf(segment, x0, x1, count);
        } while (!(LargestStep(samples) < 0.75 * step));
    }
}

// Formulas and the like, as few Bezier pieces.
Stretch Fitted(const Segment& segment, double x0, double x1, double tolerance, double& budget) {
    const FitResult fit = FitDensely(segment, x0, x1, tolerance, budget);
    Stretch stretch;
    for (const Segment& piece : *fit.curve) {
        const auto left = piece.getLeftKey();
        const auto right = piece.getRightKey();
        if (!left || !right) continue;
        const auto interpolator = piece.getInterpolator();
        const auto* const bezier = As<BezierInterpBase>(interpolator.get());
        stretch.knots.push_back(KnotAt(left->getX(), left->getY(), bezier ? Piece::Bezier : Piece::Linear));
        Knot& knot = stretch.knots.back();
        if (stretch.knots.size() > 1) knot.in.handle = stretch.in;
        stretch.end = right->getY();
        if (!bezier) continue;
        const Cubic cubic = ArgsOf(*bezier, piece);
        knot.out.handle = {cubic.p[1].x - cubic.p[0].x, cubic.p[1].y - cubic.p[0].y};
        stretch.in = {cubic.p[2].x - cubic.p[3].x, cubic.p[2].y - cubic.p[3].y};
    }
    if (stretch.knots.empty()) stretch.knots.push_back(KnotAt(x0, 0.0, Piece::Constant)); // nothing finite
    stretch.knots.front().x = x0;
    return stretch;
}

End EndOf(const Interpolator* interpolator) {
    End end;
    if (As<Bezier>(interpolator)) end.kind = End::Line;
    if (As<Cycle>(interpolator)) end.kind = End::Cycle;
    if (As<CycleOffset>(interpolator)) end.kind = End::CycleOffset;
    if (As<Mirror>(interpolator)) end.kind = End::Mirror;
    return end;
}

// Where the curve jumps after a piece that moves, the piece ends 0.001 frames earlier and holds.
void SeparateJumps(Track& track) {
    constexpr double kGap = Keyframe::getMinSeparation();
    // Few curves have any.
    if (std::none_of(track.knots.begin(), track.knots.end(), [](const Knot& knot) { return knot.before != knot.y; }))
        return;
    std::vector<Knot> knots;
    knots.reserve(track.knots.size() + 4);
    for (std::size_t i = 0; i < track.knots.size(); ++i) {
        Knot knot = track.knots[i];
        const bool isFirst = i == 0;
        const bool jumps = knot.before != knot.y
                           && (isFirst ? track.leading.kind == End::Hold : track.knots[i - 1].piece != Piece::Constant);
        if (jumps && isFirst) {
            knots.push_back(KnotAt(knot.x - kGap, knot.before, Piece::Constant));
        } else if (jumps && knot.x - knots.back().x >= 2.0 * kGap) {
            Knot& left = knots.back();
            Knot stop = KnotAt(knot.x - kGap, knot.before, Piece::Constant);
            Track pair;
            pair.knots = {left, knot};
            if (left.piece == Piece::Bezier) {
                const Cubic cubic = CubicOf(pair, 0);
                const Cubic part = Cut(cubic, ParameterAt(cubic, stop.x)).first;
                left.out.handle = {part.p[1].x - left.x, part.p[1].y - left.y};
                stop.y = stop.before = part.p[3].y;
                stop.in.handle = {part.p[2].x - stop.x, part.p[2].y - stop.y};
            } else if (left.piece == Piece::Linear) {
                stop.y = stop.before = left.y + (knot.before - left.y) * (stop.x - left.x) / (knot.x - left.x);
            }
            knots.push_back(stop);
        }
        if (jumps) knot.before = knot.y;
        knots.push_back(knot);
    }
    track.knots = std::move(knots);
}

bool Holds(const Segment& segment, double from, double to, double value) {
    constexpr int kPlaces = 64;
    for (int i = 1; i < kPlaces; ++i)
        if (EvalSegment(from + (to - from) * i / kPlaces, segment) != value) return false;
    return true;
}

} // namespace

void BakeEnds(const FCurve& curve, double from, double to, Track& track) {
    std::vector<Knot>& knots = track.knots;
    if (knots.empty()) return;
    const double tolerance = ToleranceOf(curve);
    double budget = 1e6;
    const Segment& leading = *curve.begin();
    const Segment& trailing = *std::prev(curve.end());
    if (to > knots.back().x && !Holds(trailing, knots.back().x, to, knots.back().y)) {
        const Stretch stretch = Fitted(trailing, knots.back().x, to, tolerance, budget);
        Knot& joint = knots.back();
        joint.y = stretch.knots.front().y;
        joint.piece = stretch.knots.front().piece;
        joint.out = stretch.knots.front().out;
        knots.insert(knots.end(), stretch.knots.begin() + 1, stretch.knots.end());
        knots.push_back(KnotAt(to, stretch.end, Piece::Constant));
        knots.back().in.handle = stretch.in;
        track.trailing = {};
    }
    if (from < knots.front().x && !Holds(leading, from, knots.front().x, knots.front().before)) {
        const Stretch stretch = Fitted(leading, from, knots.front().x, tolerance, budget);
        knots.front().before = stretch.end;
        knots.front().in.handle = stretch.in;
        knots.insert(knots.begin(), stretch.knots.begin(), stretch.knots.end());
        track.leading = {};
    }
}

// Neighbours that say the same are one.
void Notes::add(const FCurve& curve, double from, double to, Loss::What what, Loss::Remedy remedy,
                std::string_view detail) {
    std::vector<Hint>& hints = m_hints[&curve];
    if (!hints.empty()) {
        Hint& last = hints.back();
        if (last.to == from && last.what == what && last.remedy == remedy && last.detail == detail) {
            last.to = to;
            return;
        }
    }
    hints.push_back({from, to, what, remedy, std::string(detail)});
}

void Notes::sort() {
    for (auto& [curve, hints] : m_hints)
        std::stable_sort(hints.begin(), hints.end(), [](const Hint& a, const Hint& b) { return a.from < b.from; });
}

const Notes::Hint* Notes::find(const FCurve& curve, double from, double to) const {
    const auto found = m_hints.find(&curve);
    if (found == m_hints.end()) return nullptr;
    const double middle = from + 0.5 * (to - from);
    // The last one that starts at or before the middle.
    auto after = std::upper_bound(found->second.begin(), found->second.end(), middle,
                                  [](double x, const Hint& hint) { return x < hint.from; });
    if (after == found->second.begin()) return nullptr;
    --after;
    return after->to >= middle ? &*after : nullptr;
}

const std::string* Notes::nameOf(const FCurve& curve) const {
    const auto found = m_names.find(&curve);
    return found == m_names.end() ? nullptr : &found->second;
}

double RangeOf(const FCurve& curve) {
    Rectangle<double> box;
    if (!GetInteriorExtents(curve, box)) return 1.0;
    const double size = box.height > 0.0 ? box.height : std::fabs(box.y);
    return size > 0.0 ? std::min(size, std::numeric_limits<double>::max()) : 1.0;
}

double ToleranceOf(const FCurve& curve) {
    const double share = Conversion::options().tolerance;
    return (share > 0.0 ? share : 0.0) * RangeOf(curve);
}

Track Resolve(const FCurve& curve, const Abilities& abilities, Notes& notes) {
    Track track;
    track.name = curve.getName();
    track.knots.reserve(curve.size());
    double tolerance = -1.0;
    double limit = 0.0; // of what was walked so far, from the left
    Vector2D<double> in{};
    std::uint8_t inType = Tangent::Fixed;
    bool isNextPending = false; // the piece before holds the value of the key to come
    Stretch stretch;            // of the segment that is at hand; its memory serves all
    for (const Segment& segment : curve) {
        const auto left = segment.getLeftKey();
        const auto right = segment.getRightKey();
        const auto interpolator = segment.getInterpolator();
        const Interpolator* const kind = interpolator.get();
        if (!left) {
            track.leading = EndOf(kind);
            if (!right) break;
            limit = right->getY();
            if (track.leading.kind == End::Line) {
                const auto tangent = segment.getInTangent();
                in = tangent->get();
                in.x = std::min(in.x, -Keyframe::getMinSeparation());
            } else if (track.leading.kind == End::Hold) {
                const double held = EvalSegment(right->getX(), segment);
                if (std::isfinite(held)) limit = held;
            }
            continue;
        }
        const double x = left->getX();
        stretch.knots.clear();
        stretch.end = 0.0;
        stretch.in = {};
        stretch.inType = Tangent::Fixed;
        if (!right) {
            track.trailing = EndOf(kind);
            Knot knot = KnotAt(x, left->getY(), Piece::Constant);
            if (track.trailing.kind == End::Line) {
                knot.out.handle = segment.getOutTangent()->get();
                knot.out.handle.x = std::max(knot.out.handle.x, Keyframe::getMinSeparation());
            } else if (track.trailing.kind == End::Hold) {
                const double held = EvalSegment(x, segment);
                if (std::isfinite(held)) knot.y = held;
            }
            stretch.knots.push_back(knot);
        } else if (const auto* const bezier = As<BezierInterpBase>(kind)) {
            const Cubic cubic = ArgsOf(*bezier, segment);
            if (!IsFinite(cubic)) {
                stretch.knots.push_back(KnotAt(x, left->getY(), Piece::Linear));
                stretch.end = right->getY();
            } else {
                stretch.knots.push_back(KnotAt(x, cubic.p[0].y, Piece::Bezier));
                stretch.knots[0].out.handle = {cubic.p[1].x - cubic.p[0].x, cubic.p[1].y - cubic.p[0].y};
                stretch.in = {cubic.p[2].x - cubic.p[3].x, cubic.p[2].y - cubic.p[3].y};
                stretch.end = cubic.p[3].y;
                if (As<Bezier>(kind)) {
                    // Handles that were not shortened keep the digits that far frames cost.
                    const Vector2D<double>& out = segment.getOutTangent()->get();
                    const Vector2D<double>& back = segment.getInTangent()->get();
                    if (x + out.x == cubic.p[1].x) stretch.knots[0].out.handle = out;
                    if (cubic.p[3].x + back.x == cubic.p[2].x) stretch.in = back;
                    stretch.knots[0].out.type = segment.getOutTangent()->getType();
                    stretch.inType = segment.getInTangent()->getType();
                }
            }
        } else if (As<Linear>(kind)) {
            stretch.knots.push_back(KnotAt(x, left->getY(), Piece::Linear));
            stretch.end = right->getY();
        } else if (As<Constant>(kind)) {
            stretch.knots.push_back(KnotAt(x, left->getY(), Piece::Constant));
            stretch.end = left->getY();
        } else if (As<ConstantNext>(kind)) {
            const double y = right->getY();
            stretch.knots.push_back(KnotAt(x, y, Piece::Constant));
            if (abilities.constantNext) {
                stretch.knots[0].y = left->getY();
                stretch.knots[0].piece = Piece::ConstantNext;
            }
            stretch.end = y;
        } else if (const auto* const number = As<NumberInterp>(kind); number || !kind || As<UnknownExpression>(kind)) {
            const double y = number ? number->getNumber() : 0.0;
            stretch.knots.push_back(KnotAt(x, y, Piece::Constant));
            stretch.end = y;
            notes.add(curve, x, right->getX(), Loss::Formulas, Loss::Replaced,
                      number ? "number" : "expression that is unknown or absent");
        } else {
            if (tolerance < 0.0) tolerance = ToleranceOf(curve);
            stretch = Fitted(segment, x, right->getX(), tolerance, notes.samplesLeft());
            notes.add(curve, x, right->getX(), Loss::Formulas, Loss::Fitted,
                      "\"" + std::string(kind->getExpression()) + '"');
        }
        Knot& first = stretch.knots.front();
        first.before = limit;
        first.in.handle = in;
        first.in.type = inType;
        first.segment = &segment;
        if (isNextPending && first.y != limit && first.piece != Piece::ConstantNext) {
            // What holds the next key's value cannot hold it: another one stands there.
            track.knots.back().y = limit;
            track.knots.back().piece = Piece::Constant;
        }
        isNextPending = first.piece == Piece::ConstantNext;
        track.knots.insert(track.knots.end(), stretch.knots.begin(), stretch.knots.end());
        limit = stretch.end;
        in = stretch.in;
        inType = stretch.inType;
    }
    if (abilities.rises) GiveRise(track);
    if (!abilities.jumps) SeparateJumps(track);
    return track;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
