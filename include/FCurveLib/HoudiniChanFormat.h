#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatExceptions.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"
#include "FCurveLib/Reader.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// The format "hchan": a table of numbers, one row a frame, one column a channel. docs/formats/hchan.md describes it.
namespace HoudiniChanFormat {

/// "hchan", "Houdini Channel", "chan".
FCURVELIB_API const FormatType& GetFormatType();

/// \name What can be wrong
/// Every one has the line and the column where it is.
/// @{

/// Base of the format's exceptions.
class FCURVELIB_API ChanError : public FormatError {
public:
    using FormatError::FormatError;
    const char* what() const noexcept override;
};

/// A cell that is not a decimal number, or a number beyond the range of doubles.
class FCURVELIB_API BadNumber : public ChanError {
public:
    using ChanError::ChanError;
    const char* what() const noexcept override;
};

/// A row with more or fewer cells than the first one.
class FCURVELIB_API RaggedRow : public ChanError {
public:
    RaggedRow(std::size_t expected, std::size_t found, std::uint64_t line, std::uint64_t column);
    const char* what() const noexcept override;

    std::size_t expected() const noexcept { return m_expected; }
    std::size_t found() const noexcept { return m_found; }

private:
    std::size_t m_expected;
    std::size_t m_found;
};

/// There is no row, or no column besides that of the frames.
class FCURVELIB_API NoData : public ChanError {
public:
    using ChanError::ChanError;
    const char* what() const noexcept override;
};

/// A frame that does not come at least Keyframe::getMinSeparation() after the one before it.
class FCURVELIB_API BadFrame : public ChanError {
public:
    using ChanError::ChanError;
    const char* what() const noexcept override;
};

/// The binary relative of the format, which is not read.
class FCURVELIB_API BinaryFile : public ChanError {
public:
    using ChanError::ChanError;
    const char* what() const noexcept override;
};

/// More than FormatLimits allow, more than 65 536 columns, or more than 50 000 000 numbers.
class FCURVELIB_API LimitExceeded : public ChanError {
public:
    using ChanError::ChanError;
    const char* what() const noexcept override;
};
/// @}

/// Reads channels as curves "chan0", "chan1" ... with one key a row, "linear()" between keys and "constant()" before
/// and after them. readCurve takes the first channel.
///
/// Two dialects look alike: in one, the first column is the frame number, in the other it is the first channel and row
/// n is frame n. By default the first column counts as frame numbers exactly when there are at least two columns and
/// two rows and all of its numbers are integers in strictly increasing order. That takes a channel that rises by
/// integers for frames, and the frame of a file of a single row for a channel: a host that knows better says so.
class FCURVELIB_API HoudiniChanReader : public Reader {
public:
    enum FrameColumn : std::uint8_t { Auto, Yes, No };

    explicit HoudiniChanReader(FrameColumn frameColumn = Auto);
    ~HoudiniChanReader() override;

    /// \name Whether the first column is the frame number
    /// With Yes the frames may be any numbers that increase by Keyframe::getMinSeparation() at least.
    /// @{
    FrameColumn getFrameColumn() const noexcept { return m_frameColumn; }
    void setFrameColumn(FrameColumn frameColumn) noexcept { m_frameColumn = frameColumn; }
    /// @}

    void readCurves(Stream& stream, FormatInterface& target) override;
    void readCurve(Stream& stream, FormatInterface& target) override;
    /// Any text that begins with rows of numbers looks like this format, so every other reader should be asked before.
    bool canRead(Stream& stream, Stream& header) override;

private:
    FrameColumn m_frameColumn;
};

} // namespace HoudiniChanFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
