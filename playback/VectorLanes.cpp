// The kernel with two doubles a lane, in the vectors that GCC and Clang have for every processor: for WebAssembly,
// where a program has the instructions that it was compiled for and Debian's Highway knows no doubles.

#include "playback/SimdLanes.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {

struct Tag {};
using V = double __attribute__((vector_size(16)));
using M = std::int64_t __attribute__((vector_size(16))); // all bits of a lane, or none

constexpr std::size_t Lanes(Tag) noexcept {
    return 2;
}
inline V Set(Tag, double value) noexcept {
    return V{value, value};
}
inline V LoadU(Tag, const double* from) noexcept {
    V value;
    std::memcpy(&value, from, sizeof value);
    return value;
}
inline void StoreU(V value, Tag, double* to) noexcept {
    std::memcpy(to, &value, sizeof value);
}
inline V IfThenElse(M mask, V yes, V no) noexcept {
    return mask ? yes : no;
}
inline M And(M a, M b) noexcept {
    return a & b;
}
inline M Or(M a, M b) noexcept {
    return a | b;
}
inline bool AllTrue(Tag, M mask) noexcept {
    return (mask[0] & mask[1]) != 0;
}
inline V Abs(V value) noexcept {
    return V{std::abs(value[0]), std::abs(value[1])};
}
inline V Sqrt(V value) noexcept {
    return V{std::sqrt(value[0]), std::sqrt(value[1])};
}

#include "playback/Kernel-inl.h"

constexpr LaneSet kVectorLanes{"two lanes", 2, &EvalRun, &EvalGathered};

} // namespace

const LaneSet& WidestSimdLanes() {
    return kVectorLanes;
}

std::vector<const LaneSet*> AllSimdLanes() {
    return {&kVectorLanes};
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
