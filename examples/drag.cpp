// How do I let a user drag keys?
//
// The change type tells every view that a drag starts, goes on and ends. A step moves all keys under a switch and then
// tells once, so that views redraw once per step however many keys move. Each step hands MoveKeys the whole way since
// the button went down: keys that were held back come along again when the pointer returns.

#include <FCurveLib/FCurveLib.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace VEM_FN::FCurveLib;

class Drag {
public:
    Drag(FCurve& curve, const std::vector<std::shared_ptr<Keyframe>>& keys) : m_curve(curve), m_keys(keys) {
        announce(FCurve::BeginChange); // the button goes down
    }
    ~Drag() {
        announce(FCurve::EndChange); // the button goes up
        FCurve::setChangeType(FCurve::OrdinaryChange);
    }
    Drag(const Drag&) = delete;
    Drag& operator=(const Drag&) = delete;

    void moveTo(const Vector2D<double>& offset) {
        {
            const FCurve::Switch silence(m_curve); // many keys, one notification
            MoveKeys(m_keys, offset);
        }
        announce(FCurve::StepChange); // each move of the pointer
    }

private:
    void announce(FCurve::ChangeType type) {
        FCurve::setChangeType(type);
        m_curve.notifyChanged();
    }

    FCurve& m_curve;
    KeyGroup m_keys;
};

// What a view hears. Whatever it does not override ends up in curveChanged.
class View : public FCurveObserver {
public:
    void beginValueChange(FCurve&) override { std::printf("the drag starts\n"); }
    void endValueChange(FCurve&) override { std::printf("the drag ends\n"); }
    void curveChanged(FCurve& curve) override {
        std::printf("redraw:");
        for (const Segment& segment : curve)
            if (const auto key = segment.getLeftKey()) std::printf(" (%g, %g)", key->getX(), key->getY());
        std::printf("\n");
        ++redraws;
    }
    int redraws = 0;
};

int main() {
    const auto curve = FCurve::create();
    for (const double x : {0.0, 10.0, 11.0, 24.0})
        curve->insertSegment(*Keyframe::create(x, x / 4.0), InterpolatorFactory::create("bezier()"));
    View view;
    curve->subscribe(view);
    {
        Drag drag(*curve, {GetIndexedKeyframe(*curve, 1), GetIndexedKeyframe(*curve, 2)});
        drag.moveTo({5.0, 0.5});
        drag.moveTo({20.0, 1.0}); // too far: both stop before the key at 24, one frame apart
        drag.moveTo({2.0, 1.0});  // and come back
    }
    const auto first = GetIndexedKeyframe(*curve, 1);
    const auto second = GetIndexedKeyframe(*curve, 2);
    const bool isRight = first->getX() == 12.0 && second->getX() == 13.0 && view.redraws == 3;
    return isRight ? EXIT_SUCCESS : EXIT_FAILURE;
}
