#pragma once

#include "FrameRange.h"
#include "Input.h"

#include <FCurveLib/FCurve.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace fcurvetool {

/// What the commands that edit curves have in common: one file in, the same curves out, some of them edited, and a
/// picture of them before and after.
struct EditOptions {
    InputOptions input;
    std::string file;
    std::string output; ///< empty: not given
    bool isInPlace = false;
    std::string format;  ///< to write
    std::string picture; ///< a file; empty: none
    std::string caption; ///< of the picture
};

/// Adds FILE, OUTPUT, --in-place, --curve, --to, --plot and what --format and its like are.
void AddEditOptions(CLI::App& command, EditOptions& options);

/// Adds --range.
void AddRangeOption(CLI::App& command, std::string& range);
/// What --range says; nothing where it was not given.
std::optional<Interval> ParseRange(const std::string& range);

/// UsageError for more than 10^7 samples from one frame to another, unless they were asked for.
void LimitSamples(double first, double last, double step, bool isUnlimited);
/// Adds --no-limit.
void AddLimitOption(CLI::App& command, bool& isUnlimited);

/// Where the curves go: OUTPUT, or FILE with --in-place. UsageError where neither or both are given, and where OUTPUT
/// is FILE by another name.
std::string ChooseOutput(const std::string& file, const std::string& output, bool isInPlace);

/// One edit. It may throw Failure; then nothing is written. The text that it returns, if any, is a warning for the
/// user.
using CurveEdit = std::function<std::string(VEM_FN::FCurveLib::FCurve& curve)>;

/// Reads the file, edits the chosen curves one by one, draws the picture if one is wanted, and writes all curves of the
/// file.
void RunEdit(const EditOptions& options, const char* word, const CurveEdit& edit);

/// The same with one edit of all chosen curves together, or of the document.
using CurvesEdit = std::function<std::string(const std::vector<NamedCurve>& chosen)>;
void RunEdits(const EditOptions& options, const char* word, const CurvesEdit& edit);
using DocumentEdit = std::function<std::string(Document& document, const std::vector<NamedCurve>& chosen)>;
void RunDocumentEdit(const EditOptions& options, const char* word, const DocumentEdit& edit);

} // namespace fcurvetool
