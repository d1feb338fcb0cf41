#include "support/Basics.h"
#include "support/Invariants.h"
#include "support/Recorder.h"
#include "tests/support/Allocations.h"

#include <optional>
#include <stdexcept>

using namespace Test;

namespace {

// Calls back from curveChanged, which every edit reaches through the defaults.
struct Reacting : FCurveObserver {
    explicit Reacting(std::function<void(FCurve&)> r = nullptr) : reaction(std::move(r)) {}
    void curveChanged(FCurve& curve) override {
        ++calls;
        if (reaction) reaction(curve);
    }
    std::function<void(FCurve&)> reaction;
    int calls = 0;
};

// Edits of a curve of three keys whose second has properties, and so has the curve.
const struct {
    int told; // how often an observer hears of it
    std::function<void(FCurve&)> act;
} kEdits[] = {
    {5, [](FCurve& c) { KeyAt(c, 1)->set(1.5, 3); }},
    {1, [](FCurve& c) { KeyAt(c, 1)->setBreakdown(true); }},
    {1, [](FCurve& c) { KeyAt(c, 1)->setTangentsUnified(true); }},
    {1, [](FCurve& c) { KeyAt(c, 1)->setProperty("a", "b"); }},
    {2, [](FCurve& c) { KeyAt(c, 1)->clearProperties(); }},
    {2, [](FCurve& c) { KeyAt(c, 1)->getInTangent()->setType(Tangent::Linear); }},
    {1, [](FCurve& c) { KeyAt(c, 1)->getInTangent()->setWeightLocked(true); }},
    {1, [](FCurve& c) { KeyAt(c, 1)->getInTangent()->setProperty("a", "b"); }},
    {1, [](FCurve& c) { *KeyAt(c, 1)->getInTangent() = *KeyAt(c, 1)->getOutTangent(); }},
    {1, [](FCurve& c) { c.begin()->setInterpolator(nullptr); }},
    {1, [](FCurve& c) { c.begin()->setProperty("a", "b"); }},
    {2, [](FCurve& c) { c.insertSegment(*Keyframe::create(7, 8), nullptr); }},
    {1, [](FCurve& c) { c.removeSegment(std::next(c.begin())); }},
    {1, [](FCurve& c) { c.setName("n"); }},
    {1, [](FCurve& c) { c.setProperty("a", "b"); }},
    {1, [](FCurve& c) { c.clearProperties(); }},
    {1, [](FCurve& c) { c.notifyChanged(); }},
    {1, [](FCurve& c) { c.clear(); }},
    {1, [](FCurve& c) { c = *FCurve::create(); }},
    {1, [](FCurve& c) { c.swap(*FCurve::create()); }},
};

std::shared_ptr<FCurve> ToEdit() {
    auto curve = CurveThrough({{0, 0}, {1, 3}, {2, 0}});
    curve->setProperty("x", "1");
    KeyAt(*curve, 1)->getOutTangent()->setWeightLocked(true);
    KeyAt(*curve, 1)->setProperty("x", "1");
    KeyAt(*curve, 1)->setProperty("y", "1");
    return curve;
}

TEST(Notification, EveryEditReachesCurveChangedOncePerChange) {
    int number = 0;
    for (const auto& edit : kEdits) {
        SCOPED_TRACE(number++);
        const auto curve = ToEdit();
        Reacting observer;
        curve->subscribe(observer);
        curve->subscribe(observer); // has no further effect
        edit.act(*curve);
        EXPECT_EQ(observer.calls, edit.told);
    }
    const auto curve = CurveThrough({{0, 0}, {30, 0}});
    Recorder recorder;
    curve->subscribe(recorder);
    AddKey(*curve, 10, 0);
    EXPECT_THAT(recorder.take(), ElementsAre("added 1", "tangent 0.out", "tangent 2.in"));
    curve->removeSegment(curve->findSegment(10));
    EXPECT_THAT(recorder.take(), ElementsAre("removed", "tangent 0.out", "tangent 1.in"));
}

TEST(Notification, ChangeTypeDecidesWhatNotifyChangedSendsAndNothingElse) {
    const auto curve = CurveThrough({{0, 0}, {10, 0}});
    Recorder recorder;
    curve->subscribe(recorder);
    for (const auto type : {FCurve::BeginChange, FCurve::StepChange, FCurve::EndChange, FCurve::OrdinaryChange,
                            static_cast<FCurve::ChangeType>(9)}) {
        FCurve::setChangeType(type);
        curve->notifyChanged();
        KeyAt(*curve, 1)->setY(type + 1.0);
    }
    FCurve::setChangeType(FCurve::OrdinaryChange);
    EXPECT_THAT(recorder.heard, ElementsAre("begin", "key 1 moved", "step", "key 1 moved", "end", "key 1 moved",
                                            "curve", "key 1 moved", "curve", "key 1 moved"));
}

TEST(Notification, SwitchesSuppressRememberAndRestore) {
    auto curve = CurveThrough({{0, 0}, {10, 0}});
    const auto key = KeyAt(*curve, 1);
    Recorder recorder;
    curve->subscribe(recorder);
    std::optional<FCurve::Switch> outer(std::in_place, *curve);
    EXPECT_FALSE(outer->blockedNotification());
    key->setY(1);
    EXPECT_TRUE(outer->blockedNotification());
    {
        FCurve::Switch inner(*curve);
        EXPECT_FALSE(inner.blockedNotification());
        FCurve::Switch everywhere;
        key->setY(2);
        EXPECT_TRUE(everywhere.blockedNotification());
        EXPECT_FALSE(inner.blockedNotification()) << "the library's switch comes first";
    }
    EXPECT_TRUE(outer->blockedNotification());
    outer.reset();
    EXPECT_THAT(recorder.heard, IsEmpty()) << "what was suppressed is not sent afterwards";
    key->setY(3);
    EXPECT_THAT(recorder.take(), ElementsAre("key 1 moved"));

    curve->unsubscribe(recorder);
    std::weak_ptr<FCurve> alive = curve;
    {
        const FCurve::Switch unheard(*curve);
        key->setY(4);
        EXPECT_TRUE(unheard.blockedNotification()) << "also when nobody is subscribed";
        curve.reset();
        EXPECT_FALSE(alive.expired()) << "a switch keeps its curve";
    }
    EXPECT_TRUE(alive.expired());
}

TEST(Notification, ObserversMayComeAndGoDuringADelivery) {
    const auto curve = CurveThrough({{0, 0}});
    Recorder leaver, arrival, global;
    auto dying = std::make_unique<Reacting>();
    Reacting last, first([&](FCurve&c) {
        if (first.calls > 1) return;
        c.unsubscribe(leaver);
        dying.reset();
        c.subscribe(arrival);
        FCurve::subscribeGlobal(global);
        c.setName("nested");
    });
    curve->subscribe(first);
    curve->subscribe(leaver);
    curve->subscribe(*dying);
    curve->subscribe(last);
    FCurve::subscribeGlobal(leaver);
    curve->notifyChanged();
    EXPECT_EQ(last.calls, 2);
    EXPECT_THAT(leaver.take(), ElementsAre("name", "curve")) << "still subscribed globally, after the curve's own";
    EXPECT_THAT(arrival.take(), ElementsAre("name")) << "hears of what is edited after its subscription, nothing else";
    EXPECT_THAT(global.take(), ElementsAre("name"));
    FCurve::unsubscribeGlobal(leaver);
    curve->notifyChanged();
    EXPECT_THAT(leaver.heard, IsEmpty());
    EXPECT_THAT(arrival.heard, ElementsAre("curve"));
}

TEST(Notification, SubscribesWhollyOrNotAtAll) {
    const auto curve = FCurve::create();
    bool failed = true;
    for (long allocations = 0; failed; ++allocations) {
        const auto observer = std::make_unique<Reacting>();
        failed = runsOutOfMemory(allocations, [&] { curve->subscribe(*observer); });
        curve->notifyChanged();
        EXPECT_EQ(observer->calls, failed ? 0 : 1) << allocations;
    }
    curve->notifyChanged();
}

// Whatever is taken away inside the callback, the edit that is being told of must end well.
TEST(Notification, AnythingMayBeDestroyedInsideACallback) {
    for (const auto& edit : kEdits) {
        for (const bool destroy : {false, true}) {
            auto curve = ToEdit();
            FCurve& reference = *curve;
            auto second = std::make_unique<Reacting>();
            Reacting first([&](FCurve& c) {
                second.reset();
                if (c.size() > 1) c.clear();
                if (destroy) curve.reset();
            });
            curve->subscribe(first);
            curve->subscribe(*second);
            const std::weak_ptr<FCurve> weak = curve;
            edit.act(reference);
            EXPECT_GT(first.calls, 0);
            EXPECT_EQ(weak.expired(), destroy);
        }
    }
}

TEST(Notification, AnObserversExceptionPassesThroughAndLeavesAllSound) {
    const auto curve = CurveThrough({{0, 0}, {1, 0}});
    Reacting thrower([](FCurve&) { throw std::runtime_error("no"); });
    Reacting other;
    curve->subscribe(thrower);
    curve->subscribe(other);
    EXPECT_THROW(KeyAt(*curve, 1)->setY(4), std::runtime_error);
    EXPECT_EQ(KeyAt(*curve, 1)->getY(), 4);
    EXPECT_EQ(other.calls, 0);
    curve->unsubscribe(thrower);
    KeyAt(*curve, 1)->setY(5);
    EXPECT_EQ(other.calls, 1);
    EXPECT_EQ(Fault(*curve), "");
}

TEST(Notification, SubjectsAndObserversDieInAnyOrder) {
    auto curve = FCurve::create();
    auto container = FCurveContainer::create();
    {
        struct Both : FCurveObserver, ContainerObserver {
        } both;
        curve->subscribe(both);
        FCurve::subscribeGlobal(both);
        container->subscribe(both);
    }
    curve->notifyChanged();
    container->notifyChanged();
    Recorder recorder;
    curve->subscribe(recorder);
    curve.reset();
    Recorder copy(recorder);
    EXPECT_THAT(copy.heard, IsEmpty());
}

} // namespace
