#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatExceptions.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Reader.h"
#include "FCurveLib/detail/DocumentWriter.h"

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The format "binary": curves and containers as chunks of little-endian bytes, without loss, small and fast.
/// docs/formats/binary.md describes it byte by byte.
namespace BinaryFormat {

/// "binary", "Binary", "fcrvb".
FCURVELIB_API const FormatType& GetFormatType();

/// \name What can be wrong
/// @{

/// Base of the format's exceptions. The format has no lines: line() and column() are 0.
class FCURVELIB_API BinaryError : public FormatError {
public:
    explicit BinaryError(const std::string& message = {}, std::uint64_t offset = 0);
    const char* what() const noexcept override;

    /// Where the wrong thing starts, in bytes from the start of the stream. 0 from a writer.
    std::uint64_t offset() const noexcept { return m_offset; }

private:
    std::uint64_t m_offset;
};

/// The stream ends before the document does.
class FCURVELIB_API UnexpectedEnd : public BinaryError {
public:
    UnexpectedEnd(std::uint64_t expectedSize, std::uint64_t foundSize, std::uint64_t offset);
    const char* what() const noexcept override;

    /// Bytes that should follow the offset, and how many do.
    std::uint64_t expectedSize() const noexcept { return m_expected; }
    std::uint64_t foundSize() const noexcept { return m_found; }

private:
    std::uint64_t m_expected;
    std::uint64_t m_found;
};

/// A block of another type than the one that must stand here, or one where none may.
class FCURVELIB_API WrongBlockType : public BinaryError {
public:
    /// expected is a text ("\"Name\"", "the end"); found a type of four bytes, in which anything but printable ASCII
    /// becomes '?'.
    WrongBlockType(const char* expected, const char* found, std::uint64_t offset);
    const char* what() const noexcept override;

    /// As given. Never null.
    const char* expected() const noexcept { return m_types->first.c_str(); }
    const char* found() const noexcept { return m_types->second.c_str(); }

private:
    std::shared_ptr<const std::pair<std::string, std::string>> m_types;
};

/// A block without one that it must hold.
class FCURVELIB_API MissingBlock : public BinaryError {
public:
    using BinaryError::BinaryError;
    const char* what() const noexcept override;
};

/// A block that is longer than the one that holds it, too short for its content, or longer than its content.
class FCURVELIB_API WrongBlockSize : public BinaryError {
public:
    /// problem starts the message: "The block "Name" is longer than the one that holds it".
    WrongBlockSize(const std::string& problem, std::uint64_t expectedSize, std::uint64_t foundSize,
                   std::uint64_t offset);
    const char* what() const noexcept override;

    std::uint64_t expectedSize() const noexcept { return m_expected; }
    std::uint64_t foundSize() const noexcept { return m_found; }

private:
    std::uint64_t m_expected;
    std::uint64_t m_found;
};

/// A number or a text that cannot be what it stands for: a coordinate that is not finite, a key that does not come
/// after the one before it, an unknown tangent type, an index without its expression, a text with a zero byte, a flag
/// that this version does not have.
class FCURVELIB_API BadValue : public BinaryError {
public:
    using BinaryError::BinaryError;
    const char* what() const noexcept override;
};

/// The document was written for another major version of the format.
class FCURVELIB_API UnsupportedVersion : public BinaryError {
public:
    UnsupportedVersion(unsigned major, unsigned minor, std::uint64_t offset);
    const char* what() const noexcept override;

    unsigned majorVersion() const noexcept { return m_major; }
    unsigned minorVersion() const noexcept { return m_minor; }
    /// The major version that can be read.
    unsigned supportedVersion() const noexcept;

private:
    unsigned m_major;
    unsigned m_minor;
};

/// More than FormatLimits allow, in a document that is read or in one to be written.
class FCURVELIB_API LimitExceeded : public BinaryError {
public:
    using BinaryError::BinaryError;
    const char* what() const noexcept override;
};

/// A writer's document would reach beyond the 2^31-1 bytes that a stream can hold. Nothing was written.
class FCURVELIB_API DocumentTooLarge : public BinaryError {
public:
    using BinaryError::BinaryError;
    const char* what() const noexcept override;
};

/// A writer was told something that makes no document which the reader takes: a call out of the stated order, a second
/// out tangent, a key that does not come after the one before it, an unknown tangent type. Nothing was written.
class FCURVELIB_API RefusedCall : public BinaryError {
public:
    using BinaryError::BinaryError;
    const char* what() const noexcept override;
};

/// A writer was given a number that is not finite, which no curve holds.
class FCURVELIB_API NotFinite : public BinaryError {
public:
    using BinaryError::BinaryError;
    const char* what() const noexcept override;
};
/// @}

/// Reads documents of version 1.x from the stream's position on, and leaves the stream after the document. readCurve
/// takes a document of a single curve; readCurves also takes one, as a container that holds it. Where the stream ends
/// too early, the target hears the curves that are there whole. Takes memory for the document's bytes, and no more than
/// the stream has.
class FCURVELIB_API BinaryReader : public Reader {
public:
    BinaryReader();
    ~BinaryReader() override;

    void readCurves(Stream& stream, FormatInterface& target) override;
    void readCurve(Stream& stream, FormatInterface& target) override;
    /// By the types of the first two blocks.
    bool canRead(Stream& stream, Stream& header) override;
};

/// Writes documents of version 1.0. The bytes depend on nothing but the calls. A document is composed in memory and
/// reaches the stream in one piece, with finishCurve or finishCurveContainer: an exception before that leaves the
/// stream alone. What the reader would refuse raises here: RefusedCall, NotFinite, LimitExceeded, DocumentTooLarge.
/// An exception drops the document. Of the grid and of the tangent scale six significant digits are written, as many
/// as curves keep; a grid without area is none.
class FCURVELIB_API BinaryWriter : public Private::DocumentWriter {
public:
    BinaryWriter();
    ~BinaryWriter() override;

    std::unique_ptr<FormatInterface> createDocument(Stream& stream) const override;
};

} // namespace BinaryFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
