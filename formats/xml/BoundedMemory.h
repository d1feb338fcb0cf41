#pragma once

// What Expat allocates, counted and bounded: hostile documents make a parser keep a lot (a million attributes of one
// tag, a million tags of different names) without ever finishing a part of which anybody could tell that it is too
// much.

#include "FCurveLib/Export.h"

#include <expat.h>

#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace XMLFormat {

class BoundedMemory {
public:
    explicit BoundedMemory(std::size_t limit) noexcept : m_left(limit) {}
    BoundedMemory(const BoundedMemory&) = delete;
    BoundedMemory& operator=(const BoundedMemory&) = delete;

    // Whether an allocation was refused because of the limit.
    bool isExhausted() const noexcept { return m_exhausted; }

    // For XML_ParserCreate_MM. Counts for the memory that is in use on this thread.
    static const XML_Memory_Handling_Suite& suite() noexcept;

    // Puts the memory in use while it lives. Every call that may lead to Expat's allocations stands under one. Uses
    // nest: what a document makes its target do may be to read another document.
    class Use {
    public:
        explicit Use(BoundedMemory& memory) noexcept;
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        ~Use();

    private:
        BoundedMemory* m_previous;
    };

private:
    static void* allocate(std::size_t size);
    static void* reallocate(void* block, std::size_t size);
    static void release(void* block);

    bool take(std::size_t size) noexcept;

    std::size_t m_left;
    bool m_exhausted = false;
};

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
