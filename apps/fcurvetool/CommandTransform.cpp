#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/Transform.h>

#include <cmath>
#include <optional>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct TransformOptions {
    EditOptions edit;
    Vector2D<double> scale{1.0, 1.0};
    Vector2D<double> offset;
};

struct FlipOptions {
    EditOptions edit;
    std::string what;
    std::optional<double> frame;
    std::optional<double> value;
};

/// Failure where the curve was not transformed; else the warning for what was kept.
std::string Tell(const TransformResult& result) {
    if (!result.transformed) throw Failure("cannot be transformed: its keys would fall together or leave all bounds");
    std::string kept;
    for (const std::string& expression : result.kept) kept += (kept.empty() ? "" : ", ") + ToPrintable(expression);
    return kept.empty() ? "" : "kept as it was, because it cannot be transformed: " + kept;
}

void Transform(const TransformOptions& options) {
    if (std::abs(options.scale.x) <= 1e-7) throw UsageError("--scale-time: would leave no time between the keys");
    RunEdit(options.edit, "transforming",
            [&](FCurve& curve) { return Tell(TransformCurve(curve, options.scale, options.offset)); });
}

FlipType ParseFlip(const std::string& what) {
    if (what == "time") return FLIP_X;
    if (what == "value") return FLIP_Y;
    if (what == "both") return FLIP_XY;
    throw UsageError("\"" + ToPrintable(what) + "\" is not time, value or both");
}

void Flip(const FlipOptions& options) {
    const FlipType type = ParseFlip(options.what);
    if (options.frame.has_value() != options.value.has_value() && type == FLIP_XY)
        throw UsageError("give both --frame and --value, or neither");
    if ((options.frame && type == FLIP_Y) || (options.value && type == FLIP_X))
        throw UsageError("time is flipped about a --frame, values are flipped about a --value");
    RunEdit(options.edit, "flipping", [&](FCurve& curve) {
        return Tell(options.frame || options.value
                        ? FlipCurve(curve, type, options.frame.value_or(0.0), options.value.value_or(0.0))
                        : FlipCurveAboutCentroid(curve, type));
    });
}

} // namespace

void AddTransform(CLI::App& app) {
    CLI::App* command = app.add_subcommand("transform", "Scale and move curves in time and value");
    auto options = std::make_shared<TransformOptions>();
    AddEditOptions(*command, options->edit);
    const auto add = [&](const char* name, double& target, const char* description) {
        command->add_option(name, target, description)->type_name("NUMBER")->capture_default_str();
    };
    add("--scale-time", options->scale.x, "Factor for frames; below 0 reverses time");
    add("--scale-value", options->scale.y, "Factor for values");
    add("--move-time", options->offset.x, "Frames to add, after scaling");
    add("--move-value", options->offset.y, "Value to add, after scaling");
    command->footer(
        "Every point (frame, value) of a curve goes to (scale-time * frame + move-time, scale-value * value "
        "+ move-value), between the keys and outside them.");
    command->callback([options] { Transform(*options); });
}

void AddFlip(CLI::App& app) {
    CLI::App* command = app.add_subcommand("flip", "Mirror curves in time, value or both");
    auto options = std::make_shared<FlipOptions>();
    command->add_option("WHAT", options->what, "time, value or both")->required()->type_name("");
    AddEditOptions(*command, options->edit);
    command->add_option("--frame", options->frame, "Mirror time about this frame")->type_name("FRAME");
    command->add_option("--value", options->value, "Mirror values about this value")->type_name("NUMBER");
    command->footer("Without --frame and --value each curve is mirrored about the middle of its keyed range.");
    command->callback([options] { Flip(*options); });
}

} // namespace fcurvetool
