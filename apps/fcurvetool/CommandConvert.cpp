#include "Commands.h"
#include "Failure.h"
#include "Input.h"
#include "Output.h"
#include "Progress.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/Exception.h>
#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/MemoryStream.h>
#include <FCurveLib/ReadWrite.h>
#include <FCurveLib/Writer.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct ConvertOptions {
    InputOptions input;
    std::string file;
    std::string output;
    std::string format;
};

std::string writableFormats() {
    std::string names;
    for (auto it = FormatFactory::beginWriterTypes(); it != FormatFactory::endWriterTypes(); ++it) {
        if (!names.empty()) names += ", ";
        names += std::string(it->getFormatName()) + " (." + it->getExtension() + ")";
    }
    return names;
}

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
    return text;
}

/// The name of the format to write: --to, else the one with the output's extension.
std::string chooseFormat(const ConvertOptions& options) {
    if (!options.format.empty()) {
        if (FormatFactory::getWriter(options.format.c_str())) return options.format;
        throw UsageError("--to: \"" + toPrintable(options.format) + "\" cannot be written (" + writableFormats()
                         + " can)");
    }
    const std::string extension = lowerCase(std::filesystem::path(options.output).extension().string());
    for (auto it = FormatFactory::beginWriterTypes(); it != FormatFactory::endWriterTypes(); ++it)
        if (extension == "." + lowerCase(it->getExtension())) return it->getFormatName();
    throw UsageError("say with --to in which format to write (" + writableFormats() + ")");
}

void convert(const ConvertOptions& options) {
    const std::string format = chooseFormat(options);
    const Document document = readDocument(options.file, options.input.format);
    const Progress progress("converting");
    MemoryStream bytes;
    try {
        WriteCurves(*document.curves, bytes, format.c_str());
    } catch (const Exception& error) {
        throw Failure(document.name + ": cannot be written as " + format + ": " + error.what());
    }
    Output output(options.output);
    output.write({bytes.getData(), static_cast<std::size_t>(bytes.getSize())});
    output.finish();
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
