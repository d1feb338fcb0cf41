#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatExceptions.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Reader.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The format "tov_fcurve": the text of an older curve system, as TovConversion writes it. docs/formats/tov_fcurve.md
/// describes it.
namespace OldFormat {

/// "tov_fcurve", "Old FCurve", "fcrv".
FCURVELIB_API const FormatType& GetFormatType();

/// \name What can be wrong
/// Every one has the line and the column where it is, and says what was expected and what was found.
/// @{

/// Base of the format's exceptions.
class FCURVELIB_API OldError : public FormatError {
public:
    using FormatError::FormatError;
    const char* what() const noexcept override;
};

/// Another word than the ones that may stand here, or the end of the text.
class FCURVELIB_API UnexpectedWord : public OldError {
public:
    using OldError::OldError;
    const char* what() const noexcept override;
};

/// A word that is not a decimal number, or a number beyond the range of doubles.
class FCURVELIB_API BadNumber : public OldError {
public:
    using OldError::OldError;
    const char* what() const noexcept override;
};

/// More than FormatLimits allow.
class FCURVELIB_API LimitExceeded : public OldError {
public:
    using OldError::OldError;
    const char* what() const noexcept override;
};
/// @}

/// Reads what TovConversion::TovCurve writes, with any white space and any comment lines, and several curves after
/// each other. readCurve takes the first curve. A text without "no conversion loss" reads like any other. Recognises a
/// text by its first word outside comments, "fcurve".
class FCURVELIB_API OldReader : public Reader {
public:
    OldReader();
    ~OldReader() override;

    void readCurves(Stream& stream, FormatInterface& target) override;
    void readCurve(Stream& stream, FormatInterface& target) override;
    bool canRead(Stream& stream, Stream& header) override;
};

} // namespace OldFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
