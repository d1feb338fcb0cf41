#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"
#include "Input.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/FCurve.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace fcurvetool {

namespace {

struct RenameCommand {
    EditOptions edit;
    std::vector<std::string> names;
};

/// The new name: * in the pattern stands for the old one.
std::string NewName(const std::string& pattern, const std::string& old) {
    std::string name;
    for (const char c : pattern) c == '*' ? name += old : name += c;
    return name;
}

void Rename(const RenameCommand& options) {
    std::vector<std::pair<std::string, std::string>> rules;
    for (const std::string& text : options.names) {
        const std::size_t sign = text.find('=');
        if (sign == std::string::npos || sign == 0)
            throw UsageError("--name: \"" + ToPrintable(text) + "\" is not WHICH=NAME");
        rules.emplace_back(text.substr(0, sign), text.substr(sign + 1));
    }
    RunDocumentEdit(options.edit, "renaming", [&](Document& document, const std::vector<NamedCurve>& chosen) {
        std::vector<std::pair<std::size_t, std::string>> renamed; // by the names that they had
        for (const auto& [which, pattern] : rules) {
            const std::vector<std::size_t> found = FindCurves(chosen, which);
            if (found.empty()) throw Failure(document.name + ": no curve \"" + ToPrintable(which) + "\"");
            for (const std::size_t index : found)
                renamed.emplace_back(index, NewName(pattern, chosen[index].curve->getName()));
        }
        for (const auto& [index, name] : renamed) chosen[index].curve->setName(name.c_str());
        return std::string();
    });
}

} // namespace

void AddRename(CLI::App& app) {
    CLI::App* command = app.add_subcommand("rename", "Give curves other names");
    auto options = std::make_shared<RenameCommand>();
    AddEditOptions(*command, options->edit);
    command
        ->add_option("--name", options->names,
                     "The curves WHICH, as for --curve, get this name; * in NAME stands for the old one; repeatable")
        ->required()
        ->type_name("WHICH=NAME")
        ->expected(1)
        ->allow_extra_args(false)
        ->take_all();
    command->callback([options] { Rename(*options); });
}

} // namespace fcurvetool
