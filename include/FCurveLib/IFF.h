#pragma once

/// \file
/// Chunks: typed, sized blocks of bytes that nest. docs/streams.md has an example of each direction.
///
///     offset  bytes  content
///     0       4      type, the four bytes of an IFFType in order
///     4       4      size of the payload alone, unsigned, in the policy's byte order
///     8       size   payload, which may be a row of chunks itself
///
/// Deliberate: an odd payload is not padded to an even length, the next chunk starts right after it.
///
/// Nothing here judges types or sizes: that is the format's task. Sums are made in 64 bits, so no size from a file can
/// wrap around. Chunks are written in one pass, on any stream that goes back to patch the size (all of the library's
/// do).

#include "FCurveLib/BinaryIO.h"
#include "FCurveLib/Stream.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The type of a chunk: four bytes, compared one by one, not zero-terminated.
class FCURVELIB_API IFFType {
public:
    /// Four zero bytes.
    IFFType() noexcept = default;

    /// The text's first four bytes; zeros after a shorter one, and all zeros for null. Implicit, so that a type can be
    /// written as the text that it is.
    IFFType(const char* text) noexcept; // NOLINT(google-explicit-constructor)

    /// The type of exactly these four bytes, zeros among them included.
    static IFFType fromBytes(const char* bytes) noexcept;

    /// The four bytes.
    const char* getTypeBytes() const noexcept { return m_bytes; }

    friend bool operator==(const IFFType& a, const IFFType& b) noexcept {
        return std::memcmp(a.m_bytes, b.m_bytes, sizeof a.m_bytes) == 0;
    }
    friend bool operator!=(const IFFType& a, const IFFType& b) noexcept { return !(a == b); }

private:
    char m_bytes[4] = {};
};

/// A chunk being written: construct it, write the payload, call patchSize(). A copy completes the same chunk. The
/// stream and the BinaryIO must outlive it.
template<class Policy>
class IFFWriter {
public:
    /// Writes the type and a size of zero.
    IFFWriter(Stream& stream, BinaryIO<Policy>& io, const IFFType& type) : m_stream(&stream), m_io(&io), m_type(type) {
        stream.writeData(m_type.getTypeBytes(), 4);
        m_sizePosition = stream.getPosition();
        stream.writeData("\0\0\0", 4);
    }

    /// Makes everything from the header to the stream's position the payload, and leaves the position there. There is
    /// no destructor that does this: a chunk that is left unpatched has size 0.
    ///
    /// Exceptions are the stream's; Stream::StreamException when the position lies before the payload. The chunk's size
    /// is unchanged then, unless the stream failed while it was written.
    void patchSize() const {
        const int end = m_stream->getPosition();
        const std::int64_t size = std::int64_t{end} - m_sizePosition - 4;
        if (size < 0) throw Stream::StreamException();
        m_stream->setPosition(m_sizePosition);
        m_io->writeUInt32(*m_stream, static_cast<std::uint32_t>(size));
        m_stream->setPosition(end);
    }

private:
    Stream* m_stream;
    BinaryIO<Policy>* m_io;
    IFFType m_type;
    int m_sizePosition;
};

/// A chunk being read: construct it where the chunk starts, read the payload, or as much of it as is known, then call
/// validateSize() or skip(). The stream and the BinaryIO must outlive it.
template<class Policy>
class IFFReader {
public:
    /// Reads type and size. Raises the stream's end-of-data exception when fewer than eight bytes are left.
    IFFReader(Stream& stream, BinaryIO<Policy>& io) : m_stream(&stream), m_io(&io) {
        char type[4];
        stream.readData(type, 4);
        m_type = IFFType::fromBytes(type);
        m_size = io.readUInt32(stream);
        m_payloadBegin = stream.getPosition();
    }

    /// \name The chunk
    /// @{
    const IFFType& getIFFType() const noexcept { return m_type; }

    /// The payload's size. No stream is long enough for one beyond 2^31-1: it is reported as 2^31-1, which no stream is
    /// long enough for either, after a header.
    int getIFFSize() const noexcept { return static_cast<int>(std::min<std::uint32_t>(m_size, INT_MAX)); }

    /// Where the payload starts, and where it ends according to the header: that may be beyond the stream.
    int getPayloadBegin() const noexcept { return m_payloadBegin; }
    std::int64_t getPayloadEnd() const noexcept { return std::int64_t{m_payloadBegin} + m_size; }
    /// @}

    /// \name What it is read from
    /// @{
    Stream& getStream() const noexcept { return *m_stream; }
    BinaryIO<Policy>& getBinaryIO() const noexcept { return *m_io; }
    /// @}

    /// \name Leave the chunk
    /// @{

    /// Whether the stream stands exactly after the payload.
    bool validateSize() const { return m_stream->getPosition() == getPayloadEnd(); }

    /// Goes to the first byte after the chunk, forwards or backwards. Raises the stream's exception when that lies
    /// outside the stream, and leaves the position where it was.
    void skip() const {
        if (getPayloadEnd() > INT_MAX) raiseOutside();
        m_stream->setPosition(static_cast<int>(getPayloadEnd()));
    }
    /// @}

private:
    // No position can say where the chunk ends. The last one lies outside every stream but the longest, so the stream
    // raises its own exception for it.
    [[noreturn]] void raiseOutside() const {
        const int position = m_stream->getPosition();
        m_stream->setPosition(INT_MAX);
        m_stream->setPosition(position);
        throw Stream::StreamException();
    }

    Stream* m_stream;
    BinaryIO<Policy>* m_io;
    IFFType m_type;
    std::uint32_t m_size;
    int m_payloadBegin;
};

// What the library's own format uses is compiled into the library.
extern template class FCURVELIB_API IFFWriter<LittleEndianBinaryPolicy>;
extern template class FCURVELIB_API IFFReader<LittleEndianBinaryPolicy>;

} // namespace v19
} // namespace VEM_FN::FCurveLib
