#include "support/Allocations.h"
#include "support/Basics.h"
#include "support/Gestures.h"
#include "support/Museum.h"
#include "support/Random.h"
#include "support/Recorder.h"

namespace {

using namespace Test;

// Each curve of the museum in turn, with the two after it; the last of them is in no container.
TEST(UndoStack, GivesBackEveryStateOfRandomGestures) {
    const auto& museum = Museum();
    for (std::size_t first = 0; first < museum.size(); ++first) {
        Random random(static_cast<unsigned>(first));
        std::vector<std::shared_ptr<FCurve>> curves;
        for (std::size_t i = 0; i < 3; ++i) curves.push_back(museum[(first + i) % museum.size()].make());
        GestureHost host(random, curves);
        for (int i = 0; i < 40; ++i) ASSERT_EQ(host.run(), "") << museum[first].name;
        ASSERT_EQ(host.runBack(), "") << museum[first].name;
    }
}

// The names of the calls to a curve's observer, as "begin step step end".
class Calls : public FCurveObserver {
public:
    std::string heard;
    void curveChanged(FCurve&) override { heard += "curve "; }
    void beginValueChange(FCurve&) override { heard += "begin "; }
    void intermediateValueChange(FCurve&) override { heard += "step "; }
    void endValueChange(FCurve&) override { heard += "end "; }
};

class Summaries : public EditObserver {
public:
    std::vector<EditSummary> steps;
    void editStepped(const EditSummary& edit) override { steps.push_back(edit); }
};

std::shared_ptr<FCurve> Keys(int count, const char* interpolator = "bezier()") {
    auto curve = FCurve::create();
    const auto kind = InterpolatorFactory::create(interpolator);
    for (int i = 0; i < count; ++i) curve->insertSegment(*Keyframe::create(i, i % 7), kind);
    return curve;
}

struct Document {
    explicit Document(int keys) : curve(Keys(keys)), curves(FCurveContainer::create()), selection(curves) {
        curves->addCurve(curve);
    }
    std::shared_ptr<FCurve> curve;
    std::shared_ptr<FCurveContainer> curves;
    Selection selection;
};

TEST(EditGroup, TellsASummaryOfEachStepInsteadOfManyCalls) {
    Document document(20);
    Calls calls;
    document.curve->subscribe(calls);
    {
        EditGroup group(*document.curves, "drag", EditGroup::Quiet);
        KeyAt(*document.curve, 4)->setY(30);
        group.step();
        group.cancel();
    }
    EXPECT_EQ(calls.heard, "begin step step end ");

    calls.heard.clear();
    Summaries view;
    EditGroup::subscribe(*document.curves, view);
    {
        EditGroup group(document.selection, "drag", EditGroup::Quiet);
        for (int step = 1; step <= 2; ++step) {
            for (int i = 4; i < 9; ++i) GetIndexedKeyframe(*document.curve, i)->setY(10 * step);
            group.step();
        }
        group.step(); // nothing new
    }
    EXPECT_EQ(calls.heard, "begin step step end ");
    ASSERT_EQ(view.steps.size(), 2U);
    EXPECT_EQ(view.steps[1].curves.at(0).values.start, 3.0);
    EXPECT_EQ(view.steps[1].curves.at(0).values.end, 9.0);

    calls.heard.clear();
    {
        EditGroup group(document.selection, "select", EditGroup::Quiet);
        for (int i = 4; i < 9; ++i) document.selection.select(*GetIndexedKeyframe(*document.curve, i));
    }
    EXPECT_EQ(calls.heard, "curve ");
    EXPECT_TRUE(view.steps.at(2).curves.at(0).values.isEmpty());
    EXPECT_EQ(view.steps.at(2).curves.at(0).parts.end, 9.0);

    const FCurve::Switch silence(*document.curve); // nobody is told but those who listen to summaries
    EditGroup group(*document.curves);
    document.curve->begin()->setInterpolator(InterpolatorFactory::create("cycle()"));
    KeyAt(*document.curve, 19)->setY(3);
    group.end();
    EXPECT_TRUE(view.steps.at(3).curves.at(0).repeats);
    EXPECT_EQ(calls.heard, "curve ");
}

// Whoever is called may do anything to the group, the stack and the document.
TEST(EditGroup, OutlivesWhatItsObserversDo) {
    Document document(5);
    auto stack = std::make_unique<UndoStack>(document.selection);
    std::unique_ptr<EditGroup> group;
    struct Destroyer : EditObserver {
        std::function<void()> stepped, ended;
        void editStepped(const EditSummary&) override { stepped(); }
        void editEnded(const EditSummary&) override { ended(); }
    } destroyer;
    EditGroup::subscribe(*document.curves, destroyer);
    destroyer.stepped = [&] { document.curve->removeSegment(--document.curve->end()); };
    destroyer.ended = [&] { group.reset(); };
    group = std::make_unique<EditGroup>(*document.curves, "first");
    KeyAt(*document.curve, 0)->setY(50.0);
    group->end();
    EXPECT_EQ(document.curve->size(), 5U); // removed by the observer, in the group
    EXPECT_FALSE(group);
    destroyer.stepped = [&] { EXPECT_FALSE(stack->undo() && stack->isRestoring()); };
    EXPECT_TRUE(stack->undo());
    EXPECT_EQ(document.curve->size(), 6U);
    destroyer.stepped = [&] {
        EXPECT_TRUE(stack->isRestoring());
        stack.reset();
    };
    EXPECT_TRUE(stack->redo());
    EXPECT_EQ(document.curve->size(), 5U);

    UndoStack another(document.selection);
    destroyer.stepped = [] { throw 1; };
    { // is over all the same
        EditGroup thrown(*document.curves);
        KeyAt(*document.curve, 0)->setY(60.0);
    }
    destroyer.stepped = [] {};
    EXPECT_TRUE(another.undo());
}

TEST(UndoStack, MergesNudgesAndKnowsTheSavedState) {
    Document document(5);
    UndoStack stack(document.curves);
    const auto key = KeyAt(*document.curve, 2);
    const auto nudge = [&](const char* name) {
        EditGroup group(*document.curves, name, EditGroup::Merge);
        key->setY(key->getY() + 1.0);
    };
    nudge("up");
    nudge("up");
    EXPECT_EQ(stack.undoSize(), 1U);
    stack.setClean();
    nudge("up"); // not into what was saved
    nudge("other");
    key->setY(0.0); // outside of groups
    EXPECT_EQ(stack.undoSize(), 4U);
    EXPECT_STREQ(stack.getUndoName(), "");
    for (int i = 0; i < 3; ++i) stack.undo();
    EXPECT_TRUE(stack.isClean());
    EXPECT_STREQ(stack.getUndoName(), "up");
    EXPECT_STREQ(stack.getRedoName(), "up");
    stack.undo();
    EXPECT_EQ(key->getY(), 2.0);
    EXPECT_FALSE(stack.isClean());
    nudge("up");
    EXPECT_EQ(stack.redoSize(), 0U);
    EXPECT_FALSE(stack.isClean());
    stack.undo();
    stack.redo();
    nudge("up"); // not into what was undone meanwhile
    EXPECT_EQ(stack.undoSize(), 2U);
}

// Every state has a value of its own, so a state is clean exactly where the key has the value that was saved.
TEST(UndoStack, KnowsTheSavedStateWhateverIsForgotten) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        Random random(seed);
        Document document(2);
        UndoStack stack(document.curves);
        const auto key = KeyAt(*document.curve, 1);
        std::vector<double> states{key->getY()};
        std::size_t now = 0;
        double saved = states[0];
        for (int i = 0; i < 200; ++i) {
            switch (random.below(8)) {
            case 0:
                saved = states[now];
                stack.setClean();
                break;
            case 1: {
                stack.setMaxBytes(stack.getBytes() * static_cast<std::size_t>(random.below(5)) / 4);
                stack.setMaxBytes(1 << 20);
                const std::size_t forgotten = now - stack.undoSize();
                ASSERT_LE(forgotten, now);
                states.erase(states.begin(), states.begin() + static_cast<std::ptrdiff_t>(forgotten));
                now -= forgotten;
                states.resize(now + 1 + stack.redoSize());
                break;
            }
            case 2:
            case 3:
                ASSERT_EQ(stack.undo(), now > 0);
                if (now > 0) --now;
                break;
            case 4:
                ASSERT_EQ(stack.redo(), now + 1 < states.size());
                if (now + 1 < states.size()) ++now;
                break;
            default: {
                EditGroup group(*document.curves, "edit");
                key->setY(100.0 + i);
                states.resize(++now);
                states.push_back(100.0 + i);
            }
            }
            ASSERT_EQ(key->getY(), states[now]);
            ASSERT_EQ(stack.undoSize(), now);
            ASSERT_EQ(stack.redoSize(), states.size() - 1 - now);
            ASSERT_EQ(stack.isClean(), states[now] == saved) << seed << ", " << i;
        }
    }
}

