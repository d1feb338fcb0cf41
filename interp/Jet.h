#pragma once

// Differentiation of formulas: a jet is a value with its first and second derivative by x, and arithmetic on jets
// follows the rules of calculus, so that running a formula on jets differentiates it exactly. The same operations exist
// on plain numbers.

#include <cmath>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

struct Jet {
    double v;
    double d1;
    double d2;
};

// A point where an operation has no derivative (a jump of floor, the kink of abs) and the formula is differentiated
// numerically instead is marked by derivatives that are not numbers.
inline Jet Underivable(double v) noexcept {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    return {v, none, none};
}

// f(a), given f and its derivatives at a.v. Outside f's domain there is no derivative either.
inline Jet Chain(const Jet& a, double f, double f1, double f2) noexcept {
    if (std::isnan(f)) return Underivable(f);
    return {f, f1 * a.d1, f2 * a.d1 * a.d1 + f1 * a.d2};
}

// --- the variable ----------------------------------------------------------------------------------------------------

template<class V>
V Variable(double x) noexcept;
template<>
inline double Variable<double>(double x) noexcept {
    return x;
}
template<>
inline Jet Variable<Jet>(double x) noexcept {
    return {x, 1.0, 0.0};
}

template<class V>
V Number(double number) noexcept;
template<>
inline double Number<double>(double number) noexcept {
    return number;
}
template<>
inline Jet Number<Jet>(double number) noexcept {
    return {number, 0.0, 0.0};
}

// --- operators -------------------------------------------------------------------------------------------------------

inline Jet operator-(const Jet& a) noexcept {
    return {-a.v, -a.d1, -a.d2};
}

inline Jet operator+(const Jet& a, const Jet& b) noexcept {
    return {a.v + b.v, a.d1 + b.d1, a.d2 + b.d2};
}
inline Jet operator+(const Jet& a, double b) noexcept {
    return {a.v + b, a.d1, a.d2};
}

inline Jet operator-(const Jet& a, const Jet& b) noexcept {
    return {a.v - b.v, a.d1 - b.d1, a.d2 - b.d2};
}
inline Jet operator-(const Jet& a, double b) noexcept {
    return {a.v - b, a.d1, a.d2};
}
inline Jet operator-(double a, const Jet& b) noexcept {
    return {a - b.v, -b.d1, -b.d2};
}

inline Jet operator*(const Jet& a, const Jet& b) noexcept {
    return {a.v * b.v, a.d1 * b.v + a.v * b.d1, a.d2 * b.v + 2.0 * a.d1 * b.d1 + a.v * b.d2};
}
inline Jet operator*(const Jet& a, double b) noexcept {
    return {a.v * b, a.d1 * b, a.d2 * b};
}

inline Jet operator/(const Jet& a, const Jet& b) noexcept {
    const double q = a.v / b.v;
    const double q1 = (a.d1 - q * b.d1) / b.v;
    return {q, q1, (a.d2 - 2.0 * q1 * b.d1 - q * b.d2) / b.v};
}
inline Jet operator/(const Jet& a, double b) noexcept {
    return {a.v / b, a.d1 / b, a.d2 / b};
}
inline Jet operator/(double a, const Jet& b) noexcept {
    return Number<Jet>(a) / b;
}

inline double Remainder(double a, double b) noexcept {
    return std::fmod(a, b);
}
inline Jet Remainder(const Jet& a, const Jet& b) noexcept {
    const double r = std::fmod(a.v, b.v);
    if (std::isnan(r) || (r == 0.0 && a.v != 0.0)) return Underivable(r); // it jumps at multiples of b, except at 0
    if (r == a.v) return {r, a.d1, a.d2};                                 // no multiple taken off, b may be infinite
    const double n = std::round((a.v - r) / b.v);
    return {r, a.d1 - n * b.d1, a.d2 - n * b.d2};
}

