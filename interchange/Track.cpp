#include "interchange/Track.h"

#include <FCurveLib/FormatInterface.h>

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

} // namespace

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
