#include "support/Museum.h"

namespace Test {

namespace {

constexpr double inexact = 1e-11;

Vector2D<double> At(double x, double y) {
    return {x, y};
}

std::shared_ptr<Interpolator> Make(const char* expression) {
    return InterpolatorFactory::create(expression);
}

void SetExactly(Tangent& tangent, const Vector2D<double>& handle) {
    tangent.setWeighted(true);
    tangent.set(2.0 * handle.x + (tangent.isInTangent() ? -1.0 : 1.0), handle.y + 1.0); // a near one would be kept
    tangent.set(handle);
}

std::shared_ptr<FCurve> Pair(double y, const Vector2D<double>& out, const Vector2D<double>& in, double width = 3.0,
                             double start = 0.0) {
    return MakeCurve({{start, 0.0, {}, out}, {start + width, y, in, {}}});
}

template<std::uint8_t type>
std::shared_ptr<FCurve> OfType() {
    auto curve = MakeCurve({{0, 0}, {4, 10}, {5, 9.9}, {9, -20}, {12, -20}});
    for (Segment& segment : *curve) {
        segment.getInTangent()->setType(type);
        segment.getOutTangent()->setType(type);
    }
    return curve;
}

std::shared_ptr<FCurve> Breakdowns() {
    auto curve = MakeCurve({{0, 0}, {2, 1}, {3, 5}, {10, 2}, {11, 2}});
    for (Segment& segment : *curve)
        if (const auto key = segment.getLeftKey(); key && key->getX() > 0.0 && key->getX() < 10.0)
            key->setBreakdown(true);
    return curve;
}

std::shared_ptr<FCurve> KeylessBezier() {
    auto curve = MakeCurve({}, "bezier()");
    SetExactly(*curve->begin()->getInTangent(), At(-1, -2));
    SetExactly(*curve->begin()->getOutTangent(), At(1, 3));
    return curve;
}

// The kind before the first key and after the last, with n keys between.
template<int n>
std::shared_ptr<FCurve> Ends(const char* expression) {
    std::vector<Key> keys{{0, 0}, {1, 4}, {3, -1}};
    keys.resize(n);
    keys.back().interpolator = expression;
    return MakeCurve(keys, expression);
}
template<int n>
std::shared_ptr<FCurve> Cycles() {
    return Ends<n>("cycle()");
}
template<int n>
std::shared_ptr<FCurve> OffsetCycles() {
    return Ends<n>("cycle_offset()");
}
template<int n>
std::shared_ptr<FCurve> Mirrors() {
    return Ends<n>("mirror()");
}

std::function<std::shared_ptr<FCurve>()> Curve(const std::vector<Key>& keys, const char* leading = "constant()") {
    return [=] { return MakeCurve(keys, leading); };
}

// Every segment of one kind.
std::shared_ptr<FCurve> Of(const char* expression) {
    std::vector<Key> keys{{-3, 2}, {0, -1}, {4, 5}, {5, 5}};
    for (Key& key : keys) key.interpolator = expression;
    return MakeCurve(keys, expression);
}

// A little more than a third of the span of 3, by 0.001 down to 1e-12 of it.
template<int digits>
std::shared_ptr<FCurve> NearThirds() {
    double off = 1.0;
    for (int i = 0; i < digits; ++i) off /= 10.0;
    return Pair(1.0, At(1.0 + off, 0.5), At(-1.0 - off / 3.0, 0.25));
}

} // namespace

const std::vector<Exhibit>& Museum() {
    static const std::vector<Exhibit> exhibits{
        {"NoKey", Curve({}), 0.0, "one segment with neither key"},
        {"NoKeyBezier", KeylessBezier, 0.0, "handles with nothing to run through"},
        {"OneKey", Curve({{2, 5, At(-1, -3), At(1, 2)}}, "bezier()"), inexact, "two lines"},
        {"OneKeyVertical", Curve({{2, 5, At(0, -3), At(0, 2)}}, "bezier()"), inexact,
         "lines along handles without length in x"},
        {"Flat", [] { return Pair(0.0, At(1, 0), At(-1, 0)); }, 0.0, "the same value everywhere"},
        {"FlatOffAxis", Curve({{0, 5.3, {}, At(1, 0)}, {3, 5.3, At(-1.1, 0), {}}}), 0.0,
         "a value whose Bernstein sum would round"},
        {"Straight", [] { return Pair(5.0, At(1, 5.0 / 3.0), At(-1, -5.0 / 3.0)); }, inexact, "a line"},
        {"Steep", [] { return Pair(1e6, At(0.5, 4e5), At(-2, -1e5)); }, inexact, "slopes of a million"},
        {"EaseInOut", [] { return Pair(10.0, At(1, 0), At(-1, 0)); }, inexact, "flat at both keys"},
        {"Overshoot", [] { return Pair(0.0, At(1, 6), At(-1, 6)); }, inexact, "an extreme between equal keys"},
        {"TwoExtremes", [] { return Pair(1.0, At(1.2, 8), At(-1.3, 9)); }, inexact, "a maximum and a minimum"},
        {"LeftPastNeighbour", [] { return Pair(1.0, At(7, 2), At(-1, 0.5)); }, inexact, "x folds back at the left"},
        {"RightPastNeighbour", [] { return Pair(1.0, At(1, 2), At(-7, 0.5)); }, inexact, "x folds back at the right"},
        {"BothPastNeighbours", [] { return Pair(1.0, At(7, 2), At(-5, 0.5)); }, inexact, "x folds back at both"},
        {"FullSpanHandles", [] { return Pair(1.0, At(3, 0), At(-3, 0)); }, inexact, "vertical in the middle"},
        {"ZeroHandles", [] { return Pair(1.0, At(0, 0), At(0, 0)); }, inexact, "x(t) starts and ends at rest"},
        {"ZeroHandleLeft", [] { return Pair(1.0, At(0, 0), At(-1, 0)); }, inexact, "x(t) starts at rest"},
        {"ZeroHandleRight", [] { return Pair(1.0, At(1, 0), At(0, 0)); }, inexact, "x(t) ends at rest"},
        {"VerticalHandles", [] { return Pair(1.0, At(0, 3), At(0, -2)); }, inexact, "vertical at both keys"},
        {"ShortHandles", [] { return Pair(1.0, At(1e-5, 0), At(-1e-6, 1e-6)); }, inexact, "nearly at rest"},
        {"ExactThirds", [] { return Pair(1.0, At(1, 2), At(-1, 1)); }, inexact, "x(t) is linear"},
        {"Off3Digits", NearThirds<3>, inexact, "x(t) is nearly quadratic"},
        {"Off6Digits", NearThirds<6>, inexact, "the closed form loses digits"},
        {"Off8Digits", NearThirds<8>, inexact, "the closed form takes the wrong root"},
        {"Off12Digits", NearThirds<12>, inexact, "a coefficient near the tolerance"},
        {"TwoThirdsInAll", [] { return Pair(100.0, At(250, 0), At(-416.66666, 0), 1000.0); }, inexact,
         "handles that add up to two thirds of the span, rounded"},
        {"MinimumSeparation", Curve({{0, 0}, {0.001, 1}, {0.002, -1}}), inexact, "keys as near as they come"},
        {"LongHold", [] { return Pair(1.0, At(3e5, 0.1), At(-1e5, 0), 1e6); }, inexact, "a million frames"},
        {"Frame86400", [] { return Pair(1.0, At(0.7, 0), At(-0.9, 0.2), 2.0, 86400.0); }, inexact, "an hour in"},
        {"Frame1e7", [] { return Pair(1.0, At(0.7, 0), At(-0.9, 0.2), 2.0, 1e7); }, inexact,
         "abscissae with few digits left"},
        {"TinyValues", [] { return Pair(1e-12, At(1, 3e-12), At(-1.2, 1e-12)); }, inexact,
         "values below the library's tolerance"},
        {"HugeValues", [] { return Pair(1e12, At(1, -3e12), At(-1.2, 1e12)); }, inexact, "values of 1e12"},
        {"TinyAndHuge", Curve({{0, 1e12, {}, At(1, 0)}, {3, 1e-12, At(-1, 0), {}}}), inexact,
         "both ends keep their digits"},
        {"TypeFlat", OfType<Tangent::Flat>, inexact, "a tangent type at first, middle and last key"},
        {"TypeLinear", OfType<Tangent::Linear>, inexact, "a tangent type at first, middle and last key"},
        {"TypeSmooth", OfType<Tangent::Smooth>, inexact, "a tangent type at first, middle and last key"},
        {"TypeSmoothContinued", OfType<Tangent::SmoothContinued>, inexact,
         "a tangent type at first, middle and last key"},
        {"TypeClamped", OfType<Tangent::Clamped>, inexact, "a tangent type at first, middle and last key"},
        {"TypePlateau", OfType<Tangent::Plateau>, inexact, "a tangent type at first, middle and last key"},
        {"Breakdowns", Breakdowns, inexact, "runs of keys that follow others"},
        {"Constants", [] { return Of("constant()"); }, 0.0, "steps at the right keys"},
        {"ConstantsNext", [] { return Of("constant_next()"); }, 0.0, "steps at the left keys"},
        {"Lines", [] { return Of("linear()"); }, inexact, "corners"},
        {"Splines", [] { return Of("spline()"); }, inexact, "control points from four keys"},
        {"Eases", [] { return Of("ease()"); }, inexact, "flat at every key"},
        {"EasesIn", [] { return Of("easein()"); }, inexact, "flat departures"},
        {"EasesOut", [] { return Of("easeout()"); }, inexact, "flat arrivals"},
        {"Matches", Curve({{-3, 2}, {0, -1, {}, {}, "match()"}, {4, 5}, {5, 5}}), inexact,
         "a segment that takes value and slope from its neighbours"},
        {"MatchesAll", [] { return Of("match()"); }, inexact, "matches that neighbour matches"},
        {"MatchesIn", [] { return Of("matchin()"); }, inexact, "matches that arrive flat"},
        {"MatchesOut", [] { return Of("matchout()"); }, inexact, "matches that leave flat"},
        {"FormulasOverCycles",
         Curve({{0, 1}, {4, 5, {}, {}, "match()"}, {6, -2, {}, {}, "cycle() + x / 3"}},
               "2 * mirror() - cycle_offset()"),
         inexact, "repetitions as parts of formulas"},
        {"CyclesOn1Key", Cycles<1>, 0.0, "nothing to repeat"},
        {"CyclesOn2Keys", Cycles<2>, inexact, "one segment repeated"},
        {"CyclesOn3Keys", Cycles<3>, inexact, "two segments repeated"},
        {"OffsetCyclesOn3Keys", OffsetCycles<3>, inexact, "repeated, each time further down"},
        {"MirrorsOn1Key", Mirrors<1>, 0.0, "nothing to reflect"},
        {"MirrorsOn2Keys", Mirrors<2>, inexact, "one segment reflected"},
        {"MirrorsOn3Keys", Mirrors<3>, inexact, "two segments reflected"},
        {"Numbers", [] { return Of("-2.5e-1"); }, 0.0, "a number"},
        {"Formulas", [] { return Of("sin(x) + x / 3"); }, inexact, "a formula"},
        {"Unknown", [] { return Of("no such thing ((("); }, 0.0, "a text that nobody understands"},
        {"NoInterpolator",
         [] {
             auto curve = Of("linear()");
             for (Segment& segment : *curve) segment.setInterpolator(nullptr);
             return curve;
         },
         0.0, "segments that compute nothing"},
        {"ManyKinds",
         Curve({{0, 1, {}, {}, "linear()"},
                {2, 5, {}, {}, "constant()"},
                {3, 4, {}, At(2, 2)},
                {7, 8, At(-1, 3), {}, "constant_next()"},
                {9, 0, {}, {}, "x * x"},
                {10, 100, {}, {}, "cycle()"}},
               "mirror()"),
         inexact, "jumps and corners between kinds"},
    };
    return exhibits;
}

std::shared_ptr<FCurve> MakeCurve(const std::vector<Key>& keys, const char* leading) {
    auto curve = FCurve::create();
    (*curve->begin()).setInterpolator(Make(leading));
    for (const Key& key : keys) curve->insertSegment(*Keyframe::create(key.x, key.y), Make(key.interpolator));
    auto position = curve->begin();
    for (const Key& key : keys) {
        Segment& before = *position;
        Segment& after = *++position;
        if (key.in) SetExactly(*before.getInTangent(), *key.in);
        if (key.out) SetExactly(*after.getOutTangent(), *key.out);
    }
    return curve;
}

Span SpanOf(const Segment& segment) {
    const auto left = segment.getLeftKey();
    const auto right = segment.getRightKey();
    if (left && right) return {left->getX(), right->getX()};
    if (left) return {left->getX(), left->getX() + 10.0};
    if (right) return {right->getX() - 10.0, right->getX()};
    return {-5.0, 5.0};
}

} // namespace Test
