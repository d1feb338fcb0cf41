#include "support/Basics.h"
#include "support/Museum.h"

namespace Test {
namespace {

// How the curve runs just before and just after a key, found by evaluation alone.
struct Joint {
    double leftY, rightY, leftSlope, rightSlope;
};
Joint Around(const FCurve& curve, double x) {
    constexpr double h = 1e-5;
    const double left = curve.eval(x - 1e-9);
    const double right = curve.eval(x + 1e-9);
    return {left, right, (left - curve.eval(x - h)) / (h - 1e-9), (curve.eval(x + h) - right) / (h - 1e-9)};
}
void ExpectSmooth(const FCurve& curve, double x, double slopeTolerance = 0.02) {
    const Joint joint = Around(curve, x);
    EXPECT_NEAR(joint.leftY, joint.rightY, 1e-5) << "at " << x;
    EXPECT_NEAR(joint.leftSlope, joint.rightSlope, slopeTolerance) << "at " << x;
}

// 0 .. 4 .. 6 .. 9, with the given kinds before, on and after these keys; tangents that are not flat.
std::shared_ptr<FCurve> Chain(const char* leading, const char* a, const char* b, const char* c, const char* trailing) {
    return MakeCurve({{0, 1, Vector2D<double>(-1, 1), Vector2D<double>(1, 2), a},
                      {4, 5, Vector2D<double>(-1, -2), Vector2D<double>(0.5, 1), b},
                      {6, -2, Vector2D<double>(-1, 3), Vector2D<double>(1, 2), c},
                      {9, 3, Vector2D<double>(-1, 1), Vector2D<double>(2, -3), trailing}},
                     leading);
}

const char* const neighbours[] = {"constant()", "constant_next()", "linear()",  "bezier()",   "spline()",
                                  "ease()",     "easein()",        "easeout()", "7.5",        "sin(x)*3 + x/2",
                                  "match()",    "cycle()",         "mirror()",  "x + cycle()"};

TEST(Match, JoinsWhateverStandsOnEitherSide) {
    for (const char* before : neighbours)
        for (const char* after : neighbours) {
            SCOPED_TRACE(std::string(before) + " and " + after);
            const auto curve = Chain("constant()", before, "match()", after, "constant()");
            ExpectSmooth(*curve, 4);
            ExpectSmooth(*curve, 6);
        }
}

TEST(Match, BesideRepetitionsThereIsNoJumpAndNoRecursion) {
    const char* const ends[] = {"cycle()", "cycle_offset()", "mirror()",       "constant()",
                                "match()", "bezier()",       "cycle() + x/10", "2*mirror()"};
    const char* const kinds[] = {"match()", "matchin()", "matchout()", "bezier()", "linear()"};
    for (const char* leading : ends)
        for (const char* trailing : ends)
            for (const char* a : kinds)
                for (const char* c : kinds) {
                    SCOPED_TRACE(std::string(leading) + " " + a + " " + c + " " + trailing);
                    const auto curve = Chain(leading, a, "match()", c, trailing);
                    for (int i = -40; i < 60; ++i) ASSERT_TRUE(std::isfinite(curve->eval(i * 0.77)));

                    const auto isMatch = [](const char* kind) { return std::string(kind).find("match") == 0; };
                    const auto is = [](const char* kind, const char* text) { return std::string(kind) == text; };
                    const auto cycles = [](const char* kind) { return std::string(kind).find("cycle() ") == 0; };
                    // Where a formula makes an end depend on itself, only finite values are promised.
                    if (cycles(leading) || (cycles(trailing) && std::string(leading).find("cycle") == 0)) continue;
                    if (isMatch(a) && !is(leading, "2*mirror()")) {
                        const Joint first = Around(*curve, 0);
                        EXPECT_NEAR(first.leftY, first.rightY, 1e-5);
                        EXPECT_NEAR(first.leftSlope, is(a, "matchout()") ? first.leftSlope : first.rightSlope, 0.02);
                    }
                    if (isMatch(c) && !is(trailing, "2*mirror()")) {
                        const Joint last = Around(*curve, 9);
                        EXPECT_NEAR(last.leftY, last.rightY, 1e-5);
                        EXPECT_NEAR(last.rightSlope, is(c, "matchin()") ? last.rightSlope : last.leftSlope, 0.02);
                    }
                }

    // One segment, matched with itself at both ends.
    for (const char* kind : {"cycle()", "cycle_offset()", "mirror()"}) {
        const auto curve = MakeCurve({{0, 1, {}, {}, "match()"}, {4, 3, {}, {}, kind}}, kind);
        ExpectSmooth(*curve, 0);
        ExpectSmooth(*curve, 4);
    }
}

TEST(Match, WhatIsNotFiniteOrVerticalCountsAsTheKeyFlat) {
    for (const char* before : {"1/(x-4)", "log(x-4)", "sqrt(4-x)+5", "0/(x-4)"}) {
        const auto curve = Chain("constant()", before, "match()", "linear()", "constant()");
        EXPECT_EQ(curve->eval(4), 5) << before;
        EXPECT_EQ(GetFirstDerivative(*curve, 4), 0.0) << before;
    }
}

// --- kinds of a host's own -------------------------------------------------------------------------------------------

// y = left key's y + handle's slope * distance: looks at its own segment only.
struct LocalKind final : Interpolator {
    double eval(double x, const Segment& s) const override {
        return s.getLeftKey()->getY() + s.getOutTangent()->getY() * (x - s.getLeftKey()->getX());
    }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<LocalKind>(); }
};
// Asks its neighbours and the whole curve, whenever it can.
struct CuriousKind final : Interpolator {
    double eval(double x, const Segment& s) const override {
        const auto key = s.getLeftKey() ? s.getLeftKey() : s.getRightKey();
        double sum = key->getY();
        if (const auto left = key->getLeftSegment(); left && left.get() != &s) sum += EvalSegment(key->getX(), *left);
        if (const auto curve = s.getOwningCurve()) sum += EvalInInterior(x, *curve);
        return sum;
    }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<CuriousKind>(); }
};

