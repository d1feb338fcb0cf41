#include "FCurveLib/MoveKeys.h"

#include "FCurveLib/KeyGroup.h"
#include "selection/GroupPlan.h"

#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::GroupPlan;
using Private::GroupTarget;

namespace {

bool IsFinite(const Vector2D<double>& v) noexcept {
    return std::isfinite(v.x) && std::isfinite(v.y);
}

} // namespace

MoveReport MoveKeys(KeyGroup& group, const Vector2D<double>& offset, const MoveOptions& options) {
    GroupTarget target;
    target.offset = offset;
    return IsFinite(offset) ? GroupPlan(group, target, options).run() : MoveReport();
}

MoveReport ScaleKeys(KeyGroup& group, const Vector2D<double>& pivot, const Vector2D<double>& factor,
                     const MoveOptions& options) {
    GroupTarget target;
    target.pivot = pivot;
    target.factor = factor;
    target.scales = true;
    const bool isUsable = IsFinite(pivot) && IsFinite(factor) && factor.x > 0.0;
    return isUsable ? GroupPlan(group, target, options).run() : MoveReport();
}

MoveReport MoveKeys(Selection& selection, const Vector2D<double>& offset, const MoveOptions& options) {
    KeyGroup group(selection);
    return MoveKeys(group, offset, options);
}

MoveReport ScaleKeys(Selection& selection, const Vector2D<double>& pivot, const Vector2D<double>& factor,
                     const MoveOptions& options) {
    KeyGroup group(selection);
    return ScaleKeys(group, pivot, factor, options);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
