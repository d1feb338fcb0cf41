#include "FCurveLib/FormatLimits.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace {
FormatLimits g_limits;
}

FormatLimits GetFormatLimits() noexcept {
    return g_limits;
}
void SetFormatLimits(const FormatLimits& limits) noexcept {
    g_limits = limits;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
