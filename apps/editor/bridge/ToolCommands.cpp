#include "Session.h"

#include <FCurveLib/Baking.h>
#include <FCurveLib/Diff.h>
#include <FCurveLib/DisplayProperties.h>
#include <FCurveLib/Fitting.h>
#include <FCurveLib/Interpolator.h>
#include <FCurveLib/Keys.h>
#include <FCurveLib/Sampling.h>
#include <FCurveLib/Segment.h>
#include <FCurveLib/SelectionOperations.h>
#include <FCurveLib/Smoothing.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace editor {

namespace {

struct Stretch {
    double start = 0.0;
    double end = 0.0;
    bool isWhole = true;
};

// From the first selected key to the last, where there are two; else all of it.
Stretch stretchOf(const FCurve& curve, const Selection& selection) {
    Stretch stretch;
    const auto keys = Keys(curve);
    if (keys.empty()) return stretch;
    stretch = {keys.front().getX(), keys.back().getX(), true};
    double low = stretch.end;
    double high = stretch.start;
    for (const auto key : keys) {
        if (!selection.isSelected(key.getKeyframe())) continue;
        low = std::min(low, key.getX());
        high = std::max(high, key.getX());
    }
    if (low < high) stretch = {low, high, low == stretch.start && high == stretch.end};
    return stretch;
}

// What is locked does not give way to samples; ReduceCurve spares it by itself.
void checkLocks(const FCurve& curve, const Stretch& stretch) {
    for (const auto key : Keys(curve))
        if (key.getX() >= stretch.start && key.getX() <= stretch.end && IsLockedKey(key.getKeyframe()))
            throw Refusal("A key of " + ToUtf8(curve.getName()) + " in the range is locked.");
}

// Through samples, so that what comes out need not keep any of the keys between the ends. Keys first go where those of
// the fitted curve are, which leaves everything outside the stretch as it was; then they take its shape.
void fit(FCurve& curve, const Stretch& stretch, double step, double tolerance, const FitOptions& options) {
    std::vector<Vector2D<double>> samples;
    SampleCurve(curve, stretch.start, stretch.end, step, samples);
    if (stretch.end - samples.back().x <= Keyframe::getMinSeparation()) samples.pop_back();
    samples.emplace_back(stretch.end, curve.eval(stretch.end));
    const FitResult fitted = FitCurve(samples, tolerance, options);
    samples.clear();
    for (const auto key : Keys(*fitted.curve)) samples.emplace_back(key.getX(), key.getY());
    if (samples.size() < 2) throw Refusal("The curve has no values to fit.");
    BakeSamples(curve, samples);
    auto segment = curve.findSegment(samples.front().x);
    for (auto from = std::next(fitted.curve->begin()); from->getRightKey(); ++from, ++segment) {
        segment->setInterpolator(from->getInterpolator());
        *segment->getOutTangent() = *from->getOutTangent();
        *segment->getInTangent() = *from->getInTangent();
        // The handles outside stay as they are, whatever becomes of those inside.
        Keyframe& key = *segment->getLeftKey();
        key.setTangentsUnified(key.getX() != samples.front().x && from->getLeftKey()->isTangentsUnified());
    }
    segment->getLeftKey()->setTangentsUnified(false);
}

double stepOf(const Json& arguments) {
    const double step = Get(arguments, "step", 1.0);
    if (!(step >= 0.01 && step <= 1e6)) throw Refusal("The step must be from 0.01 to 1000000 frames.");
    return step;
}

void run(FCurve& curve, const Stretch& stretch, const Json& arguments) {
    const std::string tool = Get(arguments, "tool", std::string());
    if (!(stretch.start < stretch.end)) throw Refusal("A curve needs two keys for this.");
    const double tolerance = Get(arguments, "tolerance", 0.01);
    FitOptions options;
    if (Get(arguments, "weighted", false)) options.handles = FitOptions::Weighted;
    if (Get(arguments, "broken", false)) options.keys = FitOptions::Broken;
    if (tool == "bake" || tool == "smooth" || tool == "fit") {
        const double samples = (stretch.end - stretch.start) / stepOf(arguments);
        if (samples > 1e6) throw Refusal("That would make more than a million keys.");
        checkLocks(curve, stretch);
    }
    if (tool == "bake") {
        BakeCurve(curve, stretch.start, stretch.end, stepOf(arguments));
    } else if (tool == "smooth") {
        const int width = Get(arguments, "width", 2);
        if (width < 0 || width > 1000) throw Refusal("The width must be 0 to 1000.");
        const auto filter = static_cast<SmoothFilter>(Get(arguments, "filter", 2U));
        SmoothCurve(curve, stretch.start, stretch.end, stepOf(arguments), width, filter);
    } else if (tool == "fit") {
        fit(curve, stretch, stepOf(arguments), tolerance, options);
    } else if (tool == "reduce") {
        ReduceCurve(curve, stretch.start, stretch.end, tolerance, options);
    } else {
        throw Refusal("There is no tool \"" + tool + "\".");
    }
}

void deselectAll(const std::shared_ptr<FCurve>& curve) {
    const auto alone = FCurveContainer::create();
    alone->addCurve(curve);
    Selection selection(alone);
    DeselectCurveCompletely(selection, *curve); // selected keys would stay when keys are reduced
}

} // namespace

// {"tool": "bake" | "smooth" | "fit" | "reduce", "step", "tolerance", "weighted", "broken", "width", "filter"}: draws
// what would become of the curves, and tells by how much they would change.
Json Session::preview(const Json& arguments) {
    dropPreview();
    const auto curves = targetCurves();
    if (curves.empty()) throw Refusal("There is no curve that is not locked.");
    std::size_t before = 0;
    std::size_t after = 0;
    double error = 0.0;
    double errorAt = 0.0;
    std::vector<std::pair<int, std::shared_ptr<FCurve>>> results;
    for (const auto& curve : curves) {
        const auto copy = FCurve::createCopy(*curve);
        const Stretch stretch = stretchOf(*curve, m_selection);
        deselectAll(copy);
        run(*copy, stretch, arguments);
        DiffOptions options;
        options.properties = false;
        const CurveDifference difference = Diff(*curve, *copy, options);
        if (difference.largest > error || before == 0) {
            error = difference.largest;
            errorAt = difference.x;
        }
        before += curve->size() - 1;
        after += copy->size() - 1;
        results.emplace_back(indexOf(*curve), copy);
    }
    m_preview = std::move(results);
    ++m_revision;
    return {{"curves", curves.size()},
            {"keysBefore", before},
            {"keysAfter", after},
            {"difference", error},
            {"differenceAt", errorAt}};
}

Json Session::apply(const Json& arguments) {
    dropPreview();
    const auto curves = targetCurves();
    if (curves.empty()) throw Refusal("There is no curve that is not locked.");
    std::string name = Get(arguments, "tool", std::string()) + " curves";
    name[0] = static_cast<char>(name[0] - 'a' + 'A');
    EditGroup group(m_selection, name.c_str());
    for (const auto& curve : curves) {
        const Stretch stretch = stretchOf(*curve, m_selection);
        deselectAll(curve);
        run(*curve, stretch, arguments);
    }
    m_isSelectedStale = true;
    group.end();
    return {{"curves", curves.size()}};
}

Json Session::endPreview(const Json&) {
    dropPreview();
    ++m_revision;
    return Json::object();
}

} // namespace editor