TEST(UndoStack, KeepsWhatWasTouchedWithinItsBytes) {
    constexpr int count = 2000;
    Document document(count);
    UndoStack stack(document.selection);
    const std::size_t before = heldNow();
    {
        EditGroup group(*document.curves, "move");
        for (int i = 0; i < count; i += 2) KeyAt(*document.curve, i)->setX(i + 0.5);
    }
    const double held = static_cast<double>(heldNow() - before);
    EXPECT_NEAR(static_cast<double>(stack.getBytes()), held, 0.05 * held);
    EXPECT_LE(held, 300.0 * count);
    {
        EditGroup group(*document.curves, "select and remove");
        for (int i = 0; i < count; ++i) document.selection.select(*KeyAt(*document.curve, i));
        while (document.curve->size() > 1) document.curve->removeSegment(--document.curve->end());
    }
    EXPECT_LE(stack.getBytes(), 300U * count + static_cast<std::size_t>(held) + 1000);
    stack.setMaxBytes(300U * count); // the older step goes
    EXPECT_EQ(stack.undoSize(), 1U);
    stack.setClean();
    EXPECT_TRUE(stack.undo());
    EXPECT_EQ(document.curve->size(), count + 1U);
    stack.setMaxBytes(1000);
    EXPECT_EQ(stack.undoSize() + stack.redoSize(), 0U);
    KeyAt(*document.curve, 0)->setY(1.0);
    EXPECT_EQ(stack.undoSize(), 1U);
    EXPECT_FALSE(stack.isClean()) << "the saved state was forgotten";
    document.curves->removeCurve(document.curves->begin()); // a small edit that keeps much
    EXPECT_FALSE(stack.undo());
    EXPECT_EQ(stack.getBytes(), 0U);
}

