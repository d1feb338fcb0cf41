// The kernel for each of Highway's targets. This file is compiled once for each of them; what is inside
// HWY_BEFORE_NAMESPACE is then allowed that processor's instructions.

#include "playback/Lanes.h"

#include <cstdint>

// No lanes of unknown width: these cannot be members of anything, nor have operators.
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "playback/SimdLanes.cpp" // NOLINT(bugprone-suspicious-include)
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {
namespace HWY_NAMESPACE {

using namespace hwy::HWY_NAMESPACE; // NOLINT(google-build-using-namespace)
using Tag = ScalableTag<double>;
using V = Vec<Tag>;
using M = Mask<Tag>;

#include "playback/Kernel-inl.h"

inline const LaneSet& TargetLanes() {
    static const LaneSet lanes{hwy::TargetName(HWY_TARGET), Lanes(Tag()), &EvalRun, &EvalGathered};
    static_assert(MaxLanes(Tag()) <= kMaxLanes);
    return lanes;
}

} // namespace HWY_NAMESPACE
} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include "playback/SimdLanes.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

HWY_EXPORT(TargetLanes);

const LaneSet& WidestSimdLanes() {
    return HWY_DYNAMIC_DISPATCH(TargetLanes)();
}

std::vector<const LaneSet*> AllSimdLanes() {
    std::vector<const LaneSet*> all;
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        hwy::GetChosenTarget().Update(target);
        all.push_back(&WidestSimdLanes());
    }
    hwy::GetChosenTarget().DeInit();
    return all;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib

#endif
