#include "FCurveLib/Diff.h"

#include "FCurveLib/DisplayProperties.h"
#include "FCurveLib/Evaluation.h"
#include "FCurveLib/Interpolator.h"
#include "interp/Kinds.h"
#include "model/NotFinite.h"
#include "model/Read.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::kInfinity;
using Private::Read;
using P = PartDifference;

namespace {

bool HasSameExpression(const Segment& a, const Segment& b) {
    const Interpolator* const first = Read::interpolator(a);
    const Interpolator* const second = Read::interpolator(b);
    if (first == second) return true;
    return first && second && std::strcmp(first->getExpression(), second->getExpression()) == 0;
}

// --- parts -----------------------------------------------------------------------------------------------------------

// Compares the parts of two curves in order of x and hands each difference to a function, until that returns false.
template<class Tell>
class PartWalk {
public:
    PartWalk(const FCurve& a, const FCurve& b, double tolerance, bool properties, const Tell& tell)
        : m_tolerance(tolerance), m_properties(properties), m_tell(tell), m_a(a), m_b(b) {}

    // Whether it came to the end.
    bool run() {
        P curve;
        if (m_properties && std::strcmp(m_a.getName(), m_b.getName()) != 0) curve.what |= P::Name;
        if (differInProperties(m_a, m_b)) curve.what |= P::Properties;
        if (!tell(curve)) return false;

        const Segment* a = &Read::firstSegment(m_a);
        const Segment* b = &Read::firstSegment(m_b);
        std::size_t i = 0, j = 0; // keys passed
        if (!compareSegments(*a, *b, 0, 0, 0.0)) return false;
        if (!compareTangents(*Read::outTangent(*a), *Read::outTangent(*b), P::OutTangent, P::none, P::none, 0.0))
            return false;
        for (;;) {
            const Keyframe* const keyA = Read::rightKey(*a);
            const Keyframe* const keyB = Read::rightKey(*b);
            if (!keyA && !keyB) break;
            const double gap = keyA && keyB ? keyA->getX() - keyB->getX() : keyA ? -kInfinity : kInfinity;
            const bool isSame = std::abs(gap) <= m_tolerance;
            const bool isInA = isSame || gap < 0.0;
            const bool isInB = isSame || gap > 0.0;
            if (isSame) {
                if (!compareKeys(*keyA, *keyB, i, j)) return false;
            } else if (!tell({P::Key, isInA ? P::Missing : P::Added, isInA ? i : P::none, isInB ? j : P::none,
                              (isInA ? keyA : keyB)->getX()})) {
                return false;
            }
            if (isInA) a = Read::rightSegment(*keyA), ++i;
            if (isInB) b = Read::rightSegment(*keyB), ++j;
        }
        const Tangent& in = *Read::inTangent(*a);
        return compareTangents(in, *Read::inTangent(*b), P::InTangent, P::none, P::none, 0.0);
    }

private:
    bool tell(const P& difference) { return difference.what == 0 || m_tell(difference); }
    bool areFar(const Vector2D<double>& a, const Vector2D<double>& b) const {
        return !(std::abs(a.x - b.x) <= m_tolerance && std::abs(a.y - b.y) <= m_tolerance);
    }

    template<class Part>
    bool differInProperties(const Part& a, const Part& b) const {
        if (!m_properties) return false;
        auto i = a.beginProperties(), j = b.beginProperties();
        for (;; ++i, ++j) {
            while (i != a.endProperties() && IsEditorKeyString(i->first.c_str())) ++i;
            while (j != b.endProperties() && IsEditorKeyString(j->first.c_str())) ++j;
            if (i == a.endProperties() || j == b.endProperties())
                return i != a.endProperties() || j != b.endProperties();
            if (*i != *j) return true;
        }
    }

