#include "Commands.h"
#include "EditCommand.h"
#include "FitOption.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/Extents.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>

#include <iterator>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct ReduceOptions {
    EditOptions edit;
    FitCommandOptions fit;
    std::string range;
};

void Reduce(ReduceOptions& options) {
    const ToleranceOption tolerance = ParseFitOptions(options.fit);
    const auto range = ParseRange(options.range);
    options.edit.caption = ": tolerance " + options.fit.tolerance;
    FitReports reports;
    RunEdit(options.edit, "reducing", [&](FCurve& curve) -> std::string {
        if (curve.size() < 3) return {};
        const double first = range ? range->low : curve.begin()->getRightKey()->getX();
        const double last = range ? range->high : std::prev(curve.end())->getLeftKey()->getX();
        Rectangle<double> extents;
        GetInteriorExtents(curve, extents);
        return reports.add(curve, ReduceCurve(curve, first, last, tolerance.of(extents.y, extents.y + extents.height),
                                              options.fit.fit));
    });
    reports.print(options.edit.output);
}

} // namespace

void AddReduce(CLI::App& app) {
    CLI::App* command = app.add_subcommand("reduce", "Remove keys as long as curves hardly change");
    auto options = std::make_shared<ReduceOptions>();
    AddEditOptions(*command, options->edit);
    AddRangeOption(*command, options->range);
    AddFitOptions(*command, options->fit);
    command->footer(
        "The curve is nowhere farther than the tolerance from what it was, between the keys as well. Locked "
        "and selected keys, breakdowns, steps, formulas and everything outside the range stay.");
    command->callback([options] { Reduce(*options); });
}

} // namespace fcurvetool
