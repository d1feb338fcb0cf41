#include "draw/Ticks.h"

#include "draw/Label.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

constexpr std::size_t kLongLabel = 7;

/// units * 10^exponent, as decimal numbers are read: correctly rounded.
double ToDouble(std::int64_t units, int exponent) {
    const std::string text = std::to_string(units) + "e" + std::to_string(exponent);
    double value = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/// units * 10^exponent, written out.
std::string ToLabel(std::int64_t units, int exponent) {
    if (units == 0) return "0";
    std::string digits = std::to_string(std::abs(units));
    if (exponent >= 0) {
        digits.append(static_cast<std::size_t>(exponent), '0');
    } else {
        const auto decimals = static_cast<std::size_t>(-exponent);
        if (digits.size() <= decimals) digits.insert(0, decimals + 1 - digits.size(), '0');
        digits.insert(digits.size() - decimals, 1, '.');
    }
    return units < 0 ? "\u2212" + digits : digits;
}

int DecimalExponent(std::int64_t units) {
    return static_cast<int>(std::to_string(std::abs(units)).size()) - 1;
}

/// The multiples of a step of units times 10^exponent between low and high: first to last times the step.
struct Multiples {
    std::int64_t units;
    int exponent;
    double first;
    double last;

    Multiples(std::int64_t units_, int exponent_, double low, double high) : units(units_), exponent(exponent_) {
        // An end that is a multiple up to rounding counts as one.
        constexpr double kSlack = 1e-15;
        const double step = ToDouble(units, exponent);
        first = std::ceil(low / step - std::fabs(low / step) * kSlack);
        last = std::floor(high / step + std::fabs(high / step) * kSlack);
    }
    double count() const { return last - first + 1.0; }
    bool isExact() const { return std::max(std::fabs(first), std::fabs(last)) < 1e15; }
};

/// The smallest step of 1, 2 or 5 times a power of ten that leaves at most maxCount marks; the next smaller one if it
/// leaves fewer than two.
Multiples ChooseMultiples(double low, double high, int maxCount) {
    static constexpr std::array<std::int64_t, 3> kNice = {1, 2, 5};
    const double gaps = std::max(maxCount - 1, 1);
    int exponent = static_cast<int>(std::floor(std::log10(high / gaps - low / gaps))) - 1;
    Multiples smaller(1, exponent, low, high);
    for (std::size_t i = 1;; ++i) {
        if (i % kNice.size() == 0) ++exponent;
        const Multiples next(kNice[i % kNice.size()], exponent, low, high);
        if (next.count() <= maxCount && next.isExact()) return next.count() < 2.0 && smaller.isExact() ? smaller : next;
        smaller = next;
    }
}

} // namespace

Ticks MakeTicks(double low, double high, int maxCount) {
    const Multiples multiples = ChooseMultiples(low, high, maxCount);
    const int exponent = multiples.exponent;
    std::vector<std::int64_t> units;
    for (double k = multiples.first; k <= multiples.last; ++k)
        units.push_back(static_cast<std::int64_t>(k) * multiples.units);

    Ticks ticks;
    std::size_t longest = 0;
    std::int64_t largest = 0;
    for (const std::int64_t unit : units) {
        largest = std::max(largest, std::abs(unit));
        if (std::abs(exponent) < 20) longest = std::max(longest, CountCharacters(ToLabel(unit, exponent)));
    }
    // Long labels are written as times a power of ten, where that makes them shorter.
    if (std::abs(exponent) >= 20 || longest > kLongLabel) {
        const int digits = DecimalExponent(largest);
        const std::size_t scaled = static_cast<std::size_t>(digits) + 2;
        if (std::abs(exponent) >= 20 || scaled + 2 < longest) ticks.exponent = exponent + digits;
    }
    for (const std::int64_t unit : units)
        ticks.marks.push_back({ToDouble(unit, exponent), ToLabel(unit, exponent - ticks.exponent)});
    return ticks;
}

AxisRange MakeAxisRange(double low, double high, double room) {
    constexpr double kLimit = 1e300;
    low = std::clamp(low, -kLimit, kLimit);
    high = std::clamp(high, -kLimit, kLimit);
    const double magnitude = std::max(std::fabs(low), std::fabs(high));
    if (magnitude < 1e-300) return {-1.0, 1.0};
    double margin = (high - low) * room;
    if (high - low < magnitude * 1e-13) margin = magnitude * 0.1;
    return {low - margin, high + margin};
}

std::string ExponentText(int exponent) {
    static constexpr std::array<std::string_view, 10> kDigits = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    std::string text = " ×10";
    if (exponent < 0) text += "⁻";
    for (const char digit : std::to_string(std::abs(exponent))) text += kDigits[static_cast<std::size_t>(digit - '0')];
    return text;
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
