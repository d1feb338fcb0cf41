#pragma once

// Counts the allocations of the test program that Allocations.cpp is linked into, the library's included.

#include <cstddef>

namespace Test {

std::size_t allocationsSoFar() noexcept;

// The bytes that are held now, from where the peak is counted anew.
std::size_t heldNow() noexcept;
// The most bytes held at a time since then.
std::size_t peakSince() noexcept;

// The allocations that act() makes.
template<class Act>
std::size_t allocationsOf(const Act& act) {
    const std::size_t before = allocationsSoFar();
    act();
    return allocationsSoFar() - before;
}

// The most bytes that act() holds at a time, besides what was held before.
template<class Act>
std::size_t peakOf(const Act& act) {
    const std::size_t before = heldNow();
    act();
    return peakSince() - before;
}

} // namespace Test
