#include "Commands.h"
#include "Failure.h"
#include "Files.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <string>
#include <vector>

namespace fcurvetool {

namespace {

// Both texts come from the command line that the tool understands, so that they cannot say anything else.

std::vector<const CLI::App*> CommandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* command) { return !command->get_name().empty(); });
}

std::string OptionName(const CLI::Option& option, bool isLong) {
    const auto& names = isLong ? option.get_lnames() : option.get_snames();
    return names.empty() ? "" : (isLong ? "--" : "-") + names.front();
}

std::string OptionWords(const CLI::App& command) {
    std::string words;
    for (const CLI::Option* option : command.get_options())
        for (const bool isLong : {false, true})
            if (const std::string name = OptionName(*option, isLong); !name.empty())
                words += (words.empty() ? "" : " ") + name;
    return words;
}

std::string BashCompletion(const CLI::App& app) {
    std::string names;
    std::string cases;
    for (const CLI::App* command : CommandsOf(app)) {
        names += (names.empty() ? "" : " ") + command->get_name();
        cases += "        " + command->get_name() + ") words='" + OptionWords(*command) + "' ;;\n";
    }
    return "# bash completion for fcurvetool\n"
           "_fcurvetool() {\n"
           "    local words current=${COMP_WORDS[COMP_CWORD]}\n"
           "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
           "        COMPREPLY=($(compgen -W '"
           + names + " " + OptionWords(app)
           + "' -- \"$current\"))\n"
             "        return\n"
             "    fi\n"
             "    case ${COMP_WORDS[1]} in\n"
           + cases
           + "    esac\n"
             "    case $current in\n"
             "        -*) COMPREPLY=($(compgen -W \"$words\" -- \"$current\")) ;;\n"
             "        *) compopt -o filenames; COMPREPLY=($(compgen -f -- \"$current\")) ;;\n"
             "    esac\n"
             "}\n"
             "complete -F _fcurvetool fcurvetool\n";
}

/// For the shells' single quotation marks, and without what zsh reads as more than text.
std::string ShellText(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\'' || c == '[' || c == ']' || c == ':' || c == '\n')
            result += ' ';
        else
            result += c;
    }
    return result;
}

std::string ZshCompletion(const CLI::App& app) {
    std::string names;
    std::string cases;
    for (const CLI::App* command : CommandsOf(app)) {
        names += "        '" + command->get_name() + ":" + ShellText(command->get_description()) + "'\n";
        cases += "    " + command->get_name() + ") _arguments";
        for (const CLI::Option* option : command->get_options())
            for (const bool isLong : {false, true})
                if (const std::string name = OptionName(*option, isLong); !name.empty())
                    cases += " \\\n        '*" + name + "[" + ShellText(option->get_description()) + "]"
                             + (option->get_expected_max() > 0 ? ": :_files'" : "'");
        cases += " \\\n        '*: :_files' ;;\n";
    }
    return "#compdef fcurvetool\n"
           "local -a commands\n"
           "commands=(\n"
           + names
           + ")\n"
             "if (( CURRENT == 2 )); then\n"
             "    _describe command commands\n"
             "    return\n"
             "fi\n"
             "shift words\n"
             "(( CURRENT-- ))\n"
             "case $words[1] in\n"
           + cases + "esac\n";
}

std::string FishCompletion(const CLI::App& app) {
    std::string text = "# fish completion for fcurvetool\n";
    for (const CLI::App* command : CommandsOf(app)) {
        text += "complete -c fcurvetool -n __fish_use_subcommand -f -a " + command->get_name() + " -d '"
                + ShellText(command->get_description()) + "'\n";
        for (const CLI::Option* option : command->get_options()) {
            if (option->get_lnames().empty()) continue;
            text += "complete -c fcurvetool -n '__fish_seen_subcommand_from " + command->get_name() + "' -l "
                    + option->get_lnames().front();
            if (!option->get_snames().empty()) text += " -s " + option->get_snames().front();
            if (option->get_expected_max() > 0) text += " -r";
            text += " -d '" + ShellText(option->get_description()) + "'\n";
        }
    }
    return text;
}

/// For troff: no line is a request, and hyphens and backslashes are themselves.
std::string ManualText(const std::string& text) {
    std::string result;
    bool startsLine = true;
    for (const char c : text) {
        if (startsLine && (c == '.' || c == '\'')) result += "\\&";
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else
            result += c;
        startsLine = c == '\n';
    }
    return result;
}

std::string ManualOptions(const CLI::App& command) {
    std::string text;
    for (const CLI::Option* option : command.get_options()) {
        std::string names;
        for (const bool isLong : {false, true})
            if (const std::string name = OptionName(*option, isLong); !name.empty())
                names += (names.empty() ? "" : ", ") + name;
        if (names.empty()) names = option->get_name();
        const std::string type = option->get_expected_max() > 0 ? option->get_type_name() : "";
        text += ".TP\n.B " + ManualText(names) + (type.empty() ? "" : "\\fR \\fI" + ManualText(type)) + "\n"
                + ManualText(option->get_description()) + "\n";
    }
    return text;
}

std::string Manual(const CLI::App& app) {
    std::string text = ".TH FCURVETOOL 1 \"\" \"fcurvetool " FCURVETOOL_VERSION "\" \"User Commands\"\n"
                       ".SH NAME\nfcurvetool \\- work on files of animation curves\n"
                       ".SH SYNOPSIS\n.B fcurvetool\n.I COMMAND\n.RI [ OPTION \"]... \" FILE ...\n"
                       ".SH DESCRIPTION\n"
                       + ManualText(app.get_description()) + "\n.PP\n" + ManualText(app.get_footer())
                       + "\n.SH COMMANDS\n";
    for (const CLI::App* command : CommandsOf(app)) {
        text += ".SS " + command->get_name() + "\n" + ManualText(command->get_description()) + ".\n";
        if (!command->get_footer().empty()) text += ".PP\n" + ManualText(command->get_footer()) + "\n";
        text += ManualOptions(*command);
    }
    return text;
}

} // namespace

void AddCompletion(CLI::App& app) {
    CLI::App* command = app.add_subcommand("completion", "Print what teaches a shell to complete command lines");
    auto shell = std::make_shared<std::string>();
    command->add_option("SHELL", *shell, "bash, zsh or fish")->required()->type_name("");
    command->footer("For bash: source <(fcurvetool completion bash)");
    command->callback([&app, shell] {
        if (*shell == "bash") return Print(BashCompletion(app));
        if (*shell == "zsh") return Print(ZshCompletion(app));
        if (*shell == "fish") return Print(FishCompletion(app));
        throw UsageError("\"" + ToPrintable(*shell) + "\" is not bash, zsh or fish");
    });
}

void AddManual(CLI::App& app) {
    CLI::App* command = app.add_subcommand("manual", "Print the manual page");
    command->footer("To read it: fcurvetool manual | man -l -");
    command->callback([&app] { Print(Manual(app)); });
}

} // namespace fcurvetool
