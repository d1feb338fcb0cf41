#include "tools/SegmentSummaries.h"

#include "FCurveLib/Interpolator.h"
#include "interp/BezierMath.h"
#include "interp/Kinds.h"
#include "model/NotFinite.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

void Fold(double value, double& low, double& high) noexcept {
    if (!std::isfinite(value)) return;
    low = std::min(low, value);
    high = std::max(high, value);
}

SegmentSummary Level(double x, double y) noexcept {
    SegmentSummary summary{x, y, kInfinity, -kInfinity};
    Fold(y, summary.low, summary.high);
    return summary;
}

void FoldLooks(const Interpolator& interpolator, const Segment& segment, double x0, double x1, double& low,
               double& high) {
    constexpr double step = 0.1;
    constexpr double mostLooks = 16.0;
    const double looks = std::clamp(std::ceil((x1 - x0) / step), 2.0, mostLooks);
    for (double i = 0.0; i <= looks; ++i) Fold(interpolator.eval(x0 + (x1 - x0) * (i / looks), segment), low, high);
}

// Between two frames of a segment.
void FoldSegment(const Segment& segment, double x0, double x1, double& low, double& high) {
    const Interpolator* const interpolator = Read::interpolator(segment);
    if (!interpolator) return Fold(0.0, low, high);
    if (!KindOf(*interpolator).hasClosedExtents()) return FoldLooks(*interpolator, segment, x0, x1, low, high);
    double least = 0.0;
    double most = 0.0;
    interpolator->getRangeExtents(segment, x0, x1, least, most);
    Fold(least, low, high);
    Fold(most, low, high);
}

} // namespace

SegmentSummary Summarise(const Segment& segment) {
    const Vector2D<double>& left = Read::leftKey(segment)->get();
    const Vector2D<double>& right = Read::rightKey(segment)->get();
    const Interpolator* const interpolator = Read::interpolator(segment);
    const KindRow& row = KindOf(interpolator);
    switch (row.shape) {
    case Shape::LeftValue:
        return Level(left.x, left.y);
    case Shape::RightValue:
        return Level(left.x, right.y);
    case Shape::Line:
        return {left.x, left.y, std::min(left.y, right.y), std::max(left.y, right.y)};
    case Shape::Number:
        return Level(left.x, interpolator ? interpolator->eval(left.x, segment) : 0.0);
    case Shape::Bezier: {
        const BezierArgs args = row.args(*interpolator, segment);
        SegmentSummary summary{left.x, args.y0, std::min(args.y0, args.y3), std::max(args.y0, args.y3)};
        // The curve lies within the hull of its control points: mostly that of its ends.
        const double second = args.y0 + args.outY;
        const double third = args.y3 + args.inY;
        if (std::min(second, third) < summary.low || std::max(second, third) > summary.high)
            BezierExtents({0.0, 1.0}, {1.0, 0.0}, args, summary.low, summary.high);
        if (std::isfinite(summary.low) && std::isfinite(summary.high)) return summary;
        break;
    }
    case Shape::Free:
        break;
    }
    SegmentSummary summary = Level(left.x, interpolator->eval(left.x, segment));
    FoldLooks(*interpolator, segment, left.x, right.x, summary.low, summary.high);
    return summary;
}

