#include "FCurveLib/FCurveLib.h"
#include "support/Museum.h"
#include "support/Recorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <ostream>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
void PrintTo(const Rectangle<double>& box, std::ostream* out) {
    *out << "(" << box.x << ", " << box.y << ", " << box.width << ", " << box.height << ")";
}
} // namespace v19
} // namespace VEM_FN::FCurveLib

using namespace VEM_FN::FCurveLib;
using namespace Test;

namespace {

using Box = Rectangle<double>;
using V = Vector2D<double>;

const Box kUntouched{-1, -2, -3, -4};

Box TangentBox(double keyX, double keyY, double x, double y, bool in) {
    const auto curve = CurveThrough({{keyX, keyY}});
    const auto key = KeyAt(*curve, 0);
    const auto tangent = in ? key->getInTangent() : key->getOutTangent();
    tangent->setWeighted(true);
    tangent->set(x, y);
    Box box = kUntouched;
    GetTangentExtents(*tangent, box);
    return box;
}

TEST(Extents, OfATangentSpanItsHandle) {
    EXPECT_EQ(TangentBox(10, 5, -2, 3, true), Box(8, 5, 2, 3));
    EXPECT_EQ(TangentBox(10, 5, -2, -3, true), Box(8, 2, 2, 3));
    EXPECT_EQ(TangentBox(10, 5, 2, -3, false), Box(10, 2, 2, 3));
    EXPECT_EQ(TangentBox(10, 5, 0, 3, false), Box(10, 5, 0, 3));
    Box box = kUntouched;
    GetTangentExtents(Tangent(), box);
    EXPECT_EQ(box, Box());
    const auto curve = CurveThrough({{10, 5}});
    GetTangentExtents(*curve->begin()->getOutTangent(), box); // at no key
    EXPECT_EQ(box, Box());
}

TEST(Extents, OfASegmentThatLacksAKeyAreItsKey) {
    const auto curve = CurveThrough({{4, 7}}, Bezier::create());
    Box box = kUntouched;
    GetSegmentExtents(*curve->begin(), box);
    EXPECT_EQ(box, Box(4, 7, 0, 0));
    GetSegmentExtents(*curve->findSegment(5), box);
    EXPECT_EQ(box, Box(4, 7, 0, 0));
    GetSegmentExtents(*FCurve::create()->begin(), box);
    EXPECT_EQ(box, Box());
}

TEST(Extents, OfTheInterior) {
    Box box = kUntouched;
    EXPECT_FALSE(GetInteriorExtents(*FCurve::create(), box));
    EXPECT_EQ(box, kUntouched);
    EXPECT_TRUE(GetInteriorExtents(*CurveThrough({{4, 7}}), box));
    EXPECT_EQ(box, Box(4, 7, 0, 0));
    EXPECT_TRUE(GetInteriorExtents(*CurveThrough({{-1, 3}, {2, -5}, {7, 1}}), box));
    EXPECT_EQ(box, Box(-1, -5, 8, 8));

    // The keys count also where their segments' values do not pass through them; no value counts that is not finite.
    const auto curve = CurveThrough({{-2, 3}, {2, -5}}, InterpolatorFactory::create("x**2"));
    EXPECT_TRUE(GetInteriorExtents(*curve, box));
    EXPECT_EQ(box, Box(-2, -5, 4, 9));
    curve->findSegment(0)->setInterpolator(InterpolatorFactory::create("0*log(x-100)"));
    EXPECT_TRUE(GetInteriorExtents(*curve, box));
    EXPECT_EQ(box, Box(-2, -5, 4, 8));
    curve->findSegment(0)->setInterpolator(nullptr);
    EXPECT_TRUE(GetInteriorExtents(*curve, box));
    EXPECT_EQ(box, Box(-2, -5, 4, 8));

    const auto none = CurveThrough({{0, 3}, {2, 5}}, nullptr); // such segments have the value 0
    EXPECT_TRUE(GetInteriorExtents(*none, box));
    EXPECT_EQ(box, Box(0, 0, 2, 5));
}

class ExtentsOfEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, ExtentsOfEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST_P(ExtentsOfEveryExhibit, HoldADenseSamplingTightly) {
    const auto curve = GetParam().make();
    Box all;
    const bool any = GetInteriorExtents(*curve, all);
    EXPECT_EQ(any, curve->size() > 1);

