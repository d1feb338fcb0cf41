#include "EditCommand.h"

#include "Failure.h"
#include "Files.h"
#include "Picture.h"
#include "Progress.h"
#include "Text.h"
#include "Warnings.h"
#include "WriteDocument.h"

#include <CLI/CLI.hpp>

#include <vector>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

void AddEditOptions(CLI::App& command, EditOptions& options) {
    command.add_option("FILE", options.file, "File to read")->required()->type_name("");
    command.add_option("OUTPUT", options.output, "File to write, - for standard output")->type_name("");
    command.add_flag("--in-place", options.isInPlace, "Write to FILE instead of an OUTPUT");
    AddCurveOption(command, options.input);
    command
        .add_option("--to", options.format, "Format to write (default: by the output's extension, else the input's)")
        ->type_name("NAME");
    command.add_option("--plot", options.picture, "Draw the curves before and after into this .svg or .png file")
        ->type_name("FILE");
    AddReadOptions(command, options.input);
}

void AddRangeOption(CLI::App& command, std::string& range) {
    command.add_option("--range", range, "Frames to edit (default: from the first key to the last)")
        ->type_name("FIRST:LAST");
}

std::optional<Interval> ParseRange(const std::string& range) {
    if (range.empty()) return std::nullopt;
    return ParseInterval(range, "--range");
}

void LimitSamples(double first, double last, double step, bool isUnlimited) {
    constexpr double kMostSamples = 1e7;
    const double samples = (last - first) / step + 1.0;
    if (samples > kMostSamples && !isUnlimited)
        throw UsageError(ToBriefText(samples, 3) + " samples from frame " + ToText(first) + " to " + ToText(last)
                         + "; --no-limit allows more than 10^7");
}

void AddLimitOption(CLI::App& command, bool& isUnlimited) {
    command.add_flag("--no-limit", isUnlimited, "Allow more than 10^7 samples of a curve");
}

std::string ChooseOutput(const std::string& file, const std::string& output, bool isInPlace) {
    if (isInPlace && !output.empty()) throw UsageError("--in-place writes to FILE, so there is no OUTPUT");
    if (isInPlace && file == "-") throw UsageError("--in-place cannot write to standard input");
    if (isInPlace) return file;
    if (output.empty()) throw UsageError("OUTPUT is required, or --in-place");
    RefuseInput(output, {file}, "give --in-place to replace it");
    return output;
}

namespace {

/// The edit says itself what it warns of.
using WarningEdit = std::function<void(Document& document, const std::vector<NamedCurve>& chosen, Warnings& warnings)>;

void Run(const EditOptions& options, const char* word, const WarningEdit& edit) {
    const std::string output = ChooseOutput(options.file, options.output, options.isInPlace);
    if (!options.picture.empty()) CheckPicture(options.picture, {options.file, output});
    Document document = ReadDocument(options.file, options.input);
    const std::string format = ChooseFormat(options.format, output, document.format.getFormatName());
    Warnings warnings(options.input.isStrict);
    const std::vector<NamedCurve> chosen = ChooseCurves({document}, options.input);
    warnings.addUnknownExpressions(chosen);
    std::vector<DrawnCurve> drawn;
    std::string picture;
    std::string bytes;
    {
        const Progress progress(word);
        if (!options.picture.empty())
            for (const NamedCurve& named : chosen)
                drawn.push_back({named.curve, named.name, FCurve::createCopy(*named.curve)});
        edit(document, chosen, warnings);
        if (!options.picture.empty()) {
            DrawOptions plot;
            plot.title = ToPrintable(Stem(options.file)) + ", before and after" + options.caption;
            picture = DrawPicture(drawn, plot);
        }
        bytes = FormatDocument(*document.curves, format, document.name, warnings);
    }
    warnings.settle();
    if (!options.picture.empty()) WritePicture(picture, options.picture);
    WriteFile(output, bytes);
}

} // namespace

void RunEdit(const EditOptions& options, const char* word, const CurveEdit& edit) {
    Run(options, word, [&](Document& document, const std::vector<NamedCurve>& chosen, Warnings& warnings) {
        for (const NamedCurve& named : chosen) {
            const std::string prefix = document.name + ": " + named.name + ": ";
            try {
                const std::string warning = edit(*named.curve);
                if (!warning.empty()) warnings.add(prefix + warning);
            } catch (const Failure& failure) {
                throw Failure(prefix + failure.what());
            } catch (const UsageError& error) {
                throw UsageError(prefix + error.what());
            }
        }
    });
}

void RunEdits(const EditOptions& options, const char* word, const CurvesEdit& edit) {
    RunDocumentEdit(options, word, [&](Document&, const std::vector<NamedCurve>& chosen) { return edit(chosen); });
}

void RunDocumentEdit(const EditOptions& options, const char* word, const DocumentEdit& edit) {
    Run(options, word, [&](Document& document, const std::vector<NamedCurve>& chosen, Warnings& warnings) {
        const std::string warning = edit(document, chosen);
        if (!warning.empty()) warnings.add(document.name + ": " + warning);
    });
}

} // namespace fcurvetool
