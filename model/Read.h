#pragma once

// What the library's own code reads of the parts: raw references where the public getters hand out shared pointers,
// because a reference count touched per evaluation costs more than the evaluation.

#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Segment.h"
#include "FCurveLib/Tangent.h"
#include "model/Block.h"

#include <memory>
#include <utility>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

// Null where the thing does not exist. A part that may be edited gives parts that may be edited; nothing here edits.
struct Read {
    // --- a segment's parts -------------------------------------------------------------------------------------------
    static Keyframe* leftKey(Segment& s) noexcept {
        if (Block* block = Block::of(s)) return block->isLeading() ? nullptr : &block->key;
        return s.m_box.get() ? s.m_box.get()->leftKey.get() : nullptr;
    }
    static Keyframe* rightKey(Segment& s) noexcept {
        if (Block* block = Block::of(s)) return block->next() ? &block->next()->key : nullptr;
        return s.m_box.get() ? s.m_box.get()->rightKey.get() : nullptr;
    }
    static Tangent* inTangent(Segment& s) noexcept {
        if (Block* block = Block::of(s)) return block->next() ? &block->next()->in : &block->inTangentAtEnd();
        return s.m_box.get() ? s.m_box.get()->inTangent.get() : nullptr;
    }
    static Tangent* outTangent(Segment& s) noexcept {
        if (Block* block = Block::of(s)) return &block->out;
        return s.m_box.get() ? s.m_box.get()->outTangent.get() : nullptr;
    }
    static const Keyframe* leftKey(const Segment& s) noexcept { return leftKey(const_cast<Segment&>(s)); }
    static const Keyframe* rightKey(const Segment& s) noexcept { return rightKey(const_cast<Segment&>(s)); }
    static const Tangent* inTangent(const Segment& s) noexcept { return inTangent(const_cast<Segment&>(s)); }
    static const Tangent* outTangent(const Segment& s) noexcept { return outTangent(const_cast<Segment&>(s)); }
    static bool hasBothKeys(const Segment& s) noexcept { return leftKey(s) && rightKey(s); }
    static const Interpolator* interpolator(const Segment& s) noexcept { return s.m_interpolator.get(); }

    // --- around a key, which has segments while it is in a curve -----------------------------------------------------
    static Segment* leftSegment(Keyframe& k) noexcept {
        Block* block = Block::of(k);
        return block && block->previous() ? &block->previous()->segment : nullptr;
    }
    static Segment* rightSegment(Keyframe& k) noexcept {
        Block* block = Block::of(k);
        return block && block->previous() ? &block->segment : nullptr;
    }
    static const Segment* leftSegment(const Keyframe& k) noexcept { return leftSegment(const_cast<Keyframe&>(k)); }
    static const Segment* rightSegment(const Keyframe& k) noexcept { return rightSegment(const_cast<Keyframe&>(k)); }
    static Keyframe* previousKey(Keyframe& k) noexcept {
        Segment* left = leftSegment(k);
        return left ? leftKey(*left) : nullptr;
    }
    static Keyframe* nextKey(Keyframe& k) noexcept {
        Segment* right = rightSegment(k);
        return right ? rightKey(*right) : nullptr;
    }
    static const Segment* nextSegment(const Segment& s) noexcept {
        const Keyframe* key = rightKey(s);
        return key ? rightSegment(*key) : nullptr;
    }

    // --- the owning curve --------------------------------------------------------------------------------------------
    static FCurve* curve(FCurve& c) noexcept { return &c; }
    static FCurve* curve(Segment& s) noexcept { return s.m_curve ? s.m_curve->curve : nullptr; }
    static const FCurve* curve(const Segment& s) noexcept { return curve(const_cast<Segment&>(s)); }
    static FCurve* curve(Keyframe& k) noexcept {
        Segment* segment = rightSegment(k);
        return segment ? curve(*segment) : nullptr;
    }
    static FCurve* curve(Tangent& t) noexcept {
        if (Block* block = Block::of(t)) return block->curve();
        const std::shared_ptr<Segment> segment = t.getOwningSegment();
        return segment ? curve(*segment) : nullptr;
    }

    // --- every part --------------------------------------------------------------------------------------------------
    template<class Part>
    static const PropertyMap& properties(const Part& part) noexcept {
        return part.storedProperties();
    }
    // A shared reference to a part, or null; empty where it has no shared owner.
    template<class Part>
    static std::shared_ptr<Part> share(Part* part) noexcept {
        if (!part) return nullptr;
        if (Block* block = Block::of(*part)) {
            std::shared_ptr<Block> owner = block->self.lock();
            return owner ? std::shared_ptr<Part>(std::move(owner), part) : nullptr;
        }
        return part->m_box.get() ? part->m_box.get()->self.lock() : nullptr;
    }

    // --- a curve's segments ------------------------------------------------------------------------------------------
    static const SegmentMap& segments(const FCurve& c) noexcept { return c.m_segments; }
    static const Segment& firstSegment(const FCurve& c) noexcept { return *c.m_segments.first(); }
    static const Segment& lastSegment(const FCurve& c) noexcept { return *c.m_segments.last(); }
    static const Segment& findSegment(const FCurve& c, double x) noexcept { return *c.m_segments.lookUp(x); }
    static Segment& findSegment(FCurve& c, double x) noexcept { return *c.m_segments.lookUp(x); }

    // --- positions ---------------------------------------------------------------------------------------------------
    // The iterator at a segment of the curve.
    static FCurve::iterator iteratorAt(FCurve& c, Segment& s) noexcept {
        return FCurve::iterator(SegmentMapIterator(&s, &c.m_segments));
    }
    static FCurve::const_iterator iteratorAt(const FCurve& c, const Segment& s) noexcept {
        return FCurve::const_iterator(SegmentMapIterator(const_cast<Segment*>(&s), &c.m_segments));
    }
    // Null at the end.
    static Segment* segmentAt(const FCurve::iterator& position) noexcept { return position.base().m_segment; }
    // The position of the curve in the container; its end if the curve is not there.
    static FCurveContainer::iterator find(FCurveContainer& container, const FCurve& curve) noexcept {
        return container.find(&curve);
    }

    // --- who records edits (model/Recorder.h) ------------------------------------------------------------------------
    static const std::vector<Recorder*>& recorders(const FCurve& c) noexcept { return c.m_recorders; }
    static Recorder* recorder(const FCurveContainer& c) noexcept { return c.m_recorder.get(); }
};

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
