#include "Commands.h"
#include "EditCommand.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/InsertBezierKeyframe.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>

#include <cmath>
#include <vector>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct InsertOptions {
    EditOptions edit;
    std::vector<double> frames;
};

bool HasKeyNear(const FCurve& curve, double frame) {
    const auto segment = curve.findSegment(frame);
    const auto isNear = [frame](const Keyframe* key) {
        return key && std::fabs(key->getX() - frame) < Keyframe::getMinSeparation();
    };
    return isNear(segment->getLeftKey().get()) || isNear(segment->getRightKey().get());
}

std::string InsertKeys(FCurve& curve, const std::vector<double>& frames) {
    std::string warnings;
    const auto warn = [&warnings](const std::string& text) { warnings += (warnings.empty() ? "" : "; ") + text; };
    for (const double frame : frames) {
        const KeyframeInsertion preview = PreviewBezierKeyframe(curve, frame);
        if (preview.outcome == KeyframeInsertion::Refused) {
            warn("no key inserted at frame " + ToText(frame) + ", where "
                 + (HasKeyNear(curve, frame) ? "one stands already" : "the curve has no finite value"));
            continue;
        }
        if (preview.outcome == KeyframeInsertion::ChangesShape)
            warn("the key at frame " + ToText(frame) + " changes the curve by up to " + ToBriefText(preview.error));
        InsertBezierKeyframe(curve, frame);
    }
    return warnings;
}

void Insert(const InsertOptions& options) {
    RunEdit(options.edit, "inserting", [&](FCurve& curve) { return InsertKeys(curve, options.frames); });
}

} // namespace

void AddInsert(CLI::App& app) {
    CLI::App* command = app.add_subcommand("insert", "Insert keys without changing the shape of the curves");
    auto options = std::make_shared<InsertOptions>();
    AddEditOptions(*command, options->edit);
    command->add_option("--at", options->frames, "Frame of a key to insert; repeatable")
        ->required()
        ->type_name("FRAME")
        ->expected(1)
        ->take_all();
    command->callback([options] { Insert(*options); });
}

} // namespace fcurvetool