    double left = HUGE_VAL, right = -HUGE_VAL, low = HUGE_VAL, high = -HUGE_VAL;
    for (const Segment& segment : *curve) {
        const auto from = segment.getLeftKey();
        const auto to = segment.getRightKey();
        if (!from || !to) continue;
        Box box;
        GetSegmentExtents(segment, box);
        EXPECT_EQ(box.x, from->getX());
        EXPECT_GE(box.x + box.width, to->getX());
        EXPECT_NEAR(box.x + box.width, to->getX(), 1e-9 * std::abs(to->getX()));
        double least = std::min(from->getY(), to->getY());
        double most = std::max(from->getY(), to->getY());
        constexpr int places = 20000;
        for (int i = 0; i <= places; ++i) {
            const double x = from->getX() + (to->getX() - from->getX()) * i / places;
            const double y = EvalSegment(x, segment);
            if (!std::isfinite(y)) continue;
            least = std::min(least, y);
            most = std::max(most, y);
        }
        const double size = std::max(std::abs(least), std::abs(most));
        EXPECT_LE(box.y, least + GetParam().tolerance * size);
        EXPECT_GE(box.y + box.height, most - GetParam().tolerance * size);
        // The sampling misses an extreme by about the square of its spacing.
        EXPECT_NEAR(box.y, least, 1e-6 * (most - least) + 1e-9 * size);
        EXPECT_NEAR(box.y + box.height, most, 1e-6 * (most - least) + 1e-9 * size);
        left = std::min(left, box.x);
        right = std::max(right, box.x + box.width);
        low = std::min(low, box.y);
        high = std::max(high, box.y + box.height);
    }
    if (curve->size() > 2) {
        EXPECT_EQ(all.x, left);
        EXPECT_GE(all.x + all.width, right);
        EXPECT_DOUBLE_EQ(all.x + all.width, right);
        EXPECT_EQ(all.y, low);
        EXPECT_GE(all.y + all.height, high);
        EXPECT_NEAR(all.y + all.height, high, 1e-15 * (std::abs(low) + std::abs(high)));
    }
}

// The extremes of a Bezier segment, followed to the last bits.
TEST(Extents, AreTightAtTheExtremesOfABezier) {
    const auto curve = MakeCurve({{0, 1, V(), V(1.2, 8)}, {3, 2, V(-1.3, 9), V()}});
    Box box;
    GetInteriorExtents(*curve, box);
    double low = 1, high = 1;
    const auto refine = [&](double from, double to, double sign) { // golden section towards the extreme
        for (int i = 0; i < 200; ++i) {
            const double a = from + (to - from) * 0.381966, b = from + (to - from) * 0.618034;
            (sign * curve->eval(a) > sign * curve->eval(b) ? to : from) =
                sign * curve->eval(a) > sign * curve->eval(b) ? b : a;
        }
        return curve->eval(from);
    };
    for (int i = 1; i < 300; ++i) {
        high = std::max(high, refine((i - 1) * 0.01, (i + 1) * 0.01, 1));
        low = std::min(low, refine((i - 1) * 0.01, (i + 1) * 0.01, -1));
    }
    EXPECT_NEAR(box.y + box.height, high, 1e-9);
    EXPECT_NEAR(box.y, low, 1e-9);
}

struct Selected : testing::Test {
    std::shared_ptr<FCurveContainer> curves = FCurveContainer::create();
    Selection selection{curves};
    std::shared_ptr<FCurve> curve =
        MakeCurve({{0, 0, V(-1, 0), V(1, 20)}, {3, 1, V(-1, 0), V(5, -9), "linear()"}, {6, 2, V(), V(), "constant()"}});
    Box box = kUntouched;

    Selected() { curves->addCurve(curve); }
};

TEST_F(Selected, CurvesAreFramedWithTheHandlesThatShapeThem) {
    Box interior;
    GetInteriorExtents(*curve, interior);
    EXPECT_TRUE(GetFCurveAndPartsExtents(*curve, selection, box));
    EXPECT_EQ(box, interior);

    selection.select(*curve);
    EXPECT_TRUE(GetFCurveAndPartsExtents(*curve, selection, box));
    EXPECT_EQ(box, Box(0, 0, 6, 20)); // neither the linear segment's handle down to -8 nor one at no key
    curve->begin()->setInterpolator(Bezier::create());
    EXPECT_TRUE(GetFCurveAndPartsExtents(*curve, selection, box));
    EXPECT_EQ(box, Box(-1, 0, 7, 20));

    const auto empty = FCurve::create();
    selection.select(*empty);
    box = kUntouched;
    EXPECT_FALSE(GetFCurveAndPartsExtents(*empty, selection, box));
    EXPECT_EQ(box, kUntouched);
}

TEST_F(Selected, VisibleCurvesAreFramedTogether) {
    const auto other = CurveThrough({{100, 200}});
    curves->addCurve(other);
    curves->addCurve(FCurve::create());
    SetVisible(*curve, false);
    EXPECT_TRUE(GetVisibleExtents(*curves, selection, box));
    EXPECT_EQ(box, Box(100, 200, 0, 0));
    SetVisible(*curve, true);
    EXPECT_TRUE(GetVisibleExtents(*curves, selection, box));
    EXPECT_EQ(box.x, 0);
    EXPECT_EQ(box.x + box.width, 100);
    EXPECT_EQ(box.y + box.height, 200);
    SetVisible(*curve, false);
    SetVisible(*other, false);
    box = kUntouched;
    EXPECT_FALSE(GetVisibleExtents(*curves, selection, box));
    EXPECT_EQ(box, kUntouched);
}

TEST_F(Selected, PartsAreFramedByTheirKind) {
    EXPECT_FALSE(GetSelectedExtents(selection, box));
    EXPECT_EQ(box, kUntouched);

    selection.select(*KeyAt(*curve, 1));
    EXPECT_TRUE(GetSelectedExtents(selection, box));
    EXPECT_EQ(box, Box(3, 1, 0, 0));

    selection.select(*KeyAt(*curve, 0)->getOutTangent());
    EXPECT_TRUE(GetSelectedExtents(selection, box));
    EXPECT_EQ(box, Box(0, 0, 3, 20));

    selection.clear();
    selection.select(*curve->findSegment(4));
    EXPECT_TRUE(GetSelectedExtents(selection, box));
    EXPECT_EQ(box, Box(3, 1, 3, 1));

    selection.clear();
    selection.select(*--curve->end()); // runs on for ever: its key
    EXPECT_TRUE(GetSelectedExtents(selection, box));
    EXPECT_EQ(box, Box(6, 2, 0, 0));

    Box interior;
    GetInteriorExtents(*curve, interior);
    selection.select(*curve);
    EXPECT_TRUE(GetSelectedExtents(selection, box));
    EXPECT_EQ(box, interior);

    // What has no place adds nothing.
    selection.clear();
    const auto empty = FCurve::create();
    curves->addCurve(empty);
    selection.select(*empty);
    selection.select(*empty->begin());
    box = kUntouched;
    EXPECT_FALSE(GetSelectedExtents(selection, box));
    EXPECT_EQ(box, kUntouched);
}

} // namespace
