#include "Commands.h"
#include "Failure.h"
#include "Files.h"
#include "Input.h"
#include "Progress.h"
#include "Text.h"
#include "Warnings.h"
#include "WriteDocument.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/FCurve.h>
#include <FCurveLib/FindCurve.h>

#include <string>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct MergeCommand {
    InputOptions input;
    std::string output;
    std::string format;
    bool prefixes = false;
    bool replaces = false;
};

void Merge(const MergeCommand& options) {
    RefuseInput(options.output, options.input.files, "choose another one");
    const auto merged = FCurveContainer::create();
    Warnings warnings(options.input.isStrict);
    std::string format;
    for (const std::string& file : options.input.files) {
        const Document document = ReadDocument(file, options.input);
        if (format.empty()) format = document.format.getFormatName();
        for (auto property = document.curves->beginProperties(); property != document.curves->endProperties();
             ++property)
            merged->setProperty(property->first.c_str(), property->second.c_str());
        while (!document.curves->empty()) {
            FCurve& curve = *document.curves->begin();
            if (options.prefixes) curve.setName((Stem(file) + ":" + curve.getName()).c_str());
            auto place = merged->end();
            if (const auto same = *curve.getName() ? FindCurve(*merged, curve.getName()) : nullptr) {
                if (!options.replaces)
                    throw Failure(document.name + ": a curve \"" + ToPrintable(curve.getName())
                                  + "\" came before; --replace takes the last one, "
                                  + (options.prefixes ? "rename keeps both" : "--prefix keeps both"));
                for (place = merged->begin(); &*place != same.get();) ++place;
                place = merged->removeCurve(place);
            }
            merged->moveCurve(place, *document.curves, curve);
        }
    }
    const std::string target = ChooseFormat(options.format, options.output, format);
    std::string bytes;
    {
        const Progress progress("merging");
        bytes = FormatDocument(*merged, target, ToPrintable(options.output), warnings);
    }
    warnings.settle();
    WriteFile(options.output, bytes);
}

} // namespace

void AddMerge(CLI::App& app) {
    CLI::App* command = app.add_subcommand("merge", "Write the curves of several files into one");
    auto options = std::make_shared<MergeCommand>();
    command->add_option("FILE", options->input.files, "Files to read")->required()->type_name("");
    command->add_option("-o,--output", options->output, "File to write, - for standard output")
        ->required()
        ->type_name("FILE");
    command
        ->add_option("--to", options->format,
                     "Format to write (default: by the output's extension, else the first input's)")
        ->type_name("NAME");
    auto* const prefixes =
        command->add_flag("--prefix", options->prefixes, "Put the file's name before the curves' names");
    command->add_flag("--replace", options->replaces, "Of curves with one name, take the last")->excludes(prefixes);
    AddReadOptions(*command, options->input);
    command->callback([options] { Merge(*options); });
}

} // namespace fcurvetool