void SegmentSummaries::update(const FCurve& curve, double low, double high) {
    std::vector<Block> old = std::move(m_blocks);
    m_blocks.clear(); // stays so where anything throws
    if (old.empty() || low == -kInfinity || high == kInfinity) {
        m_blocks = makeBlocks(Read::nextSegment(Read::firstSegment(curve)), kInfinity);
        return;
    }
    // Blocks that hold a segment up to two keys beside what changed, as that is how far a kind's reads reach; and those
    // that read farther.
    const auto first = [](const Block& block) { return block.segments.front().x; };
    const auto startsBefore = [&first](const Block& block, double x) { return first(block) < x; };
    auto begin = std::lower_bound(old.begin(), old.end(), low, startsBefore);
    // The blocks before and after stay as they are, and so do the keys at which they begin and end.
    constexpr std::size_t reach = 2;
    for (std::size_t before = 0; begin != old.begin() && before <= reach;) {
        --begin;
        before += static_cast<std::size_t>(std::count_if(begin->segments.begin(), begin->segments.end(),
                                                         [&](const SegmentSummary& s) { return s.x < low; }));
    }
    auto end = begin;
    for (std::size_t after = 0; end != old.end() && after <= reach + 1; ++end)
        after += static_cast<std::size_t>(std::count_if(end->segments.begin(), end->segments.end(),
                                                        [&](const SegmentSummary& s) { return s.x > high; }));
    std::vector<Block> blocks;
    blocks.reserve(old.size() + 1);
    const auto remake = [&](auto from, auto to) {
        const Segment& start = from == old.begin() ? Read::firstSegment(curve) : Read::findSegment(curve, first(*from));
        const bool isLeading = !Read::leftKey(start); // also where nobody told that the keys before are gone
        const double endX = to == old.end() ? kInfinity : first(*to);
        std::vector<Block> made = makeBlocks(isLeading ? Read::nextSegment(start) : &start, endX);
        std::move(made.begin(), made.end(), std::back_inserter(blocks));
    };
    for (auto block = old.begin(); block != old.end();) {
        const auto next = block == begin ? end : std::next(block);
        if (block == begin || block->readsFar)
            remake(block, next);
        else
            blocks.push_back(std::move(*block));
        block = next;
    }
    m_blocks = std::move(blocks);
}

std::vector<SegmentSummaries::Block> SegmentSummaries::makeBlocks(const Segment* segment, double end) {
    std::vector<Block> blocks;
    const auto isInside = [end](const Segment* s) {
        return s && Read::rightKey(*s) && Read::leftKey(*s)->getX() < end;
    };
    while (isInside(segment)) {
        Block& block = blocks.emplace_back();
        block.segments.reserve(blockSize);
        while (block.segments.size() < blockSize && isInside(segment)) {
            Group group{block.segments.size(), 0, 0.0, kInfinity, -kInfinity, 0.0};
            for (std::size_t i = 0; i < groupSize && isInside(segment); ++i) {
                const SegmentSummary& summary = block.segments.emplace_back(Summarise(*segment));
                group.endX = Read::rightKey(*segment)->getX();
                group.widest = std::max(group.widest, group.endX - summary.x);
                group.low = std::min(group.low, summary.low);
                group.high = std::max(group.high, summary.high);
                constexpr Reads far = kReadsNeighbours | kReadsCurve;
                if ((ReadsOf(Read::interpolator(*segment), *segment) & far) != 0) block.readsFar = true;
                segment = Read::nextSegment(*segment);
            }
            group.end = block.segments.size();
            block.groups.push_back(group);
        }
    }
    return blocks;
}

void SegmentSummaries::foldExtents(const FCurve& curve, double x0, double x1, double& low, double& high) const {
    const auto endsBefore = [](const auto& part, double x) { return part.endX() < x; };
    for (auto block = std::lower_bound(m_blocks.begin(), m_blocks.end(), x0, endsBefore); block != m_blocks.end();
         ++block) {
        for (const Group& group : block->groups) {
            if (group.endX < x0) continue;
            const SegmentSummary* const segments = block->segments.data();
            if (segments[group.begin].x > x1) return;
            if (segments[group.begin].x >= x0 && group.endX <= x1) {
                low = std::min(low, group.low);
                high = std::max(high, group.high);
                continue;
            }
            for (std::size_t i = group.begin; i < group.end && segments[i].x <= x1; ++i) {
                const double left = segments[i].x;
                const double right = i + 1 < group.end ? segments[i + 1].x : group.endX;
                if (right < x0) continue;
                if (left >= x0 && right <= x1) {
                    low = std::min(low, segments[i].low);
                    high = std::max(high, segments[i].high);
                } else {
                    FoldSegment(Read::findSegment(curve, left), std::max(left, x0), std::min(right, x1), low, high);
                }
            }
        }
    }
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
