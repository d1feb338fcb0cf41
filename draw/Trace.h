#pragma once

#include "FCurveLib/FCurve.h"
#include "FCurveLib/Vector2D.h"

#include <cstddef>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

/// What of a curve is drawn.
enum class Quantity { Value, Velocity, Acceleration };

/// Where a stretch of a curve lies: before its first key, between its keys (anywhere, if it has none), after its last;
/// or that nobody knows how the curve runs there, and it evaluates to 0.
enum class Place { Before, BetweenKeys, After, Unknown };

/// Whether the segment has no interpolator, or one that stands for a text that nobody understood.
bool IsUnknown(const Segment& segment);

/// A point of a curve: frame and value.
using Sample = VEM_FN::FCurveLib::Vector2D<double>;

/// A stretch without gaps.
struct Stroke {
    Place place;
    std::vector<Sample> samples;
};

/// A step from one value to another at one frame.
struct Jump {
    double x;
    double from;
    double to;
};

/// Lowest and highest value; none where low > high.
struct Extent {
    double low;
    double high;

    bool empty() const { return !(low <= high); }
    /// Passes over what is not finite.
    void include(double value);
    void include(const Extent& other);
};

extern const Extent kNoExtent;

/// A curve, or one of its derivatives, as strokes and jumps for a picture of a given width.
///
/// Works in two steps, because a picture chooses the scale of its values by what the curve does. The constructor
/// samples the curve every other pixel of width and, where keys stand closer than a pixel, keeps only what one can see
/// of them: at most four points per pixel however many keys there are, from the extents between the keys. refine() then
/// adds points until the strokes follow the curve.
class Trace {
public:
    /// \param quantity what is drawn
    /// \param low, high the frames at the picture's edges
    /// \param width between these, in pixels
    Trace(const FCurve& curve, Quantity quantity, double low, double high, double width);

    /// The values that a picture should show: all, except that a pole, or what the curve reaches outside its keys, does
    /// not flatten the rest. Values of unknown segments do not count. Empty when no value is left.
    Extent extent() const;

    /// Computes strokes and jumps for a picture with that many values per pixel. Strokes keep within about a tenth of a
    /// pixel of the curve.
    void refine(double valuesPerPixel);

    const std::vector<Stroke>& strokes() const { return m_strokes; }
    const std::vector<Jump>& jumps() const { return m_jumps; }

private:
    /// Samples of one segment; of several that are too narrow to be told apart when it names no segment.
    struct Run {
        Place place;
        const Segment* segment;
        const Interpolator* interpolator;
        std::vector<Sample> samples;
    };

    /// What is seen of the narrow segments within one pixel column.
    struct Column {
        double index = 0.0;
        std::size_t count = 0;
        Sample first, lowest, highest, last;
    };

    double evaluate(double x, const Segment& segment, const Interpolator* interpolator) const;
    Sample sample(const Run& run, double x) const;
    bool hasPole(const Run& run) const;
    void addWide(const Segment& segment, Place place, double left, double right);
    void addNarrow(const Segment& segment, double left, double right);
    template<class Visit>
    void lookWithin(const Segment& segment, double left, double right, const Visit& visit) const;
    void addToColumn(Sample sample);
    void flushColumn();

    void append(Place place, const Sample& sample);
    void join(const Run& run);
    void refineBetween(const Run& run, const Sample& a, const Sample& b, int depth);
    void refineEdge(const Run& run, Sample inside, Sample outside);
    void refineSteep(const Run& run, const Sample& a, const Sample& b);

    Quantity m_quantity;
    double m_low;
    double m_pixelsPerFrame;
    std::vector<Run> m_runs;
    Extent m_keyValues = kNoExtent;
    Column m_column;

    double m_valuesPerPixel = 1.0;
    int m_budget = 0; // evaluations that refine() may still spend
    bool m_isOpen = false;
    std::vector<Stroke> m_strokes;
    std::vector<Jump> m_jumps;
};

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