    bool compareKeys(const Keyframe& a, const Keyframe& b, std::size_t i, std::size_t j) {
        P key{P::Key, 0, i, j, a.getX()};
        if (areFar(a.get(), b.get())) key.what |= P::Position;
        if (a.isBreakdown() != b.isBreakdown() || a.isTangentsUnified() != b.isTangentsUnified()) key.what |= P::Flags;
        if (differInProperties(a, b)) key.what |= P::Properties;
        const Segment& rightA = *Read::rightSegment(a);
        const Segment& rightB = *Read::rightSegment(b);
        return tell(key)
               && compareTangents(*Read::inTangent(*Read::leftSegment(a)), *Read::inTangent(*Read::leftSegment(b)),
                                  P::InTangent, i, j, a.getX())
               && compareTangents(*Read::outTangent(rightA), *Read::outTangent(rightB), P::OutTangent, i, j, a.getX())
               && compareSegments(rightA, rightB, i + 1, j + 1, a.getX());
    }
    bool compareTangents(const Tangent& a, const Tangent& b, P::Part part, std::size_t i, std::size_t j, double x) {
        P tangent{part, 0, i, j, x};
        if (areFar(a.get(), b.get())) tangent.what |= P::Handle;
        if (a.getType() != b.getType()) tangent.what |= P::Type;
        if (a.isWeighted() != b.isWeighted() || a.isWeightLocked() != b.isWeightLocked()) tangent.what |= P::Flags;
        if (differInProperties(a, b)) tangent.what |= P::Properties;
        return tell(tangent);
    }
    bool compareSegments(const Segment& a, const Segment& b, std::size_t i, std::size_t j, double x) {
        P segment{P::Segment, 0, i, j, x};
        if (!HasSameExpression(a, b)) segment.what |= P::Interpolator;
        if (differInProperties(a, b)) segment.what |= P::Properties;
        return tell(segment);
    }

    const double m_tolerance;
    const bool m_properties;
    const Tell& m_tell;
    const FCurve& m_a;
    const FCurve& m_b;
};

template<class Tell>
bool WalkParts(const FCurve& a, const FCurve& b, double tolerance, bool properties, const Tell& tell) {
    const double usable = tolerance > 0.0 ? std::min(tolerance, std::numeric_limits<double>::max()) : 0.0;
    return PartWalk<Tell>(a, b, usable, properties, tell).run();
}

// --- values ----------------------------------------------------------------------------------------------------------

bool HasSameHandle(const Tangent& a, const Tangent& b) noexcept {
    return a.get() == b.get();
}

// Whether both segments have the same values everywhere, as far as their own parts tell.
bool HasSameShape(const Segment& a, const Segment& b) {
    const Keyframe *leftA = Read::leftKey(a), *leftB = Read::leftKey(b);
    const Keyframe *rightA = Read::rightKey(a), *rightB = Read::rightKey(b);
    if (!leftA != !leftB || !rightA != !rightB) return false;
    if ((leftA && leftA->get() != leftB->get()) || (rightA && rightA->get() != rightB->get())) return false;
    if (!HasSameHandle(*Read::inTangent(a), *Read::inTangent(b))) return false;
    if (!HasSameHandle(*Read::outTangent(a), *Read::outTangent(b))) return false;
    constexpr auto own = Private::kReadsLeftKey | Private::kReadsRightKey | Private::kReadsTangents;
    const Interpolator* const kind = Read::interpolator(a);
    return HasSameExpression(a, b) && (Private::ReadsOf(kind, a) & ~own) == 0;
}

class ValueWalk {
public:
    ValueWalk(const FCurve& a, const FCurve& b, CurveDifference& result) : m_a(a), m_b(b), m_result(result) {}

