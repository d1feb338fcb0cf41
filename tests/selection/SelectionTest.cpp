#include "support/Allocations.h"
#include "support/Basics.h"
#include "support/Parts.h"

#include <array>
#include <optional>

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
        for (const HitRecord& part : partsOf(*container, true)) selection.select(part);
        recorder.heard.clear();
    }
};

TEST_F(SelectionTest, OnlyTheExactValueCounts) {
    for (const char* value : {"0", "yes", "11", " 1"}) {
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

TEST_F(SelectionTest, WalksByKind) {
    const auto check = [this](const Names& curves, const Names& segments, const Names& keys, const Names& tangents) {
        const auto names = [&](auto it, const auto& end) {
            Names result;
            for (; it != end; ++it) result.push_back(nameOf(*it));
            return result;
        };
        EXPECT_EQ(names(BeginSelectedCurves(selection), EndSelectedCurves(selection)), curves);
        EXPECT_EQ(names(BeginSelectedSegments(selection), EndSelectedSegments(selection)), segments);
        EXPECT_EQ(names(BeginSelectedKeyframes(selection), EndSelectedKeyframes(selection)), keys);
        EXPECT_EQ(names(BeginSelectedTangents(selection), EndSelectedTangents(selection)), tangents);
    };
    selection.select(*b);
    check({"b"}, {}, {}, {});
    selectEverything();
    check(
        {"a", "b"}, {"a.segment0", "a.segment1", "a.segment2", "a.segment3", "b.segment0", "b.segment1", "b.segment2"},
        {"a.key0", "a.key1", "a.key2", "b.key0", "b.key1"}, {"a.in0", "a.out0", "a.in1", "a.out1", "a.in2", "a.out2"});
}

TEST_F(SelectionTest, ClearTellsInTheOrderOfTheWalkAndOnlyItsOwnObservers) {
    Selection other(container);
    SelectionRecorder otherRecorder;
    other.subscribe(otherRecorder);
    other.clear();
    EXPECT_EQ(otherRecorder.take(), (Names{"cleared"}));
    selectEverything();
    Names expected = namesOf(partsOf(*container, true)); // b's tangents, too, which the walk does not show
    for (std::string& name : expected) name.insert(0, "-");
    expected.push_back("cleared");
    other.clear();
    EXPECT_EQ(otherRecorder.take(), expected);
    EXPECT_THAT(namesOf(selection), IsEmpty());
    EXPECT_THAT(recorder.take(), IsEmpty());
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
    // The curve keeps its own map; a part makes one for its first property.
    EXPECT_EQ(allocationsOf([this] { SelectCurveCompletely(selection, *a); }), (1 + 4 + 3 + 6) * one - 1);
    EXPECT_EQ(allocationsOf([this] {
                  std::size_t n = 0;
                  for (const HitRecord& part : selection) n += part.getType();
                  EXPECT_GT(n, 0U);
              }),
              0U);
    EXPECT_EQ(allocationsOf([this] { selection.clear(); }), 0U);
    selection.unsubscribe(actor);
}

// --- records and walks -----------------------------------------------------------------------------------------------

// What a walk yields, forwards and backwards, HostTest.cpp compares with a walk of its own.
TEST_F(SelectionTest, AWalkStandsItsGroundWhenItsKeyIsRemoved) {
    auto it = HitRecordIterator::begin(*container);
    while (nameOf(*it) != "a.key2") ++it;
    const auto here = it++;
    EXPECT_EQ(nameOf(*here), "a.key2");
    EXPECT_NE(here, it);
    a->removeSegment(std::next(a->begin(), 3));
    EXPECT_STREQ(here.getProperty("fc_sel"), "");
    EXPECT_EQ(nameOf(*std::next(here)), "b");
    EXPECT_EQ(HitRecordIterator(), HitRecordIterator());
}

TEST_F(SelectionTest, AHostsFilterIsAskedForPartsAndStacks) {
    struct LateKeys {
        bool operator()(const HitRecord& r) const { return r.getKeyframe() && r.getKeyframe()->getX() >= 11.0; }
    };
    using Late = FilterIterator<LateKeys, HitRecordIterator>;
    const auto end = HitRecordIterator::end(*container);
    const Late first(HitRecordIterator::begin(*container), end), last(end, end);
    EXPECT_EQ(first->getKeyframe()->getX(), 11.0);
    EXPECT_EQ(std::distance(first, last), 3);
    using LateCurves = FilterIterator<Private::CurveFilter, Late>;
    EXPECT_EQ(LateCurves(first, last), LateCurves(last, last));
}

TEST_F(SelectionTest, ARecordLetsItsPartGoButKeepsATangentOutOfReach) {
    std::shared_ptr<FCurve> other = makeCurve("c", 0, straight());
    const std::weak_ptr<FCurve> dead = other;
    HitRecord record(std::move(other));
    record.reset();
    EXPECT_EQ(record, HitRecord());
    EXPECT_TRUE(dead.expired());

    const auto tangent = Tangent::create(nullptr, true); // of no curve, so that nobody else shares its owner
    const long before = tangent.use_count();
    record.reset(tangent, true);
    EXPECT_NE(record, HitRecord(tangent, false));
    record.reset(keyOf(*a, 0).getShared());
    EXPECT_EQ(record.getTangent(), nullptr);
    EXPECT_EQ(tangent.use_count(), before + 1);
    record.reset(a->begin()->getInTangent(), true);
    EXPECT_EQ(tangent.use_count(), before);
}

TEST_F(SelectionTest, CollectsAndNotifiesSelectedCurvesOnly) {
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
    Records parts;
    GetSelectedCurves(selection, parts);
    EXPECT_EQ(parts, (Records{HitRecord(b), HitRecord(c)}));
    GetSelected(selection, parts);
    EXPECT_EQ(parts, (Records{HitRecord(b), HitRecord(c), HitRecord(keyOf(*a, 0).getShared())}));
    for (const auto& curve : {a, b, c}) curve->subscribe(counter);
    counter.act = [&] { container->removeCurve(std::next(container->begin())); };
    NotifyCurveChanges(selection);
    EXPECT_EQ(counter.names, (Names{"b", "c"}));
    EXPECT_EQ(container->size(), 1U);
}

// --- observers -------------------------------------------------------------------------------------------------------

TEST_F(SelectionTest, ObserversAreCalledByAddressAndMayComeAndGoDuringACall) {
    std::string calls;
    std::array<std::optional<Actor>, 5> actors; // called in this order
    for (std::size_t i = 0; i < actors.size(); ++i)
        actors.at(i).emplace(Actor::Act{}, [&, i](const HitRecord& part) {
            calls += std::to_string(i) + nameOf(part) + (selection.isSelected(part) ? " " : "! ");
            if (i != 1 || nameOf(part) != "a") return;
            selection.unsubscribe(*actors[2]);
            actors[3].reset();
            selection.subscribe(*actors[0]);
            selection.select(*b);
        });
    for (const std::size_t i : {4, 1, 3, 2, 1}) selection.subscribe(*actors.at(i));
    selection.select(*a);
    EXPECT_EQ(calls, "1a 0b 1b 4b 4a ") << "the one that arrived hears of the edit that came after it";
}

TEST_F(SelectionTest, SwitchesSilenceIt) {
    {
        const Selection::Switch outer(selection);
        EXPECT_FALSE(outer.blockedNotification());
        {
            const Selection::Switch inner(selection);
            selection.select(*a);
            EXPECT_TRUE(inner.blockedNotification());
        }
        EXPECT_FALSE(outer.blockedNotification());
        selection.clear();
        EXPECT_TRUE(outer.blockedNotification());
    }
    {
        const FCurve::Switch all;
        selection.select(*a);
        EXPECT_TRUE(all.blockedNotification());
    }
    EXPECT_THAT(recorder.take(), IsEmpty());
    const FCurve::Switch one(*a); // of the curve, not of the selection
    selection.deselect(*a);
    EXPECT_EQ(recorder.take(), (Names{"-a"}));
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
    EXPECT_THAT(namesOf(selection), IsEmpty()) << "the walk ends";
    for (const SelectionRecorder* r : {&before, &after}) {
        EXPECT_THAT(r->heard, testing::Contains("-a.out0"));
        EXPECT_THAT(r->heard, testing::Not(testing::Contains("-a.in2"))) << "in silence";
    }
}

TEST_F(SelectionTest, ClearGoesOnWhenKeysAndCurvesLeave) {
    const auto c = makeCurve("c", 1, straight());
    addKey(*a, 20, 0, bent());
    for (const bool bothLeave : {false, true}) {
        container->addCurve(c);
        selectEverything();
        bool removed = false;
        Actor remover([&](const HitRecord& part) {
            const std::string name = nameOf(part);
            // Once: another key takes its place.
            if (!std::exchange(removed, removed || name == (bothLeave ? "a.in0" : "a.key0")) && removed)
                a->removeSegment(std::next(a->begin()));
            if (name != "b.segment1") return;
            container->removeCurve(std::next(container->begin()));
            if (bothLeave) container->removeCurve(container->begin());
        });
        selection.subscribe(remover);
        selection.clear();
        EXPECT_THAT(namesOf(selection), IsEmpty());
        EXPECT_FALSE(selection.isSelected(keyOf(*a, 0)));
        EXPECT_TRUE(selection.isSelected(keyOf(*b, 1))) << "what left takes its state along";
        EXPECT_FALSE(selection.isSelected(keyOf(*c, 0)));
        container->clear();
        container->addCurve(a);
        container->addCurve(b);
    }
}

} // namespace
