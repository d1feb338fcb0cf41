#pragma once

// The extents of the segments between keys, in an order that answers for whole stretches of them.

#include "model/Read.h"

#include <cstddef>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// A segment between two keys.
struct SegmentSummary {
    double x;   // of its left key
    double y;   // where it starts; NaN if not finite
    double low; // above high where no value is finite
    double high;

    bool isEmpty() const noexcept { return !(low <= high); }
};

// Of a segment with both keys. Kinds without a closed form of their extents are looked at every tenth of a frame, but
// 16 times at most. Throws what a host's interpolator throws.
SegmentSummary Summarise(const Segment& segment);

// Those of a curve, in groups of neighbours, and groups in blocks that can be made anew one by one.
class SegmentSummaries {
public:
    struct Group {
        std::size_t begin; // among the block's segments
        std::size_t end;
        double endX; // of the last segment's right key
        double low;  // of all; above high where no value is finite
        double high;
        double widest; // the largest distance between two of the keys
    };
    struct Block {
        std::vector<SegmentSummary> segments; // never empty
        std::vector<Group> groups;
        bool readsFar = false; // whether values depend on what is not near

        double endX() const noexcept { return groups.back().endX; }
    };

    const std::vector<Block>& blocks() const noexcept { return m_blocks; }

    // Brings what lies between two frames up to date, or everything where these are infinite. Leaves nothing where a
    // host's interpolator throws.
    void update(const FCurve& curve, double low, double high);

    // Widens low and high to the extents between two frames within the keys. Logarithmic in the keys, linear in the
    // groups between the frames.
    void foldExtents(const FCurve& curve, double x0, double x1, double& low, double& high) const;

private:
    static constexpr std::size_t groupSize = 32;
    static constexpr std::size_t blockSize = 256;

    // From a segment to the one before that which starts at a frame.
    static std::vector<Block> makeBlocks(const Segment* segment, double end);

    std::vector<Block> m_blocks;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
