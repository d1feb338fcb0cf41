#include "support/Basics.h"
#include "support/Museum.h"
#include "support/Recorder.h"

using namespace Test;

namespace {

using Box = Rectangle<double>;
using V = Vector2D<double>;

const Box kUntouched{-1, -2, -3, -4};

// The box of a function that answers whether there is one and leaves the box alone where there is none.
template<class Function, class... Arguments>
Box Ask(const Function& extents, const Arguments&... arguments) {
    Box box = kUntouched;
    const bool any = extents(arguments..., box);
    EXPECT_EQ(any, !(box == kUntouched));
    return box;
}
Box InteriorOf(const FCurve& curve) {
    return Ask(GetInteriorExtents, curve);
}
Box BoxOf(const Segment& segment) {
    Box box = kUntouched;
    GetSegmentExtents(segment, box);
    return box;
}
Box BoxOf(const Tangent& tangent) {
    Box box = kUntouched;
    GetTangentExtents(tangent, box);
    return box;
}

TEST(Extents, OfPartsThatLackAKey) {
    const auto curve = MakeCurve({{10, 5, V(-2, -3), V(0, 3)}}, "bezier()");
    EXPECT_EQ(BoxOf(*KeyAt(*curve, 0)->getInTangent()), Box(8, 2, 2, 3));
    EXPECT_EQ(BoxOf(*KeyAt(*curve, 0)->getOutTangent()), Box(10, 5, 0, 3));
    EXPECT_EQ(BoxOf(*curve->begin()->getOutTangent()), Box());
    EXPECT_EQ(BoxOf(*curve->begin()), Box(10, 5, 0, 0));
    EXPECT_EQ(BoxOf(*--curve->end()), Box(10, 5, 0, 0));
    EXPECT_EQ(InteriorOf(*curve), Box(10, 5, 0, 0));
    EXPECT_EQ(BoxOf(*FCurve::create()->begin()), Box());
    EXPECT_EQ(InteriorOf(*FCurve::create()), kUntouched);
}

// The keys count also where their segments' values do not pass through them; no value counts that is not finite.
TEST(Extents, OfValuesBesideTheKeys) {
    const auto curve = CurveThrough({{-2, 3}, {2, -5}}, InterpolatorFactory::create("x**2"));
    EXPECT_EQ(InteriorOf(*curve), Box(-2, -5, 4, 9));
    curve->findSegment(0)->setInterpolator(InterpolatorFactory::create("0*log(x-100)"));
    EXPECT_EQ(InteriorOf(*curve), Box(-2, -5, 4, 8));
    EXPECT_EQ(InteriorOf(*CurveThrough({{0, 3}, {2, 5}}, nullptr)), Box(0, 0, 2, 5)); // such segments have the value 0
}

struct Selected : testing::Test {
    std::shared_ptr<FCurveContainer> curves = FCurveContainer::create();
    Selection selection{curves};
    std::shared_ptr<FCurve> curve =
        MakeCurve({{0, 0, V(-1, 0), V(1, 20)}, {3, 1, V(-1, 0), V(5, -9), "linear()"}, {6, 2, V(), V(), "constant()"}});
    std::shared_ptr<FCurve> empty = FCurve::create();

    Selected() {
        curves->addCurve(curve);
        curves->addCurve(empty);
    }
    Box withParts(const FCurve& of) const { return Ask(GetFCurveAndPartsExtents, of, selection); }
    Box visible() const { return Ask(GetVisibleExtents, *curves, selection); }
    // Of this part alone.
    template<class Part>
    Box selected(Part& part) {
        selection.clear();
        selection.select(part);
        return selected();
    }
    Box selected() const { return Ask(GetSelectedExtents, selection); }
};

TEST_F(Selected, CurvesAreFramedWithTheHandlesThatShapeThem) {
    EXPECT_EQ(withParts(*curve), InteriorOf(*curve));
    selection.select(*curve);
    EXPECT_EQ(withParts(*curve), Box(0, 0, 6, 20)); // neither the linear segment's handle down to -8 nor one at no key
    curve->begin()->setInterpolator(Bezier::create());
    EXPECT_EQ(withParts(*curve), Box(-1, 0, 7, 20));
    selection.select(*empty);
    EXPECT_EQ(withParts(*empty), kUntouched);
}

TEST_F(Selected, VisibleCurvesAreFramedTogether) {
    curves->addCurve(CurveThrough({{100, 200}}));
    EXPECT_EQ(visible(), Box(0, 0, 100, 200));
    SetVisible(*curve, false);
    EXPECT_EQ(visible(), Box(100, 200, 0, 0));
    SetVisible(*--curves->end(), false);
    EXPECT_EQ(visible(), kUntouched);
}

TEST_F(Selected, PartsAreFramedByTheirKind) {
    EXPECT_EQ(selected(), kUntouched);
    EXPECT_EQ(selected(*KeyAt(*curve, 1)), Box(3, 1, 0, 0));
    selection.select(*KeyAt(*curve, 0)->getOutTangent());
    EXPECT_EQ(selected(), Box(0, 0, 3, 20));
    EXPECT_EQ(selected(*curve->findSegment(4)), Box(3, 1, 3, 1));
    selection.select(*curve);
    EXPECT_EQ(selected(), InteriorOf(*curve));
    // What has no place adds nothing.
    EXPECT_EQ(selected(*empty), kUntouched);
    EXPECT_EQ(selected(*empty->begin()), kUntouched);
}

} // namespace
