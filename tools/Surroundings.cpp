#include "tools/Surroundings.h"

#include "model/Raw.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

void CopyShape(const Segment& from, Segment& to) {
    Raw::setInterpolator(to, from.getInterpolator());
    Raw::copyTangent(*Read::inTangent(to), *Read::inTangent(from));
    Raw::copyTangent(*Read::outTangent(to), *Read::outTangent(from));
}

} // namespace

std::shared_ptr<FCurve> CopyAround(const Segment& segment) {
    constexpr int reach = 4;
    const Segment* from = &segment;
    for (int i = 0; i < reach && Read::leftKey(*from); ++i) from = Read::leftSegment(*Read::leftKey(*from));
    auto copy = FCurve::create();
    const FCurve::Switch quiet(*copy);
    Segment* to = &*copy->begin();
    CopyShape(*from, *to);
    bool passed = from == &segment;
    for (int i = 0; i <= reach && Read::rightKey(*from);) {
        const Keyframe& key = *Read::rightKey(*from);
        to = Raw::appendKey(*copy, key, nullptr);
        from = Read::rightSegment(key);
        CopyShape(*from, *to);
        passed = passed || from == &segment;
        if (passed) ++i;
    }
    return copy;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
