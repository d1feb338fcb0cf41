#include "draw/Extent.h"

#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Segment.h"
#include "interp/Kinds.h"
#include "tools/CurveTracer.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private::Drawing {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Placed {
    ViewPolyline::Place place;
    double x; // in pixels
    double y;
};

class Samples final : public TraceSink {
public:
    std::vector<Placed> all;

    void add(ViewPolyline::Place place, double x, double y) override { all.push_back({place, x, y}); }
    void jump(double, double, double) override {}
    void cut() override {}
};

class Finder {
public:
    Finder(const FCurve& curve, Quantity quantity, double low, double high, double width)
        : m_curve(curve), m_quantity(quantity), m_low(low), m_high(high), m_width(width) {
        TraceCurve(curve, nullptr, quantity, {low, high, width, -kInfinity, kInfinity, 0.0}, m_samples);
    }

    Extent find() const {
        // A curve with a pole has values that are huge, but few. Then the picture shows what most of the samples need.
        constexpr double kManyHeights = 50.0;
        constexpr double kRoomAroundCore = 1.5;
        constexpr double kRoomOutsideKeys = 0.75;

        Extent inner = kNoExtent;
        Extent outer = kNoExtent;
        std::vector<double> values;
        for (const Placed& sample : m_samples.all) {
            if (sample.place == ViewPolyline::Unknown) continue;
            const bool isInner = sample.place == ViewPolyline::BetweenKeys;
            (isInner ? inner : outer).include(sample.y);
            if (isInner) values.push_back(sample.y);
        }
        const Extent keyValues = m_quantity == Quantity::Value ? findKeyValues() : kNoExtent;
        if (!values.empty()) {
            const auto quantile = [&values](std::size_t percent) {
                const auto place = static_cast<std::ptrdiff_t>((values.size() - 1) * percent / 100);
                std::nth_element(values.begin(), values.begin() + place, values.end());
                return values[static_cast<std::size_t>(place)];
            };
            Extent core = kNoExtent;
            core.include(quantile(5));
            core.include(quantile(95));
            core.include(keyValues);
            const double height = core.high - core.low;
            if (height > 0.0 && (inner.high - inner.low > kManyHeights * height || hasPole())) {
                inner.low = std::max(inner.low, core.low - kRoomAroundCore * height);
                inner.high = std::min(inner.high, core.high + kRoomAroundCore * height);
            }
        }
        inner.include(keyValues);
        const double height = inner.empty() ? 0.0 : inner.high - inner.low;
        if (height > 0.0 && !outer.empty()) {
            const Extent limits = {inner.low - kRoomOutsideKeys * height, inner.high + kRoomOutsideKeys * height};
            outer.low = std::clamp(outer.low, limits.low, limits.high);
            outer.high = std::clamp(outer.high, limits.low, limits.high);
        }
        inner.include(outer);
        return inner;
    }

private:
    double toPixel(double frame) const { return (frame - m_low) / (m_high - m_low) * m_width; }
    double toFrame(double pixel) const { return m_low + pixel / m_width * (m_high - m_low); }

    // Calls visit(segment) for each segment in view, until it returns true.
    template<class Visit>
    bool visitSegments(const Visit& visit) const {
        for (auto it = m_curve.findSegment(m_low); it != m_curve.end(); ++it) {
            const auto key = it->getLeftKey();
            if (key && key->getX() > m_high) break;
            if (visit(*it)) return true;
        }
        return false;
    }

    Extent findKeyValues() const {
        Extent extent = kNoExtent;
        visitSegments([&](const Segment& segment) {
            const auto key = segment.getLeftKey();
            if (key && key->getX() >= m_low) extent.include(key->getY());
            return false;
        });
        return extent;
    }

    bool hasPole() const {
        return visitSegments([this](const Segment& segment) {
            const auto left = segment.getLeftKey();
            const auto right = segment.getRightKey();
            if ((left != nullptr) != (right != nullptr) || IsUnknown(segment)) return false;
            if (m_quantity == Quantity::Value && KindOf(segment).hasClosedExtents()) return false;
            const double from = left ? std::max(toPixel(left->getX()), 0.0) : 0.0;
            const double to = right ? std::min(toPixel(right->getX()), m_width) : m_width;
            return to - from >= 1.0 && hasPole(segment, from, to);
        });
    }

    // Whether the largest values of a segment, between two pixels, go on growing however closely one looks.
    bool hasPole(const Segment& segment, double from, double to) const {
        constexpr int kPieces = 16;
        constexpr int kZooms = 6;
        constexpr double kGrowth = 8.0;
        constexpr double kGrowthOfLaterHalf = 1.01; // little: a look may have met the pole by luck before
        const auto startsBefore = [](const Placed& sample, double x) { return sample.x < x; };
        const auto isSmaller = [](const Placed& a, const Placed& b) { return std::fabs(a.y) < std::fabs(b.y); };
        const auto begin = std::lower_bound(m_samples.all.begin(), m_samples.all.end(), from, startsBefore);
        const auto end = std::lower_bound(begin, m_samples.all.end(), to, startsBefore);
        const auto peak = std::max_element(begin, end, isSmaller);
        if (peak == end) return false;
        double low = toFrame(peak == begin ? from : std::prev(peak)->x);
        double high = toFrame(std::next(peak) == end ? to : std::next(peak)->x);
        Sample largest{toFrame(peak->x), peak->y};
        double halfway = 0.0;
        const auto interpolator = segment.getInterpolator();
        for (int zoom = 0; zoom < kZooms; ++zoom) {
            if (zoom == kZooms / 2) halfway = std::fabs(largest.y);
            const double step = (high - low) / kPieces;
            for (int i = 1; i < kPieces; ++i) {
                const double x = low + step * i;
                const double y = Private::Look(m_quantity, x, segment, interpolator.get());
                if (std::isfinite(y) && std::fabs(y) > std::fabs(largest.y)) largest = {x, y};
            }
            low = std::max(low, largest.x - step);
            high = std::min(high, largest.x + step);
        }
        const double height = std::fabs(largest.y);
        return height > kGrowth * std::fabs(peak->y) && height > kGrowthOfLaterHalf * halfway;
    }

    const FCurve& m_curve;
    Quantity m_quantity;
    double m_low;
    double m_high;
    double m_width;
    Samples m_samples;
};

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

Extent FindExtentToShow(const FCurve& curve, Quantity quantity, double low, double high, double width) {
    return Finder(curve, quantity, low, high, width).find();
}

} // namespace Private::Drawing
} // namespace v19
} // namespace VEM_FN::FCurveLib
