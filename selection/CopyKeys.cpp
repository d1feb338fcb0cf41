#include "FCurveLib/CopyKeys.h"

#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/KeyGroup.h"
#include "FCurveLib/MoveKeys.h"
#include "model/Read.h"
#include "selection/GroupPlan.h"
#include "tools/ClipCurve.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

KeyClip CopyKeys(const KeyGroup& group) {
    std::vector<std::pair<FCurve*, std::vector<Keyframe*>>> curves;
    std::unordered_map<const FCurve*, std::size_t> numbers;
    const auto held = group.getKeys();
    for (const auto& key : held) {
        FCurve* const curve = Read::curve(*key);
        if (!curve) continue;
        const auto [number, isNew] = numbers.try_emplace(curve, curves.size());
        if (isNew) curves.push_back({curve, {}});
        curves[number->second].second.push_back(key.get());
    }
    const auto container = FCurveContainer::create();
    for (auto& [curve, keys] : curves) {
        std::sort(keys.begin(), keys.end(), [](const Keyframe* a, const Keyframe* b) { return a->getX() < b->getX(); });
        container->addCurve(Private::CopyKeysOf(*curve, keys));
    }
    return KeyClip(*container);
}

KeyClip CopyKeys(Selection& selection) {
    return CopyKeys(KeyGroup(selection));
}

namespace {

using Curves = std::vector<std::shared_ptr<FCurve>>;

// For each curve of the clip where it goes; empty for nowhere. No curve is taken twice.
Curves TargetsOf(const KeyClip& clip, const Curves& curves, PasteOptions::Match match) {
    Curves targets;
    std::unordered_set<const FCurve*> taken;
    std::size_t number = 0;
    for (const FCurve& source : clip.getCurves()) {
        std::shared_ptr<FCurve> target;
        if (match == PasteOptions::ByOrder) {
            if (number < curves.size()) target = curves[number];
        } else {
            for (const auto& curve : curves) {
                if (!curve || std::strcmp(curve->getName(), source.getName()) != 0 || taken.count(curve.get()) != 0)
                    continue;
                target = curve;
                break;
            }
        }
        ++number;
        const bool isFree = target && taken.insert(target.get()).second;
        targets.push_back(isFree ? target : nullptr);
    }
    return targets;
}

// Shifts the keys from the frame on, and nothing before it.
MoveReport Shift(FCurve& curve, double frame, double by) {
    KeyGroup later(curve, std::nextafter(frame - Keyframe::getMinSeparation(), frame));
    Private::GroupTarget target;
    target.offset.x = by;
    target.cuts = true;
    return Private::GroupPlan(later, target, {}).run();
}

} // namespace

PasteReport PasteKeys(const KeyClip& clip, const Curves& curves, const PasteOptions& options) {
    PasteReport report;
    const double frames = std::isfinite(options.frame) ? options.frame - clip.getStart() : 0.0;
    const double gap = std::isfinite(options.gap) ? std::max(options.gap, Keyframe::getMinSeparation()) : 1.0;
    const Curves targets = TargetsOf(clip, curves, options.match);
    std::size_t number = 0;
    for (const FCurve& source : clip.getCurves()) {
        const std::shared_ptr<FCurve>& target = targets[number++];
        const auto pasted = target ? Private::ShiftedCurve(source, frames, report.kept) : nullptr;
        MoveReport shift;
        if (pasted && options.mode == PasteOptions::Ripple) {
            const double first = Read::rightKey(Read::firstSegment(*pasted))->getX();
            const double last = Read::leftKey(Read::lastSegment(*pasted))->getX();
            shift = Shift(*target, first, last - first + gap);
        }
        if (!pasted || shift.isLimited) {
            report.unmatched.emplace_back(source.getName());
            continue;
        }
        report.shifted += shift.keys;
        Private::CurvePaste result = Private::PasteInto(*target, *pasted, options.mode == PasteOptions::Replace);
        ++report.curves;
        report.removed += result.removed;
        std::move(result.keys.begin(), result.keys.end(), std::back_inserter(report.keys));
    }
    return report;
}

PasteReport PasteKeys(const KeyClip& clip, FCurveContainer& curves, const PasteOptions& options) {
    Curves all;
    for (FCurve& curve : curves) all.push_back(curve.getShared());
    return PasteKeys(clip, all, options);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
