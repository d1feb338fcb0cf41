#include "FCurveLib/MemoryStream.h"

#include <climits>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

const char* MemoryStream::EndOfBuffer::what() const noexcept {
    return "VEM_FN::FCurveLib::MemoryStream::EndOfBuffer";
}

MemoryStream::MemoryStream() noexcept = default;
MemoryStream::MemoryStream(const MemoryStream&) = default;

MemoryStream::MemoryStream(MemoryStream&& other) noexcept
    : m_bytes(std::move(other.m_bytes)), m_position(other.m_position) {
    other.clear();
}

MemoryStream& MemoryStream::operator=(const MemoryStream&) = default;

MemoryStream& MemoryStream::operator=(MemoryStream&& other) noexcept {
    if (this != &other) {
        m_bytes = std::move(other.m_bytes);
        m_position = other.m_position;
        other.clear();
    }
    return *this;
}

MemoryStream::~MemoryStream() = default;

void MemoryStream::clear() noexcept {
    m_bytes.clear();
    m_position = 0;
}

void MemoryStream::raiseEndOfBuffer() {
    throw EndOfBuffer();
}

// Appends before it overwrites: when memory runs out, nothing has changed.
void MemoryStream::grow(const char* bytes, int count) {
    if (count < 0 || count > INT_MAX - m_position) raiseEndOfBuffer();
    if (count == 0) return;
    const int overwritten = getSize() - m_position;
    m_bytes.insert(m_bytes.end(), bytes + overwritten, bytes + count);
    if (overwritten > 0) std::memcpy(m_bytes.data() + m_position, bytes, static_cast<std::size_t>(overwritten));
    m_position += count;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
