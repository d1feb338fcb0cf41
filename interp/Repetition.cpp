#include "interp/Repetition.h"

#include "FCurveLib/Constant.h"
#include "FCurveLib/Evaluation.h"
#include "interp/Repeat.h"
#include "model/Read.h"

#include <algorithm>
#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

Repetition::Repetition(const FCurve& curve, const Keyframe& first, const Keyframe& last, bool leading) noexcept
    : m_curve(&curve), m_first(&first), m_last(&last), m_begin(first.getX()), m_end(last.getX()), m_leading(leading) {}

std::optional<Repetition> Repetition::find(const Segment& segment) noexcept {
    const bool hasLeft = Read::leftKey(segment) != nullptr;
    const bool hasRight = Read::rightKey(segment) != nullptr;
    const FCurve* const curve = Read::curve(segment);
    if (hasLeft == hasRight || !curve || curve->size() < 3) return std::nullopt;
    return Repetition(*curve, *Read::rightKey(Read::firstSegment(*curve)), *Read::leftKey(Read::lastSegment(*curve)),
                      hasRight);
}

double Repetition::eval(double x) const {
    return EvalInInterior(x, *m_curve);
}

double Repetition::rise() const {
    return EvalSegment(m_end, *Read::leftSegment(*m_last)) - EvalSegment(m_begin, *Read::rightSegment(*m_first));
}

// A derivative of the keyed part at x, at a key that of the segment on the given side.
double Repetition::differentiate(double x, bool fromRight, int order) const {
    const Segment* segment = nullptr;
    if (x <= m_begin) {
        x = m_begin;
        segment = Read::rightSegment(*m_first);
    } else if (x >= m_end) {
        x = m_end;
        segment = Read::leftSegment(*m_last);
    } else {
        segment = &Read::findSegment(*m_curve, x);
        const Keyframe& key = *Read::leftKey(*segment);
        if (!fromRight && key.getX() == x) segment = Read::leftSegment(key);
    }
    const Interpolator* const interpolator = Read::interpolator(*segment);
    if (!interpolator) return 0.0;
    return order == 1 ? interpolator->getFirstDerivative(x, *segment) : interpolator->getSecondDerivative(x, *segment);
}

// Precondition: from <= to, both within the keyed part.
void Repetition::fold(ValueRange& extents, double from, double to, double shift) const {
    const Segment* segment =
        from >= m_end ? Read::leftSegment(*m_last) : &Read::findSegment(*m_curve, std::max(from, m_begin));
    for (;;) {
        const double left = Read::leftKey(*segment)->getX();
        const double right = Read::rightKey(*segment)->getX();
        double low = 0.0;
        double high = 0.0;
        if (const Interpolator* const interpolator = Read::interpolator(*segment))
            interpolator->getRangeExtents(*segment, std::max(left, from), std::min(right, to), low, high);
        extents.fold(low + shift);
        extents.fold(high + shift);
        if (right > to || right >= m_end) return;
        segment = Read::rightSegment(*Read::rightKey(*segment));
    }
}

// --- cycle -----------------------------------------------------------------------------------------------------------

double Repetition::evalCycle(double x, double offset) const {
    return EvalCycle(*this, x, offset);
}

double Repetition::differentiateCycle(double x, int order) const {
    return DifferentiateCycle(*this, m_leading, x, order);
}

ValueRange Repetition::cycleExtents(double x0, double x1, double offset) const {
    ValueRange extents;
    FoldCycle(*this, x0, x1, offset, extents);
    return extents;
}

// --- mirror ----------------------------------------------------------------------------------------------------------

double Repetition::evalMirror(double x) const {
    return EvalMirror(*this, x);
}

double Repetition::differentiateMirror(double x, int order) const {
    return DifferentiateMirror(*this, m_leading, x, order);
}

ValueRange Repetition::mirrorExtents(double x0, double x1) const {
    ValueRange extents;
    FoldMirror(*this, x0, x1, extents);
    return extents;
}

// --- the kinds -------------------------------------------------------------------------------------------------------

double EvalRepeated(Kind kind, double x, const Segment& segment) {
    const auto repetition = Repetition::find(segment);
    if (!repetition) return Constant::evaluate(x, segment);
    if (kind == Kind::Mirror) return repetition->evalMirror(x);
    return repetition->evalCycle(x, kind == Kind::CycleOffset ? repetition->rise() : 0.0);
}

double DifferentiateRepeated(Kind kind, double x, const Segment& segment, int order) {
    const auto repetition = Repetition::find(segment);
    if (!repetition) return 0.0;
    return kind == Kind::Mirror ? repetition->differentiateMirror(x, order) : repetition->differentiateCycle(x, order);
}

void RepeatedExtents(Kind kind, const Segment& segment, double x0, double x1, double& minY, double& maxY) {
    ValueRange extents;
    if (const auto repetition = Repetition::find(segment))
        extents = kind == Kind::Mirror
                      ? repetition->mirrorExtents(x0, x1)
                      : repetition->cycleExtents(x0, x1, kind == Kind::CycleOffset ? repetition->rise() : 0.0);
    else
        extents.fold(Constant::evaluate(x0, segment));
    minY = extents.low;
    maxY = extents.high;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
