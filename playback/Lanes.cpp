#include "playback/Lanes.h"

#include "playback/ScalarLanes.h"
#ifdef FCURVELIB_SIMD
#include "playback/SimdLanes.h"
#endif

#include <atomic>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace {

constexpr Private::LaneSet kScalarLanes{"scalar", 1, &Private::Scalar::EvalRun, &Private::Scalar::EvalGathered};

std::atomic<const Private::LaneSet*> g_lanes{nullptr};

const Private::LaneSet& WidestLanes() noexcept {
#ifdef FCURVELIB_SIMD
    return Private::WidestSimdLanes();
#else
    return kScalarLanes;
#endif
}

} // namespace

const Private::LaneSet& Private::CurrentLanes() noexcept {
    const LaneSet* lanes = g_lanes.load(std::memory_order_relaxed);
    if (!lanes) {
        lanes = &WidestLanes();
        g_lanes.store(lanes, std::memory_order_relaxed);
    }
    return *lanes;
}

std::vector<const Private::LaneSet*> Private::AllLanes() {
    std::vector<const LaneSet*> all{&kScalarLanes};
#ifdef FCURVELIB_SIMD
    for (const LaneSet* lanes : AllSimdLanes()) all.push_back(lanes);
#endif
    return all;
}

void Private::UseLanes(const LaneSet& lanes) noexcept {
    g_lanes.store(&lanes, std::memory_order_relaxed);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
