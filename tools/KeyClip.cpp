#include "FCurveLib/KeyClip.h"

#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"
#include "model/Read.h"

#include <algorithm>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::Read;

KeyClip::KeyClip() : m_curves(FCurveContainer::create()) {}

KeyClip::KeyClip(const FCurveContainer& curves) {
    const auto copies = FCurveContainer::create();
    for (const FCurve& curve : curves) {
        if (curve.size() < 2) continue;
        const auto copy = FCurve::createCopy(curve);
        const FCurve::Switch quiet(*copy);
        copy->clearProperties();
        copies->addCurve(copy);
    }
    m_curves = copies;
}

bool KeyClip::empty() const noexcept {
    return m_curves->empty();
}

std::size_t KeyClip::size() const noexcept {
    std::size_t keys = 0;
    for (const FCurve& curve : *m_curves) keys += curve.size() - 1;
    return keys;
}

double KeyClip::getStart() const noexcept {
    double start = std::numeric_limits<double>::infinity();
    for (const FCurve& curve : *m_curves) start = std::min(start, Read::rightKey(Read::firstSegment(curve))->getX());
    return empty() ? 0.0 : start;
}

double KeyClip::getEnd() const noexcept {
    double end = -std::numeric_limits<double>::infinity();
    for (const FCurve& curve : *m_curves) end = std::max(end, Read::leftKey(Read::lastSegment(curve))->getX());
    return empty() ? 0.0 : end;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
