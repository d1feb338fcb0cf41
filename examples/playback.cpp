// Plays a curve that is still being edited: an observer tells when to compile it again.

#include "FCurveLib/FCurveLib.h"

#include <cstdio>
#include <memory>
#include <utility>

using namespace VEM_FN::FCurveLib;

class Played : FCurveObserver {
public:
    explicit Played(std::shared_ptr<FCurve> curve) : m_curve(std::move(curve)) { m_curve->subscribe(*this); }

    double eval(double x) {
        if (m_stale) m_compiled = CompiledCurve(*m_curve);
        m_stale = false;
        return m_compiled.eval(x);
    }

private:
    void curveChanged(FCurve&) override { m_stale = true; } // every finer operation arrives here, too

    std::shared_ptr<FCurve> m_curve;
    CompiledCurve m_compiled;
    bool m_stale = true;
};

int main() {
    const auto curve = FCurve::create();
    for (const Vector2D<double> at : {Vector2D(1.0, 0.0), Vector2D(12.0, 8.0), Vector2D(24.0, 0.0)})
        curve->insertSegment(*Keyframe::create(at.x, at.y), InterpolatorFactory::create("linear()"));

    Played played(curve);
    const double before = played.eval(18.0);
    curve->findSegment(24.0)->getLeftKey()->setY(4.0);
    const double after = played.eval(18.0);
    std::printf("frame 18: %g, and after the edit %g\n", before, after);
    return before == 4.0 && after == 6.0 ? 0 : 1;
}
