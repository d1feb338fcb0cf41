#pragma once

#include "FCurveLib/Exception.h"
#include "FCurveLib/Export.h"
#include "FCurveLib/FileError.h"
#include "FCurveLib/FormatType.h"
#include "FCurveLib/Forward.h"

#include <functional>
#include <string>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// \file
/// Loads and saves files of curves, all or nothing:
///
///     SaveCurves("walk.fcrvx", *container);
///     LoadCurves("walk.fcrvx", *container);
///
/// Any number of threads may do so at a time, with containers of their own.

/// A callback of SaveOptions or LoadOptions ended the work. Nothing was saved, or loaded.
class FCURVELIB_API Cancelled : public Exception {
public:
    const char* what() const noexcept override;
};

/// Both callbacks are called in the caller's thread, often enough for a progress bar: each megabyte, and each thousand
/// keys. What they throw passes to the caller, and the old file stays as it stays after any failure.
struct SaveOptions {
    /// Hears of the share that is done, rising up to 1: that comes when the device has the new file, just before it
    /// takes the old one's place.
    std::function<void(double)> progress;
    /// True ends the work: Cancelled is raised.
    std::function<bool()> cancelled;
};

/// The callbacks as in SaveOptions. The share 1 comes just before the curves change.
struct LoadOptions {
    /// Of the one reader to try; empty to recognise the format by the content, and if that tells nothing, by the path's
    /// extension.
    std::string format;
    std::function<void(double)> progress;
    std::function<bool()> cancelled;
};

/// \name Save
/// Through a FileReplacement, which tells what is kept of an old file, and what becomes of links, pipes and devices.
/// Without a format, or with an empty one, the path's extension decides.
///
/// Raises UnknownFormat where there is no such writer, the writer's FormatErrors, SaveError for what the system refuses
/// (with its code and words, and which file holds what now), Cancelled. The path then leads to what it led to before,
/// unless a SaveError says otherwise.
/// @{
FCURVELIB_API void SaveCurves(const char* path, const FCurveContainer& container, const char* format = nullptr,
                              const SaveOptions& options = {});
/// A document of a single curve, which LoadCurves reads, too.
FCURVELIB_API void SaveCurve(const char* path, const FCurve& curve, const char* format = nullptr,
                             const SaveOptions& options = {});
/// @}

/// \name Load
/// Raises UnknownFormat, the reader's FormatErrors, LoadError for what the system refuses, Cancelled. Container and
/// curve are then what they were, and nobody is told; of a failed load nothing stays, which is what tells it from
/// ReadCurves. Pipes and devices are read until they end.
/// @{

/// Adds the curves of a file to the container and sets the properties that the document gives it. Observers are told
/// once, if anything changed. Returns the format.
FCURVELIB_API FormatType LoadCurves(const char* path, FCurveContainer& container, const LoadOptions& options = {});
/// The same for a stream, from its first byte on; nothing but the content tells the format.
FCURVELIB_API FormatType LoadCurves(Stream& stream, FCurveContainer& container, const LoadOptions& options = {});
/// Makes a curve what a document of a single curve says, and tells its observers once.
FCURVELIB_API FormatType LoadCurve(const char* path, FCurve& curve, const LoadOptions& options = {});
/// @}

} // namespace v19
} // namespace VEM_FN::FCurveLib
