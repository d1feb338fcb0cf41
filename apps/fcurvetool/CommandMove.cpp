#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/KeyGroup.h>
#include <FCurveLib/Keys.h>
#include <FCurveLib/MoveKeys.h>

#include <memory>
#include <string>
#include <vector>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct GroupOptions {
    EditOptions edit;
    std::string range;
    bool crosses = false;
    bool ripples = false;
    double step = 0.0;
    double valueStep = 0.0;
};

struct MoveCommand : GroupOptions {
    Vector2D<double> offset;
};

struct ScaleCommand : GroupOptions {
    Vector2D<double> factor{1.0, 1.0};
    Vector2D<double> pivot;
};

void AddGroupOptions(CLI::App& command, GroupOptions& options) {
    AddEditOptions(command, options.edit);
    command.add_option("--range", options.range, "Keys to take (default: all)")->type_name("FIRST:LAST");
    auto* const crosses = command.add_flag("--cross", options.crosses, "Let keys pass the others, which stay");
    command.add_flag("--ripple", options.ripples, "Shift all later keys along")->excludes(crosses);
    command
        .add_option("--snap", options.step,
                    "Grid in frames for the first key (for scale: the key farthest from --about); 1: whole frames")
        ->type_name("FRAMES");
    command
        .add_option("--snap-value", options.valueStep,
                    "Grid in values for the first key (for scale: the key farthest from --about-value)")
        ->type_name("NUMBER");
    command.footer(
        "The keys are one group over all curves: where one is held back by a key outside the group, all are, "
        "and a warning tells it.");
}

MoveOptions MoveOptionsOf(const GroupOptions& options) {
    if (options.step < 0.0) throw UsageError("--snap: must not be below 0");
    if (options.valueStep < 0.0) throw UsageError("--snap-value: must not be below 0");
    MoveOptions result;
    if (options.crosses) result.others = MoveOptions::Cross;
    if (options.ripples) result.others = MoveOptions::Ripple;
    result.frameStep = options.step;
    result.valueStep = options.valueStep;
    return result;
}

KeyGroup GroupOf(const std::vector<NamedCurve>& curves, const std::string& range) {
    const auto interval = ParseRange(range);
    std::vector<std::shared_ptr<Keyframe>> keys;
    for (const NamedCurve& named : curves)
        for (const KeyView key : Keys(*named.curve))
            if (!interval || (key.getX() >= interval->low && key.getX() <= interval->high))
                keys.push_back(key.getKeyframe().getShared());
    return KeyGroup(keys);
}

void Move(const MoveCommand& options) {
    const MoveOptions how = MoveOptionsOf(options);
    RunEdits(options.edit, "moving", [&](const std::vector<NamedCurve>& curves) {
        KeyGroup group = GroupOf(curves, options.range);
        if (group.empty()) return std::string("no key to move");
        const MoveReport report = MoveKeys(group, options.offset, how);
        return report.isLimited ? "held back after " + ToText(report.offset.x) + " frames" : std::string();
    });
}

void Scale(const ScaleCommand& options) {
    if (!(options.factor.x > 0.0)) throw UsageError("--time: must be above 0; see also: fcurvetool flip");
    const MoveOptions how = MoveOptionsOf(options);
    RunEdits(options.edit, "scaling", [&](const std::vector<NamedCurve>& curves) {
        KeyGroup group = GroupOf(curves, options.range);
        if (group.empty()) return std::string("no key to scale");
        const MoveReport report = ScaleKeys(group, options.pivot, options.factor, how);
        return report.isLimited ? "held back at a factor of " + ToText(report.factor.x) : std::string();
    });
}

} // namespace

void AddMove(CLI::App& app) {
    CLI::App* command = app.add_subcommand("move", "Move keys among the others");
    auto options = std::make_shared<MoveCommand>();
    AddGroupOptions(*command, *options);
    command->add_option("--time", options->offset.x, "Frames to move by")->type_name("FRAMES");
    command->add_option("--value", options->offset.y, "Value to add")->type_name("NUMBER");
    command->callback([options] { Move(*options); });
}

void AddScale(CLI::App& app) {
    CLI::App* command = app.add_subcommand("scale", "Scale keys in time and value among the others");
    auto options = std::make_shared<ScaleCommand>();
    AddGroupOptions(*command, *options);
    command->add_option("--time", options->factor.x, "Factor for distances in time")->type_name("NUMBER");
    command->add_option("--value", options->factor.y, "Factor for values")->type_name("NUMBER");
    command->add_option("--about", options->pivot.x, "Frame that stays")->type_name("FRAME")->capture_default_str();
    command->add_option("--about-value", options->pivot.y, "Value that stays")
        ->type_name("NUMBER")
        ->capture_default_str();
    command->callback([options] { Scale(*options); });
}

} // namespace fcurvetool
