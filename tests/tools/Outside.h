#pragma once

// What an edit of a whole curve must leave as it is: parts and values, recorded before it and compared after it.

#include "interp/Kinds.h" // internal: the rows of the kinds
#include "support/Basics.h"
#include "support/Museum.h"
#include "support/Recorder.h"
#include "support/SameCurve.h"

namespace Test {

struct Range {
    double start;
    double end;
    double step;
};

/// Ranges inside one segment, between keys, over all keys and outside them.
inline std::vector<Range> RangesOf(const FCurve& curve) {
    const std::vector<double> keys = KeysOf(curve);
    const double first = keys.empty() ? 0.0 : keys.front();
    const double last = keys.empty() ? 0.0 : keys.back();
    std::vector<Range> ranges = {{first - 5, first - 1, 1},
                                 {last + 1.3, last + 4.7, 0.5},
                                 {first - 3, last + 3, (last - first + 6) / 40},
                                 {first - 2, first + 1.5, 0.25}};
    for (std::size_t i = 0; i + 1 < keys.size() && i < 4; ++i) {
        const double width = keys[i + 1] - keys[i];
        ranges.push_back({keys[i] + 0.31 * width, keys[i] + 0.77 * width, 0.09 * width});
        ranges.push_back({keys[i], keys[i + 1], width / 8});
        ranges.push_back({keys[i], keys.back(), (keys.back() - keys[i]) / 16});
        ranges.push_back({keys[i] + 0.4 * width, keys.back() + 0.5 * width, 0.3 * width});
    }
    return ranges;
}

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

/// The largest absolute value of the keys and handles.
inline double SizeOf(const FCurve& curve) {
    double size = 0.0;
    for (const Segment& segment : curve)
        if (const auto key = segment.getRightKey())
            for (const auto& tangent : {key->getInTangent(), key->getOutTangent()})
                size = std::max(size, std::abs(key->getY()) + std::abs(tangent->getY()));
    return size;
}

/// Whether the segment's shape depends on more of the curve than its own keys and tangents.
inline bool ReadsOtherParts(const Segment& segment) {
    constexpr auto others = Private::kReadsNextKeys | Private::kReadsNeighbours | Private::kReadsCurve;
    return (Private::ReadsOf(segment.getInterpolator().get(), segment) & others) != 0;
}

/// Whether a part of the segment between new keys is shaped otherwise than before, handles apart.
inline bool ChangesWhenCut(const Segment& segment) {
    const Private::KindRow& row = Private::KindOf(segment);
    const bool runsToItsKey =
        (Private::ReadsOf(segment.getInterpolator().get(), segment) & Private::kReadsRightKey) != 0;
    return ReadsOtherParts(segment) || row.leftHalf != row.kind || (row.shape == Private::Shape::Free && runsToItsKey);
}

struct Map {
    Vector2D<double> scale = {1, 1};
    Vector2D<double> offset = {0, 0};
    Vector2D<double> operator()(const Vector2D<double>& p) const {
        return {scale.x * p.x + offset.x, scale.y * p.y + offset.y};
    }
};

/// The first place where the curve is not the old one, mapped; empty if there is none. Looks between the keys and
/// beside them, never at a key's own x, which reversing time gives to the other side. Of a part of the old curve,
/// segments that read the rest are let off.
inline std::string Misfit(const FCurve& before, const FCurve& after, const Map& map = {}, double first = -kInfinity,
                          double last = kInfinity) {
    for (const Segment& segment : before) {
        const auto [from, to] = SpanOf(segment);
        if (from < first || to > last) continue;
        const auto reads = Private::ReadsOf(segment.getInterpolator().get(), segment);
        if (last < kInfinity && (reads & Private::kReadsCurve) != 0) continue;
        double size = std::abs(map.offset.y) + std::abs(map.scale.y) * SizeOf(before);
        constexpr int places = 300;
        for (int i = 0; i < places; ++i) {
            const double x = from + (to - from) * (i + 0.5) / places;
            const Vector2D<double> expected = map({x, before.eval(x)});
            size = std::max(size, std::isfinite(expected.y) ? std::abs(expected.y) : 0.0);
            const double found = after.eval(expected.x);
            if (std::min(x - from, to - x) * std::min(1.0, std::abs(map.scale.x)) <= 2e-7) continue; // a key's value
            if (found == expected.y || (std::isnan(found) && std::isnan(expected.y))) continue;
            const double slope = std::abs(GetFirstDerivative(before, x));
            if (slope == 9999999.0) continue; // vertical: the last bit of x decides
            const double digits = std::abs(expected.x) + std::abs(map.offset.x) + std::abs(map.scale.x * x);
            const double rounding = std::abs(map.scale.y) * slope * 1e-14 * (digits + 1e-3) / std::abs(map.scale.x);
            if (std::abs(found - expected.y) <= 1e-10 * size + rounding) continue;
            return (testing::Message() << SameCurve::expression(segment) << " at " << x << ": " << expected.y
                                       << " expected, " << found << " found")
                .GetString();
        }
    }
    return "";
}

class Outside {
public:
    Outside(FCurve& curve, double start, double end)
        : m_curve(curve), m_before(FCurve::createCopy(curve)), m_start(start), m_end(end) {
        for (Segment& segment : curve) m_segments.push_back(segment.getShared());
    }

    /// Empty, or the first part outside the range that changed: another object, key, handle, interpolator, flag or
    /// property. The keys at the ends of the range are let off.
    std::string changedPart() const {
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

    /// Empty, or the first value outside the range that changed: by more than the tolerance where the range cuts a
    /// segment, by a bit elsewhere. Segments that read what the edit replaced are let off.
    std::string changedValue(double tolerance) const {
        for (const Segment& old : *m_before) {
            const bool whole = isLeft(old) || isRight(old);
            if (whole ? ReadsOtherParts(old) : ChangesWhenCut(old)) continue;
            const auto [from, to] = SpanOf(old);
            constexpr int places = 200;
            for (int k = 0; k < places; ++k) {
                const double x = from + (to - from) * k / places;
                // Near an end that is not on a key, a cut may stand an ulp beside the range.
                if (x > m_start - kOnKey && x < m_end + kOnKey) continue;
                if (old.getLeftKey() && x < old.getLeftKey()->getX()) continue;
                const double expected = m_before->eval(x);
                const double found = m_curve.eval(x);
                if (expected == found || (std::isnan(expected) && std::isnan(found))) continue;
                if (!whole && std::abs(expected - found) <= tolerance) continue;
                // Where a cut curve is vertical, the last bit of a handle moves the value by its cube root.
                if (!whole && std::abs(GetFirstDerivative(*m_before, x)) == 9999999.0) continue;
                return (testing::Message()
                        << SameCurve::expression(old) << " at " << x << ": " << expected << " became " << found)
                    .GetString();
            }
        }
        return "";
    }

private:
    static constexpr double kOnKey = 1e-7;

    bool isLeft(const Segment& segment) const {
        return segment.getRightKey() && segment.getRightKey()->getX() <= m_start + kOnKey;
    }
    bool isRight(const Segment& segment) const {
        return segment.getLeftKey() && segment.getLeftKey()->getX() >= m_end - kOnKey;
    }

    FCurve& m_curve;
    std::shared_ptr<FCurve> m_before;
    std::vector<std::shared_ptr<Segment>> m_segments;
    double m_start;
    double m_end;
};

} // namespace Test
