#include "formats/xml/BoundedMemory.h"

#include <cstdlib>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace XMLFormat {

namespace {

// In front of each block.
union Header {
    std::size_t size; // of the block
    std::max_align_t alignment;
};

thread_local BoundedMemory* t_inUse = nullptr;

} // namespace

bool BoundedMemory::take(std::size_t size) noexcept {
    if (size > m_left || m_left - size < sizeof(Header)) {
        m_exhausted = true;
        return false;
    }
    m_left -= size + sizeof(Header);
    return true;
}

void* BoundedMemory::allocate(std::size_t size) {
    if (!t_inUse->take(size)) return nullptr;
    auto* header = static_cast<Header*>(std::malloc(size + sizeof(Header)));
    if (!header) return nullptr;
    header->size = size;
    return header + 1;
}

void* BoundedMemory::reallocate(void* block, std::size_t size) {
    if (!block) return allocate(size);
    if (!t_inUse->take(size)) return nullptr;
    Header* old = static_cast<Header*>(block) - 1;
    const std::size_t oldSize = old->size;
    auto* header = static_cast<Header*>(std::realloc(old, size + sizeof(Header)));
    if (!header) return nullptr;
    t_inUse->m_left += oldSize + sizeof(Header);
    header->size = size;
    return header + 1;
}

void BoundedMemory::release(void* block) {
    if (!block) return;
    Header* header = static_cast<Header*>(block) - 1;
    t_inUse->m_left += header->size + sizeof(Header);
    std::free(header);
}

const XML_Memory_Handling_Suite& BoundedMemory::suite() noexcept {
    static const XML_Memory_Handling_Suite suite = {&allocate, &reallocate, &release};
    return suite;
}

BoundedMemory::Use::Use(BoundedMemory& memory) noexcept : m_previous(t_inUse) {
    t_inUse = &memory;
}
BoundedMemory::Use::~Use() {
    t_inUse = m_previous;
}

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
