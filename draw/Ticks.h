#pragma once

#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

/// A mark on an axis: where, and the text beside it.
struct Tick {
    double value;
    std::string label;
};

/// The marks of one axis. Labels are exact decimal numbers; where they would be long they are to be read as times ten
/// to the exponent, which the axis names once.
struct Ticks {
    std::vector<Tick> marks;
    int exponent = 0;
};

/// Marks at multiples of 1, 2 or 5 times a power of ten between low and high, both included: as many as fit, but no
/// more than maxCount, which is at least 2. Neighbouring labels differ also far from zero (frame 100000.25) and near it
/// (1e-12). Precondition: finite, low < high, and high - low at least 1e-14 of the larger magnitude.
Ticks MakeTicks(double low, double high, int maxCount);

/// How an axis shows values from low to high: with room of the given fraction of the span at both ends. What has no
/// span, or only one that rounding explains, is given one, so that the result suits MakeTicks for any finite numbers;
/// beyond 1e300 it is cut off.
struct AxisRange {
    double low;
    double high;
};
AxisRange MakeAxisRange(double low, double high, double room);

/// " ×10⁻¹²" for -12.
std::string ExponentText(int exponent);

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
