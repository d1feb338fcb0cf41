#pragma once

// What the walk over a container shows of a segment's tangents.

#include "FCurveLib/Interpolator.h"
#include "model/Read.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

inline bool UsesTangents(const Segment& segment) {
    const Interpolator* interpolator = Read::interpolator(segment);
    return interpolator && interpolator->usesTangents();
}

inline bool ShowsOutTangent(const Segment& segment) {
    return Read::leftKey(segment) && UsesTangents(segment);
}

inline bool ShowsInTangent(const Segment& segment) {
    return Read::rightKey(segment) && UsesTangents(segment);
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
