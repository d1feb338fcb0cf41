#pragma once

#include "interp/BezierMath.h"

#include <cstddef>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

struct Interval {
    double low;
    double high;
};

// How far two functions of x are apart over a range.
struct Deviation {
    double bound = 0.0; // holds everywhere in the range, for values as they are evaluated and rounded
    double at = 0.0;    // a place where nearly as much was found
};

// A function of x on some stretch, with proofs of where it can run. Thread-safe.
class Function {
public:
    struct Enclosure {
        Interval value;
        Interval slope; // infinite where it is not known
    };

    Function() = default;
    Function(const Function&) = delete;
    Function& operator=(const Function&) = delete;
    virtual ~Function() = default;

    virtual double at(double x) const = 0;
    // Holds all values and slopes between two places, up to the rounding below.
    virtual Enclosure over(double from, double to) const = 0;
    // By how much evaluation may miss the true value.
    virtual double rounding() const = 0;
    // The control points, if it is a cubic polynomial of x or a Bezier segment.
    virtual const BezierArgs* bezier() const { return nullptr; }
};

class BezierFunction : public Function {
public:
    explicit BezierFunction(const BezierArgs& args) noexcept;

    double at(double x) const override { return EvalBezierY(x, m_args); }
    Enclosure over(double from, double to) const override;
    double rounding() const override { return m_rounding; }
    const BezierArgs* bezier() const override { return &m_args; }

private:
    const BezierArgs m_args;
    bool m_thirds;
    double m_rounding;
};

// Handles of a third in x: then y is a cubic polynomial of x.
bool HasThirds(const BezierArgs& p) noexcept;

// The straight line between two points.
BezierArgs LineArgs(double x0, double y0, double x3, double y3) noexcept;

// The largest distance over [from, to], in closed form where both are polynomials or one is a straight line. Elsewhere
// it is found to 1/1024, and to as much of the limit or 2^-18 of the values' range, which the bound counts in; where
// more than the limit is found, or nothing can be proved, the bound is infinite.
Deviation BoundDeviation(const Function& a, const Function& b, double from, double to, double limit);

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
