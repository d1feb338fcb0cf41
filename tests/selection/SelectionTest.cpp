#include "FCurveLib/FCurveObserver.h"
#include "FCurveLib/SelectionOperations.h"
#include "tests/selection/Parts.h"
#include "tests/support/Allocations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <optional>
#include <random>
#include <stdexcept>
#include <utility>

namespace {

using namespace Test;
using testing::IsEmpty;

// Does something when it is called.
class Actor : public SelectionObserver {
public:
    using Act = std::function<void(const HitRecord&)>;
    explicit Actor(Act onDeselected = {}, Act onSelected = {})
        : m_onDeselected(std::move(onDeselected)), m_onSelected(std::move(onSelected)) {}
    void selected(const HitRecord& part) override {
        if (m_onSelected) m_onSelected(part);
    }
    void deselected(const HitRecord& part) override {
        if (m_onDeselected) m_onDeselected(part);
    }

private:
    Act m_onDeselected, m_onSelected;
};

struct SelectionTest : testing::Test {
    std::shared_ptr<FCurve> a = makeCurve("a", 3, bent());
    std::shared_ptr<FCurve> b = makeCurve("b", 2, straight());
    std::shared_ptr<FCurveContainer> container = makeContainer({a, b});
    Selection selection{container};
    Recorder recorder;

    SelectionTest() { selection.subscribe(recorder); }

