#pragma once

#include "FCurveInterchange/Export.h"

#include <FCurveLib/FormatExceptions.h>

#include <memory>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

/// Registers the readers and writers of this library with FormatFactory, once. Loading the library does it too; a host
/// that names nothing else of it calls this, or its linker may leave the library out.
FCURVEINTERCHANGE_API void RegisterFormats();

/// \name What can be wrong with a document, in every format of this library
/// @{

/// Base of this library's exceptions.
class FCURVEINTERCHANGE_API InterchangeError : public FormatError {
public:
    explicit InterchangeError(const std::string& message, std::uint64_t line = 0, std::uint64_t column = 0,
                              const std::string& path = {});
    const char* what() const noexcept override;

    /// Where in a JSON document, "/k/3/s"; the message begins with it. Empty in texts, which have line and column.
    const char* path() const noexcept;

private:
    std::shared_ptr<const std::string> m_path;
};

/// The document does not follow its format.
class FCURVEINTERCHANGE_API BadDocument : public InterchangeError {
public:
    using InterchangeError::InterchangeError;
    const char* what() const noexcept override;
};

/// More than FormatLimits, or the format's own limits, allow; in a document that is read or in one to be written.
class FCURVEINTERCHANGE_API TooMuch : public InterchangeError {
public:
    using InterchangeError::InterchangeError;
    const char* what() const noexcept override;
};

/// What no document of the format can say, or calls that make no document. Nothing was written.
class FCURVEINTERCHANGE_API NotWritable : public InterchangeError {
public:
    using InterchangeError::InterchangeError;
    const char* what() const noexcept override;
};
/// @}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
