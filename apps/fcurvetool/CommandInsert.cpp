#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/InsertBezierKeyframe.h>
#include <FCurveLib/Keyframe.h>

#include <vector>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct InsertOptions {
    EditOptions edit;
    std::vector<double> frames;
};

std::string insertKeys(FCurve& curve, const std::vector<double>& frames) {
    std::string warning;
    for (const double frame : frames) {
        const KeyframeInsertion preview = PreviewBezierKeyframe(curve, frame);
        if (preview.outcome == KeyframeInsertion::Refused)
            throw Failure("no key can stand at frame " + toText(frame) + ": another one is nearer than "
                          + toText(Keyframe::getMinSeparation()) + " frames, or the curve has no value there");
        if (preview.outcome == KeyframeInsertion::ChangesShape)
            warning += (warning.empty() ? "" : "; ") + ("the key at frame " + toText(frame))
                       + " changes the curve by up to " + toBriefText(preview.error);
        InsertBezierKeyframe(curve, frame);
    }
    return warning;
}

void insert(const InsertOptions& options) {
    runEdit(options.edit, "inserting", [&](FCurve& curve) { return insertKeys(curve, options.frames); });
}

} // namespace

void addInsert(CLI::App& app) {
    CLI::App* command = app.add_subcommand("insert", "Insert keys without changing the shape of the curves");
    auto options = std::make_shared<InsertOptions>();
    addEditOptions(*command, options->edit);
    command->add_option("--at", options->frames, "Frame of a key to insert; repeatable")
        ->required()
        ->type_name("FRAME")
        ->expected(1)
        ->take_all();
    command->callback([options] { insert(*options); });
}

} // namespace fcurvetool
