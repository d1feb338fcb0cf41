#pragma once

// One segment of a compiled curve: 64 bytes, one line of cache.

#include "interp/BezierMath.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// What a segment computes is written into the handles, so that a look-up touches nothing else:
//
//     solved   outX >= 0, inX <= 0   a Bezier curve: find the parameter, then the value
//     even     outX >= 0, inX > 0    the parameter is x itself, as with handles of a third. Up to outX frames from a
//                                    key the value is the key's; outX is 0 for straight lines, and only for these
//     free     outX < 0              not for the lanes: see FreeKind
struct Piece : BezierArgs {
    bool isFree() const noexcept { return outX < 0.0; }
    bool isEven() const noexcept { return inX > 0.0; }
    bool isStraight() const noexcept { return isEven() && outX == 0.0; }
};
static_assert(sizeof(Piece) == 64);

// What a free piece is, kept in inX.
enum class FreeKind {
    Steep,       // inX <= 0: a Bezier curve whose parameter takes more than double precision to find; outX negated
    Constant,    // y0
    Line,        // through (x0, y0), rising by y3 a frame
    Cycle,       // the keyed part again and again, each time higher by y0; x0 > 0 before the first key
    Mirror,      // the keyed part to and fro; x0 as for Cycle
    Interpolator // number y0 of the curve's interpolators, between x0 and x3 (infinite where there is no key)
};

inline FreeKind FreeKindOf(const Piece& piece) noexcept {
    return piece.inX > 0.0 ? static_cast<FreeKind>(static_cast<int>(piece.inX)) : FreeKind::Steep;
}

inline Piece FreePiece(FreeKind kind, double x0, double y0, double x3 = 0.0, double y3 = 0.0) noexcept {
    return {{x0, y0, x3, y3, -1.0, 0.0, static_cast<double>(static_cast<int>(kind)), 0.0}};
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
