#include "Columns.h"
#include "Commands.h"
#include "Failure.h"
#include "Files.h"
#include "FrameRange.h"
#include "Input.h"
#include "Table.h"
#include "Text.h"
#include "Warnings.h"

#include <CLI/CLI.hpp>

#include <cstdint>

namespace fcurvetool {

namespace {

struct EvalOptions {
    InputOptions input;
    ColumnOptions columns;
    std::string file;
    std::vector<std::string> frames;
};

// A table is held in memory to align it; longer lists are what `sample` is for.
constexpr std::int64_t kMostRows = 100000;

void Evaluate(EvalOptions& options) {
    std::vector<FrameRange> ranges;
    std::int64_t rows = 0;
    for (const std::string& text : options.frames) {
        ranges.push_back(FrameRange::parse(text));
        rows += ranges.back().size();
    }
    if (rows > kMostRows) throw UsageError("more than 100000 frames; `sample` writes as many as you like");
    options.input.files = {options.file};
    const std::vector<NamedCurve> curves = ReadCurves(options.input);
    Warnings warnings(options.input.isStrict);
    warnings.addUnknownExpressions(curves);
    warnings.settle();

    Table table;
    table.addColumn("frame", Table::Align::Right);
    for (std::string& name : ColumnNames(curves, options.columns)) table.addColumn(name, Table::Align::Right);
    std::vector<FrameValues> values = ValuesOf(curves, rows);
    std::vector<std::string> cells;
    for (const FrameRange& range : ranges) {
        for (std::int64_t i = 0; i < range.size(); ++i) {
            EvaluateColumns(values, options.columns, range[i], cells);
            cells.insert(cells.begin(), ToText(range[i]));
            table.addRow(cells);
        }
    }
    Print(table.text());
}

} // namespace

void AddEval(CLI::App& app) {
    CLI::App* command = app.add_subcommand("eval", "Evaluate the curves of a file at given frames");
    auto options = std::make_shared<EvalOptions>();
    command->add_option("FILE", options->file, "File to read")->required()->type_name("");
    command
        ->add_option("FRAMES", options->frames,
                     "Frames: 12.5, or 1:10 for 1 to 10, or 1:10:0.5 for every half frame of it")
        ->required()
        ->type_name("");
    AddCurveOption(*command, options->input);
    AddColumnOptions(*command, options->columns);
    AddReadOptions(*command, options->input);
    command->footer("Numbers are written so that they read back exactly. Derivatives at a key are those to its right.");
    command->callback([options] { Evaluate(*options); });
}

} // namespace fcurvetool
