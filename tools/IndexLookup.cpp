#include "FCurveLib/IndexLookup.h"

#include "model/Read.h"

#include <cstddef>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

namespace {

Segment* SegmentAt(const FCurve& curve, int index) noexcept {
    return index < 0 ? nullptr : Read::segments(curve).at(static_cast<std::size_t>(index));
}

// -1 also where the number does not fit.
int ToIndex(std::size_t number) noexcept {
    constexpr auto largest = static_cast<std::size_t>(std::numeric_limits<int>::max());
    return number <= largest ? static_cast<int>(number) : -1;
}

// The segment's number in the curve. False for a segment that is not in its chain: one that names the curve, but was
// made by hand, is no part of it.
bool FindNumber(const FCurve& curve, const Segment& segment, std::size_t& number) noexcept {
    const Private::SegmentMap& segments = Read::segments(curve);
    const Keyframe* key = Read::leftKey(segment);
    if (!key) {
        number = 0;
        return segments.first() == &segment;
    }
    if (segments.lookUp(key->getX()) != &segment) return false;
    number = segments.indexOf(key->getX());
    return true;
}

} // namespace

std::shared_ptr<Keyframe> GetIndexedKeyframe(FCurve& curve, int index) {
    Segment* segment = SegmentAt(curve, index);
    return segment ? segment->getRightKey() : nullptr;
}

std::shared_ptr<Segment> GetIndexedSegment(FCurve& curve, int index) {
    Segment* segment = SegmentAt(curve, index);
    return segment ? segment->getShared() : nullptr;
}
std::shared_ptr<const Segment> GetIndexedSegment(const FCurve& curve, int index) {
    const Segment* segment = SegmentAt(curve, index);
    return segment ? segment->getShared() : nullptr;
}

FCurve::iterator GetIndexedSegmentIterator(FCurve& curve, int index) {
    Segment* segment = SegmentAt(curve, index);
    return segment ? Read::iteratorAt(curve, *segment) : curve.end();
}
FCurve::const_iterator GetIndexedSegmentIterator(const FCurve& curve, int index) {
    const Segment* segment = SegmentAt(curve, index);
    return segment ? Read::iteratorAt(curve, *segment) : curve.end();
}

std::shared_ptr<Tangent> GetIndexedTangent(FCurve& curve, int index) {
    if (index < 0) return nullptr;
    Segment* segment = SegmentAt(curve, index / 2);
    Keyframe* key = segment ? Read::rightKey(*segment) : nullptr;
    if (!key) return nullptr;
    return index % 2 == 0 ? segment->getInTangent() : key->getOutTangent();
}

int GetKeyframeIndex(const FCurve& curve, const Keyframe& keyframe) {
    const Segment* segment = Read::leftSegment(keyframe);
    std::size_t number = 0;
    return segment && FindNumber(curve, *segment, number) ? ToIndex(number) : -1;
}

int GetSegmentIndex(const FCurve& curve, const Segment& segment) {
    std::size_t number = 0;
    return FindNumber(curve, segment, number) ? ToIndex(number) : -1;
}

int GetTangentIndex(const FCurve& curve, const Tangent& tangent) {
    const std::shared_ptr<const Segment> segment = tangent.getOwningSegment();
    std::size_t number = 0;
    if (!segment || !FindNumber(curve, *segment, number)) return -1;
    // Keys are numbered as the segments that end at them.
    if (Read::inTangent(*segment) == &tangent) return Read::rightKey(*segment) ? ToIndex(2 * number) : -1;
    if (Read::outTangent(*segment) == &tangent) return Read::leftKey(*segment) ? ToIndex(2 * number - 1) : -1;
    return -1;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
