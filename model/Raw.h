#pragma once

// What the library's own code writes into the parts: nothing is recomputed, limited or notified, unless said. Recorders
// are told first, so all of it may throw std::bad_alloc, and then changes nothing.

#include "model/Recorder.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// All that a block's parts hold besides properties.
struct BlockShape {
    enum Flag : std::uint8_t {
        InWeighted = 1,
        InLocked = 2,
        OutWeighted = 4,
        OutLocked = 8,
        Breakdown = 16,
        Unified = 32
    };

    BlockShape() noexcept = default;
    explicit BlockShape(const Block& block);

    Vector2D<double> position, in, out;
    std::shared_ptr<Interpolator> interpolator;
    std::uint8_t inType = 0;
    std::uint8_t outType = 0;
    std::uint8_t flags = 0;
};

struct Raw {
    // --- fields: to rebuild a stored or copied curve to the last bit -------------------------------------------------
    static void setHandle(Tangent& t, double x, double y) {
        Recording::touchPart(t);
        t.m_handle = {x, y};
    }
    static void setType(Tangent& t, std::uint8_t type) {
        Recording::touchPart(t);
        t.m_type = type;
    }
    static void setWeighted(Tangent& t, bool weighted) {
        Recording::touchPart(t);
        t.m_weighted = weighted;
    }
    static void setWeightLocked(Tangent& t, bool locked) {
        Recording::touchPart(t);
        t.m_weightLocked = locked;
    }
    // All but the side.
    static void copyTangent(Tangent& to, const Tangent& from);
    // Position, flags and properties.
    static void copyKey(Keyframe& to, const Keyframe& from);
    static void setBreakdown(Keyframe& k, bool breakdown) {
        Recording::touchPart(k);
        k.m_box.setFlag(Keyframe::breakdownFlag, breakdown);
    }
    static void setUnified(Keyframe& k, bool unified) {
        Recording::touchPart(k);
        k.m_box.setFlag(Keyframe::unifiedFlag, unified);
    }
    // Gives the one that was there.
    static std::shared_ptr<Interpolator> setInterpolator(Segment& s, std::shared_ptr<Interpolator> i) {
        Recording::touchPart(s);
        s.m_interpolator.swap(i);
        return i;
    }
    // Of a segment made by hand.
    static void setTangents(Segment& s, std::shared_ptr<Tangent> in, std::shared_ptr<Tangent> out) {
        s.m_box.need().inTangent = std::move(in);
        s.m_box.need().outTangent = std::move(out);
    }
    // As PropertyMap::set.
    template<class Part>
    static bool setProperty(Part& part, const char* key, const char* value) {
        Recording::property(part, key);
        return stored(part).set(key, value);
    }
    template<class Part>
    static void swapProperties(Part& part, PropertyMap& properties) {
        Recording::properties(part, properties);
        stored(part).swap(properties);
    }
    template<class Part>
    static void setProperties(Part& part, const PropertyMap& properties) {
        if (properties.empty() && Read::properties(part).empty()) return;
        PropertyMap copy(properties);
        swapProperties(part, copy);
    }

    // --- a curve's chain ---------------------------------------------------------------------------------------------
    // Stores the position of a key in a curve and keeps the curve's index true. Precondition: the order of keys stays.
    static void moveKey(Keyframe& k, const Vector2D<double>& position);
    // Appends a key after the last one, with the flags and properties of the given key. Returns the new segment; null,
    // and nothing happens, if x is not above the last key's.
    static Segment* appendKey(FCurve& c, const Keyframe& key, std::shared_ptr<Interpolator> interpolator);
    // A block that names the curve but is not yet in its chain, with a copy of the key, if one is given.
    static std::shared_ptr<Block> makeBlock(FCurve& c, const Keyframe* key, std::shared_ptr<Interpolator> interpolator);
    // Puts a block into the curve, at the place where the x of its key belongs and no key stands. Never throws while
    // there is room.
    static void link(FCurve& c, const SegmentMap::Place& place, std::shared_ptr<Block> block,
                     SegmentMap::Room* room = nullptr);
    static SegmentMap::Room makeRoom(FCurve& c, std::size_t blocks) { return c.m_segments.makeRoom(blocks); }
    // Takes a block out of its curve, other than the leading one.
    static std::shared_ptr<Block> unlink(Block& block) noexcept;
    // Takes every block of a chain out of it, for whoever still holds parts of it.
    static void release(std::shared_ptr<Block> leading) noexcept;

    // The link for segments that are made by hand for the curve.
    static const CurveReference& identity(FCurve& c);
    static ObserverSet<FCurveObserver>& observers(FCurve& c) noexcept { return c.m_observers; }

    // --- to bring back what was recorded: recorders are told by the caller
    // --------------------------------------------
    static std::vector<Recorder*>& recorders(FCurve& c) noexcept { return c.m_recorders; }
    static std::unique_ptr<Recorder>& recorder(FCurveContainer& c) noexcept { return c.m_recorder; }
    // Gives a curve another leading block, which takes over the chain.
    static void setLeading(FCurve& c, std::shared_ptr<Block> leading) noexcept;
    // A leading block that another one replaced names its curve no longer.
    static void leave(Block& block) noexcept { block.segment.m_curve = {}; }
    static SegmentMap::Place locate(FCurve& c, double x) noexcept { return c.m_segments.locate(x); }
    static void swapName(FCurve& c, std::string& name) noexcept { c.m_name.swap(name); }
    // Replaces some of the container's curves. Tells nobody.
    static void replaceCurves(FCurveContainer& c, std::size_t first, std::size_t count,
                              const std::vector<std::shared_ptr<FCurve>>& curves) {
        c.replaceCurves(first, count, curves);
    }
    static void setShape(Block& block, const BlockShape& shape) noexcept;
    template<class Part>
    static auto& stored(Part& part) noexcept {
        return part.m_box;
    }
    static PropertyMap& stored(FCurve& c) noexcept { return c.m_properties; }
    static PropertyMap& stored(FCurveContainer& c) noexcept { return c.m_properties; }
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
