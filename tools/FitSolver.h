#pragma once

#include "tools/Deviation.h"
#include "tools/Fitter.h"

#include <cstddef>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// What the pieces are held against.
class FitJudge {
public:
    FitJudge() = default;
    FitJudge(const FitJudge&) = delete;
    FitJudge& operator=(const FitJudge&) = delete;
    virtual ~FitJudge() = default;

    // Of the shape over its whole width. May stop, with an infinite bound, where it is more than the limit.
    virtual Deviation judge(const BezierArgs& shape, double limit) const = 0;
    // The value at an x that might become a site; NaN where the sites given are all there is.
    virtual double valueAt(double x) const = 0;
    // Where between neighbouring keys a further one may help, and stand; NaN if nowhere.
    virtual double splitAt(double from, double to) const = 0;
    // Says what the span after a key is, up to the next one at `to`: canKeep, keptOut, keptIn, and after if it is Kept.
    virtual void describe(FitKey& key, double from, double to) const = 0;
};

struct FitProblem {
    std::vector<FitSite> sites;
    std::vector<FitKey> keys; // described; the first and the last must stand
    double tolerance;
    bool weighted;
    bool smooth;         // else every key is a corner
    std::size_t maxKeys; // 0: any
};

struct Fit {
    std::vector<FitSite> sites; // as they became
    std::vector<FitKey> keys;
    std::vector<FitPiece> pieces;
    Deviation worst;
    bool within = true;

    const FitSite& siteOf(std::size_t key) const noexcept { return sites[keys[key].site]; }
};

// Fits, judges, and where that fails fits again with further sites or keys, until the judge agrees.
Fit SolveFit(const FitProblem& problem, const FitJudge& judge);

// Whether both handles at the key between two pieces lie on one straight line.
bool AreAligned(const BezierArgs& left, const BezierArgs& right) noexcept;

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
