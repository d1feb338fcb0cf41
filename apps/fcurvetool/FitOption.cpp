#include "FitOption.h"

#include "Failure.h"
#include "Files.h"
#include "Input.h"
#include "Table.h"
#include "Text.h"

#include <CLI/CLI.hpp>

#include <cstdio>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

void AddFitOptions(CLI::App& command, FitCommandOptions& options) {
    command
        .add_option("--tolerance", options.tolerance,
                    "How far values may be off; with % a part of each curve's range of values")
        ->type_name("NUMBER[%]")
        ->capture_default_str();
    command.add_flag("--weighted", options.isWeighted, "Allow handles of any length: fewer keys");
    command.add_flag("--broken", options.isBroken, "Allow corners: fewer keys");
    command.add_flag("--keep-extremes", options.fit.keepExtremes, "Keep keys at highest and lowest points");
    command.add_flag("--whole-frames", options.fit.wholeFrames, "Place keys on whole frames only");
    command.add_option("--max-keys", options.fit.maxKeys, "Leave at most that many, whatever the tolerance")
        ->type_name("COUNT");
}

double ToleranceOption::of(double lowest, double highest) const {
    return isPercent ? number / 100.0 * (highest - lowest) : number;
}

ToleranceOption ParseFitOptions(FitCommandOptions& options) {
    options.fit.handles = options.isWeighted ? FitOptions::Weighted : FitOptions::Thirds;
    options.fit.keys = options.isBroken ? FitOptions::Broken : FitOptions::Smooth;
    std::string text = options.tolerance;
    const bool isPercent = !text.empty() && text.back() == '%';
    if (isPercent) text.pop_back();
    const auto number = ParseNumber(text);
    if (!number || *number < 0.0)
        throw UsageError("--tolerance: \"" + ToPrintable(options.tolerance)
                         + "\" is not a number from 0 on, with % or without");
    return {*number, isPercent};
}

std::string FitReports::add(const FCurve& curve, const FitReport& report) {
    m_rows.push_back({NameOf(curve), report});
    if (report.withinTolerance) return {};
    return "the tolerance is not held: off by " + ToBriefText(report.error, 3) + " at frame "
           + ToBriefText(report.errorAt);
}

void FitReports::print(const std::string& curvesOutput) const {
    if (m_rows.empty()) return;
    Table table;
    table.addColumn("name", Table::Align::Left);
    for (const char* heading : {"before", "keys", "largest error", "at frame"})
        table.addColumn(heading, Table::Align::Right);
    for (const Row& row : m_rows)
        table.addRow({row.name, std::to_string(row.report.keysBefore), std::to_string(row.report.keysAfter),
                      ToBriefText(row.report.error, 3), ToBriefText(row.report.errorAt)});
    if (curvesOutput == "-") {
        std::fputs(table.text().c_str(), stderr);
        return;
    }
    Print(table.text());
}

} // namespace fcurvetool
