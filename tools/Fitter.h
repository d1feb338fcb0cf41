#pragma once

#include "interp/BezierMath.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// A point that the curve has to pass within the tolerance.
struct FitSite {
    double x;
    double y;
};

enum class FitSpan : std::uint8_t {
    Free,
    Straight, // a line, whatever the tolerance
    Kept      // not fitted at all
};

// A site at which a key may stand.
struct FitKey {
    std::size_t site;
    bool must = false;             // a key stands here
    bool corner = false;           // the slopes on its sides are independent of each other
    FitSpan after = FitSpan::Free; // up to the next key that must stand; then both must
    double lowSlope = 0.0;         // slopes that it may have
    double highSlope = 0.0;
    double slope = 0.0; // that it has where nothing else asks for another
    bool slopeIsFixed = false;
    bool canKeep = false; // what follows, up to the next key, can stay as it is, with these slopes at its ends
    double keptOut = 0.0;
    double keptIn = 0.0;
};

// A Bezier segment between two of the keys; kept ones have no shape.
struct FitPiece {
    std::size_t from;
    std::size_t to;
    bool kept;
    BezierArgs args;
    std::size_t earlier = static_cast<std::size_t>(-1); // its index before, where it stayed as it was
};

struct FitRules {
    double tolerance;
    bool weighted; // handles of any length, else of a third
};

// Few pieces from the first key to the last, which both must stand, in time near linear in the number of sites. What
// cannot be fitted between neighbouring keys is kept where that is possible, else fitted as well as can be.
//
// Keys stand on sites, so what is free in a piece are the slopes a and b at its ends, and with given lengths of the
// handles each site between asks for |A a + B b - r| <= tolerance: a strip of the plane. The common part of the strips
// is a convex polygon; its shadow on the axis of b are the slopes with which the next piece may begin, where the key is
// smooth. From a few places at once, the pieces are taken as long as can be found: by doubling, bisection and a look at
// what lies just beyond, since what fits a longer stretch need not fit a shorter one. The slopes are chosen from the
// end backwards, inside the polygons, as near as can be to the best in the sense of least squares.
std::vector<FitPiece> FitPieces(const std::vector<FitSite>& sites, const std::vector<FitKey>& keys,
                                const FitRules& rules);

// As above, but only around those of earlier pieces that failed: the others stay as long as their neighbours can meet
// them. Time near linear in the number of the failed ones, but for copying the others.
std::vector<FitPiece> FitPiecesAgain(const std::vector<FitSite>& sites, const std::vector<FitKey>& keys,
                                     const FitRules& rules, const std::vector<FitPiece>& earlier,
                                     const std::vector<bool>& failed);

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
