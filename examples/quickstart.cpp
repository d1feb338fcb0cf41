#include "FCurveLib/FCurveLib.h"

#include <cstdio>

using namespace VEM_FN::FCurveLib;

struct Watcher : FCurveObserver {
    void curveChanged(FCurve& curve) override {
        std::printf("%s changed: %g at frame 12\n", curve.getName(), curve.eval(12.0));
    }
};

int main() {
    const auto curve = FCurve::create();
    curve->setName("height");
    for (const Vector2D<double> at : {Vector2D(1.0, 0.0), Vector2D(12.0, 8.0), Vector2D(24.0, 0.0)})
        curve->insertSegment(*Keyframe::create(at.x, at.y), InterpolatorFactory::create("bezier()"));

    Watcher watcher;
    curve->subscribe(watcher);
    curve->findSegment(12.0)->getLeftKey()->setY(10.0); // the key at frame 12

    const auto shot = FCurveContainer::create();
    shot->addCurve(curve);
    SaveCurves("shot.fcrvx", *shot); // when that fails, an older file stays what it was

    const auto loaded = FCurveContainer::create();
    const FormatType format = LoadCurves("shot.fcrvx", *loaded); // recognised by content
    std::printf("%zu curve read from %s: %g at frame 6\n", loaded->size(), format.getTitle(),
                loaded->begin()->eval(6.0));
}
