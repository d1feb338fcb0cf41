#include "Commands.h"
#include "Failure.h"
#include "Files.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveInterchange/Formats.h>
#include <FCurveLib/FileError.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <vector>

namespace {

constexpr int kBadInput = 1;
constexpr int kBadUsage = 2;

int Complain(const std::string& message, int code) {
    std::fprintf(stderr, "fcurvetool: %s\n", message.c_str());
    return code;
}

/// How many letters must be changed, added, left out, or exchanged with their neighbours to make one of the other.
std::size_t Distance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> rows(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            std::size_t& least = rows[i][j];
            least = i == 0 ? j : j == 0 ? i : rows[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            if (i > 0 && j > 0) least = std::min({least, rows[i - 1][j] + 1, rows[i][j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                least = std::min(least, rows[i - 2][j - 2] + 1);
        }
    }
    return rows[a.size()][b.size()];
}

void RefuseUnknownCommand(const CLI::App& app, const std::string& command) {
    constexpr std::size_t kLongestCommand = 32;
    if (command.empty() || command[0] == '-') return;
    std::string nearest;
    std::size_t least = 3; // more letters than that are another word
    for (const CLI::App* known : app.get_subcommands(nullptr)) {
        if (known->get_name() == command) return;
        if (command.size() > kLongestCommand) continue;
        if (const std::size_t letters = Distance(command, known->get_name()); letters < least) {
            nearest = known->get_name();
            least = letters;
        }
    }
    throw fcurvetool::UsageError("unknown command \"" + fcurvetool::ToPrintable(command) + "\""
                                 + (nearest.empty() ? "" : "; did you mean " + nearest + "?"));
}

int Run(int argc, char** argv) {
    VEM_FN::FCurveLib::Interchange::RegisterFormats();
    CLI::App app("Works on files of animation curves: describes, evaluates, samples, draws, converts and edits them.",
                 "fcurvetool");
    app.footer("Run fcurvetool COMMAND --help for details. A file of \"-\" is standard input, or output.\n"
               "Exit codes: 0 done, 1 bad input or output, 2 bad command line.");
    app.set_version_flag("--version", "fcurvetool " FCURVETOOL_VERSION);
    app.require_subcommand(0, 1);
    app.parse_complete_callback([&app] {
        if (app.get_subcommands().empty()) throw fcurvetool::UsageError("a command is required");
    });
    fcurvetool::AddInfo(app);
    fcurvetool::AddEval(app);
    fcurvetool::AddSample(app);
    fcurvetool::AddPlot(app);
    fcurvetool::AddConvert(app);
    fcurvetool::AddBake(app);
    fcurvetool::AddSmooth(app);
    fcurvetool::AddFit(app);
    fcurvetool::AddReduce(app);
    fcurvetool::AddTransform(app);
    fcurvetool::AddFlip(app);
    fcurvetool::AddInsert(app);
    fcurvetool::AddMove(app);
    fcurvetool::AddScale(app);
    fcurvetool::AddExtract(app);
    fcurvetool::AddMerge(app);
    fcurvetool::AddRename(app);
    fcurvetool::AddDelete(app);
    fcurvetool::AddDiff(app);
    fcurvetool::AddFormats(app);
    fcurvetool::AddCompletion(app);
    fcurvetool::AddManual(app);

    // A frame or a number that is infinite or none at all would pass as one, and do nothing.
    const CLI::Validator finite(
        [](const std::string& text) {
            const double number = std::strtod(text.c_str(), nullptr);
            return std::isfinite(number) ? std::string() : text + " is not a finite number";
        },
        "");
    for (CLI::App* command : app.get_subcommands({}))
        for (CLI::Option* option : command->get_options())
            if (const std::string type = option->get_type_name(); type.compare(0, 5, "FRAME") == 0 || type == "NUMBER")
                option->check(finite);

    const auto helpHint = [&app] {
        const auto chosen = app.get_subcommands();
        return " (run fcurvetool " + (chosen.empty() ? "" : chosen.front()->get_name() + " ") + "--help for details)";
    };
    try {
        if (argc > 1) RefuseUnknownCommand(app, argv[1]);
        app.parse(argc, argv);
        return 0;
    } catch (const CLI::Success& request) { // --help or --version
        return app.exit(request);
    } catch (const CLI::ParseError& error) {
        return Complain(error.what() + helpHint(), kBadUsage);
    } catch (const fcurvetool::UsageError& error) {
        return Complain(error.what() + helpHint(), kBadUsage);
    } catch (const fcurvetool::Failure& error) {
        return Complain(error.what(), kBadInput);
    } catch (const VEM_FN::FCurveLib::LoadError& error) {
        return Complain(fcurvetool::Describe(error), kBadInput);
    } catch (const VEM_FN::FCurveLib::SaveError& error) {
        return Complain(fcurvetool::Describe(error), kBadInput);
    } catch (const std::bad_alloc&) {
        return Complain("out of memory", kBadInput);
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        return Complain(error.what(), kBadInput);
    }
}
