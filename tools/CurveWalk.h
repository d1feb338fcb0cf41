#pragma once

#include "FCurveLib/Interpolator.h"
#include "model/Read.h"

#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

// FCurve::eval for many x in a row: looks a segment up once and stays with it while x stays in its span. For a curve
// that nobody edits meanwhile.
class CurveWalk {
public:
    explicit CurveWalk(const FCurve& curve) noexcept : m_curve(curve) {}

    double eval(double x) {
        if (!(x >= m_from && x < m_to)) enter(Read::findSegment(m_curve, x));
        return m_interpolator ? m_interpolator->eval(x, *m_segment) : 0.0;
    }

private:
    void enter(const Segment& segment) noexcept {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        const Keyframe* left = Read::leftKey(segment);
        const Keyframe* right = Read::rightKey(segment);
        m_segment = &segment;
        m_interpolator = Read::interpolator(segment);
        m_from = left ? left->getX() : -infinity;
        m_to = right ? right->getX() : infinity;
    }

    const FCurve& m_curve;
    const Segment* m_segment = nullptr;
    const Interpolator* m_interpolator = nullptr;
    double m_from = 0.0;
    double m_to = 0.0;
};

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
