#pragma once

#include "model/Raw.h"

#include <memory>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// Remembers the handles of tangents, to put them back to the last bit after an edit nearby has recomputed them.
class HandleKeeper {
public:
    struct Kept {
        std::shared_ptr<Tangent> tangent;
        Vector2D<double> handle;
    };

    void keep(Tangent& tangent) { m_kept.push_back({tangent.getShared(), tangent.get()}); }
    void keep(Segment& segment) {
        keep(*Read::inTangent(segment));
        keep(*Read::outTangent(segment));
    }

    // The segments on that side of a key which inserting, removing or moving the key's neighbour can reach: the key's
    // own tangents change, then plateau tangents across the segment, then their opposites at a unified key.
    void keepLeftOf(Keyframe* key) {
        for (int i = 0; i < reach && key; ++i) {
            Segment* segment = Read::leftSegment(*key);
            keep(*segment);
            key = Read::leftKey(*segment);
        }
    }
    void keepRightOf(Keyframe* key) {
        for (int i = 0; i < reach && key; ++i) {
            Segment* segment = Read::rightSegment(*key);
            keep(*segment);
            key = Read::rightKey(*segment);
        }
    }

    const std::vector<Kept>& kept() const noexcept { return m_kept; }
    void restore() const {
        for (const Kept& kept : m_kept) Raw::setHandle(*kept.tangent, kept.handle.x, kept.handle.y);
    }

private:
    static constexpr int reach = 2;
    std::vector<Kept> m_kept;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
