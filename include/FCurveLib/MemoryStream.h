#pragma once

#include "FCurveLib/Stream.h"

#include <cstring>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A stream over bytes in memory, which grow as they are written.
///
/// Every transfer is a bounds check and a copy; n bytes appended in small pieces cost O(n) in all. When memory runs out
/// std::bad_alloc passes to the caller and the stream keeps its bytes and position.
class FCURVELIB_API MemoryStream : public Stream {
public:
    /// A read past the end, a position past the end, a negative count or position, a write that would make the stream
    /// longer than 2^31-1 bytes. The stream is unchanged.
    class FCURVELIB_API EndOfBuffer : public StreamException {
    public:
        const char* what() const noexcept override;
    };

    /// \name Make
    /// A new stream is empty. Copies have bytes and position of their own; a stream that was moved from is empty.
    /// @{
    MemoryStream() noexcept;
    MemoryStream(const MemoryStream&);
    MemoryStream(MemoryStream&& other) noexcept;
    MemoryStream& operator=(const MemoryStream&);
    MemoryStream& operator=(MemoryStream&& other) noexcept;
    ~MemoryStream() override;
    /// @}

    /// \name Stream
    /// @{
    void readData(void* buffer, int count) override {
        if (count < 0 || count > getSize() - m_position) raiseEndOfBuffer();
        if (count == 0) return;
        std::memcpy(buffer, m_bytes.data() + m_position, static_cast<std::size_t>(count));
        m_position += count;
    }

    /// Overwrites what is there and grows the stream by the rest, exactly.
    void writeData(const void* buffer, int count) override {
        if (count > 0 && count <= getSize() - m_position) {
            std::memcpy(m_bytes.data() + m_position, buffer, static_cast<std::size_t>(count));
            m_position += count;
        } else {
            grow(static_cast<const char*>(buffer), count);
        }
    }

    int getPosition() const override { return m_position; }

    /// Never grows the stream: a position past the end raises EndOfBuffer.
    void setPosition(int position) override {
        if (position < 0 || position > getSize()) raiseEndOfBuffer();
        m_position = position;
    }

    int getSize() const override { return static_cast<int>(m_bytes.size()); }
    /// @}

    /// \name The bytes as a whole
    /// @{

    /// The getSize() bytes; valid until the stream is written to, cleared, assigned or destroyed. May be null when the
    /// stream is empty.
    const char* getData() const noexcept { return m_bytes.data(); }

    /// Removes all bytes and goes to position 0; the memory is kept for the next writes.
    void clear() noexcept;
    /// @}

private:
    [[noreturn]] static void raiseEndOfBuffer();
    void grow(const char* bytes, int count);

    std::vector<char> m_bytes;
    int m_position = 0; // never beyond the size
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
