#pragma once

#include "FCurveLib/Export.h"

#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The marks of one axis of a view, with the text beside each.
struct AxisTicks {
    struct Mark {
        double value;
        std::string label;
    };
    std::vector<Mark> marks;
    /// Labels are to be read as times ten to this; 0 where they would not be long without.
    int exponent = 0;
};

/// Marks at multiples of 1, 2 or 5 times a power of ten between low and high, both included: as many as fit, but no
/// more than maxCount (2 at least, 1000 at most). Labels are exact decimal numbers, and neighbours differ also far from
/// zero (frame 100000.25) and near it (1e-12). No marks where low < high does not hold, for what is not finite, and
/// where so few doubles lie between the two that labels could not differ. Any number of threads.
FCURVELIB_API AxisTicks MakeAxisTicks(double low, double high, int maxCount);

} // namespace v19
} // namespace VEM_FN::FCurveLib
