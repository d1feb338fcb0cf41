// How do I edit curves? The pieces of docs/editing.md, in one program that checks what they say.

#include <FCurveLib/FCurveLib.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

using namespace VEM_FN::FCurveLib;

namespace {

bool g_isRight = true;

void Expect(bool isTrue, const char* what) {
    std::printf("%s: %s\n", what, isTrue ? "yes" : "NO");
    g_isRight = g_isRight && isTrue;
}

void SetKeys() {
    const auto curve = FCurve::create();
    EditSettings settings = EditSettings::plateau(); // what the animator chose
    SetKey(*curve, 0.0, 0.0, settings);
    SetKey(*curve, 24.0, 10.0, settings);
    const KeySetting done = SetKey(*curve, 12.0, 8.0); // shape-keeping: the tangents follow the curve as it was
    if (done.outcome == KeySetting::Added) done.key->setProperty("note", "breathe in");
    Expect(curve->eval(12.0) == 8.0, "the curve passes through the key");

    if (const auto key = FindKey(*curve, 12.3, 0.5)) // within half a frame
        key->setY(7.5);
    Expect(curve->eval(12.0) == 7.5, "the key near 12.3 moved");

    double steepest = 0.0;
    for (const KeyView key : Keys(*curve)) // no null pointers: every key of a curve has all of this
        steepest = std::fmax(steepest, std::fabs(std::tan(key.getOutTangent().getAngle())));
    const KeyView last = Keys(*curve)[2];
    last.getInTangent().setType(Tangent::Flat);
    last.getLeftSegment().setInterpolator(InterpolatorFactory::create("linear()"));
    Expect(steepest > 0.1 && last.getX() == 24.0, "keys by number");
}

void AddAndRemove() {
    const auto curve = FCurve::create();
    const auto bezier = InterpolatorFactory::create("bezier()");
    const auto segment = curve->insertSegment(*Keyframe::create(12.0, 8.0), bezier); // the segment from the new key on
    const auto key = segment->getLeftKey();
    key->set(13.0, 7.5);
    curve->removeSegment(segment); // and its left key with it
    Expect(curve->size() == 1 && !key->getOwningCurve(), "added and removed");
}

std::shared_ptr<FCurve> Walk(const char* name) {
    auto curve = FCurve::create();
    curve->setName(name);
    for (const double x : {1.0, 9.0, 17.0, 25.0}) SetKey(*curve, x, std::sin(x), EditSettings::spline());
    return curve;
}

void MoveAndScale() {
    const auto curves = FCurveContainer::create();
    curves->addCurve(Walk("hip ty"));
    curves->addCurve(Walk("knee rx"));
    Selection selection(curves);
    for (FCurve& curve : *curves)
        for (const KeyView key : Keys(curve))
            if (key.getX() > 5.0 && key.getX() < 20.0) selection.select(key.getKeyframe());

    KeyGroup group(selection); // the button goes down
    MoveOptions options;
    options.frameStep = 1.0;                                  // whole frames
    MoveReport report = MoveKeys(group, {3.2, 0.5}, options); // each step: the whole way since then
    report = MoveKeys(group, {40.0, 0.5}, options);           // stops before the keys at 25, all keys together
    Expect(report.isLimited && report.offset.x == 7.0, "held back as a whole");

    options.others = MoveOptions::Cross; // or pass them
    report = MoveKeys(group, {40.0, 0.5}, options);
    Expect(report.offset.x == 40.0 && report.passed == 4, "passed the others");

    options.others = MoveOptions::Ripple; // or shift all later keys along
    MoveKeys(selection, {-4.0, 0.0}, options);
    ScaleKeys(selection, {45.0, 0.0}, {2.0, 1.0}); // half as fast, about frame 45
    Expect(Keys(*curves->begin()).back().getX() == 61.0, "scaled about frame 45");
}

void CopyAndPaste() {
    const auto curves = FCurveContainer::create();
    curves->addCurve(Walk("hip ty"));
    curves->addCurve(Walk("knee rx"));
    Selection selection(curves);
    SelectCurveCompletely(selection, *curves->begin());

    const KeyClip clip = CopyKeys(selection);
    PasteOptions options;
    options.frame = 25.0;                                         // the first pasted key
    options.mode = PasteOptions::Replace;                         // or Insert, or Ripple: later keys make room
    const PasteReport report = PasteKeys(clip, *curves, options); // onto the curves of the same names
    for (const auto& key : report.keys) selection.select(*key);
    Expect(report.curves == 1 && curves->begin()->eval(29.0) == curves->begin()->eval(5.0), "the same shape, later");

    const std::string text = ClipToText(clip); // for the system's clipboard, or a mail
    options.match = PasteOptions::ByOrder;
    PasteKeys(ClipFromText(text), std::vector<std::shared_ptr<FCurve>>{FindCurve(*curves, "knee rx")}, options);
    Expect(Equal(*FCurve::createCopy(*curves->begin()), *curves->begin()), "pasted from text");
}

void Compare() {
    const auto before = Walk("hip ty");
    const auto after = FCurve::createCopy(*before);
    SmoothCurveInterior(*after, 1.0, 3, SMOOTH_TRIANGLE);
    const CurveDifference difference = Diff(*before, *after);
    std::printf("largest difference %g at frame %g, %zu parts\n", difference.largest, difference.x,
                difference.parts.size());
    if (!Equal(*before, *after, 1e-6)) std::printf("not the same keys\n");
    Expect(difference.largest > 0.0 && !difference.parts.empty(), "smoothing changed it");
}

void Arrange() {
    const auto shot = FCurveContainer::create();
    const auto library = FCurveContainer::create();
    shot->addCurve(Walk("hip ty"));
    shot->addCurve(Walk("knee rx"));
    if (const auto knee = FindCurve(*shot, "knee rx")) {
        shot->moveCurve(shot->begin(), *knee);            // to the front
        library->moveCurve(library->end(), *shot, *knee); // to another container
        Expect(library->contains(*knee) && !shot->contains(*knee), "moved to the library");
    }
}

} // namespace

int main() {
    SetKeys();
    AddAndRemove();
    MoveAndScale();
    CopyAndPaste();
    Compare();
    Arrange();
    return g_isRight ? EXIT_SUCCESS : EXIT_FAILURE;
}
