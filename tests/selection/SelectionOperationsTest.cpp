#include "tests/selection/Parts.h"

namespace {

using namespace Test;

struct SelectionOperationsTest : testing::Test {
    std::shared_ptr<FCurve> a = makeCurve("a", 1, straight());
    std::shared_ptr<FCurve> b = makeCurve("b", 3, bent());
    std::shared_ptr<FCurveContainer> container = makeContainer({a, b});
    Selection selection{container};
};

TEST_F(SelectionOperationsTest, WholeCurvesIncludeTangentsOfEveryKind) {
    SelectionRecorder recorder;
    selection.subscribe(recorder);
    SelectCurveCompletely(selection, *a);
    EXPECT_EQ(recorder.take(), (Names{"+a", "+a.segment0", "+a.key0", "+a.in0", "+a.segment1", "+a.out0"}));
    DeselectCurveCompletely(selection, *a);
    EXPECT_EQ(recorder.take(), (Names{"-a", "-a.segment0", "-a.key0", "-a.in0", "-a.segment1", "-a.out0"}));
}

TEST_F(SelectionOperationsTest, CollectsIntoSets) {
    const HitRecord key(keyOf(*b, 2).getShared());
    Records parts;
    selection.select(key);
    GetSelectedCurves(selection, parts);
    EXPECT_THAT(parts, IsEmpty());
    selection.select(*b);
    GetSelectedCurves(selection, parts);
    EXPECT_EQ(namesOf(parts), (Names{"b"}));
    parts.insert(HitRecord(a));
    GetSelected(selection, parts);
    EXPECT_EQ(parts, (Records{HitRecord(a), HitRecord(b), key}));
}

TEST_F(SelectionOperationsTest, NotifiesSelectedCurvesOnly) {
    struct Counter : FCurveObserver {
        void curveChanged(FCurve& curve) override {
            names.emplace_back(curve.getName());
            if (act) act();
        }
        std::function<void()> act;
        Names names;
    } counter;
    const auto c = makeCurve("c", 0, straight());
    container->addCurve(c);
    selection.select(keyOf(*a, 0));
    selection.select(*b);
    selection.select(*c);
    for (const auto& curve : {a, b, c}) curve->subscribe(counter);
    counter.act = [&] { container->removeCurve(std::next(container->begin())); };
    NotifyCurveChanges(selection);
    EXPECT_EQ(counter.names, (Names{"b", "c"}));
    EXPECT_EQ(container->size(), 1U);
}

} // namespace
