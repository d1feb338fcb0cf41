#include "Commands.h"
#include "Failure.h"
#include "Files.h"
#include "Input.h"
#include "Table.h"
#include "Text.h"
#include "Warnings.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/Diff.h>
#include <FCurveLib/FCurve.h>

#include <algorithm>
#include <string>
#include <vector>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct DiffCommand {
    InputOptions input;
    std::string first;
    std::string second;
    double tolerance = 0.0;
    bool keys = false;
    bool isQuiet = false;
};

const NamedCurve* find(const std::vector<NamedCurve>& curves, const std::string& name) {
    const auto found =
        std::find_if(curves.begin(), curves.end(), [&](const NamedCurve& named) { return named.name == name; });
    return found == curves.end() ? nullptr : &*found;
}

class Comparison {
public:
    explicit Comparison(const DiffCommand& options) : m_options(options) {
        m_table.addColumn("curve", Table::Align::Left);
        for (const char* heading : {"largest", "at frame", "parts"}) m_table.addColumn(heading, Table::Align::Right);
    }

    void add(const NamedCurve& first, const NamedCurve& second) {
        DiffOptions options;
        options.tolerance = m_options.tolerance;
        const CurveDifference found = Diff(*first.curve, *second.curve, options);
        const bool differs = found.largest > m_options.tolerance || (m_options.keys && !found.parts.empty());
        m_table.addRow({first.name, ToBriefText(found.largest), found.largest > 0.0 ? ToBriefText(found.x) : "-",
                        std::to_string(found.parts.size())});
        if (!differs) return;
        complain(found.largest > m_options.tolerance
                     ? first.name + " differs by " + ToBriefText(found.largest) + " at frame " + ToBriefText(found.x)
                     : first.name + " has other keys");
    }
    void addMissing(const NamedCurve& curve, const std::string& where) {
        m_table.addRow({curve.name, "not in " + where, "-", "-"});
        complain(curve.name + " is not in " + where);
    }
    /// Failure where something differs.
    void finish() {
        if (!m_options.isQuiet) {
            Print(m_table.text());
        }
        if (m_count == 0) return;
        throw Failure(m_first + (m_count > 1 ? ", and " + std::to_string(m_count - 1) + " more" : ""));
    }

private:
    void complain(const std::string& text) {
        if (m_count++ == 0) m_first = text;
    }

    const DiffCommand& m_options;
    Table m_table;
    std::string m_first;
    std::size_t m_count = 0;
};

void Diff(const DiffCommand& options) {
    if (!(options.tolerance >= 0.0)) throw UsageError("--tolerance: must not be below 0");
    const Document first = ReadDocument(options.first, options.input);
    const Document second = ReadDocument(options.second, options.input);
    InputOptions all = options.input;
    all.curves.clear();
    const auto left = ChooseCurves({first}, options.input);
    const auto right = ChooseCurves({second}, all);
    Warnings warnings(options.input.isStrict);
    warnings.addUnknownExpressions(left);
    warnings.settle();
    Comparison comparison(options);
    for (const NamedCurve& named : left) {
        if (const NamedCurve* other = find(right, named.name))
            comparison.add(named, *other);
        else
            comparison.addMissing(named, second.name);
    }
    if (options.input.curves.empty())
        for (const NamedCurve& named : right)
            if (!find(left, named.name)) comparison.addMissing(named, first.name);
    comparison.finish();
}

} // namespace

void AddDiff(CLI::App& app) {
    CLI::App* command = app.add_subcommand("diff", "Compare the curves of two files");
    auto options = std::make_shared<DiffCommand>();
    command->add_option("FILE", options->first, "File to compare")->required()->type_name("");
    command->add_option("OTHER", options->second, "File to compare with")->required()->type_name("");
    command->add_option("--tolerance", options->tolerance, "Differences of values that do not count")
        ->type_name("NUMBER")
        ->capture_default_str();
    command->add_flag("--keys", options->keys,
                      "Keys, tangents, interpolators and properties count as well, not only values");
    command->add_flag("-q,--quiet", options->isQuiet, "Print no table");
    AddCurveOption(*command, options->input);
    AddReadOptions(*command, options->input);
    command->footer(
        "Curves of the same name are compared from the first key of both to the last. Exit code 1 where one "
        "differs by more than the tolerance, or is in one file only; `parts` counts keys, tangents and\n"
        "segments that differ by more than that.");
    command->callback([options] { Diff(*options); });
}

} // namespace fcurvetool
