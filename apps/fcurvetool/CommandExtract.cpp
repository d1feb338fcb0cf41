#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"
#include "Input.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/InsertBezierKeyframe.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct ExtractCommand {
    EditOptions edit;
    std::string range;
};

struct DeleteCommand {
    EditOptions edit;
    std::string range;
};

/// Removes the keys that are not inside, or those that are.
void RemoveKeys(FCurve& curve, const Interval& interval, bool inside) {
    const auto outside = (--curve.end())->getInterpolator();
    const auto last = (--curve.end())->getLeftKey();
    for (auto it = ++curve.begin(); it != curve.end();) {
        const double x = it->getLeftKey()->getX();
        it = (x >= interval.low && x <= interval.high) == inside ? curve.removeSegment(it) : ++it;
    }
    // What the curve does beyond its last key it goes on doing.
    if ((--curve.end())->getLeftKey() != last) (--curve.end())->setInterpolator(outside);
}

std::string Cut(FCurve& curve, const Interval& interval) {
    const bool isKeyed = curve.size() > 1;
    std::string warning;
    for (const double x : {interval.low, interval.high}) {
        const auto at = curve.findSegment(x);
        if (!isKeyed || !at->getLeftKey() || !at->getRightKey()) continue; // nothing to cut
        if (PreviewBezierKeyframe(curve, x).outcome == KeyframeInsertion::ChangesShape)
            warning = "the cut at frame " + ToText(x) + " changes the curve";
        InsertBezierKeyframe(curve, x);
    }
    RemoveKeys(curve, interval, false);
    return warning;
}

void Extract(const ExtractCommand& options) {
    const auto range = ParseRange(options.range);
    if (!range && options.edit.input.curves.empty()) throw UsageError("give --curve, --range, or both");
    RunDocumentEdit(options.edit, "extracting", [&](Document& document, const std::vector<NamedCurve>& chosen) {
        std::string warnings;
        std::set<const FCurve*> kept;
        for (const NamedCurve& named : chosen) {
            kept.insert(named.curve.get());
            const std::string warning = range ? Cut(*named.curve, *range) : "";
            if (!warning.empty()) warnings += (warnings.empty() ? "" : "; ") + named.name + ": " + warning;
        }
        FCurveContainer& curves = *document.curves;
        for (auto it = curves.begin(); it != curves.end();) it = kept.count(&*it) ? ++it : curves.removeCurve(it);
        for (const NamedCurve& named : chosen) curves.moveCurve(curves.end(), *named.curve); // in the order asked for
        return warnings;
    });
}

void DeleteParts(const DeleteCommand& options) {
    const auto range = ParseRange(options.range);
    if (!range && options.edit.input.curves.empty()) throw UsageError("give --curve, --range, or both");
    RunDocumentEdit(options.edit, "deleting", [&](Document& document, const std::vector<NamedCurve>& chosen) {
        std::set<const FCurve*> doomed;
        for (const NamedCurve& named : chosen) {
            if (range)
                RemoveKeys(*named.curve, *range, true);
            else
                doomed.insert(named.curve.get());
        }
        FCurveContainer& curves = *document.curves;
        for (auto it = curves.begin(); it != curves.end();) it = doomed.count(&*it) ? curves.removeCurve(it) : ++it;
        return std::string();
    });
}

} // namespace

void AddExtract(CLI::App& app) {
    CLI::App* command = app.add_subcommand("extract", "Write some of the curves, or a stretch of them");
    auto options = std::make_shared<ExtractCommand>();
    AddEditOptions(*command, options->edit);
    command->add_option("--range", options->range, "Frames to keep; keys are set at both ends that keep the shape")
        ->type_name("FIRST:LAST");
    command->callback([options] { Extract(*options); });
}

void AddDelete(CLI::App& app) {
    CLI::App* command = app.add_subcommand("delete", "Delete curves, or keys of them");
    auto options = std::make_shared<DeleteCommand>();
    AddEditOptions(*command, options->edit);
    command->add_option("--range", options->range, "Delete the keys at these frames, not the curves")
        ->type_name("FIRST:LAST");
    command->callback([options] { DeleteParts(*options); });
}

} // namespace fcurvetool
