#pragma once

// Counts the allocations of the test program that Allocations.cpp is linked into, the library's included.

#include <cstddef>

namespace Test {

std::size_t allocationsSoFar() noexcept;

// The allocations that act() makes.
template<class Act>
std::size_t allocationsOf(const Act& act) {
    const std::size_t before = allocationsSoFar();
    act();
    return allocationsSoFar() - before;
}

} // namespace Test