TEST(UndoStack, DoesAllOrNothingWhenMemoryRunsOut) {
    Document document(300);
    FCurveContainer& curves = *document.curves;
    const auto other = Keys(5), third = Keys(3), assigned = Keys(4);
    curves.addCurve(other);
    curves.addCurve(third);
    UndoStack stack(document.selection);
    Summaries view;
    EditGroup::subscribe(curves, view);
    const Remembered before(curves);
    {
        EditGroup group(curves, "everything");
        for (int i = 100; i < 110; ++i) document.curve->removeSegment(document.curve->findSegment(i));
        for (int i = 0; i < 200; ++i) document.curve->insertSegment(*Keyframe::create(120.5 + i / 256.0, i), nullptr);
        KeyAt(*document.curve, 20)->setX(20.75);
        document.selection.select(*KeyAt(*document.curve, 30));
        KeyAt(*document.curve, 31)->setProperty("a long name of a property", "and a value as long as that");
        document.curve->setName("a name that is too long to be kept in the object itself");
        *other = *assigned;
        curves.setProperty("scene", "another scene");
        curves.removeCurve(--curves.end());
        curves.addCurve(Keys(2));
    }
    const Remembered after(curves);
    for (const bool forGood : {false, true})
        for (const bool undo : {true, false})
            for (long others = 0;; others += others < 100 ? 1 : 7) {
                const bool failed = runsOutOfMemory(
                    others, [&] { undo ? stack.undo() : stack.redo(); }, forGood);
                const bool isUndone = stack.redoSize() == 1;
                ASSERT_EQ(stack.undoSize(), isUndone ? 0U : 1U);
                ASSERT_EQ((isUndone ? before : after).differenceTo(curves), "") << others << (undo ? " undo" : " redo");
                for (FCurve& curve : curves) ASSERT_EQ(Fault(curve), "") << others;
                if (!failed) {
                    ASSERT_GT(others, 100);
                    break;
                }
                if (isUndone == undo) undo ? stack.redo() : stack.undo(); // complete, but somebody was not told
            }
}

TEST(EditGroup, CancelsAllOrNothingWhenMemoryRunsOut) {
    for (const bool forGood : {false, true})
        for (long others = 0;; others += others < 100 ? 1 : 7) {
            Document document(60);
            const UndoStack stack(document.selection);
            const Remembered before(*document.curves);
            EditGroup group(*document.curves);
            while (document.curve->size() > 20) document.curve->removeSegment(--document.curve->end());
            KeyAt(*document.curve, 3)->setProperty("a long name of a property", "and a value as long as that");
            const Remembered edited(*document.curves);
            const bool failed = runsOutOfMemory(
                others, [&] { group.cancel(); }, forGood);
            const bool isBack = before.differenceTo(*document.curves).empty();
            ASSERT_TRUE(isBack || edited.differenceTo(*document.curves).empty()) << others;
            ASSERT_TRUE(isBack || forGood || group.isOpen()) << others;
            ASSERT_EQ(Fault(*document.curve), "") << others;
            if (!failed) break;
        }
}

} // namespace