TEST(Match, AHostsLocalKindIsJoinedSmoothly) {
    const auto curve = Chain("constant()", "linear()", "match()", "linear()", "constant()");
    (*curve->findSegment(1)).setInterpolator(std::make_shared<LocalKind>());
    (*curve->findSegment(7)).setInterpolator(std::make_shared<LocalKind>());
    ExpectSmooth(*curve, 4);
    ExpectSmooth(*curve, 6);
}

TEST(Match, AHostsKindThatAsksBackDoesNotRecurse) {
    const auto curve = Chain("constant()", "match()", "match()", "match()", "constant()");
    (*curve->begin()).setInterpolator(std::make_shared<CuriousKind>());
    (*curve->findSegment(9)).setInterpolator(std::make_shared<CuriousKind>());
    for (int i = -5; i < 15; ++i) EXPECT_TRUE(std::isfinite(curve->eval(i)));
}

// Counts how often it is asked.
struct CountingKind final : Interpolator {
    double eval(double x, const Segment&) const override { return ++asked, x; }
    std::shared_ptr<Interpolator> clone() override { return nullptr; }
    mutable int asked = 0;
};

TEST(Match, BesideLongFormulasIsFoundOnce) {
    std::string text = "cycle()";
    for (int i = 0; i < 1000; ++i) text += i % 2 ? "+cycle()" : "-cycle_offset()";
    const auto counting = std::make_shared<CountingKind>();
    for (const double x : {2.5, 10.0, 11.5}) {
        const auto curve = Chain(text.c_str(), "match()", "linear()", "match()", text.c_str());
        curve->findSegment(5)->setInterpolator(counting);
        EXPECT_TRUE(std::isfinite(curve->eval(x)));
        EXPECT_TRUE(std::isfinite(GetFirstDerivative(*curve, x)));
    }
    EXPECT_LE(counting->asked, 1000);
}

} // namespace
} // namespace Test
