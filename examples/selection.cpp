// How do I pick the part of a curve that is nearest to the mouse, and select it?
//
// Pick() looks for the key nearest to a point of a view; only where none is within reach, for a tangent handle, and
// then for the segment whose line passes by. What it finds is a hit record, which the selection takes as it is.

#include <FCurveLib/FCurveLib.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace VEM_FN::FCurveLib;

using Point = Vector2D<double>;

std::shared_ptr<FCurve> MakeCurve(const char* name, const std::vector<Point>& keys, const char* expression) {
    auto curve = FCurve::create();
    curve->setName(name);
    for (const Point& at : keys) {
        Keyframe key;
        key.set(at);
        curve->insertSegment(key, InterpolatorFactory::create(expression));
    }
    return curve;
}

// What a status line would say.
class StatusLine : public SelectionObserver {
public:
    void selected(const HitRecord& part) override { tell("selected", part); }
    void deselected(const HitRecord& part) override { tell("deselected", part); }

private:
    static void tell(const char* what, const HitRecord& part) {
        static const char* const kinds[] = {"nothing", "curve", "segment", "key", "tangent", "tangent"};
        std::printf("  %s a %s of %s\n", what, kinds[part.getType()], part.getCurve()->getName());
    }
};

int main() {
    const auto curves = FCurveContainer::create();
    curves->addCurve(MakeCurve("height", {{0, 0}, {10, 8}, {20, 2}}, "bezier()"));
    curves->addCurve(MakeCurve("turn", {{0, 9}, {20, 9}}, "linear()"));
    const CurveView view{-2.0, 28.0, -5.0, 10.0, 600.0, 300.0}; // frames, values, pixels
    const PickOptions parts{PickOptions::Keys | PickOptions::Handles | PickOptions::Segments};

    Selection selection(curves);
    SelectionExaminer examiner(selection);
    StatusLine status;
    selection.subscribe(status);

    const struct {
        Point at;
        HitRecord::Type expected;
    } clicks[] = {
        {{241, 38}, HitRecord::KEYFRAME}, // beside the key at (10, 8)
        {{306, 41}, HitRecord::TANGENT},  // beside its out handle
        {{120, 23}, HitRecord::SEGMENT},  // on the line of "turn"
        {{120, 190}, HitRecord::NONE},    // nowhere
    };
    for (const auto& click : clicks) {
        std::printf("click at %g, %g\n", click.at.x, click.at.y);
        const HitRecord part = Pick(*curves, view, click.at, 8.0, parts);
        if (part.getType() != click.expected) return EXIT_FAILURE;
        selection.clear(); // a click replaces the selection; with a modifier key a host would leave this out
        selection.select(part);
    }

    std::printf("select everything\n");
    selection.unsubscribe(status);
    for (FCurve& curve : *curves) SelectCurveCompletely(selection, curve);
    const auto& keys = examiner.getKeyframes();
    std::printf("  %zu keys; value: %s\n", keys.count, keys.y.isMixed() ? "various" : "the same");
    DeselectSelectedParts(selection);
    std::printf("  %zu curves, %zu keys left\n", examiner.getCurves().count, examiner.getKeyframes().count);
    return examiner.getCurves().count == 2 && examiner.getKeyframes().count == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
