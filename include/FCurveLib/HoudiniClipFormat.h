#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatExceptions.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Reader.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The format "hClip": sampled tracks of one length and rate. docs/formats/hclip.md describes it.
namespace HoudiniClipFormat {

/// "hClip", "Houdini Clip", "Clip".
FCURVELIB_API const FormatType& GetFormatType();

/// \name What can be wrong
/// Every one has the line and the column where it is, and says what was expected and what was found.
/// @{

/// Base of the format's exceptions.
class FCURVELIB_API ClipError : public FormatError {
public:
    using FormatError::FormatError;
    const char* what() const noexcept override;
};

/// Another word than the ones that may stand here, or the end of the text.
class FCURVELIB_API UnexpectedWord : public ClipError {
public:
    using ClipError::ClipError;
    const char* what() const noexcept override;
};

/// A word that is not a decimal number, or a number beyond the range of doubles.
class FCURVELIB_API BadNumber : public ClipError {
public:
    using ClipError::ClipError;
    const char* what() const noexcept override;
};

/// There are more or fewer tracks than the header says.
class FCURVELIB_API WrongTrackCount : public ClipError {
public:
    using ClipError::ClipError;
    const char* what() const noexcept override;
};

/// More than FormatLimits allow (of runs above all), tracks longer than 2^24 samples, more than 2^20 tracks, or more
/// than 50 000 000 samples.
class FCURVELIB_API LimitExceeded : public ClipError {
public:
    using ClipError::ClipError;
    const char* what() const noexcept override;
};
/// @}

/// Reads each track as a curve with one key a sample, "linear()" between them. readCurve takes the first track.
/// Recognises a text by its opening brace and the first word of a header after it.
class FCURVELIB_API HoudiniClipReader : public Reader {
public:
    HoudiniClipReader();
    ~HoudiniClipReader() override;

    void readCurves(Stream& stream, FormatInterface& target) override;
    void readCurve(Stream& stream, FormatInterface& target) override;
    bool canRead(Stream& stream, Stream& header) override;
};

} // namespace HoudiniClipFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