    void run(double start, double end) {
        const Segment* a = &Read::findSegment(m_a, start);
        const Segment* b = &Read::findSegment(m_b, start);
        for (double from = start;;) {
            const Keyframe* const keyA = Read::rightKey(*a);
            const Keyframe* const keyB = Read::rightKey(*b);
            const double nextA = keyA ? keyA->getX() : kInfinity;
            const double nextB = keyB ? keyB->getX() : kInfinity;
            const double to = std::min({nextA, nextB, end});
            const Segment* const afterA = nextA <= to ? Read::rightSegment(*keyA) : a;
            const Segment* const afterB = nextB <= to ? Read::rightSegment(*keyB) : b;
            if (!HasSameShape(*a, *b)) compare(*a, *b, from, to, difference(*afterA, *afterB, to));
            a = afterA;
            b = afterB;
            if (to == end) break;
            from = to;
        }
        look(end, difference(*a, *b, end));
    }

private:
    static double difference(const Segment& a, const Segment& b, double x) {
        const double first = EvalSegment(x, a);
        const double second = EvalSegment(x, b);
        if (first == second || (std::isnan(first) && std::isnan(second))) return 0.0;
        const double gap = std::abs(first - second);
        return std::isnan(gap) ? kInfinity : gap;
    }
    void look(double x, double gap) {
        if (!(gap > m_result.largest)) return;
        m_result.largest = gap;
        m_result.x = x;
    }

    // The curves differ by the given gap where the stretch ends: that frame belongs to what comes after it.
    void compare(const Segment& a, const Segment& b, double from, double to, double gapAtEnd) {
        constexpr std::size_t places = 32;
        constexpr double rounding = 1e-9;
        const double gapBefore = difference(a, b, to);
        const bool jumps = gapBefore != gapAtEnd && !(std::abs(gapBefore - gapAtEnd) <= rounding * gapBefore);
        if (jumps && from < to) to = std::nextafter(to, from);
        std::array<double, places + 1> xs, gaps;
        for (std::size_t i = 0; i <= places; ++i) {
            xs[i] = i == places ? to : from + (to - from) * (static_cast<double>(i) / places);
            gaps[i] = difference(a, b, xs[i]);
            look(xs[i], gaps[i]);
        }
        for (std::size_t i = 0; i <= places; ++i) {
            const std::size_t before = i == 0 ? 0 : i - 1;
            const std::size_t after = std::min(i + 1, places);
            if (gaps[i] < gaps[before] || gaps[i] < gaps[after] || gaps[before] == gaps[after]) continue;
            if (gaps[i] > 0.5 * m_result.largest) climb(a, b, xs[before], xs[after]);
        }
    }
    // Golden section, to the 10^-8 of the peak's surroundings that doubles can tell.
    void climb(const Segment& a, const Segment& b, double low, double high) {
        constexpr double golden = 0.6180339887498949;
        double left = high - golden * (high - low), right = low + golden * (high - low);
        double atLeft = difference(a, b, left), atRight = difference(a, b, right);
        for (int step = 0; step < 38; ++step) {
            if (atLeft > atRight) {
                high = right, right = left, atRight = atLeft;
                left = high - golden * (high - low);
                atLeft = difference(a, b, left);
            } else {
                low = left, left = right, atLeft = atRight;
                right = low + golden * (high - low);
                atRight = difference(a, b, right);
            }
        }
        look(left, atLeft);
        look(right, atRight);
    }

    const FCurve& m_a;
    const FCurve& m_b;
    CurveDifference& m_result;
};

// The frames from the first key of both to the last; a range that is turned round where there is no key.
void GrowToKeys(const FCurve& curve, double& start, double& end) {
    if (curve.size() < 2) return;
    start = std::min(start, Read::rightKey(Read::firstSegment(curve))->getX());
    end = std::max(end, Read::leftKey(Read::lastSegment(curve))->getX());
}

} // namespace

CurveDifference Diff(const FCurve& a, const FCurve& b, const DiffOptions& options) {
    CurveDifference result;
    WalkParts(a, b, options.tolerance, options.properties, [&](const P& difference) {
        result.parts.push_back(difference);
        return true;
    });
    double start = kInfinity, end = -kInfinity;
    GrowToKeys(a, start, end);
    GrowToKeys(b, start, end);
    if (start > end) start = end = 0.0; // no key at all
    if (std::isfinite(options.start)) start = options.start;
    if (std::isfinite(options.end)) end = options.end;
    if (start <= end) ValueWalk(a, b, result).run(start, end);
    return result;
}

bool Equal(const FCurve& a, const FCurve& b, double tolerance) {
    return &a == &b || WalkParts(a, b, tolerance, true, [](const P&) { return false; });
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
