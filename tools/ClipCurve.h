#pragma once

#include "FCurveLib/FCurve.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// A curve of copies of some keys of another one, which come in order of x; nobody hears of it.
std::shared_ptr<FCurve> CopyKeysOf(const FCurve& curve, const std::vector<Keyframe*>& keys);

// A copy of a clip's curve, moved in time; empty where it cannot be. Adds the expressions that stay as they are.
std::shared_ptr<FCurve> ShiftedCurve(const FCurve& clip, double frames, std::vector<std::string>& kept);

// Removes the keys of a curve that have to make way, and then adds copies of the clip's keys, which it may change.
struct CurvePaste {
    std::vector<std::shared_ptr<Keyframe>> keys;
    std::size_t removed = 0;
};
CurvePaste PasteInto(FCurve& curve, FCurve& clip, bool replaces);

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
