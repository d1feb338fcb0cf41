#include "support/Basics.h"
#include "support/Random.h"
#include "tests/selection/Parts.h"
#include "tests/support/Allocations.h"

#include <array>
#include <optional>
#include <stdexcept>

namespace {

using namespace Test;

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
    SelectionRecorder recorder;

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
    // As records, and by the overloads for the parts themselves.
    const std::pair<std::string, HitRecord> parts[] = {{"a", HitRecord(a)},
                                                       {"a.segment1", HitRecord(segment.getShared())},
                                                       {"a.key1", HitRecord(segment.getRightKey())},
                                                       {"a.in1", HitRecord(segment.getInTangent(), true)},
                                                       {"a.out0", HitRecord(segment.getOutTangent(), false)}};
    const auto check = [&](const std::string& name, auto&& part, const HitRecord& record) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(selection.isSelected(part));
        selection.select(part);
        selection.select(part);
        EXPECT_TRUE(selection.isSelected(part) && selection.isSelected(ConstHitRecord(record)));
        EXPECT_EQ(recorder.take(), (Names{"+" + name}));
        EXPECT_EQ(namesOf(selection), (Names{name}));
        EXPECT_STREQ(selection.begin().getProperty("fc_sel"), "1");
        selection.deselect(part);
        selection.deselect(part);
        EXPECT_FALSE(selection.isSelected(part));
        EXPECT_EQ(recorder.take(), (Names{"-" + name}));
    };
    for (const auto& [name, record] : parts) check(name, record, record);
    check("a", *a, parts[0].second);
    check("a.segment1", segment, parts[1].second);
    check("a.key1", keyOf(*a, 1), parts[2].second);
    check("a.in1", *segment.getInTangent(), parts[3].second);
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
    SelectionRecorder otherRecorder;
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

    // The walk over b's linear segments shows no tangents.
    const Names parts{"b",      "b.segment0", "b.out-1", "b.in0",      "b.key0", "b.segment1",
                      "b.out0", "b.in1",      "b.key1",  "b.segment2", "b.out1", "b.in2"};
    Names expected = namesOf(HitRecordIterator::begin(*container), std::next(HitRecordIterator::begin(*container), 14));
    expected.insert(expected.end(), parts.begin(), parts.end());
    for (std::string& name : expected) name.insert(0, "-");
    expected.push_back("cleared");
    selectEverything();
    for (Segment& segment : *b) {
        selection.select(*segment.getInTangent());
        selection.select(*segment.getOutTangent());
    }
    recorder.heard.clear();
    selection.clear();
    EXPECT_EQ(recorder.take(), expected);
    EXPECT_THAT(namesOf(selection), IsEmpty());
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

TEST_F(SelectionTest, ObserversAreCalledOnceEachByAddressAfterTheChange) {
    std::string calls;
    std::array<Actor, 4> observers;
    for (const std::size_t i : {2, 0, 3, 1}) {
        const auto call = [&, i](const HitRecord& part) {
            calls += std::to_string(i) + (selection.isSelected(part) ? "+" : "-");
        };
        observers[i] = Actor(call, call);
        selection.subscribe(observers[i]);
        selection.subscribe(observers[i]);
    }
    selection.select(*a);
    EXPECT_EQ(calls, "0+1+2+3+");
    selection.unsubscribe(observers[0]);
    selection.deselect(*a);
    EXPECT_EQ(calls, "0+1+2+3+1-2-3-");
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
    std::string calls;
    std::array<std::optional<Actor>, 4> actors; // called in this order
    for (const int i : {0, 1, 2, 3})
        actors.at(static_cast<std::size_t>(i)).emplace(Actor::Act{}, [&, i](const HitRecord& part) {
            calls += std::to_string(i) + nameOf(part) + " ";
            if (i != 0 || nameOf(part) != "a") return;
            selection.unsubscribe(*actors[1]);
            actors[2].reset();
            selection.subscribe(*actors[3]);
            selection.select(*b);
        });
    for (const std::size_t i : {0, 1, 2}) selection.subscribe(*actors[i]);
    selection.select(*a);
    EXPECT_EQ(calls, "0a 0b 3b ") << "one arrived during the call";
}

