#include "Columns.h"
#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"
#include "Files.h"
#include "FrameRange.h"
#include "Input.h"
#include "Progress.h"
#include "Text.h"
#include "Warnings.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/FileReplacement.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

namespace fcurvetool {

namespace {

struct SampleOptions {
    InputOptions input;
    ColumnOptions columns;
    std::optional<double> from;
    std::optional<double> to;
    double step = 1.0;
    bool isUnlimited = false;
    std::string output = "-";
};

/// A CSV cell by RFC 4180.
std::string Quote(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string result = "\"";
    for (const char byte : text) result += byte == '"' ? std::string("\"\"") : std::string(1, byte);
    return result + '"';
}

FrameRange ChooseFrames(const std::vector<NamedCurve>& curves, const SampleOptions& options) {
    std::optional<double> first;
    std::optional<double> last;
    for (const NamedCurve& named : curves) {
        if (named.curve->size() < 2) continue;
        const double begin = named.curve->begin()->getRightKey()->getX();
        const double end = std::prev(named.curve->end())->getLeftKey()->getX();
        first = std::min(first.value_or(begin), begin);
        last = std::max(last.value_or(end), end);
    }
    if (options.from) first = options.from;
    if (options.to) last = options.to;
    if (!first || !last) throw UsageError("the curves have no keys; give --from and --to");
    const FrameRange frames(*first, *last, options.step);
    LimitSamples(*first, *last, options.step, options.isUnlimited);
    return frames;
}

void Sample(const SampleOptions& options) {
    RefuseInput(options.output, options.input.files, "write the table to another file");
    const std::vector<NamedCurve> curves = ReadCurves(options.input);
    const FrameRange frames = ChooseFrames(curves, options);
    Warnings warnings(options.input.isStrict);
    warnings.addUnknownExpressions(curves);
    warnings.settle();
    Progress progress("sampling");
    std::optional<VEM_FN::FCurveLib::FileReplacement> file;
    if (options.output != "-") file.emplace(options.output.c_str());
    const auto write = [&file](const std::string& rows) { file ? Append(file->getStream(), rows) : Print(rows); };
    std::string text = "frame";
    for (const std::string& name : ColumnNames(curves, options.columns)) text += ',' + Quote(name);
    text += '\n';
    std::vector<FrameValues> values = ValuesOf(curves, frames.size());
    std::vector<std::string> cells;
    for (std::int64_t i = 0; i < frames.size(); ++i) {
        EvaluateColumns(values, options.columns, frames[i], cells);
        text += ToText(frames[i]);
        for (const std::string& cell : cells) text += ',' + cell;
        text += '\n';
        if (text.size() > 65536) {
            write(text);
            text.clear();
            progress.set(static_cast<double>(i) / static_cast<double>(frames.size()));
        }
    }
    write(text);
    if (file) file->finish();
}

} // namespace

void AddSample(CLI::App& app) {
    CLI::App* command = app.add_subcommand("sample", "Write the curves' values at equal distances as CSV");
    auto options = std::make_shared<SampleOptions>();
    command->add_option("FILE", options->input.files, "Files to read")->required()->type_name("");
    AddCurveOption(*command, options->input);
    command->add_option("--from", options->from, "First frame (default: the first key of all curves)")
        ->type_name("FRAME");
    command->add_option("--to", options->to, "Last frame (default: the last key of all curves)")->type_name("FRAME");
    command->add_option("--step", options->step, "Frames from one row to the next")
        ->type_name("FRAMES")
        ->capture_default_str();
    AddLimitOption(*command, options->isUnlimited);
    AddColumnOptions(*command, options->columns);
    command->add_option("-o,--output", options->output, "File to write (default: standard output)")->type_name("FILE");
    AddReadOptions(*command, options->input);
    command->footer("Numbers are written so that they read back exactly. Derivatives at a key are those to its right.");
    command->callback([options] { Sample(*options); });
}

} // namespace fcurvetool
