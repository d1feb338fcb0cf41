#include "FCurveLib/Keys.h"

#include "model/Read.h"

#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

template<class Curve>
auto BasicKeyView<Curve>::getKeyframe() const noexcept -> Part<Keyframe>& {
    return *Read::leftKey(*m_right);
}
template<class Curve>
auto BasicKeyView<Curve>::getLeftSegment() const noexcept -> Part<Segment>& {
    return *Read::leftSegment(getKeyframe());
}
template<class Curve>
auto BasicKeyView<Curve>::getInTangent() const noexcept -> Part<Tangent>& {
    return *Read::inTangent(getLeftSegment());
}
template<class Curve>
auto BasicKeyView<Curve>::getOutTangent() const noexcept -> Part<Tangent>& {
    return *Read::outTangent(*m_right);
}

template<class Curve>
auto BasicKeyRange<Curve>::operator[](std::size_t index) const noexcept -> value_type {
    return value_type(*Read::segments(*m_curve).at(index + 1));
}

template class BasicKeyView<FCurve>;
template class BasicKeyView<const FCurve>;
template class BasicKeyRange<FCurve>;
template class BasicKeyRange<const FCurve>;

std::shared_ptr<Keyframe> FindKey(FCurve& curve, double x, double tolerance) {
    Segment& segment = Read::findSegment(curve, x);
    Keyframe* const left = Read::leftKey(segment);
    Keyframe* const right = Read::rightKey(segment);
    Keyframe* nearest = left;
    if (right && !(left && x - left->getX() <= right->getX() - x)) nearest = right;
    return nearest && std::abs(nearest->getX() - x) <= tolerance ? nearest->getShared() : nullptr;
}
std::shared_ptr<const Keyframe> FindKey(const FCurve& curve, double x, double tolerance) {
    return FindKey(const_cast<FCurve&>(curve), x, tolerance);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
