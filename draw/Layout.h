#pragma once

#include "draw/Scene.h"
#include "draw/Svg.h"
#include "draw/Ticks.h"

#include <cstddef>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

inline constexpr double kSmallestSize = 100.0;
inline constexpr double kLargestSize = 20000.0;
inline constexpr double kMargin = 16.0;
inline constexpr double kTitleSize = 16.0;
inline constexpr double kTextSize = 12.0;
inline constexpr double kLegendSize = 13.0;
inline constexpr double kLegendRow = 21.0;
inline constexpr double kMarksRow = 20.0;
inline constexpr double kPanelGap = 16.0;

// To hundredths, so that the last bits of a value do not decide about the picture.
double RoundPixel(double pixels);

// Pixels, y downward; frames and values to pixels within, rounded.
struct Frame {
    AxisRange frames;
    AxisRange values;
    double left;
    double right;
    double top;
    double bottom;

    double toX(double frame) const;
    double toY(double value) const; // no farther away than renderers like
    Pixel toPixel(const Sample& sample) const { return {toX(sample.x), toY(sample.y)}; }
    double valuesPerPixel() const { return (values.high - values.low) / (bottom - top); }
};

// A name in the legend: of the curve look, or "and n more".
struct LegendName {
    std::size_t look;
    std::string text;
    double x; // from the left of the legend
    double y; // of the row's middle, in the picture
};

struct PanelPlace {
    Frame frame;
    Ticks ticks;
};

// Where everything stands, if there is room for it.
struct Layout {
    // marksRows: how many rows the explanation of marks takes below the panels.
    Layout(const Scene& scene, std::size_t marksRows);

    bool hasRoom = true;
    double leastWidth = kSmallestSize;
    double leastHeight = kSmallestSize;
    double width;
    double height;
    double left; // of the panels
    double right;
    std::vector<LegendName> names;
    std::size_t unnamed = 0;        // curves beyond those that the legend names
    std::vector<PanelPlace> panels; // as the scene's
    Ticks ticks;                    // of the frames

private:
    double layNames(const Scene& scene, double top);
    void layPanels(const Scene& scene, double top, std::size_t marksRows);
    void layFrames(const Scene& scene);
};

// The lines of an axis title.
std::vector<std::string> AxisTitle(Quantity quantity);

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
