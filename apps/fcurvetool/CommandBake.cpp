#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/Baking.h>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct BakeOptions {
    EditOptions edit;
    std::string range;
    double step = 1.0;
};

void bake(const BakeOptions& options) {
    if (!(options.step > 0.0)) throw UsageError("--step: must be above 0");
    const auto range = parseRange(options.range);
    runEdit(options.edit, "baking", [&](FCurve& curve) -> std::string {
        if (range)
            BakeCurve(curve, range->low, range->high, options.step);
        else
            BakeInterior(curve, options.step);
        return {};
    });
}

} // namespace

void addBake(CLI::App& app) {
    CLI::App* command = app.add_subcommand("bake", "Replace curves by linear keys at equal distances");
    auto options = std::make_shared<BakeOptions>();
    addEditOptions(*command, options->edit);
    addRangeOption(*command, options->range);
    command->add_option("--step", options->step, "Frames from one key to the next")
        ->type_name("FRAMES")
        ->capture_default_str();
    command->footer("The new keys stand on whole multiples of the step: inside the range, or, without one, around all "
                    "keys. What lies outside the range stays as it is.");
    command->callback([options] { bake(*options); });
}

} // namespace fcurvetool
