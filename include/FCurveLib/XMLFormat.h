#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatExceptions.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Reader.h"
#include "FCurveLib/detail/DocumentWriter.h"

#include <memory>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The format "xml": curves and containers as XML 1.0, without loss. docs/formats/xml.md describes it.
namespace XMLFormat {

/// "xml", "XML", "fcrvx".
FCURVELIB_API const FormatType& GetFormatType();

/// \name What can be wrong
/// @{

/// Base of the format's exceptions.
class FCURVELIB_API XMLError : public FormatError {
public:
    explicit XMLError(const std::string& message = {}, std::uint64_t line = 0, std::uint64_t column = 0,
                      const std::string& name = {});
    const char* what() const noexcept override;

    /// The tag or attribute that is wrong or missing; empty where it is about neither. Never null.
    const char* name() const noexcept;

private:
    std::shared_ptr<const std::string> m_name;
};

/// The document is not well-formed, or ends too early.
class FCURVELIB_API ParseError : public XMLError {
public:
    ParseError(int code, const std::string& message, std::uint64_t line, std::uint64_t column);
    const char* what() const noexcept override;

    /// Expat's error code (XML_Error).
    int code() const noexcept { return m_code; }

private:
    int m_code;
};

/// The document has a DOCTYPE. None is read, so that no entity can expand to anything.
class FCURVELIB_API DoctypeRefused : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// A tag where the format has none, or another one.
class FCURVELIB_API UnexpectedTag : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// An element ends without one that it must hold.
class FCURVELIB_API MissingTag : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// Text between tags, where the format has none.
class FCURVELIB_API UnexpectedText : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// An attribute that is missing, unknown, or has a value that it cannot have.
class FCURVELIB_API BadAttribute : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// The document was written for another major version of the format.
class FCURVELIB_API UnsupportedVersion : public XMLError {
public:
    UnsupportedVersion(unsigned major, unsigned supported, std::uint64_t line, std::uint64_t column);
    const char* what() const noexcept override;

    unsigned majorVersion() const noexcept { return m_major; }
    unsigned supportedVersion() const noexcept { return m_supported; }

private:
    unsigned m_major;
    unsigned m_supported;
};

/// More than FormatLimits allow, in a document that is read or in one to be written.
class FCURVELIB_API LimitExceeded : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// A writer was told something that makes no document which the reader takes: a call out of the stated order, a second
/// out tangent, a key that does not come after the one before it, an unknown tangent type. Nothing was written.
class FCURVELIB_API RefusedCall : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};

/// A writer was given a number that is not finite, which no curve holds.
class FCURVELIB_API NotFinite : public XMLError {
public:
    using XMLError::XMLError;
    const char* what() const noexcept override;
};
/// @}

/// Reads documents of version 1.x, in whatever encoding Expat knows. readCurve takes a document of a single curve;
/// readCurves also takes one, as a container that holds it. Recognises a document by its first tag, or the name in its
/// DOCTYPE, in ASCII-compatible encodings.
class FCURVELIB_API XMLReader : public Reader {
public:
    XMLReader();
    ~XMLReader() override;

    void readCurves(Stream& stream, FormatInterface& target) override;
    void readCurve(Stream& stream, FormatInterface& target) override;
    bool canRead(Stream& stream, Stream& header) override;
};

/// Writes documents of version 1.0. The bytes depend on nothing but the calls. A document is composed in memory and
/// reaches the stream in large pieces, with finishCurve or finishCurveContainer: an exception before that leaves the
/// stream alone. What the reader would refuse raises here: RefusedCall, NotFinite, LimitExceeded.
/// An exception drops the document. Of the grid and of the tangent scale six significant digits are written, as many
/// as curves keep; a grid without area is none.
class FCURVELIB_API XMLWriter : public Private::DocumentWriter {
public:
    XMLWriter();
    ~XMLWriter() override;

    std::unique_ptr<FormatInterface> createDocument(Stream& stream) const override;
};

} // namespace XMLFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
