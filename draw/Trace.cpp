#include "draw/Trace.h"

#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Segment.h"
#include "interp/Kinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kVerticalSlope = 9999999.0; // what the library reports for a vertical tangent

constexpr double kTolerance = 0.1;   // pixels between a stroke and its curve
constexpr double kVisibleJump = 0.5; // pixels
constexpr int kMaxDepth = 8;         // halvings of a distance of two pixels
constexpr int kBudget = 50000;

bool IsFinite(const Sample& sample) {
    return std::isfinite(sample.y);
}

double Middle(double a, double b) {
    return a + (b - a) / 2.0;
}

} // namespace

const Extent kNoExtent = {kInfinity, -kInfinity};

void Extent::include(double value) {
    if (!std::isfinite(value)) return;
    low = std::min(low, value);
    high = std::max(high, value);
}

void Extent::include(const Extent& other) {
    if (other.empty()) return;
    include(other.low);
    include(other.high);
}

bool IsUnknown(const Segment& segment) {
    const Kind kind = KindOf(segment).kind;
    return kind == Kind::Unknown || kind == Kind::Absent;
}

Trace::Trace(const FCurve& curve, Quantity quantity, double low, double high, double width)
    : m_quantity(quantity), m_low(low), m_pixelsPerFrame(width / (high - low)) {
    for (auto it = curve.findSegment(low); it != curve.end(); ++it) {
        const auto leftKey = it->getLeftKey();
        const auto rightKey = it->getRightKey();
        if (leftKey && leftKey->getX() > high) break;
        const double left = leftKey ? std::max(leftKey->getX(), low) : low;
        const double right = rightKey ? std::min(rightKey->getX(), high) : high;
        if (leftKey && leftKey->getX() >= low) m_keyValues.include(leftKey->getY());
        if (!(left < right)) continue;
        const Place place = IsUnknown(*it)        ? Place::Unknown
                            : leftKey && rightKey ? Place::BetweenKeys
                            : leftKey             ? Place::After
                            : rightKey            ? Place::Before
                                                  : Place::BetweenKeys;
        if ((right - left) * m_pixelsPerFrame < 1.0 && place == Place::BetweenKeys)
            addNarrow(*it, left, right);
        else
            addWide(*it, place, left, right);
    }
    flushColumn();
}

double Trace::evaluate(double x, const Segment& segment, const Interpolator* interpolator) const {
    if (!interpolator) return 0.0;
    if (m_quantity == Quantity::Value) return interpolator->eval(x, segment);
    const double slope = m_quantity == Quantity::Velocity ? interpolator->getFirstDerivative(x, segment)
                                                          : interpolator->getSecondDerivative(x, segment);
    return std::fabs(slope) == kVerticalSlope ? std::copysign(kInfinity, slope) : slope;
}

Sample Trace::sample(const Run& run, double x) const {
    return {x, evaluate(x, *run.segment, run.interpolator)};
}

void Trace::addWide(const Segment& segment, Place place, double left, double right) {
    flushColumn();
    Run run{place, &segment, segment.getInterpolator().get(), {}};
    const int count = static_cast<int>(std::clamp(std::ceil((right - left) * m_pixelsPerFrame / 2.0), 4.0, 1e5));
    for (int i = 0; i < count; ++i) run.samples.push_back(sample(run, left + (right - left) * i / count));
    run.samples.push_back(sample(run, right));
    m_runs.push_back(std::move(run));
}

void Trace::addNarrow(const Segment& segment, double left, double right) {
    if (m_runs.empty() || m_runs.back().segment) m_runs.push_back({Place::BetweenKeys, nullptr, nullptr, {}});
    const auto interpolator = segment.getInterpolator();
    addToColumn({left, evaluate(left, segment, interpolator.get())});
    lookWithin(segment, left, right, [this](const Sample& sample) { addToColumn(sample); });
    addToColumn({right, evaluate(right, segment, interpolator.get())});
}

/// Visits the extreme values within a segment too narrow to be drawn point by point, and perhaps others.
template<class Visit>
void Trace::lookWithin(const Segment& segment, double left, double right, const Visit& visit) const {
    // Kinds without a closed form of their extents look at every tenth frame, which takes as long as the segment is.
    constexpr double kShortSegment = 2.0;
    constexpr int kPieces = 8;
    const auto interpolator = segment.getInterpolator();
    if (m_quantity == Quantity::Value && (KindOf(segment).hasClosedExtents() || right - left <= kShortSegment)) {
        double low = 0.0;
        double high = 0.0;
        interpolator->getRangeExtents(segment, left, right, low, high);
        visit({Middle(left, right), low});
        visit({Middle(left, right), high});
        return;
    }
    std::array<Sample, kPieces - 1> samples;
    for (int i = 1; i < kPieces; ++i) {
        const double x = left + (right - left) * i / kPieces;
        visit(samples[static_cast<std::size_t>(i) - 1] = {x, evaluate(x, segment, interpolator.get())});
    }
    // An extremum lies near the vertex of the parabola through the highest, or lowest, three.
    for (std::size_t i = 1; i + 1 < samples.size(); ++i) {
        const double before = samples[i].y - samples[i - 1].y;
        const double after = samples[i + 1].y - samples[i].y;
        if (!(before * after < 0.0)) continue;
        const double x = samples[i].x + (right - left) / kPieces * 0.5 * (before + after) / (before - after);
        visit({x, evaluate(x, segment, interpolator.get())});
    }
}

