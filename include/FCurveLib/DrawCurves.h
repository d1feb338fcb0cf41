#pragma once

#include "FCurveLib/Exception.h"
#include "FCurveLib/Export.h"
#include "FCurveLib/Forward.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

/// A curve in a picture.
struct DrawnCurve {
    /// Null: the entry is left out.
    std::shared_ptr<const FCurve> curve;
    /// For the legend, in UTF-8. One that ends like an axis (tx, ry, "camera.z", rotateX, "chan0 (tz)") takes a red,
    /// green or blue line.
    std::string name;
    /// What the curve was before an edit, drawn beneath it as a wide pale line. Null: nothing.
    std::shared_ptr<const FCurve> before = nullptr;
};

/// What a picture shows and how. Intervals that are not finite, or not low < high, count as absent.
struct DrawOptions {
    /// Whether marks are drawn: where they can be told apart, always, never.
    enum Marks : std::uint8_t { Auto, On, Off };

    struct Interval {
        double low;
        double high;
    };

    /// \name Size in pixels, each 100 to 20000; height 0 is as high as the panels need
    /// @{
    double width = 960.0;
    double height = 0.0;
    /// @}

    std::string title;
    std::optional<Interval> frames; ///< absent: the keys, and some frames around them
    std::optional<Interval> values; ///< of the curves, not of their derivatives; absent: as the curves need
    bool velocity = false;          ///< a panel with the first derivatives below the curves
    bool acceleration = false;      ///< one with the second derivatives
    bool separate = false;          ///< panels of its own for each curve
    bool selection = false;         ///< highlight what is selected: curves by a wider line, keys by a ring
    bool parts = false;             ///< name the parts of the first curve: keyframe, tangents, segments
    Marks keys = Auto;
    Marks handles = Auto;
};

/// A size outside its bounds, or one that leaves no room for the panels.
class FCURVELIB_API BadPictureSize : public Exception {
public:
    BadPictureSize(double leastWidth, double leastHeight) noexcept;
    const char* what() const noexcept override;

    /// \name The smallest size that would do for these curves and options
    /// @{
    double leastWidth() const noexcept { return m_leastWidth; }
    double leastHeight() const noexcept { return m_leastHeight; }
    /// @}

private:
    double m_leastWidth;
    double m_leastHeight;
};

/// An SVG picture of curves: lines in colours that also the colour-blind tell apart, keys as dots, tangent handles,
/// axes, grid, and a legend of names and marks.
///
///  - Lines follow the curve within a fraction of a pixel. Where several keys fall into a pixel, the line covers all
///    values between them. Outside the keys it is dashed; jumps are dotted. Texts that nobody understood, which
///    evaluate to 0, are marked as such and do not count for the scale.
///  - Poles, and what lies far away outside the keys, do not flatten the rest: where a line leaves its panel, a
///    triangle says so.
///  - Breakdown keys are diamonds, locked keys have a bar.
///  - An empty list gives axes and the words "no curves".
///
/// The same curves and options give the same text. Its length is bounded by the width and the number of curves, not by
/// the number of keys; the time is linear in the keys. Any text is escaped; bytes that are no UTF-8 become U+FFFD.
/// Any number of threads may draw curves that nobody edits. BadPictureSize where the size does not do.
FCURVELIB_API std::string DrawCurves(const std::vector<DrawnCurve>& curves, const DrawOptions& options = DrawOptions());

} // namespace v19
} // namespace VEM_FN::FCurveLib
