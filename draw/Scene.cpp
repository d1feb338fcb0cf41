#include "draw/Scene.h"

#include "FCurveLib/Selection.h"
#include "draw/Colours.h"
#include "interp/Kinds.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

constexpr double kKeySpacing = 5.0; // pixels between keys on average, below which dots are left out
constexpr double kHandleSpacing = 20.0;
constexpr double kSmallestDot = 1.5;
constexpr double kLargestDot = 4.0;
constexpr std::size_t kMostDots = 5000;
constexpr std::size_t kMostHints = 1000;
constexpr std::size_t kMostCurvesWithHandles = 6;

// How much of the keys' span is shown outside them, for a curve that goes on there in this way.
double RoomAtEnd(const Segment& segment) {
    switch (KindOf(segment).beyond) {
    case Beyond::Flat:
        return 0.04;
    case Beyond::Handle:
        return 0.2;
    case Beyond::Repeats:
    case Beyond::Free:
        break;
    }
    return 0.5;
}

bool IsInterval(const std::optional<DrawOptions::Interval>& interval) {
    return interval && std::isfinite(interval->low) && std::isfinite(interval->high) && interval->low < interval->high;
}

} // namespace

Scene::Scene(const std::vector<DrawnCurve>& curves, const DrawOptions& options_)
    : options(options_), frames{0.0, 100.0} {
    std::vector<std::string> names;
    for (const DrawnCurve& drawn : curves)
        if (drawn.curve) names.push_back(drawn.name);
    const std::vector<std::string_view> colours = ChooseColours(names);
    const Selection selection(nullptr); // what is selected is asked of the parts themselves
    for (const DrawnCurve& drawn : curves) {
        if (!drawn.curve) continue;
        looks.push_back({drawn.curve.get(), drawn.before.get(), drawn.name, drawn.name, colours[looks.size()], true,
                         true, true, kLargestDot, options.selection && selection.isSelected(*drawn.curve)});
    }
    chooseFrames();
    chooseMarks();

    std::vector<std::vector<std::size_t>> groups(options.separate ? looks.size() : 1);
    for (std::size_t i = 0; i < looks.size(); ++i) groups[options.separate ? i : 0].push_back(i);
    if (groups.empty()) groups.emplace_back();
    for (const auto& group : groups) {
        makePanel(group, Quantity::Value);
        if (options.velocity) makePanel(group, Quantity::Velocity);
        if (options.acceleration) makePanel(group, Quantity::Acceleration);
    }
}

void Scene::chooseFrames() {
    if (IsInterval(options.frames)) {
        frames = MakeAxisRange(options.frames->low, options.frames->high, 0.0);
        return;
    }
    Extent all = kNoExtent;
    double roomBefore = 0.0;
    double roomAfter = 0.0;
    const auto include = [&](const FCurve* curve) {
        if (!curve || curve->size() < 2) return;
        const Segment& leading = *curve->begin();
        const Segment& trailing = *std::prev(curve->end());
        all.include(leading.getRightKey()->getX());
        all.include(trailing.getLeftKey()->getX());
        roomBefore = std::max(roomBefore, RoomAtEnd(leading));
        roomAfter = std::max(roomAfter, RoomAtEnd(trailing));
    };
    for (const Look& look : looks) {
        include(look.curve);
        include(look.before);
    }
    if (all.empty()) return;
    if (all.low == all.high) {
        const double around = std::max(10.0, std::fabs(all.low) * 1e-6);
        frames = MakeAxisRange(all.low - around, all.high + around, 0.0);
        return;
    }
    frames = MakeAxisRange(all.low, all.high, 0.0);
    const double span = frames.high - frames.low;
    frames.low -= span * roomBefore;
    frames.high += span * roomAfter;
}

// Which curves get dots and handles, and what the legend says of those that do not.
void Scene::chooseMarks() {
    // Pixels between keys on average, and how many keys there are.
    const auto measure = [this](const FCurve& curve) {
        std::size_t count = 0;
        Extent span = kNoExtent;
        ForEachKey(curve, frames, [&](const Keyframe& key) {
            span.include(key.getX());
            ++count;
        });
        const double pixels = (span.high - span.low) / (frames.high - frames.low) * options.width;
        return std::make_pair(count > 1 ? pixels / static_cast<double>(count - 1) : options.width, count);
    };
    std::size_t total = 0;
    for (Look& look : looks) {
        const auto [spacing, count] = measure(*look.curve);
        look.hasOldDots =
            look.before && options.keys != DrawOptions::Off && measure(*look.before).first >= kHandleSpacing;
        look.hasDots = options.keys == DrawOptions::On || (options.keys == DrawOptions::Auto && spacing >= kKeySpacing);
        look.hasHandles = options.handles == DrawOptions::On
                          || (options.handles == DrawOptions::Auto && spacing >= kHandleSpacing
                              && (options.separate || looks.size() <= kMostCurvesWithHandles));
        look.dotRadius = std::clamp(spacing * 0.3, kSmallestDot, kLargestDot); // dots never hide the line
        if (look.hasDots) total += count;
    }
    hasHints = total <= kMostHints;
    for (Look& look : looks) {
        if (total > kMostDots && options.keys == DrawOptions::Auto) look.hasDots = false;
        const std::size_t keys = look.curve->size() - 1;
        std::string note;
        if (keys == 0)
            note = "no keys";
        else if (!look.hasDots && options.keys == DrawOptions::Auto)
            note = std::to_string(keys) + " keys";
        if (IsLocked(*look.curve)) note += note.empty() ? "locked" : ", locked";
        if (!note.empty()) look.caption += " (" + note + ")";
    }
}

void Scene::makePanel(const std::vector<std::size_t>& indices, Quantity quantity) {
    PanelScene panel{quantity, {}, {}, {-1.0, 1.0}};
    for (const std::size_t index : indices) {
        PanelCurve curve{index, kNoExtent};
        for (const FCurve* shown : {looks[index].curve, looks[index].before})
            if (shown) curve.extent.include(FindExtentToShow(*shown, quantity, frames.low, frames.high, options.width));
        panel.curves.push_back(curve);
    }
    if (options.separate && quantity == Quantity::Value && !indices.empty())
        panel.heading = looks[indices.front()].caption;
    panel.values = chooseValues(panel);
    panels.push_back(std::move(panel));
}

AxisRange Scene::chooseValues(const PanelScene& panel) const {
    constexpr double kRoom = 0.06;
    constexpr double kRoomForHandles = 0.25;
    if (panel.quantity == Quantity::Value && IsInterval(options.values))
        return MakeAxisRange(options.values->low, options.values->high, 0.0);
    Extent extent = kNoExtent;
    for (const PanelCurve& curve : panel.curves) extent.include(curve.extent);
    if (extent.empty()) return {-1.0, 1.0};
    if (panel.quantity == Quantity::Value) {
        const double room = (extent.high - extent.low) * kRoomForHandles;
        const Extent limits = {extent.low - room, extent.high + room};
        for (const PanelCurve& curve : panel.curves) {
            const Look& look = looks[curve.look];
            if (!look.hasHandles) continue;
            ForEachHandle(*look.curve, frames, [&](const Keyframe&, const Sample& tip, bool) {
                extent.include(std::clamp(tip.y, limits.low, limits.high));
            });
        }
    }
    return MakeAxisRange(extent.low, extent.high, kRoom);
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
