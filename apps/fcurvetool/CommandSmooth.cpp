#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>
#include <FCurveLib/Smoothing.h>

#include <iterator>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct SmoothOptions {
    EditOptions edit;
    std::string range;
    double step = 1.0;
    int width = 2;
    bool isUnlimited = false;
    std::string filter = "gaussian";
};

SmoothFilter ParseFilter(const std::string& name) {
    if (name == "box") return SMOOTH_BOX;
    if (name == "triangle") return SMOOTH_TRIANGLE;
    if (name == "gaussian") return SMOOTH_GAUSSIAN;
    if (name == "savitzky-golay") return SMOOTH_SAVITZKY_GOLAY;
    throw UsageError("--filter: \"" + ToPrintable(name) + "\" is not box, triangle, gaussian or savitzky-golay");
}

void Smooth(SmoothOptions& options) {
    if (!(options.step > 0.0)) throw UsageError("--step: must be above 0");
    if (options.width < 0) throw UsageError("--width: must not be below 0");
    const SmoothFilter filter = ParseFilter(options.filter);
    const auto range = ParseRange(options.range);
    options.edit.caption = ": " + options.filter + ", width " + std::to_string(options.width);
    RunEdit(options.edit, "smoothing", [&](FCurve& curve) -> std::string {
        if (range)
            LimitSamples(range->low, range->high, options.step, options.isUnlimited);
        else if (curve.size() > 2)
            LimitSamples(curve.begin()->getRightKey()->getX(), std::prev(curve.end())->getLeftKey()->getX(),
                         options.step, options.isUnlimited);
        if (range)
            SmoothCurve(curve, range->low, range->high, options.step, options.width, filter);
        else
            SmoothCurveInterior(curve, options.step, options.width, filter);
        return {};
    });
}

} // namespace

void AddSmooth(CLI::App& app) {
    CLI::App* command = app.add_subcommand("smooth", "Smooth curves, and replace them by linear keys");
    auto options = std::make_shared<SmoothOptions>();
    AddEditOptions(*command, options->edit);
    AddRangeOption(*command, options->range);
    command->add_option("--step", options->step, "Frames from one key to the next")
        ->type_name("FRAMES")
        ->capture_default_str();
    command->add_option("--width", options->width, "Neighbours on either side that a key is averaged with")
        ->type_name("COUNT")
        ->capture_default_str();
    command
        ->add_option("--filter", options->filter,
                     "How neighbours are weighted: box, triangle, gaussian; savitzky-golay keeps peaks")
        ->type_name("NAME")
        ->capture_default_str();
    AddLimitOption(*command, options->isUnlimited);
    command->footer("What lies outside the range stays as it is.");
    command->callback([options] { Smooth(*options); });
}

} // namespace fcurvetool
