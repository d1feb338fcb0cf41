#pragma once

#include "FCurveLib/Exception.h"
#include "FCurveLib/Export.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A sequence of bytes with a position: what every reader and writer of curves works on.
///
/// Positions, counts and sizes are signed 32-bit: a stream holds at most 2^31-1 bytes. A negative count or position, or
/// a sum beyond that, is refused with the stream's own exception and changes nothing. There is no end-of-stream query:
/// readers compare getPosition() with getSize(), or meet the exception that readData() raises.
///
/// The library's streams are MemoryStream, FileStream, ArrayStreamAdaptor and ArrayStream; Stream_iostream puts the
/// standard streams' operators on any of them. A host may derive its own: the contracts below are what the library's
/// readers and writers rely on.
///
/// Buffers must not overlap the stream's own storage. One object must not be used by two threads at once; separate
/// objects are independent.
class FCURVELIB_API Stream {
public:
    /// What the exceptions of the streams in memory derive from (a FileStream raises those of File).
    class FCURVELIB_API StreamException : public Exception {
    public:
        const char* what() const noexcept override;
    };

    Stream() noexcept = default;
    virtual ~Stream();

    /// Copies exactly count bytes from the position into buffer and advances; raises when fewer are there.
    /// A count of 0 always succeeds, at the end too (buffer may then be null).
    virtual void readData(void* buffer, int count) = 0;

    /// Writes count bytes at the position and advances.
    virtual void writeData(const void* buffer, int count) = 0;

    virtual int getPosition() const = 0;

    /// Positions from 0 to getSize(), both included, are allowed.
    virtual void setPosition(int position) = 0;

    virtual int getSize() const = 0;

protected:
    Stream(const Stream&) noexcept = default;
    Stream& operator=(const Stream&) noexcept = default;
};

} // namespace v19
} // namespace VEM_FN::FCurveLib
