#include "interchange/Track.h"

#include "FCurveInterchange/ConversionReport.h"
#include "interchange/CurveReader.h"
#include "interchange/Numbers.h"

#include <FCurveLib/FormatInterface.h>

#include <cmath>
#include <iterator>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

const char* ExpressionOf(Piece piece) {
    static constexpr const char* expressions[] = {"constant()", "constant_next()", "linear()", "bezier()"};
    return expressions[static_cast<int>(piece)];
}

const char* ExpressionOf(const End& end) {
    static constexpr const char* expressions[] = {"constant()", "bezier()", "cycle()", "cycle_offset()", "mirror()"};
    return end.expression.empty() ? expressions[end.kind] : end.expression.c_str();
}

bool IsSaid(const Side& side) {
    return side.isGiven || side.type != Tangent::Fixed || side.isWeighted || side.isWeightLocked;
}

void EmitSide(const Side& side, FormatInterface& target) {
    target.tangentType(side.type);
    target.tangentWeighted(side.isWeighted);
    target.tangentWeightLocked(side.isWeightLocked);
    if (side.isGiven) target.tangentVector(side.handle.x, side.handle.y);
}

void EmitSegment(const char* expression, const Knot* left, const Knot* right, FormatInterface& target) {
    target.startSegment(expression);
    if (left && IsSaid(left->out)) {
        target.startOutTangent();
        EmitSide(left->out, target);
        target.finishOutTangent();
    }
    if (right && IsSaid(right->in)) {
        target.startInTangent();
        EmitSide(right->in, target);
        target.finishInTangent();
    }
    target.finishSegment();
}

bool IsRaised(const Track& track) {
    return track.knots.size() > 1
           && (track.leading.kind == End::CycleOffset || track.trailing.kind == End::CycleOffset);
}

// Whether the last piece holds a value, and leaves room for a further key.
bool EndsWithStep(const Track& track) {
    const Knot& from = *(track.knots.end() - 2);
    return from.piece == Piece::Constant && track.knots.back().x - from.x >= 2.0 * Keyframe::getMinSeparation();
}

// By how much a turn rises otherwise: the difference is that in the third one.
void LoseRise(const Track& track, Loss::Remedy remedy, const char* detail, double difference) {
    const double first = track.knots.front().x;
    const double last = track.knots.back().x;
    Loss loss;
    loss.curve = track.name;
    loss.what = Loss::Ends;
    loss.remedy = remedy;
    loss.detail = detail;
    loss.places = {last};
    loss.difference = 3.0 * difference;
    loss.at = track.trailing.kind == End::CycleOffset ? last + 2.5 * (last - first) : first - 2.5 * (last - first);
    Lose(loss);
}

// What the piece from a knot on starts with.
double StartOf(const Track& track, std::size_t index) {
    double number = 0.0;
    for (const auto& [knot, expression] : track.pieceExpressions)
        if (knot == index && ParseNumber(expression, number)) return number;
    return track.knots[index].piece == Piece::ConstantNext ? track.knots[index + 1].y : track.knots[index].y;
}

} // namespace

void TakeRise(Track& track, double rise) {
    if (!IsRaised(track)) return;
    std::vector<Knot>& knots = track.knots;
    const std::size_t end = knots.size() - 1;
    const double start = StartOf(track, 0);
    const double own = (knots[end - 1].piece == Piece::Constant ? StartOf(track, end - 1) : knots[end].y) - start;
    if (own == rise) return;
    if (!EndsWithStep(track)) {
        LoseRise(track, Loss::Replaced, "by how much a repetition rises", std::fabs(own - rise));
        return;
    }
    LoseRise(track, Loss::Split, "the last step of a repetition takes 0.001 frames", 0.0);
    Knot step;
    step.x = knots[end].x - Keyframe::getMinSeparation();
    step.y = start + rise;
    knots.insert(std::prev(knots.end()), step);
    for (auto& [knot, property] : track.keyProperties)
        if (knot == end) ++knot;
}