TEST_F(SelectionTest, AThrowingObserverLeavesEverythingSound) {
    SelectionRecorder late;
    int left = 0;
    const auto step = [&](const HitRecord&) {
        if (left-- == 0) throw std::runtime_error("stop");
    };
    Actor thrower(step, step);
    selection.subscribe(thrower);
    EXPECT_THROW(selection.select(*a), std::runtime_error);
    EXPECT_TRUE(selection.isSelected(*a));
    selectEverything(); // its counter is below zero
    left = 5;
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
    SelectionRecorder before, after;
    Actor killer([&](const HitRecord& part) {
        if (nameOf(part) == "a.key1") mortal.reset();
    });
    mortal->subscribe(before);
    mortal->subscribe(killer);
    mortal->subscribe(after);
    mortal->clear();
    EXPECT_EQ(mortal, nullptr);
    EXPECT_THAT(namesOf(selection), IsEmpty());
    for (const SelectionRecorder* r : {&before, &after}) {
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
    Random random(7);
    const auto anyKind = [&] { return random.coin() ? bent() : straight(); };
    for (int round = 0; round < 400; ++round) {
        auto container = FCurveContainer::create();
        for (int i = 0; i < 3; ++i) container->addCurve(makeCurve("c", random.below(5), anyKind()));
        auto selection = std::make_unique<Selection>(container);
        for (FCurve& curve : *container) SelectCurveCompletely(*selection, curve);

        int budget = 12;
        std::vector<std::unique_ptr<Actor>> actors;
        std::vector<std::shared_ptr<FCurve>> lost;
        const std::function<void(const HitRecord&)> mischief = [&](const HitRecord&) {
            if (random.below(3) != 0 || budget-- <= 0) return;
            if (container->empty()) {
                container->addCurve(makeCurve("d", 2, bent()));
                return;
            }
            const auto position = random.placeIn(*container);
            FCurve& curve = *position;
            const auto segment = random.placeIn(curve);
            const auto takeAway = [&] {
                lost.push_back(curve.getShared());
                container->removeCurve(position);
            };
            const auto newcomer = [&] {
                actors.push_back(std::make_unique<Actor>(mischief, mischief));
                if (selection) selection->subscribe(*actors.back());
                if (random.coin()) actors.erase(actors.begin());
            };
            random.act({{"remove a segment", [&] { curve.removeSegment(segment); }},
                        {"add a key", [&] { addKey(curve, random.between(0, 10), 0.0, bent()); }},
                        {"clear a curve", [&] { curve.clear(); }},
                        {"destroy a curve", [&] { container->removeCurve(position); }},
                        {"take a curve away", takeAway},
                        {"clear", [&] { container->clear(); }},
                        {"swap", [&] { curve.swap(random.oneOf(*container)); }},
                        {"assign", [&] { curve = *makeCurve("e", 4, straight()); }},
                        {"change the kind", [&] { segment->setInterpolator(random.coin() ? bent() : nullptr); }},
                        {"insert", [&] { container->insertCurve(container->begin(), makeCurve("f", 1, bent())); }},
                        {"select", [&] { selection ? selection->select(*segment) : curve.clear(); }},
                        {"select all", [&] { selection ? SelectCurveCompletely(*selection, curve) : curve.clear(); }},
                        {"subscribe", newcomer},
                        {"destroy the selection", [&] { selection.reset(); }}});
        };
        actors.push_back(std::make_unique<Actor>());
        actors.push_back(std::make_unique<Actor>(mischief, mischief));
        selection->subscribe(*actors.back());
        const auto selectAnew = [&] {
            {
                FCurve::Switch silent;
                selection->clear();
            }
            SelectCurveCompletely(*selection, *container->begin());
        };
        random.act({{"clear", [&] { selection->clear(); }},
                    {"deselect parts", [&] { DeselectSelectedParts(*selection); }},
                    {"deselect a curve", [&] { DeselectCurveCompletely(*selection, *container->begin()); }},
                    {"select", selectAnew}});
        budget = 0;
        Selection judge(container);
        judge.clear();
        EXPECT_EQ(judge.begin(), judge.end());
    }
}

} // namespace
