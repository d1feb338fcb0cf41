#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"
#include "Files.h"
#include "Input.h"
#include "Losses.h"
#include "Progress.h"
#include "Text.h"
#include "Warnings.h"
#include "WriteDocument.h"

#include <CLI/CLI.hpp>

namespace fcurvetool {

namespace {

struct ConvertOptions {
    InputOptions input;
    std::string file;
    std::string output;
    bool isInPlace = false;
    std::string format;
    LossOptions losses;
};

void Convert(const ConvertOptions& options) {
    const std::string output = ChooseOutput(options.file, options.output, options.isInPlace);
    const std::string format = ChooseFormat(options.format, output);
    if (!options.losses.report.empty()) {
        RefuseInput(options.losses.report, {options.file}, "the report would replace it");
        if (IsSamePlace(options.losses.report, output))
            throw UsageError("--report and OUTPUT are both " + ToPrintable(output));
    }
    Losses losses(options.losses);
    const Document document = ReadDocument(options.file, options.input);
    Warnings warnings(options.input.isStrict);
    losses.tell(document.name, warnings);
    std::string bytes;
    {
        const Progress progress("converting");
        bytes = FormatDocument(*document.curves, format, document.name, warnings);
    }
    losses.writeReport();
    warnings.settle();
    WriteFile(output, bytes);
}

} // namespace

void AddConvert(CLI::App& app) {
    CLI::App* command = app.add_subcommand("convert", "Write the curves of a file in another format");
    auto options = std::make_shared<ConvertOptions>();
    command->add_option("FILE", options->file, "File to read")->required()->type_name("");
    command->add_option("OUTPUT", options->output, "File to write, - for standard output")->type_name("");
    command->add_flag("--in-place", options->isInPlace, "Write to FILE instead of an OUTPUT");
    command->add_option("--to", options->format, "Format to write (default: by the output's extension)")
        ->type_name("NAME");
    AddLossOptions(*command, options->losses);
    AddReadOptions(*command, options->input);
    command->callback([options] { Convert(*options); });
}

} // namespace fcurvetool
