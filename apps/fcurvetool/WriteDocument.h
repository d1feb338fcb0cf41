#pragma once

#include <FCurveLib/FCurveContainer.h>

#include <string>

namespace fcurvetool {

/// The name of the format to write: the one asked for, else the one with the output's extension, else the fallback.
/// UsageError where that is none that can be written.
std::string chooseFormat(const std::string& asked, const std::string& output, const std::string& fallback = "");

/// Writes the curves as one file, or to standard output for "-". The name is that of the input, for messages. Failure
/// leaves what was there.
void writeDocument(const VEM_FN::FCurveLib::FCurveContainer& curves, const std::string& format,
                   const std::string& output, const std::string& name);

} // namespace fcurvetool
