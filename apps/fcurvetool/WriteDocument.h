#pragma once

#include "Warnings.h"

#include <FCurveLib/FCurveContainer.h>
#include <FCurveLib/FormatType.h>

#include <string>
#include <vector>

namespace fcurvetool {

/// The formats that can be written: those that the library has a writer for, and the old text.
std::vector<VEM_FN::FCurveLib::FormatType> GetWritableFormats();

/// The name of the format to write: the one asked for, else the one with the output's extension, else the fallback.
/// UsageError where that is none that can be written.
std::string ChooseFormat(const std::string& asked, const std::string& output, const std::string& fallback = "");

/// The bytes of a file of these curves. The name is that of the input, for messages. What the format cannot hold is
/// lost, with a warning for each curve.
std::string FormatDocument(const VEM_FN::FCurveLib::FCurveContainer& curves, const std::string& format,
                           const std::string& name, Warnings& warnings);

} // namespace fcurvetool
