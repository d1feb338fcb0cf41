#include "interp/Repetition.h"

#include "FCurveLib/Constant.h"
#include "FCurveLib/Evaluation.h"
#include "model/Read.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double most = std::numeric_limits<double>::max();

// distance = n * span + rest, with n whole and 0 <= rest <= span.
struct Period {
    double n;
    double rest;

    // Precondition: the distance is finite, the span positive.
    Period(double distance, double span) noexcept
        : n(std::clamp(std::floor(distance / span), -most, most)), rest(distance) {
        constexpr double exact = 0x1p53;
        if (std::abs(n) >= exact) {
            rest = std::fmod(distance, span);
            if (rest < 0.0) rest += span;
        } else if (n != 0.0) {
            // The remainder of a whole quotient is a double, so the fused operation gives it without any rounding. It
            // is negative where the division rounded up to n: there the period begins.
            rest = std::max(0.0, std::fma(-n, span, distance));
        } else if (distance < 0.0) { // so near to zero that the quotient underflowed
            n = -1.0;
            rest = span;
        }
    }
};

} // namespace

Repetition::Repetition(const FCurve& curve, const Keyframe& first, const Keyframe& last, bool leading) noexcept
    : m_curve(&curve), m_first(&first), m_last(&last), m_begin(first.getX()), m_end(last.getX()),
      m_span(m_end - m_begin), m_leading(leading) {}

std::optional<Repetition> Repetition::Find(const Segment& segment) noexcept {
    const bool hasLeft = Read::leftKey(segment) != nullptr;
    const bool hasRight = Read::rightKey(segment) != nullptr;
    const FCurve* const curve = Read::curve(segment);
    if (hasLeft == hasRight || !curve || curve->size() < 3) return std::nullopt;
    return Repetition(*curve, *Read::rightKey(Read::firstSegment(*curve)), *Read::leftKey(Read::lastSegment(*curve)),
                      hasRight);
}

// From the first key to x, which is finite; between keys at opposite ends of the doubles it may overflow.
double Repetition::distance(double x) const noexcept {
    return std::clamp(x - m_begin, -most, most);
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
void Repetition::foldPart(ValueRange& extents, double from, double to, double shift) const {
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
    if (!std::isfinite(x)) return nan;
    const Period period(distance(x), m_span);
    return EvalInInterior(m_begin + period.rest, *m_curve) + period.n * offset;
}

double Repetition::differentiateCycle(double x, int order) const {
    if (!std::isfinite(x)) return nan;
    if (m_leading && x == m_begin) return differentiate(m_end, false, order);
    return differentiate(m_begin + Period(distance(x), m_span).rest, true, order);
}

ValueRange Repetition::cycleExtents(double x0, double x1, double offset) const {
    ValueRange extents;
    if (std::isnan(x0) || std::isnan(x1)) return extents;
    const Period from(distance(std::min(x0, x1)), m_span);
    const Period to(distance(std::max(x0, x1)), m_span);
    if (from.n == to.n && from.rest <= to.rest) {
        foldPart(extents, m_begin + from.rest, m_begin + to.rest, from.n * offset);
        return extents;
    }
    foldPart(extents, m_begin + from.rest, m_end, from.n * offset);
    foldPart(extents, m_begin, m_begin + to.rest, to.n * offset);
    if (to.n - from.n != 1.0) { // whole periods between, of which the first and the last reach farthest
        foldPart(extents, m_begin, m_end, (from.n + 1.0) * offset);
        foldPart(extents, m_begin, m_end, (to.n - 1.0) * offset);
    }
    return extents;
}

// --- mirror ----------------------------------------------------------------------------------------------------------
// Symmetric about the first key. Measured from there in either direction, each two spans begin with the keyed part
// forwards and end with it backwards.

double Repetition::evalMirror(double x) const {
    if (!std::isfinite(x)) return nan;
    const double rest = Period(std::abs(distance(x)), 2.0 * m_span).rest;
    return EvalInInterior(rest < m_span ? m_begin + rest : m_end - (rest - m_span), *m_curve);
}

double Repetition::differentiateMirror(double x, int order) const {
    if (!std::isfinite(x)) return nan;
    const bool before = x < m_begin || (m_leading && x == m_begin);
    // What lies to the right of x lies nearer to the first key if x is before it.
    const bool fromNearer = x < m_begin;
    const double rest = Period(std::abs(distance(x)), 2.0 * m_span).rest;
    const bool backwards = fromNearer ? rest > m_span || rest == 0.0 : rest >= m_span;
    const double at = !backwards ? m_begin + rest : rest == 0.0 ? m_begin : m_end - (rest - m_span);
    const double derivative = differentiate(at, backwards == fromNearer, order);
    return order == 1 && backwards != before ? -derivative : derivative;
}

ValueRange Repetition::mirrorExtents(double x0, double x1) const {
    ValueRange extents;
    if (std::isnan(x0) || std::isnan(x1)) return extents;
    const double from = distance(std::min(x0, x1));
    const double length = distance(std::max(x0, x1)) - from;
    if (!(length < 2.0 * m_span)) {
        foldPart(extents, m_begin, m_end, 0.0);
        return extents;
    }
    const double begin = Period(from, 2.0 * m_span).rest;
    const double end = begin + length;
    for (int piece = 0; piece < 4; ++piece) {
        const double left = std::max(begin - piece * m_span, 0.0);
        const double right = std::min(end - piece * m_span, m_span);
        if (left > right) continue;
        if (piece % 2 == 0)
            foldPart(extents, m_begin + left, m_begin + right, 0.0);
        else
            foldPart(extents, m_end - right, m_end - left, 0.0);
    }
    return extents;
}

// --- the kinds -------------------------------------------------------------------------------------------------------

double EvalRepeated(Kind kind, double x, const Segment& segment) {
    const auto repetition = Repetition::Find(segment);
    if (!repetition) return Constant::evaluate(x, segment);
    if (kind == Kind::Mirror) return repetition->evalMirror(x);
    return repetition->evalCycle(x, kind == Kind::CycleOffset ? repetition->rise() : 0.0);
}

double DifferentiateRepeated(Kind kind, double x, const Segment& segment, int order) {
    const auto repetition = Repetition::Find(segment);
    if (!repetition) return 0.0;
    return kind == Kind::Mirror ? repetition->differentiateMirror(x, order) : repetition->differentiateCycle(x, order);
}

void RepeatedExtents(Kind kind, const Segment& segment, double x0, double x1, double& minY, double& maxY) {
    ValueRange extents;
    if (const auto repetition = Repetition::Find(segment))
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