    void selectEverything() {
        for (auto it = HitRecordIterator::begin(*container), end = HitRecordIterator::end(*container); it != end; ++it)
            selection.select(*it);
        recorder.heard.clear();
    }
    Names everything() const {
        return namesOf(HitRecordIterator::begin(*container), HitRecordIterator::end(*container));
    }
};

TEST_F(SelectionTest, KeepsItsStateInTheParts) {
    Segment& segment = segmentOf(*a, 1);
    const HitRecord parts[] = {HitRecord(a), HitRecord(segment.getShared()), HitRecord(segment.getRightKey()),
                               HitRecord(segment.getInTangent(), true), HitRecord(segment.getOutTangent(), false)};
    const char* const names[] = {"a", "a.segment1", "a.key1", "a.in1", "a.out0"};
    for (std::size_t i = 0; i < 5; ++i) {
        SCOPED_TRACE(names[i]);
        EXPECT_FALSE(selection.isSelected(parts[i]));
        selection.select(parts[i]);
        selection.select(parts[i]);
        EXPECT_TRUE(selection.isSelected(parts[i]));
        EXPECT_TRUE(selection.isSelected(ConstHitRecord(parts[i])));
        EXPECT_EQ(recorder.take(), (Names{std::string("+") + names[i]}));
        EXPECT_EQ(namesOf(selection), (Names{names[i]}));
        selection.deselect(parts[i]);
        selection.deselect(parts[i]);
        EXPECT_FALSE(selection.isSelected(parts[i]));
        EXPECT_EQ(recorder.take(), (Names{std::string("-") + names[i]}));
    }
    selection.select(*a);
    selection.select(segment);
    selection.select(keyOf(*a, 1));
    selection.select(*segment.getInTangent());
    EXPECT_TRUE(selection.isSelected(*a) && selection.isSelected(segment) && selection.isSelected(keyOf(*a, 1))
                && selection.isSelected(*segment.getInTangent()));
    EXPECT_STREQ(a->getProperty("fc_sel"), "1");
    selection.deselect(*a);
    selection.deselect(segment);
    selection.deselect(keyOf(*a, 1));
    selection.deselect(*segment.getInTangent());
    EXPECT_EQ(recorder.take(),
              (Names{"+a", "+a.segment1", "+a.key1", "+a.in1", "-a", "-a.segment1", "-a.key1", "-a.in1"}));
    EXPECT_EQ(a->sizeProperties() + segment.sizeProperties(), 0U);
}

TEST_F(SelectionTest, OnlyTheExactValueCounts) {
    for (const char* value : {"0", "yes", "11", "true", " 1"}) {
        SCOPED_TRACE(value);
        a->setProperty("fc_sel", value);
        EXPECT_FALSE(selection.isSelected(*a));
        EXPECT_THAT(namesOf(selection), IsEmpty());
        selection.select(*a);
        EXPECT_TRUE(selection.isSelected(*a));
        a->setProperty("fc_sel", value);
        selection.deselect(*a);
        EXPECT_EQ(recorder.take(), (Names{"+a", "-a"}));
    }
}

TEST_F(SelectionTest, IgnoresRecordsOfNothing) {
    const HitRecord nothing[] = {HitRecord(), HitRecord(std::shared_ptr<FCurve>()),
                                 HitRecord(std::shared_ptr<Segment>()), HitRecord(std::shared_ptr<Keyframe>()),
                                 HitRecord(std::shared_ptr<Tangent>(), true)};
    for (const HitRecord& record : nothing) {
        selection.select(record);
        selection.deselect(record);
        EXPECT_FALSE(selection.isSelected(record));
        EXPECT_FALSE(Private::SelectionFilter(&selection)(record));
    }
    EXPECT_THAT(recorder.take(), IsEmpty());
    EXPECT_FALSE(Private::SelectionFilter()(HitRecord(a)));
}

TEST_F(SelectionTest, TakesSetsInTheirOrder) {
    std::set<HitRecord, CompareRecord> parts{HitRecord(keyOf(*a, 0).getShared()), HitRecord(a),
                                             HitRecord(segmentOf(*a, 1).getInTangent(), true),
                                             HitRecord(segmentOf(*a, 1).getShared())};
    selection.select(parts);
    EXPECT_EQ(recorder.take(), (Names{"+a", "+a.segment1", "+a.key0", "+a.in1"}));
    selection.deselect(parts);
    EXPECT_EQ(recorder.take(), (Names{"-a", "-a.segment1", "-a.key0", "-a.in1"}));
}

TEST_F(SelectionTest, IsSharedByAllSelectionsOfTheContainer) {
    Selection other(container);
    Recorder otherRecorder;
    other.subscribe(otherRecorder);
    selection.select(keyOf(*b, 1));
    EXPECT_TRUE(other.isSelected(keyOf(*b, 1)));
    EXPECT_EQ(namesOf(other), namesOf(selection));
    EXPECT_THAT(otherRecorder.take(), IsEmpty());
    other.clear();
    EXPECT_EQ(otherRecorder.take(), (Names{"-b.key1", "cleared"}));
    EXPECT_EQ(recorder.take(), (Names{"+b.key1"}));
}

TEST_F(SelectionTest, WalksByKind) {
    const auto check = [this](const Names& curves, const Names& segments, const Names& keys, const Names& tangents) {
        EXPECT_EQ(namesOf(BeginSelectedCurves(selection), EndSelectedCurves(selection)), curves);
        EXPECT_EQ(namesOf(BeginSelectedSegments(selection), EndSelectedSegments(selection)), segments);
        EXPECT_EQ(namesOf(BeginSelectedKeyframes(selection), EndSelectedKeyframes(selection)), keys);
        EXPECT_EQ(namesOf(BeginSelectedTangents(selection), EndSelectedTangents(selection)), tangents);
    };
    check({}, {}, {}, {});
    selection.select(*b);
    check({"b"}, {}, {}, {});
    selectEverything();
    check(
        {"a", "b"}, {"a.segment0", "a.segment1", "a.segment2", "a.segment3", "b.segment0", "b.segment1", "b.segment2"},
        {"a.key0", "a.key1", "a.key2", "b.key0", "b.key1"}, {"a.in0", "a.out0", "a.in1", "a.out1", "a.in2", "a.out2"});
    EXPECT_EQ(namesOf(selection), everything());
    EXPECT_EQ(namesOf(std::as_const(selection)), everything());
}

TEST_F(SelectionTest, ClearDeselectsInTheOrderOfTheWalk) {
    selection.clear();
    EXPECT_EQ(recorder.take(), (Names{"cleared"}));

    selectEverything();
    Tangent& hidden = *segmentOf(*b, 1).getInTangent();
    selection.select(hidden);
    recorder.heard.clear();
    Names expected;
    for (const std::string& name : everything()) expected.push_back("-" + name);
    expected.push_back("cleared");
    selection.clear();
    EXPECT_EQ(recorder.take(), expected);
    EXPECT_THAT(namesOf(selection), IsEmpty());
    EXPECT_TRUE(selection.isSelected(hidden));
}

TEST_F(SelectionTest, ANullContainerIsAnEmptyOne) {
    Selection none(nullptr);
    none.subscribe(recorder);
    EXPECT_TRUE(none.getCurves()->empty());
    EXPECT_EQ(none.begin(), none.end());
    none.clear();
    EXPECT_EQ(recorder.take(), (Names{"cleared"}));
}

TEST_F(SelectionTest, AllocatesWhatThePropertyNeeds) {
    selection.select(*a);
    selection.deselect(*a);
    selection.unsubscribe(recorder); // it allocates
    Actor actor;
    selection.subscribe(actor);
    const std::size_t one = allocationsOf([this] { keyOf(*a, 1).setProperty("fc_sel", "1"); });
    EXPECT_GT(one, 0U);
    keyOf(*a, 1).setProperty("fc_sel", "");
    EXPECT_EQ(allocationsOf([this] { selection.select(keyOf(*a, 1)); }), one);
    EXPECT_EQ(allocationsOf([this] { selection.deselect(HitRecord(keyOf(*a, 1).getShared())); }), 0U);
    EXPECT_EQ(allocationsOf([this] { SelectCurveCompletely(selection, *a); }), (1 + 4 + 3 + 6) * one);
    EXPECT_EQ(allocationsOf([this] {
                  std::size_t n = 0;
                  for (const HitRecord& part : selection) n += part.getType();
                  EXPECT_GT(n, 0U);
              }),
              0U);
    EXPECT_EQ(allocationsOf([this] { selection.clear(); }), 0U);
    selection.unsubscribe(actor);
}

// --- observers -------------------------------------------------------------------------------------------------------

TEST_F(SelectionTest, ObserversAreCalledOnceEachByAddress) {
    struct Numbered : SelectionObserver {
        void selected(const HitRecord&) override { calls->push_back(this); }
        std::vector<const Numbered*>* calls = nullptr;
    };
    std::vector<const Numbered*> calls;
    Numbered observers[4];
    for (const int i : {2, 0, 3, 1}) {
        observers[i].calls = &calls;
        selection.subscribe(observers[i]);
        selection.subscribe(observers[i]);
    }
    selection.select(*a);
    EXPECT_EQ(calls, (std::vector<const Numbered*>{&observers[0], &observers[1], &observers[2], &observers[3]}));
    selection.unsubscribe(observers[0]);
    calls.clear();
    selection.select(*b);
    EXPECT_EQ(calls.size(), 3U);
}

TEST_F(SelectionTest, TellsAfterTheChange) {
    std::vector<bool> seen;
    Actor actor([&](const HitRecord& part) { seen.push_back(selection.isSelected(part)); },
                [&](const HitRecord& part) { seen.push_back(selection.isSelected(part)); });
    selection.subscribe(actor);
    selection.select(*a);
    selection.deselect(*a);
    EXPECT_EQ(seen, (std::vector<bool>{true, false}));
}

TEST_F(SelectionTest, SwitchesSilenceIt) {
    {
        Selection::Switch outer(selection);
        EXPECT_FALSE(outer.blockedNotification());
        {
            Selection::Switch inner(selection);
            selection.select(*a);
            EXPECT_TRUE(inner.blockedNotification());
        }
        EXPECT_FALSE(outer.blockedNotification());
        selection.clear();
        EXPECT_TRUE(outer.blockedNotification());
    }
    {
        FCurve::Switch all;
        selection.select(*a);
        EXPECT_TRUE(all.blockedNotification());
    }
    EXPECT_THAT(recorder.take(), IsEmpty());
    EXPECT_TRUE(selection.isSelected(*a));
    {
        FCurve::Switch one(*a); // of the curve, not of the selection
        selection.deselect(*a);
    }
    EXPECT_EQ(recorder.take(), (Names{"-a"}));
}

TEST_F(SelectionTest, ObserversMayComeAndGoDuringACall) {
    struct Spy : Recorder {
        std::function<void()> act;
        void selected(const HitRecord& part) override {
            Recorder::selected(part);
            if (act) std::exchange(act, nullptr)();
        }
    };
    std::array<std::optional<Spy>, 4> spies; // called in this order
    for (auto& spy : spies) spy.emplace();
    for (std::size_t i : {0, 1, 2}) selection.subscribe(*spies[i]);
    spies[0]->act = [&] {
        selection.unsubscribe(*spies[1]);
        spies[2].reset();
        selection.subscribe(*spies[3]);
    };
    selection.select(*a);
    EXPECT_EQ(spies[0]->heard, (Names{"+a"}));
    EXPECT_THAT(spies[1]->heard, IsEmpty());
    EXPECT_THAT(spies[3]->heard, IsEmpty()) << "it arrived during the call";
    selection.select(*b);
    EXPECT_EQ(spies[0]->heard, (Names{"+a", "+b"}));
    EXPECT_THAT(spies[1]->heard, IsEmpty());
    EXPECT_EQ(spies[3]->heard, (Names{"+b"}));
}

TEST_F(SelectionTest, AThrowingObserverLeavesEverythingSound) {
    Recorder late;
    struct Thrower : SelectionObserver {
        int left = 0;
        void selected(const HitRecord&) override { step(); }
        void deselected(const HitRecord&) override { step(); }
        void step() {
            if (left-- == 0) throw std::runtime_error("stop");
        }
    } thrower;
    selection.subscribe(thrower);
    EXPECT_THROW(selection.select(*a), std::runtime_error);
    EXPECT_TRUE(selection.isSelected(*a));
    selectEverything(); // its counter is below zero
    thrower.left = 5;
    EXPECT_THROW(selection.clear(), std::runtime_error);
    EXPECT_EQ(namesOf(selection).size() + 6, everything().size());

    selection.unsubscribe(thrower); // at once: no walk is in progress
    selection.subscribe(late);
    selection.clear();
    EXPECT_THAT(namesOf(selection), IsEmpty());
    EXPECT_EQ(late.heard.size(), everything().size() - 6 + 1);
}

TEST_F(SelectionTest, MayDieInACall) {
    selectEverything();
    auto mortal = std::make_unique<Selection>(container);
    Recorder before, after;
    Actor killer([&](const HitRecord& part) {
        if (nameOf(part) == "a.key1") mortal.reset();
    });
    mortal->subscribe(before);
    mortal->subscribe(killer);
    mortal->subscribe(after);
    mortal->clear();
    EXPECT_EQ(mortal, nullptr);
    EXPECT_THAT(namesOf(selection), IsEmpty());
    for (const Recorder* r : {&before, &after}) {
        EXPECT_THAT(r->heard, testing::Contains("-a.out0"));
        EXPECT_THAT(r->heard, testing::Not(testing::Contains("-a.in2")));
        EXPECT_THAT(r->heard, testing::Not(testing::Contains("cleared")));
    }
}

TEST_F(SelectionTest, MaySelectAndDeselectInACall) {
    Actor linked([&](const HitRecord& part) { selection.deselect(*part.getCurve()); },
                 [&](const HitRecord& part) { selection.select(*part.getCurve()); });
    selection.subscribe(linked);
    selection.select(keyOf(*a, 1));
    EXPECT_EQ(namesOf(selection), (Names{"a", "a.key1"}));
    EXPECT_THAT(recorder.take(), testing::UnorderedElementsAre("+a", "+a.key1"));
    selection.clear();
    EXPECT_THAT(namesOf(selection), IsEmpty());
    EXPECT_THAT(recorder.take(), testing::UnorderedElementsAre("-a", "-a.key1", "cleared"));
}

TEST_F(SelectionTest, ClearReachesTheKeyThatTakesARemovedOnesPlace) {
    selectEverything();
    Actor remover([&](const HitRecord& part) {
        if (nameOf(part) == "a.key0") a->removeSegment(std::next(a->begin()));
    });
    selection.subscribe(remover);
    selection.clear();
    EXPECT_THAT(namesOf(selection), IsEmpty());
}

TEST_F(SelectionTest, ClearGoesOnWhenItsCurvesLeave) {
    for (const bool bothLeave : {false, true}) {
        const auto c = makeCurve("c", 1, straight());
        container->addCurve(c);
        selectEverything();
        Actor remover([&](const HitRecord& part) {
            if (nameOf(part) == "b.segment1") {
                container->removeCurve(std::next(container->begin()));
                if (bothLeave) container->removeCurve(container->begin());
            }
        });
        selection.subscribe(remover);
        selection.clear();
        EXPECT_THAT(namesOf(selection), IsEmpty());
        EXPECT_TRUE(selection.isSelected(keyOf(*b, 1))) << "what left takes its state along";
        EXPECT_FALSE(selection.isSelected(keyOf(*c, 0)));
        container->clear();
        container->addCurve(a);
        container->addCurve(b);
        recorder.heard.clear();
    }
}

// Whatever observers do, nothing crashes, walks end, and what was not touched is deselected.
TEST(SelectionChaos, ObserversMayDoAnything) {
    std::mt19937 random(7);
    const auto below = [&](std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(random); };
    for (int round = 0; round < 400; ++round) {
        auto container = FCurveContainer::create();
        for (int i = 0; i < 3; ++i)
            container->addCurve(makeCurve("c", static_cast<int>(below(5)), below(2) == 0 ? bent() : straight()));
        auto selection = std::make_unique<Selection>(container);
        for (FCurve& curve : *container) SelectCurveCompletely(*selection, curve);

        int budget = 12;
        std::vector<std::unique_ptr<Actor>> actors;
        std::vector<std::shared_ptr<FCurve>> lost;
        const std::function<void(const HitRecord&)> mischief = [&](const HitRecord&) {
            if (below(3) != 0 || budget-- <= 0) return;
            const auto anyCurve = [&] {
                auto it = container->begin();
                std::advance(it, static_cast<std::ptrdiff_t>(below(container->size())));
                return it;
            };
            if (container->empty()) {
                container->addCurve(makeCurve("d", 2, bent()));
                return;
            }
            FCurve& curve = *anyCurve();
            const auto anySegment = std::next(curve.begin(), static_cast<std::ptrdiff_t>(below(curve.size())));
            switch (below(14)) {
            case 0:
                curve.removeSegment(anySegment);
                break;
            case 1:
                addKey(curve, static_cast<double>(below(100)) / 10.0, 0.0, bent());
                break;
            case 2:
                curve.clear();
                break;
            case 3:
                container->removeCurve(anyCurve());
                break;
            case 4: {
                const auto position = anyCurve();
                lost.push_back(position->getShared());
                container->removeCurve(position);
                break;
            }
            case 5:
                container->clear();
                break;
            case 6:
                curve.swap(*anyCurve());
                break;
            case 7:
                curve = *makeCurve("e", 4, straight());
                break;
            case 8:
                anySegment->setInterpolator(below(2) == 0 ? bent() : nullptr);
                break;
            case 9:
                container->insertCurve(container->begin(), makeCurve("f", 1, bent()));
                break;
            case 10:
                if (selection) selection->select(*anySegment);
                break;
            case 11:
                if (selection) SelectCurveCompletely(*selection, curve);
                break;
            case 12:
                actors.push_back(std::make_unique<Actor>(mischief, mischief));
                if (selection) selection->subscribe(*actors.back());
                if (below(2) == 0) actors.erase(actors.begin());
                break;
            case 13:
                selection.reset();
                break;
            default:
                break;
            }
        };
        actors.push_back(std::make_unique<Actor>());
        actors.push_back(std::make_unique<Actor>(mischief, mischief));
        selection->subscribe(*actors.back());
        switch (round % 4) {
        case 0:
            selection->clear();
            break;
        case 1:
            DeselectSelectedParts(*selection);
            break;
        case 2:
            DeselectCurveCompletely(*selection, *container->begin());
            break;
        default: {
            FCurve::Switch silent;
            selection->clear();
        }
            SelectCurveCompletely(*selection, *container->begin());
            break;
        }
        budget = 0;
        Selection judge(container);
        judge.clear();
        EXPECT_EQ(judge.begin(), judge.end());
    }
}

} // namespace
