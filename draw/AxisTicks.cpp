#include "FCurveLib/AxisTicks.h"

#include "draw/Ticks.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

AxisTicks MakeAxisTicks(double low, double high, int maxCount) {
    AxisTicks result;
    if (!(low < high) || !std::isfinite(low) || !std::isfinite(high)) return result;
    const double magnitude = std::max(std::fabs(low), std::fabs(high));
    if (magnitude > 1e300 || high - low < 1e-14 * magnitude) return result;
    Private::Drawing::Ticks ticks = Private::Drawing::MakeTicks(low, high, std::clamp(maxCount, 2, 1000));
    result.exponent = ticks.exponent;
    for (auto& mark : ticks.marks) result.marks.push_back({mark.value, std::move(mark.label)});
    return result;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