inline double Power(double a, double b) noexcept {
    return std::pow(a, b);
}
inline Jet Power(const Jet& a, double b) noexcept {
    const double f1 = b == 0.0 ? 0.0 : b * std::pow(a.v, b - 1.0);
    const double f2 = b == 0.0 || b == 1.0 ? 0.0 : b * (b - 1.0) * std::pow(a.v, b - 2.0);
    return Chain(a, std::pow(a.v, b), f1, f2);
}
inline Jet Power(const Jet& a, const Jet& b) noexcept {
    if (b.d1 == 0.0 && b.d2 == 0.0) return Power(a, b.v);
    const double v = std::pow(a.v, b.v);
    if (!(a.v > 0.0)) return Underivable(v);
    // a^b = e^g with g = b log a
    const double l = std::log(a.v);
    const double l1 = a.d1 / a.v;
    const double l2 = a.d2 / a.v - l1 * l1;
    const double g1 = b.d1 * l + b.v * l1;
    const double g2 = b.d2 * l + 2.0 * b.d1 * l1 + b.v * l2;
    return {v, v * g1, v * (g1 * g1 + g2)};
}

// --- functions -------------------------------------------------------------------------------------------------------

inline double Sin(double a) noexcept {
    return std::sin(a);
}
inline Jet Sin(const Jet& a) noexcept {
    const double s = std::sin(a.v);
    return Chain(a, s, std::cos(a.v), -s);
}

inline double Cos(double a) noexcept {
    return std::cos(a);
}
inline Jet Cos(const Jet& a) noexcept {
    const double c = std::cos(a.v);
    return Chain(a, c, -std::sin(a.v), -c);
}

inline double Tan(double a) noexcept {
    return std::tan(a);
}
inline Jet Tan(const Jet& a) noexcept {
    const double t = std::tan(a.v);
    return Chain(a, t, 1.0 + t * t, 2.0 * t * (1.0 + t * t));
}

inline double Asin(double a) noexcept {
    return std::asin(a);
}
inline Jet Asin(const Jet& a) noexcept {
    const double f1 = 1.0 / std::sqrt((1.0 - a.v) * (1.0 + a.v));
    return Chain(a, std::asin(a.v), f1, a.v * f1 * f1 * f1);
}

inline double Acos(double a) noexcept {
    return std::acos(a);
}
inline Jet Acos(const Jet& a) noexcept {
    const double f1 = 1.0 / std::sqrt((1.0 - a.v) * (1.0 + a.v));
    return Chain(a, std::acos(a.v), -f1, -a.v * f1 * f1 * f1);
}

inline double Atan(double a) noexcept {
    return std::atan(a);
}
inline Jet Atan(const Jet& a) noexcept {
    const double f1 = 1.0 / (1.0 + a.v * a.v);
    return Chain(a, std::atan(a.v), f1, -2.0 * a.v * f1 * f1);
}

inline double Exp(double a) noexcept {
    return std::exp(a);
}
inline Jet Exp(const Jet& a) noexcept {
    const double e = std::exp(a.v);
    return Chain(a, e, e, e);
}

inline double Log(double a) noexcept {
    return std::log(a);
}
inline Jet Log(const Jet& a) noexcept {
    return Chain(a, std::log(a.v), 1.0 / a.v, -1.0 / (a.v * a.v));
}

inline double Sqrt(double a) noexcept {
    return std::sqrt(a);
}
inline Jet Sqrt(const Jet& a) noexcept {
    const double s = std::sqrt(a.v);
    return Chain(a, s, 0.5 / s, -0.25 / (s * a.v));
}

inline double Abs(double a) noexcept {
    return std::abs(a);
}
inline Jet Abs(const Jet& a) noexcept {
    if (a.v == 0.0) return a.d1 == 0.0 ? Jet{0.0, 0.0, std::abs(a.d2)} : Underivable(0.0);
    return a.v < 0.0 ? -a : a;
}

// The steps: flat between their jumps.
inline Jet Step(double step, bool jumps) noexcept {
    return jumps || std::isnan(step) ? Underivable(step) : Jet{step, 0.0, 0.0};
}
inline double Floor(double a) noexcept {
    return std::floor(a);
}
inline Jet Floor(const Jet& a) noexcept {
    const double step = std::floor(a.v);
    return Step(step, step == a.v);
}
inline double Ceil(double a) noexcept {
    return std::ceil(a);
}
inline Jet Ceil(const Jet& a) noexcept {
    const double step = std::ceil(a.v);
    return Step(step, step == a.v);
}
inline double Round(double a) noexcept { // halves away from zero
    return std::round(a);
}
inline Jet Round(const Jet& a) noexcept {
    const double step = std::round(a.v);
    return Step(step, std::abs(step - a.v) == 0.5);
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
