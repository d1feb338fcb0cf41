#pragma once

// The numbers of one compiled curve, and what is computed from them.

#include "playback/Piece.h"

#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Segment.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// A formula or a host's own interpolator, and the segment with which it is asked: a host's has the keys and tangents of
// the curve's; nothing else can be reached from it. A formula's is empty.
struct PlaybackInterpolator {
    std::shared_ptr<const Interpolator> interpolator;
    std::shared_ptr<const Segment> segment;
};

// The entries of sixty buckets, one line of cache: the piece at the start of the first one, and how many more there are
// at the start of each; 255 stands for any larger number, too.
struct BucketLine {
    static constexpr std::uint32_t size = 60;
    std::uint32_t first;
    std::uint8_t more[size];
};
static_assert(sizeof(BucketLine) == 64);

inline void Prefetch(const void* memory) noexcept {
#if defined(__GNUC__)
    __builtin_prefetch(memory);
#else
    (void)memory;
#endif
}

// A view into the block that holds the numbers; see Compile.h.
//
// The keyed range is cut into equal buckets, three for each key. A bucket's entry is the number of the piece at its
// start, so an x is found by one computation and the comparison with the end of one piece or a few; however uneven the
// keys are, the comparisons within a bucket grow as its logarithm. The abscissae are the pieces' own: a look-up in a
// large curve reads two lines of memory, of which the first, at three bytes a key, is mostly in a cache.
struct PlaybackCurve {
    const Piece* pieces = nullptr;       // count + 1: piece i follows key i - 1
    const BucketLine* buckets = nullptr; // as many as hold bucketCount, and one more that starts with the count
    const PlaybackInterpolator* interpolators = nullptr;
    double first = 0.0; // x of the first key, NaN where there is none
    double last = 0.0;
    double bucketsPerFrame = 0.0;
    std::uint32_t count = 0;
    std::uint32_t bucketCount = 0;

    static constexpr std::uint32_t bucketsPerKey = 3;

    const Piece& pieceAt(double x) const noexcept { return pieces[find(x)]; }

    // How many keys are not above x, which is the number of the piece that holds it; 0 for NaN.
    std::size_t find(double x) const noexcept {
        const std::size_t piece = guess(x);
        Prefetch(pieces + piece + 1); // a third of the guesses are one piece short
        return settle(piece, x);
    }
    // The same, quickly if x is in the hinted piece or the one after it.
    std::size_t find(double x, std::size_t hint) const noexcept {
        if (holds(hint, x)) return hint;
        if (holds(hint + 1, x)) return hint + 1;
        return find(x);
    }
    // Whether the piece lies between keys and holds x.
    bool holds(std::size_t piece, double x) const noexcept {
        return piece != 0 && piece < count && pieces[piece].x0 <= x && x < pieces[piece].x3;
    }

    // find in two steps: a piece that is not after x's, and then x's.
    std::size_t guess(double x) const noexcept {
        if (!(x >= first)) return 0;
        if (x >= last) return count;
        const std::uint32_t bucket = bucketOf(x);
        const BucketLine& line = buckets[bucket / BucketLine::size];
        return line.first + line.more[bucket % BucketLine::size];
    }
    std::size_t settle(std::size_t piece, double x) const noexcept {
        if (piece == 0 || piece == count) return piece;
        constexpr int looks = 4;
        for (int look = 0; look < looks; ++look, ++piece)
            if (x < pieces[piece].x3) return piece;
        return search(piece, x);
    }

    // Does not fall as x rises, so keys in lower buckets are below x. Precondition: first <= x <= last.
    std::uint32_t bucketOf(double x) const noexcept {
        const double place = (x - first) * bucketsPerFrame;
        return place < bucketCount ? static_cast<std::uint32_t>(place) : bucketCount - 1;
    }
    // Where guess(x) looks.
    const void* bucketAt(double x) const noexcept {
        return x >= first && x < last ? buckets + bucketOf(x) / BucketLine::size : buckets;
    }

private:
    std::size_t search(std::size_t from, double x) const noexcept;
};

// --- evaluation ------------------------------------------------------------------------------------------------------
// Whatever a host's interpolator throws passes through.

double EvalFreePiece(const PlaybackCurve& curve, const Piece& piece, double x);
double EvalPiece(const PlaybackCurve& curve, const Piece& piece, double x);
// The first or the second derivative.
double DifferentiatePiece(const PlaybackCurve& curve, const Piece& piece, double x, int order);

void EvalMany(const PlaybackCurve& curve, const double* x, double* y, std::size_t n);
// Curves first to last - 1, curve i into y[i].
void EvalTogether(const PlaybackCurve* curves, double x, std::size_t first, std::size_t last, double* y);

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
