#pragma once

#include "FCurveLib/Export.h"

#include <cstddef>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// How much of a file every reader of the library accepts before it refuses the file, so that a hostile or broken one
/// costs little time and memory. Far above what real files hold. Writers refuse what readers would.
struct FormatLimits {
    /// Bytes of one name, property key, property value, expression or number.
    std::size_t text = 1U << 20;
    /// Depth of nested elements or blocks.
    std::size_t nesting = 32;
    /// Properties of one part.
    std::size_t properties = 65536;
    /// Curves of one container.
    std::size_t curves = 1000000;
    /// Keys of one curve.
    std::size_t keys = 10000000;
    /// Keys of one file that stand there as run lengths, besides 64 for each byte of it. Keys that are written out take
    /// a byte each at least.
    std::size_t runs = 262144;
    /// Bytes of the expressions of one file, counted for every segment: some formats name one for many segments.
    std::size_t expressions = 1U << 31;
};

/// \name The limits in force, for all readers and writers
/// A reader or writer takes them when a document starts. To be set while nobody reads or writes.
/// @{
FCURVELIB_API FormatLimits GetFormatLimits() noexcept;
FCURVELIB_API void SetFormatLimits(const FormatLimits& limits) noexcept;
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
