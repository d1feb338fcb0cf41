// How do I draw a curve while its keys are dragged, and find what lies under the pointer?
//
// ViewLine makes the line that shows a curve in a window. The window keeps an overview of the curve, which it tells
// where an edit changed it, so that drawing a large curve anew costs next to nothing.

#include <FCurveLib/FCurveLib.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

using namespace VEM_FN::FCurveLib;

class Window : public EditObserver {
public:
    explicit Window(const std::shared_ptr<FCurve>& curve) : m_overview(curve) {}

    CurveView view{0, 99999, -1, 2, 1200, 300}; // frames, values, pixels
    ViewPolyline line;

    void draw() { ViewLine(m_overview, view, line); } // line.strokes tells which of line.points belong together
    void editStepped(const EditSummary& edit) override {
        for (const CurveEdit& one : edit.curves)
            if (one.curve == m_overview.getCurve()) m_overview.invalidate(one.parts.start, one.parts.end);
        draw();
    }

    // The highest value that is drawn.
    double top() const {
        const auto isHigher = [](const Vector2D<double>& a, const Vector2D<double>& b) { return a.y < b.y; };
        return view.toValue(std::min_element(line.points.begin(), line.points.end(), isHigher)->y);
    }

private:
    CurveOverview m_overview;
};

int main() {
    const auto curve = FCurve::create();
    for (int i = 0; i < 100000; ++i)
        curve->insertSegment(*Keyframe::create(i, i % 7 == 3 ? 1.0 : 0.0), Bezier::create());
    const auto curves = FCurveContainer::create();
    curves->addCurve(curve);

    Window window(curve);
    EditGroup::subscribe(*curves, window);
    window.draw(); // looks at every key
    std::printf("%zu keys, a line of %zu points\n", curve->size() - 1, window.line.points.size());

    window.view = {90, 110, -1, 2, 1200, 300};
    // What lies within 6 pixels of the pointer: the nearest key, else handle, else curve. Frame 94 is at pixel 240.
    const HitRecord hit = Pick(*curves, window.view, {242.0, 102.0}, 6.0);
    // And in a marquee: keys, unless told otherwise.
    std::vector<HitRecord> held;
    PickRectangle(*curves, window.view, {230.0, 90.0, 450.0, 20.0}, held);
    if (hit.getType() != HitRecord::KEYFRAME || held.size() != 2 || held[0] != hit) return 1;
    std::printf("under the pointer: the key at frame %g\n", hit.getKeyframe()->getX());

    EditGroup drag(*curves, "Drag a key");
    for (const double value : {1.2, 1.4, 1.6}) {
        hit.getKeyframe()->setY(value);
        drag.step(); // looks at the keys around the one that moved
        std::printf("dragged to %g: the line reaches %.2f\n", value, window.top());
        if (std::abs(window.top() - value) > 0.25 / window.view.pixelsPerValue()) return 1;
    }
}
