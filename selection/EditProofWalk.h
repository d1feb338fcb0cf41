#pragma once

// Walks that call observers, who may edit, remove and add parts and curves at every step.

#include "FCurveLib/HitRecordIterator.h"
#include "model/Read.h"

#include <memory>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// A place in a curve's chain of segments. It keeps its segment alive, and knows where to go on when the segment has
// left the curve: after the abscissa at which it started. So a walk always proceeds, whatever becomes of the curve.
class KeptSegment {
public:
    KeptSegment() noexcept = default;
    explicit KeptSegment(Segment& segment) noexcept;

    Segment* get() const noexcept { return m_segment.get(); }
    bool isIn(const FCurve& curve) const noexcept;
    // The segment itself, or the one that holds its place in the curve now.
    Segment& resolve(FCurve& curve) const noexcept;

private:
    std::shared_ptr<Segment> m_segment;
    double m_x = 0.0;
};

// A curve in the walk over a container, kept alive. Where it has left the container, the walk goes on after the curve
// that stood before it, or from the start if that has left too.
class KeptCurve {
public:
    void hold(FCurveContainer& curves, const FCurveContainer::iterator& position);

    FCurve* get() const noexcept { return m_curve.get(); }
    FCurveContainer::iterator next(FCurveContainer& curves) const noexcept;

private:
    std::shared_ptr<FCurve> m_before; // null: the curve is the first
    std::shared_ptr<FCurve> m_curve;
};

// A walk over all parts of a container, tangents included that a HitRecordIterator does not show; it keeps alive what
// it stands at.
class EditProofWalk {
public:
    // Calls act(record) for each part for which wanted(position) holds when the walk gets there.
    template<class Wanted, class Act>
    static void forEach(const std::shared_ptr<FCurveContainer>& curves, const Wanted& wanted, const Act& act) {
        EditProofWalk place(*curves);
        HitRecordIterator position = HitRecordIterator::begin(*curves);
        while (position.m_curve != curves->end()) {
            if (wanted(position)) {
                place.hold(position);
                act(place.m_record);
                place.advance(position);
            } else {
                step(position);
            }
        }
    }

private:
    explicit EditProofWalk(FCurveContainer& curves) noexcept : m_curves(curves) {}

    static void step(HitRecordIterator& position) {
        position.advance(true);
        position.m_valid = false;
    }

    void hold(const HitRecordIterator& position);
    // Moves the position where the walk goes on, after whatever was done to the record.
    void advance(HitRecordIterator& position) const;

    FCurveContainer& m_curves;
    KeptCurve m_curve;
    KeptSegment m_segment;
    HitRecord m_record;
    double m_keyX = 0.0; // of the segment's right key
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
