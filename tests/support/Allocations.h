#pragma once

// Counts the allocations of the test program that Allocations.cpp is linked into, the library's included.

#include <cstddef>
#include <new>

namespace Test {

std::size_t allocationsSoFar() noexcept;

// The bytes that are held now, from where the peak is counted anew.
std::size_t heldNow() noexcept;
// The most bytes held at a time since then.
std::size_t peakSince() noexcept;

// The allocation after that many others fails, alone or with all that follow; none does after a negative number.
void failAllocationAfter(long others, bool forGood = false) noexcept;

// Whether act() ends in std::bad_alloc when the allocation after that many others fails.
template<class Act>
bool runsOutOfMemory(long others, const Act& act, bool forGood = false) {
    bool failed = false;
    failAllocationAfter(others, forGood);
    try {
        act();
    } catch (const std::bad_alloc&) {
        failed = true;
    }
    failAllocationAfter(-1);
    return failed;
}

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
