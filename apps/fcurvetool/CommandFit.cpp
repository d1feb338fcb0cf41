#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"
#include "FitOption.h"
#include "FrameRange.h"
#include "FrameValues.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct FitOfSamplesOptions {
    EditOptions edit;
    FitCommandOptions fit;
    std::string step;
    bool isUnlimited = false;
};

std::vector<Vector2D<double>> SamplesOf(const FCurve& curve, std::optional<double> step, bool isUnlimited) {
    std::vector<Vector2D<double>> samples;
    if (!step) {
        for (auto it = std::next(curve.begin()); it != curve.end(); ++it) samples.push_back(it->getLeftKey()->get());
        return samples;
    }
    const double first = curve.begin()->getRightKey()->getX();
    const double last = std::prev(curve.end())->getLeftKey()->getX();
    LimitSamples(first, last, *step, isUnlimited);
    const FrameRange frames(first, last, *step);
    FrameValues values(curve, frames.size());
    for (std::int64_t i = 0; i < frames.size(); ++i) samples.emplace_back(frames[i], values.value(frames[i]));
    if (samples.back().x < last) samples.emplace_back(last, values.value(last));
    return samples;
}

/// Gives the curve the keys of another; it keeps its properties and what it does outside the keys.
void TakeKeys(FCurve& curve, FCurve& keys) {
    for (auto it = curve.beginProperties(); it != curve.endProperties(); ++it)
        keys.setProperty(it->first.c_str(), it->second.c_str());
    keys.setName(curve.getName());
    keys.begin()->setInterpolator(curve.begin()->getInterpolator());
    std::prev(keys.end())->setInterpolator(std::prev(curve.end())->getInterpolator());
    curve = keys;
}

void Fit(FitOfSamplesOptions& options) {
    const ToleranceOption tolerance = ParseFitOptions(options.fit);
    std::optional<double> step;
    if (options.step != "keys") {
        step = ParseNumber(options.step);
        if (!step || !(*step > 0.0)) throw UsageError("--step: must be keys, or a number above 0");
    }
    options.edit.caption = ": tolerance " + options.fit.tolerance;
    FitReports reports;
    RunEdit(options.edit, "fitting", [&](FCurve& curve) -> std::string {
        if (curve.size() < 3) return {};
        const std::vector<Vector2D<double>> samples = SamplesOf(curve, step, options.isUnlimited);
        const auto [low, high] =
            std::minmax_element(samples.begin(), samples.end(), [](const auto& a, const auto& b) { return a.y < b.y; });
        const FitResult result = FitCurve(samples, tolerance.of(low->y, high->y), options.fit.fit);
        TakeKeys(curve, *result.curve);
        const auto lost =
            std::count_if(samples.begin(), samples.end(), [](const auto& sample) { return !std::isfinite(sample.y); });
        const std::string warning = reports.add(curve, result.report);
        if (lost == 0) return warning;
        return "left out " + std::to_string(lost) + " samples that are not finite" + (warning.empty() ? "" : "; ")
               + warning;
    });
    reports.print(options.edit.output);
}

} // namespace

void AddFit(CLI::App& app) {
    CLI::App* command = app.add_subcommand("fit", "Replace captured or baked curves by ones of few keys");
    auto options = std::make_shared<FitOfSamplesOptions>();
    options->step = "1";
    AddEditOptions(*command, options->edit);
    command
        ->add_option("--step", options->step,
                     "Frames from one sample to the next; keys: the curve's keys are the samples")
        ->type_name("FRAMES|keys")
        ->capture_default_str();
    AddFitOptions(*command, options->fit);
    AddLimitOption(*command, options->isUnlimited);
    command->footer(
        "The new curve is at no sample farther off than the tolerance; reduce holds that between samples as "
        "well, and keeps keys that are marked.");
    command->callback([options] { Fit(*options); });
}

} // namespace fcurvetool
