#pragma once

#include "FCurveLib/Forward.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// What Match has to know about the interpolators beside it.
enum class Kind {
    Local, // built in, reads nothing but its segment and the positions of keys
    Formula,
    Match,
    MatchIn,
    MatchOut,
    Cycle,
    CycleOffset,
    Mirror,
    Host // not ours: may read anything
};

Kind KindOf(const Interpolator& interpolator) noexcept;

constexpr bool IsMatch(Kind kind) noexcept {
    return kind == Kind::Match || kind == Kind::MatchIn || kind == Kind::MatchOut;
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
