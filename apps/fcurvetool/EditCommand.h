#pragma once

#include "FrameRange.h"
#include "Input.h"

#include <FCurveLib/FCurve.h>

#include <functional>
#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace fcurvetool {

/// What the commands that edit curves have in common: one file in, the same curves out, some of them edited, and a
/// picture of them before and after.
struct EditOptions {
    InputOptions input;
    std::string file;
    std::string output;
    std::string format;  ///< to write
    std::string picture; ///< a file; empty: none
    std::string caption; ///< of the picture
};

/// Adds FILE, OUTPUT, --curve, --to, --plot and --format.
void addEditOptions(CLI::App& command, EditOptions& options);

/// Adds --range.
void addRangeOption(CLI::App& command, std::string& range);
/// What --range says; nothing where it was not given.
std::optional<Interval> parseRange(const std::string& range);

/// One edit. It may throw Failure; then nothing is written. The text that it returns, if any, is a warning for the
/// user.
using CurveEdit = std::function<std::string(VEM_FN::FCurveLib::FCurve& curve)>;

/// Reads the file, edits the chosen curves, draws the picture if one is wanted, and writes all curves of the file.
void runEdit(const EditOptions& options, const char* word, const CurveEdit& edit);

} // namespace fcurvetool
