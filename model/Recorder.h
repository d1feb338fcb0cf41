#pragma once

// Who is told of an edit before it is made: one for each container whose edits are grouped or undone. A curve that is
// in none of those pays a look at an empty list.

#include "model/Read.h"

#include <cstdint>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

class Recorder {
public:
    Recorder() noexcept = default;
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    virtual ~Recorder();

    // Who carries a property, seen from the block, the curve or the container.
    enum Carrier : std::uint8_t { OfContainer, OfCurve, OfSegment, OfKey, OfInTangent, OfOutTangent };

    // What is about to change: anything of a block in a curve but its properties; the curve that a block is in.
    virtual void touch(Block& block) = 0;
    virtual void add(FCurve& curve, Block& block) = 0;
    virtual void remove(Block& block) = 0;
    // Two curves are about to exchange all that is in them.
    virtual void exchange(FCurve& a, FCurve& b) = 0;
    virtual void name(FCurve& curve) = 0;
    // The place is the block, the curve or the container.
    virtual void property(Carrier carrier, void* place, const char* key) = 0;
    virtual void contents(FCurveContainer& container) = 0;
    virtual void joined(FCurve& curve) = 0; // a curve is in the container now
    virtual void destroyed(FCurve& curve) noexcept = 0;

    // Whether the observers of its curves are to hear of nothing now.
    virtual bool mutes() const noexcept = 0;
};

// Calls the recorders of a curve.
struct Recording {
    static bool isOn(const FCurve& curve) noexcept { return !Read::recorders(curve).empty(); }

    template<class Call>
    static void tell(const FCurve& curve, const Call& call) {
        for (Recorder* recorder : Read::recorders(curve)) call(*recorder);
    }

    // Null for a part that is in no block.
    static void touch(Block* block) {
        FCurve* curve = block ? block->curve() : nullptr;
        if (curve && isOn(*curve)) touchRecorded(*curve, *block);
    }
    template<class Part>
    static void touchPart(const Part& part) {
        touch(Block::of(part));
    }

    static void add(FCurve& curve, Block& block) {
        if (isOn(curve)) tell(curve, [&](Recorder& recorder) { recorder.add(curve, block); });
    }
    static void remove(FCurve& curve, Block& block) {
        if (isOn(curve)) tell(curve, [&](Recorder& recorder) { recorder.remove(block); });
    }
    // Everything leaves the curve.
    static void removeAll(FCurve& curve);
    // All that is in the other curve, which nobody records, is about to replace what is in this one.
    static void replace(FCurve& curve, FCurve& other);
    static void exchange(FCurve& a, FCurve& b);
    static void name(FCurve& curve) {
        if (isOn(curve)) tell(curve, [&](Recorder& recorder) { recorder.name(curve); });
    }

    static void property(FCurve& curve, const char* key) { property(curve, Recorder::OfCurve, &curve, key); }
    static void property(Segment& s, const char* key) { property(Block::of(s), Recorder::OfSegment, key); }
    static void property(Keyframe& k, const char* key) { property(Block::of(k), Recorder::OfKey, key); }
    static void property(Tangent& t, const char* key) {
        property(Block::of(t), t.isInTangent() ? Recorder::OfInTangent : Recorder::OfOutTangent, key);
    }
    static void property(FCurveContainer& container, const char* key);
    // Of every key that the part has, or is to have.
    template<class Part>
    static void properties(Part& part, const PropertyMap& replacement) {
        for (const auto& entry : Read::properties(part)) property(part, entry.first.c_str());
        for (const auto& entry : replacement) property(part, entry.first.c_str());
    }

    static bool mutes(const FCurve& curve) noexcept;

private:
    static void touchRecorded(FCurve& curve, Block& block);
    static void property(Block* block, Recorder::Carrier carrier, const char* key) {
        if (FCurve* curve = block ? block->curve() : nullptr) property(*curve, carrier, block, key);
    }
    static void property(FCurve& curve, Recorder::Carrier carrier, void* place, const char* key) {
        if (isOn(curve)) tell(curve, [&](Recorder& recorder) { recorder.property(carrier, place, key); });
    }
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
