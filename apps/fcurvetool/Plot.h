#pragma once

#include "FrameRange.h"
#include "NamedCurve.h"

#include <optional>
#include <string>
#include <vector>

namespace fcurvetool {

/// Whether marks are drawn: always, never, or where they can be told apart.
enum class Marks { Auto, On, Off };

struct PlotOptions {
    double width = 960.0;
    double height = 0.0; ///< 0: as many pixels as the panels need
    std::string title;
    std::optional<Interval> frames; ///< absent: the keys, and some frames around them
    std::optional<Interval> values; ///< of the curves, not of their derivatives; absent: as the curves need
    bool velocity = false;          ///< a panel with the first derivatives below the curves
    bool acceleration = false;      ///< one with the second derivatives
    bool separate = false;          ///< panels of its own for each curve
    bool selection = false;         ///< highlight what is selected: curves by a wider line, keys by a ring
    bool parts = false;             ///< the parts of the first curve are named: keyframe, tangents, segments
    Marks keys = Marks::Auto;
    Marks handles = Marks::Auto;
};

/// An SVG picture of the curves: lines in colours that also the colour-blind tell apart, keys as dots, tangent handles,
/// axes, grid and legend. UsageError where the size leaves no room for the panels.
///
/// The size of the document is bounded by its width in pixels and the number of curves, not by the number of keys.
std::string drawPlot(const std::vector<NamedCurve>& curves, const PlotOptions& options);

} // namespace fcurvetool
