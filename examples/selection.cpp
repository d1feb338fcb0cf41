// How do I pick the part of a curve that is nearest to the mouse, and select it?
//
// A view shows frames and values as pixels. Pick() looks for the key or tangent handle nearest to a point of the view;
// only where none is within reach, for the segment whose line passes by. What it finds is a hit record, which the
// selection takes as it is.

#include <FCurveLib/FCurveLib.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace VEM_FN::FCurveLib;

using Point = Vector2D<double>;

struct View {
    double firstFrame, highestValue;       // at the upper left corner
    double pixelsPerFrame, pixelsPerValue; // y grows downwards

    Point toPixel(const Point& p) const {
        return {(p.x - firstFrame) * pixelsPerFrame, (highestValue - p.y) * pixelsPerValue};
    }
    double toFrame(double x) const { return firstFrame + x / pixelsPerFrame; }
};

double Distance(const Point& a, const Point& b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

double DistanceToLine(const Point& p, const Point& a, const Point& b) {
    const Point along = b - a;
    const double squared = along.x * along.x + along.y * along.y;
    double t = squared > 0.0 ? ((p.x - a.x) * along.x + (p.y - a.y) * along.y) / squared : 0.0;
    t = std::fmin(1.0, std::fmax(0.0, t));
    return Distance(p, a + t * along);
}

// The part nearest to the point, in pixels; a record of nothing where none is within reach.
HitRecord Pick(FCurveContainer& curves, const View& view, const Point& at, double reach) {
    HitRecord found;
    double nearest = reach;
    const auto consider = [&](double away, const HitRecord& part) {
        if (away > nearest) return;
        nearest = away;
        found = part;
    };

    // Keys and handles. The walk shows the tangents that have an effect, and makes no record for what is stepped over.
    for (auto it = HitRecordIterator::begin(curves); it != HitRecordIterator::end(curves); ++it) {
        if (it.getType() == HitRecord::KEYFRAME) {
            consider(Distance(at, view.toPixel(it->getKeyframe()->get())), *it);
        } else if (it.getType() == HitRecord::TANGENT) {
            const auto tangent = it->getTangent();
            consider(Distance(at, view.toPixel(tangent->getOwningKeyframe()->get() + tangent->get())), *it);
        }
    }
    if (found.getType() != HitRecord::NONE) return found;

    // Lines: only the few frames around the point are drawn.
    const double from = view.toFrame(at.x - reach);
    const double to = view.toFrame(at.x + reach);
    for (FCurve& curve : curves) {
        for (auto segment = curve.findSegment(from); segment != curve.end(); ++segment) {
            const auto left = segment->getLeftKey();
            const auto right = segment->getRightKey();
            if (left && left->getX() > to) break;
            const double x0 = left ? std::fmax(from, left->getX()) : from;
            const double x1 = right ? std::fmin(to, right->getX()) : to;
            std::vector<Point> line;
            if (const auto interpolator = segment->getInterpolator())
                interpolator->computePolyline(*segment, x0, x1, 16, line);
            for (std::size_t i = 1; i < line.size(); ++i)
                consider(DistanceToLine(at, view.toPixel(line[i - 1]), view.toPixel(line[i])),
                         HitRecord(segment->getShared()));
        }
    }
    return found;
}

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
    const View view{-2.0, 10.0, 20.0, 20.0};

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
        const HitRecord part = Pick(*curves, view, click.at, 8.0);
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