void Trace::addToColumn(Sample sample) {
    if (!IsFinite(sample)) return;
    const double index = std::floor((sample.x - m_low) * m_pixelsPerFrame);
    if (m_column.count > 0 && index != m_column.index) flushColumn();
    if (m_column.count++ == 0) {
        m_column.index = index;
        m_column.first = m_column.lowest = m_column.highest = sample;
    } else {
        if (sample.y < m_column.lowest.y) m_column.lowest = sample;
        if (sample.y > m_column.highest.y) m_column.highest = sample;
    }
    m_column.last = sample;
}

void Trace::flushColumn() {
    if (m_column.count == 0) return;
    std::vector<Sample>& samples = m_runs.back().samples;
    const auto [earlier, later] =
        std::minmax(m_column.lowest, m_column.highest, [](const Sample& a, const Sample& b) { return a.x < b.x; });
    for (const Sample& sample : {m_column.first, earlier, later, m_column.last})
        if (samples.empty() || sample != samples.back()) samples.push_back(sample);
    m_column.count = 0;
}

/// Whether the largest values of the run go on growing however closely one looks.
bool Trace::hasPole(const Run& run) const {
    constexpr int kPieces = 16;
    constexpr int kZooms = 6;
    constexpr double kGrowth = 8.0;
    constexpr double kGrowthOfLaterHalf = 1.01; // little: a look may have met the pole by luck before
    if (!run.segment) return false;
    const auto isSmaller = [](const Sample& a, const Sample& b) {
        return IsFinite(b) && (!IsFinite(a) || std::fabs(a.y) < std::fabs(b.y));
    };
    const auto peak = std::max_element(run.samples.begin(), run.samples.end(), isSmaller);
    if (!IsFinite(*peak)) return false;
    double low = (peak == run.samples.begin() ? peak : std::prev(peak))->x;
    double high = (std::next(peak) == run.samples.end() ? peak : std::next(peak))->x;
    Sample largest = *peak;
    double halfway = 0.0;
    for (int zoom = 0; zoom < kZooms; ++zoom) {
        if (zoom == kZooms / 2) halfway = std::fabs(largest.y);
        const double step = (high - low) / kPieces;
        for (int i = 1; i < kPieces; ++i) {
            const Sample look = sample(run, low + step * i);
            if (isSmaller(largest, look)) largest = look;
        }
        low = std::max(low, largest.x - step);
        high = std::min(high, largest.x + step);
    }
    const double height = std::fabs(largest.y);
    return height > kGrowth * std::fabs(peak->y) && height > kGrowthOfLaterHalf * halfway;
}

Extent Trace::extent() const {
    // A curve with a pole has values that are huge, but few. Then the picture shows what most of the samples need.
    constexpr double kManyHeights = 50.0;
    constexpr double kRoomAroundCore = 1.5;
    constexpr double kRoomOutsideKeys = 0.75;

    Extent inner = kNoExtent;
    Extent outer = kNoExtent;
    std::vector<double> values;
    bool hasPoles = false;
    for (const Run& run : m_runs) {
        if (run.place == Place::Unknown) continue;
        for (const Sample& sample : run.samples) {
            (run.place == Place::BetweenKeys ? inner : outer).include(sample.y);
            if (run.place == Place::BetweenKeys && IsFinite(sample)) values.push_back(sample.y);
        }
        hasPoles = hasPoles || (run.place == Place::BetweenKeys && hasPole(run));
    }
    if (!values.empty()) {
        const auto quantile = [&values](std::size_t percent) {
            const auto place = static_cast<std::ptrdiff_t>((values.size() - 1) * percent / 100);
            std::nth_element(values.begin(), values.begin() + place, values.end());
            return values[static_cast<std::size_t>(place)];
        };
        Extent core = kNoExtent;
        core.include(quantile(5));
        core.include(quantile(95));
        if (m_quantity == Quantity::Value) core.include(m_keyValues);
        const double height = core.high - core.low;
        if (height > 0.0 && (hasPoles || inner.high - inner.low > kManyHeights * height)) {
            inner.low = std::max(inner.low, core.low - kRoomAroundCore * height);
            inner.high = std::min(inner.high, core.high + kRoomAroundCore * height);
        }
    }
    if (m_quantity == Quantity::Value) inner.include(m_keyValues);
    const double height = inner.empty() ? 0.0 : inner.high - inner.low;
    if (height > 0.0 && !outer.empty()) {
        const Extent limits = {inner.low - kRoomOutsideKeys * height, inner.high + kRoomOutsideKeys * height};
        outer.low = std::clamp(outer.low, limits.low, limits.high);
        outer.high = std::clamp(outer.high, limits.low, limits.high);
    }
    inner.include(outer);
    return inner;
}

