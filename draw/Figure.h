#pragma once

#include "draw/Layout.h"
#include "draw/Scene.h"

#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

// What the explanation below the panels tells, in its order.
enum class Mark { Key, Breakdown, LockedKey, SelectedKey, Handle, Outside, Jump, Before, Unknown, Cut };

using Line = std::vector<Pixel>;

// A key's dot.
struct Dot {
    Pixel at;
    std::string hint; // empty for none
    bool isBreakdown;
    bool isLocked;
    bool isSelected;
};

// A tangent handle, from its key to its tip.
struct Handle {
    Pixel key;
    Pixel tip;
    bool isIn;
};

// Where a line leaves its panel through the upper or the lower edge.
struct Exit {
    double x;
    bool isUp;
};

// A segment of which nobody knows how it runs.
struct UnknownSpan {
    double left;
    double right;
    std::string expression;
};

// A curve of a panel in pixels: all that is drawn of it.
struct Figure {
    Figure(const Scene& scene, const PanelScene& panel, const PanelCurve& curve, const Frame& frame);

    std::size_t look;
    std::vector<Line> between;
    std::vector<Line> outside;
    std::vector<Line> unknown;
    std::vector<Line> jumps;
    std::vector<Line> before;
    std::vector<Dot> dots;    // of keys within the panel
    std::vector<Dot> oldDots; // those of the curve before the edit
    std::vector<Handle> handles;
    std::vector<Exit> exits;
    std::vector<UnknownSpan> spans;

    // The marks that this figure holds.
    void tellMarks(const Look& source, std::set<Mark>& marks) const;

private:
    void findExits(const Frame& frame);
    void findSpans(const FCurve& curve, const Frame& frame);
};

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
