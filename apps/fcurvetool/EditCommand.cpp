#include "EditCommand.h"

#include "Failure.h"
#include "Output.h"
#include "Plot.h"
#include "Progress.h"
#include "Text.h"
#include "WriteDocument.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <vector>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

void addEditOptions(CLI::App& command, EditOptions& options) {
    command.add_option("FILE", options.file, "File to read")->required()->type_name("");
    command.add_option("OUTPUT", options.output, "File to write, - for standard output; it may be FILE itself")
        ->required()
        ->type_name("");
    addCurveOption(command, options.input);
    command
        .add_option("--to", options.format, "Format to write (default: by the output's extension, else the input's)")
        ->type_name("NAME");
    command.add_option("--plot", options.picture, "Draw the curves before and after into this SVG file")
        ->type_name("FILE");
    addFormatOption(command, options.input);
}

void addRangeOption(CLI::App& command, std::string& range) {
    command.add_option("--range", range, "Frames to edit (default: from the first key to the last)")
        ->type_name("FIRST:LAST");
}

std::optional<Interval> parseRange(const std::string& range) {
    if (range.empty()) return std::nullopt;
    return parseInterval(range, "--range");
}

void runEdit(const EditOptions& options, const char* word, const CurveEdit& edit) {
    const Document document = readDocument(options.file, options.input.format);
    const std::string format = chooseFormat(options.format, options.output, document.format.getFormatName());
    const Progress progress(word);
    std::vector<NamedCurve> picture;
    std::vector<std::string> warnings;
    for (const NamedCurve& named : chooseCurves({document}, options.input)) {
        if (!options.picture.empty()) {
            picture.push_back({FCurve::createCopy(*named.curve), named.name + ", before"});
            picture.push_back({named.curve, named.name + ", after"});
        }
        const std::string prefix = document.name + ": " + named.name + ": ";
        try {
            const std::string warning = edit(*named.curve);
            if (!warning.empty()) warnings.push_back(prefix + warning);
        } catch (const Failure& failure) {
            throw Failure(prefix + failure.what());
        }
    }

    if (!options.picture.empty()) {
        PlotOptions plot;
        plot.title = toPrintable(stem(options.file)) + ", before and after" + options.caption;
        Output file(options.picture);
        file.write(drawPlot(picture, plot));
        file.finish();
    }
    writeDocument(*document.curves, format, options.output, document.name);
    for (const std::string& warning : warnings) std::fprintf(stderr, "fcurvetool: %s\n", warning.c_str());
}

} // namespace fcurvetool