void Trace::refine(double valuesPerPixel) {
    m_valuesPerPixel = valuesPerPixel;
    m_budget = kBudget;
    m_isOpen = false;
    m_strokes.clear();
    m_jumps.clear();
    for (const Run& run : m_runs) {
        if (run.samples.empty()) continue;
        join(run);
        for (std::size_t i = 0; i < run.samples.size(); ++i) {
            if (i > 0 && run.segment) refineBetween(run, run.samples[i - 1], run.samples[i], 0);
            append(run.place, run.samples[i]);
        }
    }
}

/// Continues the stroke of the run before this one, or ends it where the two do not meet.
void Trace::join(const Run& run) {
    if (!m_isOpen) return;
    const Sample& end = m_strokes.back().samples.back();
    const Sample& begin = run.samples.front();
    const bool meets = std::fabs(begin.y - end.y) <= kVisibleJump * m_valuesPerPixel;
    if (!meets && IsFinite(begin)) m_jumps.push_back({begin.x, end.y, begin.y});
    if (!meets || run.place != m_strokes.back().place) m_isOpen = false;
}

void Trace::append(Place place, const Sample& sample) {
    if (!IsFinite(sample)) {
        m_isOpen = false;
        return;
    }
    if (!m_isOpen) m_strokes.push_back({place, {}});
    m_isOpen = true;
    m_strokes.back().samples.push_back(sample);
}

/// Appends what lies strictly between a, which is appended, and b, which will be.
void Trace::refineBetween(const Run& run, const Sample& a, const Sample& b, int depth) {
    if (m_budget <= 0) return;
    const double x = Middle(a.x, b.x);
    if (!(a.x < x && x < b.x)) return;
    --m_budget;
    const Sample m = sample(run, x);

    if (!IsFinite(a) && !IsFinite(b) && !IsFinite(m)) return;
    if (IsFinite(a) != IsFinite(b) && depth >= 2) {
        refineEdge(run, IsFinite(a) ? a : b, IsFinite(a) ? b : a);
        return;
    }
    if (IsFinite(a) && IsFinite(b) && IsFinite(m)) {
        const double rise = std::fabs(b.y - a.y) / m_valuesPerPixel;
        const double deviation = std::fabs(m.y - Middle(a.y, b.y)) / m_valuesPerPixel;
        if (deviation <= kTolerance && (rise <= 4.0 || depth >= 2)) return;
        if (depth == kMaxDepth) {
            if (rise > 1.0) refineSteep(run, a, b);
            return;
        }
    } else if (depth == kMaxDepth) {
        if (!IsFinite(m)) m_isOpen = false;
        return;
    }
    refineBetween(run, a, m, depth + 1);
    append(run.place, m);
    refineBetween(run, m, b, depth + 1);
}

/// Follows the curve from a finite value to where finite values end.
void Trace::refineEdge(const Run& run, Sample inside, Sample outside) {
    const bool ends = inside.x < outside.x;
    const Sample start = inside;
    for (int i = 0; i < 24; ++i) {
        const Sample m = sample(run, Middle(inside.x, outside.x));
        (IsFinite(m) ? inside : outside) = m;
    }
    m_budget -= 24;
    if (ends) {
        refineBetween(run, start, inside, 3);
        append(run.place, inside);
        m_isOpen = false;
    } else {
        m_isOpen = false;
        append(run.place, inside);
        refineBetween(run, inside, start, 3);
    }
}

/// Tells a jump within a stretch from a steep slope: halving the stretch again and again makes a slope small.
void Trace::refineSteep(const Run& run, const Sample& a, const Sample& b) {
    Sample low = a;
    Sample high = b;
    for (int i = 0; i < 60; ++i) {
        const double x = Middle(low.x, high.x);
        if (!(low.x < x && x < high.x)) break;
        const Sample m = sample(run, x);
        --m_budget;
        if (!IsFinite(m)) {
            append(run.place, low);
            m_isOpen = false;
            append(run.place, high);
            return;
        }
        (std::fabs(m.y - low.y) > std::fabs(high.y - m.y) ? high : low) = m;
    }
    if (std::fabs(high.y - low.y) < 0.25 * std::fabs(b.y - a.y)) return;
    append(run.place, low);
    m_isOpen = false;
    m_jumps.push_back({low.x, low.y, high.y});
    append(run.place, high);
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
