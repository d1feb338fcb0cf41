#include "support/Basics.h"

using namespace Test;

namespace {

struct Counter : ContainerObserver {
    void containerChanged(FCurveContainer& container) override {
        ++calls;
        if (reaction) reaction(container);
    }
    std::function<void(FCurveContainer&)> reaction;
    int calls = 0;
};

TEST(FCurveContainer, HoldsEachCurveOnceAndInOrder) {
    const auto container = FCurveContainer::create();
    Counter counter;
    container->subscribe(counter);
    const auto a = FCurve::create(), b = FCurve::create();
    EXPECT_EQ(&*container->addCurve(a), a.get());
    container->addCurve(a);
    EXPECT_EQ(counter.calls, 1);
    container->insertCurve(container->begin(), b);
    EXPECT_EQ(&*container->insertCurve(container->begin(), a), a.get()) << "the element at the end; it does not move";
    EXPECT_TRUE(container->addCurve(nullptr) == container->end());
    EXPECT_EQ(counter.calls, 2);
    ASSERT_EQ(container->size(), 2u);
    EXPECT_EQ(&*container->begin(), b.get());

    EXPECT_EQ(&*container->removeCurve(container->begin()), a.get());
    EXPECT_TRUE(container->removeCurve(container->begin()) == container->end());
    EXPECT_TRUE(container->empty());
    container->addCurve(a);
    container->clear();
    container->clear();
    EXPECT_EQ(counter.calls, 7) << "clear tells also when there was nothing";
}

TEST(FCurveContainer, MovesCurvesInsideAndBetweenContainers) {
    const auto one = FCurveContainer::create(), two = FCurveContainer::create();
    Counter counter;
    one->subscribe(counter);
    two->subscribe(counter);
    const auto a = FCurve::create(), b = FCurve::create(), c = FCurve::create();
    for (const auto& curve : {a, b, c}) one->addCurve(curve);
    two->addCurve(b);
    counter.calls = 0;
    const auto order = [](FCurveContainer& container) {
        std::vector<const FCurve*> curves;
        for (const FCurve& curve : container) curves.push_back(&curve);
        return curves;
    };
    const auto atC = std::prev(one->end());
    EXPECT_EQ(&*one->moveCurve(one->begin(), *c), c.get());
    EXPECT_THAT(order(*one), ElementsAre(c.get(), a.get(), b.get()));
    EXPECT_EQ(atC, one->begin()) << "iterators stay";
    EXPECT_EQ(counter.calls, 1);
    one->moveCurve(atC, *c);
    one->moveCurve(std::next(atC), *c);
    EXPECT_EQ(counter.calls, 1) << "it stands there";

    EXPECT_EQ(&*two->moveCurve(two->begin(), *one, *a), a.get());
    EXPECT_THAT(order(*one), ElementsAre(c.get(), b.get()));
    EXPECT_THAT(order(*two), ElementsAre(a.get(), b.get()));
    EXPECT_EQ(counter.calls, 3) << "both containers tell";
    EXPECT_TRUE(two->contains(*a) && !one->contains(*a));
    EXPECT_EQ(&*two->moveCurve(two->begin(), *one, *b), b.get()) << "in both, and stays so";
    EXPECT_TRUE(one->moveCurve(one->begin(), *a) == one->end());
    EXPECT_TRUE(one->moveCurve(one->begin(), *two, *c) == one->end()) << "not in the other one";
    EXPECT_EQ(counter.calls, 3);
    two->moveCurve(two->end(), *two, *a);
    EXPECT_THAT(order(*two), ElementsAre(b.get(), a.get()));
    EXPECT_EQ(&*two->removeCurve(two->begin()), a.get());
}

TEST(FCurveContainer, PropertiesAndSwitches) {
    const auto container = FCurveContainer::create();
    Counter counter;
    container->subscribe(counter);
    EXPECT_TRUE(container->setProperty("a", "b"));
    EXPECT_FALSE(container->setProperty("a", "b"));
    container->clearProperties();
    container->clearProperties();
    EXPECT_EQ(counter.calls, 2);
    const FCurveContainer::Switch own(*container);
    container->notifyChanged();
    EXPECT_TRUE(own.blockedNotification());
    const FCurveContainer::Switch everywhere;
    container->addCurve(FCurve::create());
    EXPECT_TRUE(everywhere.blockedNotification());
    EXPECT_EQ(counter.calls, 2);
}

TEST(FCurveContainer, MayBeEmptiedOrDestroyedInsideACallback) {
    for (const bool destroy : {false, true}) {
        auto container = FCurveContainer::create();
        FCurveContainer& reference = *container;
        container->addCurve(FCurve::create());
        Counter counter;
        counter.reaction = [&](FCurveContainer& c) {
            if (!c.empty()) c.clear();
            if (destroy) container.reset();
        };
        container->subscribe(counter);
        const std::weak_ptr<FCurveContainer> weak = container;
        reference.addCurve(FCurve::create());
        EXPECT_EQ(weak.expired(), destroy);
        EXPECT_EQ(counter.calls, 2);
    }
}

} // namespace
