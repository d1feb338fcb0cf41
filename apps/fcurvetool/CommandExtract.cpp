#include "Commands.h"
#include "EditCommand.h"
#include "Failure.h"
#include "Input.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/Diff.h>
#include <FCurveLib/Extents.h>
#include <FCurveLib/InsertBezierKeyframe.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Keys.h>
#include <FCurveLib/Rectangle.h>
#include <FCurveLib/Segment.h>
#include <FCurveLib/Tangent.h>
#include <FCurveLib/Vector2D.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <set>
#include <string>
#include <utility>
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

/// Sets a key at x, which lies between two keys. Where none can stand, what is kept ends at the next key outside.
void SetEnd(FCurve& curve, double& x, bool isLow, std::string& warning) {
    const auto at = curve.findSegment(x);
    const auto left = at->getLeftKey(), right = at->getRightKey();
    if (!left || !right || left->getX() == x || InsertBezierKeyframe(curve, x) != curve.end()) return;
    const double wanted = x;
    x = isLow ? left->getX() : right->getX();
    warning += (warning.empty() ? "" : ", ") + ("no key can stand at frame " + ToText(wanted))
               + "; kept up to the one at frame " + ToText(x);
}

/// What a handle was while its key had neighbours outside.
class KeptHandle {
public:
    explicit KeptHandle(std::shared_ptr<Tangent> tangent)
        : m_tangent(std::move(tangent)), m_handle(m_tangent->getX(), m_tangent->getY()) {}

    void restore() const {
        if (m_tangent->getX() == m_handle.x && m_tangent->getY() == m_handle.y) return;
        m_tangent->setType(Tangent::Fixed);
        m_tangent->set(m_handle);
    }

private:
    std::shared_ptr<Tangent> m_tangent;
    Vector2D<double> m_handle;
};

std::string Cut(FCurve& curve, Interval interval) {
    if (curve.size() == 1) return {}; // no keys
    const auto before = FCurve::createCopy(curve);
    const Interval wanted = interval;
    // What the curve is there, should all its keys lie elsewhere.
    const auto beyond = interval.high < Keys(curve).front().getX() ? curve.begin()->getInterpolator()
                                                                   : (--curve.end())->getInterpolator();
    std::string warning;
    SetEnd(curve, interval.low, true, warning);
    SetEnd(curve, interval.high, false, warning);

    std::vector<KeptHandle> handles; // on the inner sides of both ends
    if (const auto first = FindKey(curve, interval.low, 0.0)) handles.emplace_back(first->getOutTangent());
    if (const auto last = FindKey(curve, interval.high, 0.0)) handles.emplace_back(last->getInTangent());
    RemoveKeys(curve, interval, false);
    for (const KeptHandle& handle : handles) handle.restore();
    if (const double y = before->eval(wanted.low); curve.size() == 1 && std::isfinite(y)) {
        curve.begin()->setInterpolator(beyond);
        curve.insertSegment(*Keyframe::create(wanted.low, y), beyond);
    }

    // Ends that repeat the keys, and kinds that read more of them than their neighbours, cannot be cut so.
    DiffOptions options;
    options.start = wanted.low;
    options.end = wanted.high;
    const CurveDifference difference = Diff(*before, curve, options);
    Rectangle<double> box;
    const double height = GetInteriorExtents(*before, box) ? box.height : 0.0;
    if (!(difference.largest <= 1e-9 * std::max(1.0, height)))
        warning += (warning.empty() ? "" : ", ")
                   + ("changes by " + ToBriefText(difference.largest, 3) + " at frame " + ToText(difference.x));
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
