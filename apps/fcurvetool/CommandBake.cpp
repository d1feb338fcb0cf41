#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"
#include "FrameRange.h"
#include "FrameValues.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/Baking.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>

#include <cmath>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct BakeOptions {
    EditOptions edit;
    std::string range;
    double step = 1.0;
    bool isUnlimited = false;
};

void Bake(const BakeOptions& options) {
    if (!(options.step > 0.0)) throw UsageError("--step: must be above 0");
    const auto range = ParseRange(options.range);
    RunEdit(options.edit, "baking", [&](FCurve& curve) -> std::string {
        if (!range && curve.size() < 3) return {};
        const double low = range ? range->low : curve.begin()->getRightKey()->getX();
        const double high = range ? range->high : std::prev(curve.end())->getLeftKey()->getX();
        LimitSamples(low, high, options.step, options.isUnlimited);
        // A range is narrowed to whole multiples of the step, the keys are widened to them; what is a multiple up to
        // rounding counts as one.
        constexpr double kRounding = 1e-9;
        const double first =
            range ? std::ceil(low / options.step - kRounding) : std::floor(low / options.step + kRounding);
        const double last =
            range ? std::floor(high / options.step + kRounding) : std::ceil(high / options.step - kRounding);
        if (!(first < last)) return {};
        const FrameRange frames = FrameRange::ofMultiples(first, last, options.step);
        std::vector<Vector2D<double>> samples;
        samples.reserve(static_cast<std::size_t>(frames.size()));
        FrameValues values(curve, frames.size());
        for (std::int64_t i = 0; i < frames.size(); ++i) samples.emplace_back(frames[i], values.value(frames[i]));
        BakeSamples(curve, std::move(samples));
        return {};
    });
}

} // namespace

void AddBake(CLI::App& app) {
    CLI::App* command = app.add_subcommand("bake", "Replace curves by linear keys at equal distances");
    auto options = std::make_shared<BakeOptions>();
    AddEditOptions(*command, options->edit);
    AddRangeOption(*command, options->range);
    command->add_option("--step", options->step, "Frames from one key to the next")
        ->type_name("FRAMES")
        ->capture_default_str();
    AddLimitOption(*command, options->isUnlimited);
    command->footer("The new keys stand on whole multiples of the step: inside the range, or, without one, around all "
                    "keys. What lies outside the range stays as it is.");
    command->callback([options] { Bake(*options); });
}

} // namespace fcurvetool
