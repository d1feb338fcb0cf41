#pragma once

// Many values at once, by whatever the processor has. All give the same bits.

#include "FCurveLib/Export.h"
#include "playback/Piece.h"

#include <cstddef>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// The widest register that may come, in doubles.
constexpr std::size_t kMaxLanes = 32;

// Pieces with an x each, none of them free, as the lanes want them.
struct Gathered {
    static constexpr std::size_t capacity = 64;
    static_assert(capacity % kMaxLanes == 0);

    // place: where the value belongs.
    void add(const Piece& piece, double at, std::size_t place) noexcept {
        const std::size_t i = count++;
        x[i] = at;
        x0[i] = piece.x0;
        y0[i] = piece.y0;
        x3[i] = piece.x3;
        y3[i] = piece.y3;
        outX[i] = piece.outX;
        outY[i] = piece.outY;
        inX[i] = piece.inX;
        inY[i] = piece.inY;
        places[i] = place;
    }
    // Repeats the last piece until the count is a multiple of the width. Precondition: there is one.
    void fill(std::size_t width) noexcept {
        while (count % width != 0) {
            const std::size_t last = count - 1;
            add({{x0[last], y0[last], x3[last], y3[last], outX[last], outY[last], inX[last], inY[last]}}, x[last],
                places[last]);
        }
    }

    std::size_t count = 0;
    std::size_t places[capacity];
    alignas(64) double x[capacity];
    double x0[capacity];
    double y0[capacity];
    double x3[capacity];
    double y3[capacity];
    double outX[capacity];
    double outY[capacity];
    double inX[capacity];
    double inY[capacity];
};

// The kernel, see Kernel-inl.h, for one kind of processor.
struct LaneSet {
    const char* name;
    std::size_t width; // in doubles
    std::size_t (*run)(const Piece& piece, const double* x, double* y, std::size_t n);
    void (*gathered)(const Gathered& gathered, double* y);
};

// The widest that this processor has; one double at a time without Highway.
const LaneSet& CurrentLanes() noexcept;

// For tests and benchmarks: all that this processor has, one double at a time first; and what compiled curves use from
// now on, on every thread.
FCURVELIB_API std::vector<const LaneSet*> AllLanes();
FCURVELIB_API void UseLanes(const LaneSet& lanes) noexcept;

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
