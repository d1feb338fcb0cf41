#pragma once

// Curves as writers need them: every kind of interpolator told by the four kinds of pieces.

#include <FCurveLib/FCurve.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>

#include "FCurveInterchange/ConversionReport.h"
#include "interchange/Track.h"

#include <cmath>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

// What a writer did to a curve and knows better than the comparison of what it wrote with what it was given: why and
// how something became different. The comparison names the rest, and measures all of it.
class Notes {
public:
    struct Hint {
        double from;
        double to;
        Loss::What what;
        Loss::Remedy remedy;
        std::string detail;
    };

    // About the curve's range from .. to.
    void add(const FCurve& curve, double from, double to, Loss::What what, Loss::Remedy remedy,
             std::string_view detail);
    // The name under which the curve comes back, where it is not its own.
    void rename(const FCurve& curve, std::string name) { m_names[&curve] = std::move(name); }

    // How many more samples fits may take where the first are too far apart.
    double& samplesLeft() { return m_samplesLeft; }

    // To be called after the last hint, before the first search.
    void sort();
    // The last hint that starts before the middle of from .. to, if it covers that; else null.
    const Hint* find(const FCurve& curve, double from, double to) const;
    const std::string* nameOf(const FCurve& curve) const;

private:
    std::map<const FCurve*, std::vector<Hint>> m_hints;
    std::map<const FCurve*, std::string> m_names;
    double m_samplesLeft = 2e6;
};

// What a format can say besides constant, linear and Bezier pieces.
struct Abilities {
    bool constantNext = false;
    bool jumps = false; // a knot whose limit from the left is another value than its own
    bool rises = false; // repetitions that rise, by the difference of the outer keys' values
};

// The curve by knots and pieces; the control points are those after correction of overlong handles. Numbers, unknown
// and absent interpolators become constant pieces; formulas, repetitions between keys and hosts' kinds are fitted
// within the tolerance of the conversion. Where a format has no jumps, one takes the 0.001 frames before its key.
Track Resolve(const FCurve& curve, const Abilities& abilities, Notes& notes);

// Goes along a curve's segments, with rising x.
class Walk {
public:
    explicit Walk(const FCurve& curve) : m_at(curve.begin()), m_end(curve.end()) { findNext(); }

    // To the last segment that starts at or before x.
    void goTo(double x) {
        while (m_next <= x && m_next < HUGE_VAL) {
            ++m_at;
            findNext();
        }
    }
    // Where the next segment starts; HUGE_VAL after the last.
    double next() const { return m_next; }
    const Segment& operator*() const { return *m_at; }
    const Segment* operator->() const { return &*m_at; }

private:
    void findNext() {
        const auto next = std::next(m_at);
        m_next = next != m_end ? next->getLeftKey()->getX() : HUGE_VAL;
    }

    FCurve::const_iterator m_at;
    FCurve::const_iterator m_end;
    double m_next = 0.0;
};

// Places in 0..1 that keep no step with anything that repeats itself: rising with i, `count` of them.
inline double IrregularPlace(int i, int count) noexcept {
    constexpr double kGolden = 0.6180339887498949;
    return (i + std::fmod(kGolden * (i + 1), 1.0)) / count;
}

// Continues the track from the frame `from` and up to the frame `to`, where the curve does not hold its ends there: for
// formats that know nothing else outside the keys. Fitted within the tolerance of the conversion.
void BakeEnds(const FCurve& curve, double from, double to, Track& track);

// Height of the curve's range of values between its keys; never 0: what the tolerance and equality are shares of.
double RangeOf(const FCurve& curve);
// What the conversion's tolerance is in the curve's unit.
double ToleranceOf(const FCurve& curve);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
