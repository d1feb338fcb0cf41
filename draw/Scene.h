#pragma once

#include "FCurveLib/DisplayProperties.h"
#include "FCurveLib/DrawCurves.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Segment.h"
#include "FCurveLib/Tangent.h"
#include "draw/Extent.h"
#include "draw/Ticks.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

// How a curve of the picture looks in all panels.
struct Look {
    const FCurve* curve;
    const FCurve* before; // null: none
    std::string name;     // as the caller gave it
    std::string caption;  // for the legend
    std::string_view colour;
    bool hasDots;
    bool hasOldDots; // of the curve before
    bool hasHandles;
    double dotRadius;
    bool isSelected;
};

// A curve within a panel.
struct PanelCurve {
    std::size_t look;
    Extent extent; // that the panel should show
};

struct PanelScene {
    Quantity quantity;
    std::string heading; // empty for none
    std::vector<PanelCurve> curves;
    AxisRange values;
};

// What is in the picture, before anything has a place: which frames, which panels with which curves, and what of their
// keys is drawn.
struct Scene {
    Scene(const std::vector<DrawnCurve>& curves, const DrawOptions& options);

    const DrawOptions& options;
    AxisRange frames;
    std::vector<Look> looks;
    std::vector<PanelScene> panels;
    bool hasHints = false; // keys tell frame and value when the pointer rests on them

private:
    void chooseFrames();
    void chooseMarks();
    void makePanel(const std::vector<std::size_t>& indices, Quantity quantity);
    AxisRange chooseValues(const PanelScene& panel) const;
};

// Calls visit(const Keyframe&) for each key between these frames, in order.
template<class Visit>
void ForEachKey(const FCurve& curve, const AxisRange& frames, const Visit& visit) {
    for (auto it = curve.findSegment(frames.low); it != curve.end(); ++it) {
        const auto key = it->getLeftKey();
        if (!key || key->getX() < frames.low) continue;
        if (key->getX() > frames.high) break;
        visit(*key);
    }
}

// Calls visit(const Keyframe&, const Sample& tip, bool isIn) for each handle that shapes the curve, of keys between
// these frames, in order. Handles have the length that an editor shows them in.
template<class Visit>
void ForEachHandle(const FCurve& curve, const AxisRange& frames, const Visit& visit) {
    const double scale = GetTangentScale(curve);
    ForEachKey(curve, frames, [&visit, scale](const Keyframe& key) {
        const auto visitOne = [&](const Segment* segment, const Tangent* tangent, bool isIn) {
            if (!segment || !tangent) return;
            const auto interpolator = segment->getInterpolator();
            if (interpolator && interpolator->usesTangents())
                visit(key, Sample{key.getX() + scale * tangent->getX(), key.getY() + scale * tangent->getY()}, isIn);
        };
        visitOne(key.getLeftSegment().get(), key.getInTangent().get(), true);
        visitOne(key.getRightSegment().get(), key.getOutTangent().get(), false);
    });
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
