// That it agrees with a walk after every edit, HostTest.cpp finds out.

#include "support/Allocations.h"
#include "support/Basics.h"
#include "support/Parts.h"
#include "support/Random.h"

namespace {

using namespace Test;

struct SelectionExaminerTest : testing::Test {
    std::shared_ptr<FCurve> curve = makeCurve("a", 3, bent());
    std::shared_ptr<FCurveContainer> container = makeContainer({curve, makeCurve("b", 1, straight())});
    std::unique_ptr<Selection> selection = std::make_unique<Selection>(container);
    SelectionExaminer examiner{*selection};
};

TEST_F(SelectionExaminerTest, NeedsAWordAboutWhatNobodyWasTold) {
    SelectCurveCompletely(*selection, *curve);
    EXPECT_EQ(examiner.getKeyframes().count, 3U);
    {
        const FCurve::Switch silent;
        const FCurveContainer::Switch silentToo;
        curve->removeSegment(std::next(curve->begin(), 2));
        container->removeCurve(std::next(container->begin()));
        const auto copy = FCurve::createCopy(*curve);
        container->addCurve(copy);
        SelectCurveCompletely(*selection, *copy);
        EXPECT_EQ(examiner.getKeyframes().count, 3U);
    }
    examiner.invalidate();
    EXPECT_EQ(examiner.getKeyframes().count, 4U);
    container->removeCurve(std::next(container->begin()));
    {
        const FCurve::Switch silent(*curve);
        selection->deselect(keyOf(*curve, 0));
        EXPECT_EQ(examiner.getKeyframes().count, 1U) << "the selection tells of this";
        curve->removeSegment(std::next(curve->begin(), 2));
    }
    curve->notifyChanged();
    EXPECT_EQ(examiner.getKeyframes().count, 0U);
}

TEST_F(SelectionExaminerTest, OutlivesAndIsOutlived) {
    SelectCurveCompletely(*selection, *curve);
    selection.reset();
    EXPECT_EQ(examiner.getSegments().count, 4U);
    curve.reset();
    const std::weak_ptr<FCurveContainer> watched = container;
    container.reset();
    EXPECT_TRUE(watched.expired());
    examiner.invalidate();
    EXPECT_EQ(examiner.getKeyframes().count + examiner.getCurves().count, 0U);

    container = makeContainer({makeCurve("b", 1, bent())});
    selection = std::make_unique<Selection>(container);
    std::make_unique<SelectionExaminer>(*selection)->getCurves();
    selection->select(*container->begin());
    container->clear();
}

TEST_F(SelectionExaminerTest, FindsPartsThatComeBackSelected) {
    SelectCurveCompletely(*selection, *curve);
    UndoStack stack(container);
    const std::size_t tangents = examiner.getTangents().count;
    curve->removeSegment(std::next(curve->begin(), 2));
    EXPECT_EQ(examiner.getSegments().count, 3U);
    stack.undo();
    EXPECT_EQ(examiner.getSegments().count, 4U);
    EXPECT_EQ(examiner.getKeyframes().count, 3U);
    EXPECT_EQ(examiner.getTangents().count, tangents);
}

// More parts than HostTest.cpp's curves have.
TEST_F(SelectionExaminerTest, FindsTheOneOfThousandsThatDiffers) {
    *curve = *makeCurve("a", 3000, straight());
    for (Segment& segment : *curve)
        if (segment.getLeftKey()) segment.getLeftKey()->setY(0.0);
    SelectCurveCompletely(*selection, *curve);
    Random random(3);
    while (curve->size() > 20) {
        for (int i = random.below(100); i > 0 && curve->size() > 2; --i)
            curve->removeSegment(std::next(curve->begin(), 1 + random.below(static_cast<int>(curve->size()) - 1)));
        const auto key = keyOf(*curve, random.below(static_cast<int>(curve->size()) - 1)).getShared();
        for (const double y : {1.0, 0.0}) {
            key->setY(y);
            ASSERT_EQ(examiner.getKeyframes().count, curve->size() - 1);
            ASSERT_EQ(examiner.getKeyframes().y.isMixed(), y == 1.0 && curve->size() > 2);
        }
    }
}

// A kind that counts how often somebody looks.
class Watched final : public Interpolator {
public:
    double eval(double, const Segment&) const override { return 0.0; }
    std::shared_ptr<Interpolator> clone() override { return nullptr; }
    bool usesTangents() const override {
        ++looks;
        return true;
    }
    mutable int looks = 0;
};

TEST(SelectionExaminer, WalksOnlyWhatChangedAsAWhole) {
    const auto kind = std::make_shared<Watched>();
    const auto container = FCurveContainer::create();
    for (int i = 0; i < 4; ++i) container->addCurve(makeCurve("a", 2000, kind));
    Selection selection(container);
    SelectionExaminer examiner(selection);
    for (FCurve& curve : *container) SelectCurveCompletely(selection, curve);
    FCurve& curve = *container->begin();
    const auto looksOf = [&](const std::function<void()>& act) {
        act();
        kind->looks = 0;
        examiner.getTangents();
        return kind->looks;
    };
    EXPECT_GE(looksOf([] {}), 8000);
    EXPECT_EQ(looksOf([] {}), 0);
    EXPECT_EQ(allocationsOf([&] { examiner.getKeyframes(); }), 0U);
    EXPECT_EQ(looksOf([&] { keyOf(curve, 1000).setY(7.0); }), 0);
    EXPECT_EQ(looksOf([&] { selection.deselect(keyOf(curve, 1000)); }), 0);
    EXPECT_EQ(looksOf([&] { selection.deselect(*segmentOf(curve, 1000).getInTangent()); }), 0);
    EXPECT_EQ(looksOf([&] { curve.removeSegment(std::next(curve.begin(), 1000)); }), 0);
    EXPECT_EQ(looksOf([&] { addKey(curve, 1009.0, 0.0, kind); }), 0);
    EXPECT_EQ(looksOf([&] { SetVisible(curve, false); }), 0);
    const auto editMany = [&](int edits) {
        for (int i = 0; i < edits; ++i) keyOf(curve, i).setY(edits);
    };
    EXPECT_EQ(looksOf([&] { editMany(500); }), 0);
    EXPECT_GE(looksOf([&] { editMany(600); }), 2000) << "one walk costs less";
    const int oneCurve = looksOf([&] { curve.notifyChanged(); });
    EXPECT_GE(oneCurve, 2000);
    EXPECT_LE(oneCurve, 5000);
    EXPECT_EQ(looksOf([&] { container->setProperty("k", "v"); }), 0);
    EXPECT_EQ(looksOf([&] { container->removeCurve(std::next(container->begin())); }), 0);
}

} // namespace