void GiveRise(Track& track) {
    if (!IsRaised(track)) return;
    Knot& first = track.knots.front();
    Knot& last = track.knots.back();
    const auto isShown = [](const End& end) { return end.kind == End::Hold || end.kind == End::Line; };
    const double start = first.piece == Piece::ConstantNext ? track.knots[1].before : first.y;
    if (!isShown(track.trailing)) last.y = last.before;
    if (!isShown(track.leading) && first.piece == Piece::ConstantNext) {
        first.y = first.before = start;
        first.piece = Piece::Constant;
    }
    const double told = last.y - (track.leading.kind == End::Hold ? first.before : first.y);
    const double own = last.before - start;
    // A reader finds a step at the end, and so does the comparison.
    if (told != own && !EndsWithStep(track))
        LoseRise(track, Loss::Replaced, "by how much a repetition rises", std::fabs(told - own));
}

Cubic CubicOf(const Track& track, std::size_t index) {
    const Knot& left = track.knots[index];
    const Knot& right = track.knots[index + 1];
    const Vector2D<double> end{right.x, right.before};
    return {{{left.x, left.y},
             {left.x + left.out.handle.x, left.y + left.out.handle.y},
             {end.x + right.in.handle.x, end.y + right.in.handle.y},
             end}};
}

Cubic LineOf(const Knot& left, const Knot& right) {
    const double third = (right.x - left.x) / 3.0;
    const double rise = (right.before - left.y) / 3.0;
    return {{{left.x, left.y},
             {left.x + third, left.y + rise},
             {right.x - third, right.before - rise},
             {right.x, right.before}}};
}

void SetBezier(Knot& left, Knot& right, const Vector2D<double>& out, const Vector2D<double>& in, bool isWeighted) {
    left.piece = Piece::Bezier;
    left.out.handle = out;
    left.out.isGiven = true;
    left.out.isWeighted = isWeighted;
    right.in.handle = in;
    right.in.isGiven = true;
    right.in.isWeighted = isWeighted;
}

bool EmitTrack(const Track& track, FormatInterface& target) {
    if (!target.startCurve(track.name.c_str())) return true;
    for (const auto& [key, value] : track.properties) target.curveProperty(key.c_str(), value.c_str());
    target.startSegmentContainer();
    const std::vector<Knot>& knots = track.knots;
    EmitSegment(ExpressionOf(track.leading), nullptr, knots.empty() ? nullptr : &knots.front(), target);
    auto property = track.keyProperties.begin();
    auto expression = track.pieceExpressions.begin();
    for (std::size_t i = 0; i < knots.size(); ++i) {
        const Knot& knot = knots[i];
        target.startKeyframe();
        target.keyframePosition(knot.x, knot.y);
        if (knot.isLocked) target.keyframeLocked(true);
        if (knot.isBreakdown) target.keyframeBreakdown(true);
        if (knot.isUnified) target.keyframeTangentsUnified(true);
        for (; property != track.keyProperties.end() && property->first == i; ++property)
            target.keyframeProperty(property->second.first.c_str(), property->second.second.c_str());
        target.finishKeyframe();
        const bool isLast = i + 1 == knots.size();
        const char* text = isLast ? ExpressionOf(track.trailing) : ExpressionOf(knot.piece);
        if (expression != track.pieceExpressions.end() && expression->first == i) {
            text = expression->second.c_str();
            ++expression;
        }
        EmitSegment(text, &knot, isLast ? nullptr : &knots[i + 1], target);
    }
    target.finishSegmentContainer();
    return target.finishCurve();
}

void EmitDocument(const Document& document, FormatInterface& target) {
    target.startCurveContainer();
    for (const auto& [key, value] : document.properties) target.containerProperty(key.c_str(), value.c_str());
    for (const Track& track : document.tracks)
        if (!EmitTrack(track, target)) break;
    target.finishCurveContainer();
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
