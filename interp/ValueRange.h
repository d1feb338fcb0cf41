#pragma once

#include <cmath>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// The lowest and the highest of some values; NaN until there is one.
struct ValueRange {
    double low = std::numeric_limits<double>::quiet_NaN();
    double high = std::numeric_limits<double>::quiet_NaN();

    void fold(double y) noexcept {
        low = std::fmin(low, y); // deliberate: fmin and fmax prefer any number to NaN
        high = std::fmax(high, y);
    }
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
