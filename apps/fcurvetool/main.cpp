#include "Commands.h"
#include "Failure.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <new>
#include <string>

namespace {

constexpr int kBadInput = 1;
constexpr int kBadUsage = 2;

int complain(const std::string& message, int code) {
    std::fprintf(stderr, "fcurvetool: %s\n", message.c_str());
    return code;
}

int run(int argc, char** argv) {
    CLI::App app("Works on files of animation curves: describes, evaluates, samples, draws, converts and edits them.",
                 "fcurvetool");
    app.footer("fcurvetool COMMAND --help tells more. A file of \"-\" is standard input, or output.\n"
               "Exit codes: 0 done, 1 bad input or output, 2 bad command line.");
    app.set_version_flag("--version", "fcurvetool " FCURVETOOL_VERSION);
    app.require_subcommand(0, 1);
    app.parse_complete_callback([&app] {
        if (app.get_subcommands().empty()) throw fcurvetool::UsageError("a command is required");
    });
    fcurvetool::addInfo(app);
    fcurvetool::addEval(app);
    fcurvetool::addSample(app);
    fcurvetool::addPlot(app);
    fcurvetool::addConvert(app);
    fcurvetool::addBake(app);
    fcurvetool::addSmooth(app);
    fcurvetool::addTransform(app);
    fcurvetool::addFlip(app);
    fcurvetool::addInsert(app);
    fcurvetool::addFormats(app);

    const auto helpHint = [&app] {
        const auto chosen = app.get_subcommands();
        return " (fcurvetool " + (chosen.empty() ? "" : chosen.front()->get_name() + " ") + "--help tells more)";
    };
    try {
        app.parse(argc, argv);
        return 0;
    } catch (const CLI::Success& request) { // --help or --version
        return app.exit(request);
    } catch (const CLI::ParseError& error) {
        return complain(error.what() + helpHint(), kBadUsage);
    } catch (const fcurvetool::UsageError& error) {
        return complain(error.what() + helpHint(), kBadUsage);
    } catch (const fcurvetool::Failure& error) {
        return complain(error.what(), kBadInput);
    } catch (const std::bad_alloc&) {
        return complain("out of memory", kBadInput);
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        return complain(error.what(), kBadInput);
    }
}
