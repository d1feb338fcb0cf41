#include "Commands.h"
#include "Input.h"
#include "Progress.h"
#include "WriteDocument.h"

#include <CLI/CLI.hpp>

namespace fcurvetool {

namespace {

struct ConvertOptions {
    InputOptions input;
    std::string file;
    std::string output;
    std::string format;
};

void convert(const ConvertOptions& options) {
    const std::string format = chooseFormat(options.format, options.output);
    const Document document = readDocument(options.file, options.input.format);
    const Progress progress("converting");
    writeDocument(*document.curves, format, options.output, document.name);
}

} // namespace

void addConvert(CLI::App& app) {
    CLI::App* command = app.add_subcommand("convert", "Write the curves of a file in another format");
    auto options = std::make_shared<ConvertOptions>();
    command->add_option("FILE", options->file, "File to read")->required()->type_name("");
    command->add_option("OUTPUT", options->output, "File to write, - for standard output")->required()->type_name("");
    command->add_option("--to", options->format, "Format to write (default: by the output's extension)")
        ->type_name("NAME");
    addFormatOption(*command, options->input);
    command->callback([options] { convert(*options); });
}

} // namespace fcurvetool
