#pragma once

// What of a curve must stay when a range of it is replaced, recorded before the edit and compared after it.

#include "support/Basics.h"
#include "support/Museum.h"
#include "support/SameCurve.h"

namespace Test {

/// Properties on every part, so that lost ones are noticed.
inline void Decorate(FCurve& curve) {
    curve.setName("decorated");
    curve.setProperty("curve", "yes");
    int number = 0;
    for (Segment& segment : curve) {
        const std::string text = std::to_string(number++);
        segment.setProperty("segment", text.c_str());
        segment.getInTangent()->setProperty("in", text.c_str());
        segment.getOutTangent()->setProperty("out", text.c_str());
        if (const auto key = segment.getRightKey()) key->setProperty("key", text.c_str());
    }
}

inline std::string ExpressionOf(const Segment& segment) {
    const auto interpolator = segment.getInterpolator();
    return interpolator ? interpolator->getExpression() : "";
}

/// Whether the segment's shape depends on keys beyond its own.
inline bool ReadsOtherKeys(const Segment& segment) {
    const std::string text = ExpressionOf(segment);
    for (const char* kind : {"spline", "match", "cycle", "mirror"})
        if (text.find(kind) != std::string::npos) return true;
    return false;
}

/// Whether a part of such a segment between new keys is shaped otherwise than before.
inline bool ChangesWhenCut(const Segment& segment) {
    return ReadsOtherKeys(segment) || ExpressionOf(segment).find("ease") == 0;
}

/// The largest absolute value of the keys and handles.
inline double SizeOf(const FCurve& curve) {
    double size = 0.0;
    for (const Segment& segment : curve) {
        const auto key = segment.getRightKey();
        if (key) size = std::max(size, std::abs(key->getY()) + std::abs(key->getInTangent()->getY()));
        if (key) size = std::max(size, std::abs(key->getY()) + std::abs(key->getOutTangent()->getY()));
    }
    return size;
}

class Outside {
public:
    Outside(FCurve& curve, double start, double end)
        : m_curve(curve), m_before(FCurve::createCopy(curve)), m_start(start), m_end(end) {
        for (Segment& segment : curve) m_segments.push_back(segment.getShared());
    }

    /// Empty, or the first thing that changed outside the range though it should not. Values are compared with the
    /// given tolerance where the range cuts a segment, to the last bit elsewhere.
    std::string difference(double tolerance) const {
        std::string fault = compareParts();
        return fault.empty() ? compareValues(tolerance) : fault;
    }

    const FCurve& before() const { return *m_before; }

private:
    static constexpr double kOnKey = 1e-7;

    bool isLeft(const Segment& segment) const {
        return segment.getRightKey() && segment.getRightKey()->getX() <= m_start + kOnKey;
    }
    bool isRight(const Segment& segment) const {
        return segment.getLeftKey() && segment.getLeftKey()->getX() >= m_end - kOnKey;
    }

    std::string compareParts() const {
        std::size_t i = 0;
        for (const Segment& old : *m_before) {
            const auto& now = m_segments[i];
            const std::string where = "segment " + std::to_string(i++) + ": ";
            if (!isLeft(old) && !isRight(old)) continue;
            if (now->getOwningCurve().get() != &m_curve) return where + "left the curve";
            std::string fault = SameCurve::expression(*now) != SameCurve::expression(old) ? "interpolator" : "";
            if (fault.empty()) fault = SameCurve::tangent(*old.getInTangent(), *now->getInTangent());
            if (!fault.empty() && !isRight(old)) return where + "in tangent: " + fault;
            fault = SameCurve::tangent(*old.getOutTangent(), *now->getOutTangent());
            if (!fault.empty() && isRight(old)) return where + "out tangent: " + fault;
            if (isRight(old) && old.getRightKey()) fault = SameCurve::key(*old.getRightKey(), *now->getRightKey());
            if (isLeft(old) && old.getLeftKey()) fault = SameCurve::key(*old.getLeftKey(), *now->getLeftKey());
            if (fault.empty()) fault = SameCurve::properties(old, *now);
            if (!fault.empty()) return where + fault;
        }
        return "";
    }

    std::string compareValues(double tolerance) const {
        std::size_t i = 0;
        for (const Segment& old : *m_before) {
            const std::size_t number = i++;
            const bool whole = isLeft(old) || isRight(old);
            if (ReadsOtherKeys(old) || (!whole && ChangesWhenCut(old))) continue;
            const auto left = old.getLeftKey();
            const auto [from, to] = SpanOf(old);
            constexpr int places = 200;
            for (int k = 0; k < places; ++k) {
                const double x = from + (to - from) * k / places;
                // Near an end that is not on a key, a cut may stand an ulp beside the range.
                if (x > m_start - kOnKey && x < m_end + kOnKey) continue;
                if (left && x < left->getX()) continue;
                const double expected = m_before->eval(x);
                const double found = m_curve.eval(x);
                if (expected == found || (std::isnan(expected) && std::isnan(found))) continue;
                if (!whole && std::abs(expected - found) <= tolerance) continue;
                // Where a cut curve is vertical, the last bit of a handle moves the value by its cube root.
                if (!whole && std::abs(GetFirstDerivative(*m_before, x)) == 9999999.0) continue;
                return (testing::Message() << "segment " << number << " " << ExpressionOf(old) << " at " << x << ": "
                                           << expected << " became " << found)
                    .GetString();
            }
        }
        return "";
    }

    FCurve& m_curve;
    std::shared_ptr<FCurve> m_before;
    std::vector<std::shared_ptr<Segment>> m_segments;
    double m_start;
    double m_end;
};

} // namespace Test
