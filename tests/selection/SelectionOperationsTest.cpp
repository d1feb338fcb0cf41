#include "support/Basics.h"
#include "tests/selection/Parts.h"

namespace {

using namespace Test;

struct SelectionOperationsTest : testing::Test {
    std::shared_ptr<FCurve> a = makeCurve("a", 1, straight());
    std::shared_ptr<FCurve> b = makeCurve("b", 3, bent());
    std::shared_ptr<FCurveContainer> container = makeContainer({a, b});
    Selection selection{container};
    SelectionRecorder recorder;

    SelectionOperationsTest() { selection.subscribe(recorder); }
};

TEST_F(SelectionOperationsTest, WholeCurvesIncludeTangentsOfEveryKind) {
    SelectCurveCompletely(selection, *a);
    EXPECT_EQ(recorder.take(), (Names{"+a", "+a.segment0", "+a.key0", "+a.in0", "+a.segment1", "+a.out0"}));
    SelectCurveCompletely(selection, *a);
    EXPECT_THAT(recorder.take(), IsEmpty());
    selection.deselect(keyOf(*a, 0));
    recorder.heard.clear();
    DeselectCurveCompletely(selection, *a);
    EXPECT_EQ(recorder.take(), (Names{"-a", "-a.segment0", "-a.in0", "-a.segment1", "-a.out0"}));

    const auto empty = makeCurve("c", 0, bent());
    SelectCurveCompletely(selection, *empty);
    EXPECT_EQ(recorder.take(), (Names{"+c", "+c.segment0"}));
}

TEST_F(SelectionOperationsTest, DeselectingPartsSparesCurves) {
    selection.select(*b);
    for (int i = 0; i < 3; ++i) selection.select(keyOf(*b, i));
    selection.select(segmentOf(*b, 1));
    selection.select(*segmentOf(*b, 1).getOutTangent());
    recorder.heard.clear();
    DeselectSelectedParts(selection);
    EXPECT_EQ(recorder.take(), (Names{"-b.key0", "-b.segment1", "-b.out0", "-b.key1", "-b.key2"}));
    EXPECT_EQ(namesOf(selection), (Names{"b"}));
}

TEST_F(SelectionOperationsTest, CollectsIntoSets) {
    const HitRecord key(keyOf(*b, 2).getShared());
    std::set<HitRecord, CompareRecord> parts;
    selection.select(key);
    GetSelectedCurves(selection, parts);
    EXPECT_THAT(parts, IsEmpty());
    selection.select(*b);
    GetSelectedCurves(selection, parts);
    EXPECT_EQ(namesOf(parts), (Names{"b"}));
    parts.insert(HitRecord(a));
    GetSelected(selection, parts);
    EXPECT_EQ(parts, (std::set<HitRecord, CompareRecord>{HitRecord(a), HitRecord(b), key}));
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
    NotifyCurveChanges(selection);
    selection.select(keyOf(*a, 0));
    selection.select(*b);
    selection.select(*c);
    for (const auto& curve : {a, b, c}) curve->subscribe(counter);
    NotifyCurveChanges(selection);
    EXPECT_EQ(counter.names, (Names{"b", "c"}));

    counter.names.clear();
    counter.act = [&] { container->removeCurve(std::next(container->begin())); };
    NotifyCurveChanges(selection);
    EXPECT_EQ(counter.names, (Names{"b", "c"}));
    EXPECT_EQ(container->size(), 1U);
}

} // namespace
