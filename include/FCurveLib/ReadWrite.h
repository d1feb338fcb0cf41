#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"

#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \file
/// Reads and writes curves. The format of a single curve is always named; that of a container is recognised from its
/// content. File-name extensions decide nothing. Files are loaded and saved by CurveFiles.h.
///
/// Every function raises UnknownFormat when there is no reader or writer of that name; errors in the data are
/// FormatErrors (each format nests its own), errors of the stream those of the stream. Null names count as empty.

/// \name Read
/// @{

/// Reads one curve from the stream's position on. The target becomes that curve and calls notifyChanged once; when an
/// exception leaves, it is exactly what it was.
FCURVELIB_API void ReadCurve(Stream& stream, const char* format, FCurve& curve);
FCURVELIB_API void ReadCurve(Stream& stream, const FormatType& format, FCurve& curve);

/// Reads all curves of the stream, from its first byte on, adds them to the container and sets the properties that the
/// document gives it. Returns the format that was recognised; UnknownFormat if none was, with the stream at position 0.
/// The container calls notifyChanged once, if anything changed. When another exception leaves, the curves that were
/// complete before it stay in the container, and its observers are told.
FCURVELIB_API FormatType ReadCurves(Stream& stream, FCurveContainer& container);

/// As ReadCurve, from bytes in memory.
FCURVELIB_API void ReadFCurveFromString(const std::string& data, const char* format, FCurve& curve);
/// @}

/// \name Write
/// At the stream's position. What was written before an exception stays in the stream. Any number of threads may write
/// at a time, each to a stream of its own, in every format whose writer has createDocument(): all of this library's.
/// @{
FCURVELIB_API void WriteCurve(const FCurve& curve, Stream& stream, const char* format);
FCURVELIB_API void WriteCurve(const FCurve& curve, Stream& stream, const FormatType& format);
FCURVELIB_API void WriteCurves(const FCurveContainer& container, Stream& stream, const char* format);
FCURVELIB_API void WriteCurves(const FCurveContainer& container, Stream& stream, const FormatType& format);

/// Into a string, which may hold zero bytes in a binary format. It keeps its content when an exception leaves.
FCURVELIB_API void WriteFCurveToString(const FCurve& curve, const char* format, std::string& out);
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
