#pragma once

#include "FCurveLib/Export.h"
#include "FCurveLib/FileError.h"
#include "FCurveLib/MemoryStream.h"

#include <functional>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// All bytes of a file, at position 0: of a pipe or a device, which readers cannot go back and forth in, those that
/// come until it ends. Raises LoadError, with EFBIG for more than 2^31-1 bytes; a null path counts as empty. Besides
/// the bytes it takes as much memory again while they come from what does not tell its size.
///
/// The callback hears of each megabyte: which share of the file is there, or -1 where its size is not known. What it
/// throws passes to the caller.
FCURVELIB_API MemoryStream LoadFile(const char* path, const std::function<void(double)>& progress = {});

} // namespace v19
} // namespace VEM_FN::FCurveLib
