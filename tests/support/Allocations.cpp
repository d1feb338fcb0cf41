#include "tests/support/Allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include <malloc.h>

namespace {

std::atomic<std::size_t> g_allocations{0};
std::atomic<std::size_t> g_held{0};
std::atomic<std::size_t> g_peak{0};
std::atomic<long> g_toFailure{-1}; // allocations; negative: none is to fail
std::atomic<bool> g_failsForGood{false};

void* allocate(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) noexcept {
    ++g_allocations;
    if (g_toFailure == 0) {
        if (!g_failsForGood) g_toFailure = -1;
        return nullptr;
    }
    if (g_toFailure > 0) --g_toFailure;
    void* const memory = std::aligned_alloc(alignment, (size / alignment + 1) * alignment);
    if (!memory) return nullptr;
    const std::size_t held = g_held += malloc_usable_size(memory);
    std::size_t peak = g_peak;
    while (held > peak && !g_peak.compare_exchange_weak(peak, held)) {
    }
    return memory;
}

void release(void* memory) noexcept {
    if (memory) g_held -= malloc_usable_size(memory);
    std::free(memory);
}

} // namespace

void* operator new(std::size_t size) {
    if (void* memory = allocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    if (void* memory = allocate(size, static_cast<std::size_t>(alignment))) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory, std::align_val_t) noexcept {
    release(memory);
}
void operator delete(void* memory) noexcept {
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}

namespace Test {

std::size_t allocationsSoFar() noexcept {
    return g_allocations;
}

void failAllocationAfter(long others, bool forGood) noexcept {
    g_failsForGood = forGood;
    g_toFailure = others;
}

std::size_t heldNow() noexcept {
    g_peak = g_held.load();
    return g_held;
}
std::size_t peakSince() noexcept {
    return g_peak;
}

} // namespace Test
