#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatExceptions.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Reader.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The format "text": curves and containers to be typed by hand or written by scripts. docs/formats/text.md describes
/// it.
namespace TextFormat {

/// "text", "Text", "fcrvt".
FCURVELIB_API const FormatType& GetFormatType();

/// \name What can be wrong
/// Every one has the line and the column where it is, and says what was expected and what was found.
/// @{

/// Base of the format's exceptions.
class FCURVELIB_API TextError : public FormatError {
public:
    using FormatError::FormatError;
    const char* what() const noexcept override;
};

/// Another word than the ones that may stand here, or the end of the line.
class FCURVELIB_API UnexpectedWord : public TextError {
public:
    using TextError::TextError;
    const char* what() const noexcept override;
};

/// A word that is not a decimal number, or a number beyond the range of doubles.
class FCURVELIB_API BadNumber : public TextError {
public:
    using TextError::TextError;
    const char* what() const noexcept override;
};

/// A text in quotation marks without an end, or with an escape that there is none of.
class FCURVELIB_API BadText : public TextError {
public:
    using TextError::TextError;
    const char* what() const noexcept override;
};

/// The document was written for another major version of the format.
class FCURVELIB_API UnsupportedVersion : public TextError {
public:
    using TextError::TextError;
    const char* what() const noexcept override;
};

/// More than FormatLimits allow.
class FCURVELIB_API LimitExceeded : public TextError {
public:
    using TextError::TextError;
    const char* what() const noexcept override;
};
/// @}

/// Reads documents of version 1.x. readCurve takes a document of exactly one curve; properties of the container are
/// then read and dropped. Recognises a document by its first word that is in no
/// comment, "fcurvetext".
class FCURVELIB_API TextReader : public Reader {
public:
    TextReader();
    ~TextReader() override;

    void readCurves(Stream& stream, FormatInterface& target) override;
    void readCurve(Stream& stream, FormatInterface& target) override;
    bool canRead(Stream& stream, Stream& header) override;
};

} // namespace TextFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
