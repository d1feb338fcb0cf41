// Thousands of random edits of a curve, beside a naive model that holds its keys in a plain vector and searches
// linearly.

#include "support/Basics.h"
#include "support/Invariants.h"
#include "support/Random.h"
#include "support/Recorder.h"

#include <map>
#include <random>

using namespace Test;

namespace {

struct NaiveKey {
    double x, y;
    bool breakdown;
    const Interpolator* interpolator; // of the segment that starts here
    std::string property;
};

struct NaiveCurve {
    std::vector<NaiveKey> keys;
    const Interpolator* leading = nullptr;

    std::size_t numberAt(double x) const { // of the last key not above x, counted from 1
        std::size_t n = 0;
        while (n < keys.size() && keys[n].x <= x) ++n;
        return n;
    }
    double clamp(std::size_t i, double x) const {
        const double present = keys[i].x;
        if (x < present && i > 0) {
            x = std::max(x, keys[i - 1].x + 0.001);
            if (x >= present) x = present;
        } else if (x > present && i + 1 < keys.size()) {
            x = std::min(x, keys[i + 1].x - 0.001);
            if (x <= present) x = present;
        }
        return x;
    }
    void move(std::size_t i, double x, double y) {
        const double oldX = keys[i].x;
        if (oldX == x && keys[i].y == y) return;
        x = clamp(i, x);
        keys[i] = {x, y, keys[i].breakdown, keys[i].interpolator, keys[i].property};
        if (x == oldX) return;
        std::size_t l = i, r = i;
        while (l > 0 && keys[l - 1].breakdown) --l;
        while (r + 1 < keys.size() && keys[r + 1].breakdown) ++r;
        for (std::size_t step = 0; step <= r - l; ++step) {
            const std::size_t k = x > oldX ? r - step : l + step;
            if (k == i) continue;
            const bool anchored = k < i ? l > 0 : r + 1 < keys.size();
            const double anchor = !anchored ? 0 : k < i ? keys[l - 1].x : keys[r + 1].x;
            const double old = keys[k].x;
            const double to = anchored ? anchor + (old - anchor) * ((anchor - oldX) - (x - oldX)) / (anchor - oldX)
                                       : old + (x - oldX);
            keys[k].x = clamp(k, to);
        }
    }
};

// Follows a curve by its notifications alone.
struct Mirror : FCurveObserver {
    explicit Mirror(FCurve& curve) { sync(curve); }
    void sync(FCurve& curve) {
        positions.clear();
        handles.clear();
        for (Segment& segment : curve) add(segment);
    }
    void add(Segment& segment) {
        if (const auto key = segment.getLeftKey()) {
            positions[key.get()] = key->get();
            handles[key->getInTangent().get()] = key->getInTangent()->get();
            handles[key->getOutTangent().get()] = key->getOutTangent()->get();
        }
    }
    void curveChanged(FCurve& curve) override { sync(curve); }
    void keyframeIntrinsicChanged(Keyframe& key, KeyframeIntrinsicType) override { positions[&key] = key.get(); }
    void tangentIntrinsicChanged(Tangent& tangent, TangentIntrinsicType) override { handles[&tangent] = tangent.get(); }
    void segmentIntrinsicChanged(Segment&, SegmentIntrinsicType) override {}
    void keyframePropertyChanged(Keyframe&, const char*, const char*) override {}
    void segmentAdded(FCurve&, Segment& segment) override { add(segment); }
    void segmentRemoved(FCurve&, Segment& segment) override {
        positions.erase(segment.getLeftKey().get());
        handles.erase(segment.getInTangent().get());
        handles.erase(segment.getOutTangent().get());
    }
    std::map<const Keyframe*, Vector2D<double>> positions;
    std::map<const Tangent*, Vector2D<double>> handles;
};

std::string Difference(FCurve& curve, const NaiveCurve& naive, const Mirror& mirror) {
    if (curve.size() != naive.keys.size() + 1) return "another number of keys";
    if (mirror.positions.size() != naive.keys.size()) return "the mirror has another number of keys";
    std::size_t i = 0;
    for (Segment& segment : curve) {
        const auto key = segment.getLeftKey();
        const Interpolator* interpolator = segment.getInterpolator().get();
        if (!key) {
            if (interpolator != naive.leading) return "another leading interpolator";
            continue;
        }
        const NaiveKey& expected = naive.keys[i++];
        const std::string where = "key " + std::to_string(i - 1) + ": ";
        if (key->getX() != expected.x) return where + "another x";
        if (key->getY() != expected.y) return where + "another y";
        if (key->isBreakdown() != expected.breakdown) return where + "another breakdown flag";
        if (interpolator != expected.interpolator) return where + "another interpolator";
        if (key->getProperty("p") != expected.property) return where + "another property";
        const auto seen = mirror.positions.find(key.get());
        if (seen == mirror.positions.end() || seen->second != key->get()) return where + "moved unheard";
        for (const auto& tangent : {key->getInTangent(), key->getOutTangent()}) {
            const auto handle = mirror.handles.find(tangent.get());
            if (handle == mirror.handles.end() || handle->second != tangent->get())
                return where + "tangent changed unheard";
            const bool held = !tangent->isWeighted() || tangent->getType() > Tangent::Flat;
            const auto owner = tangent->getOwningSegment();
            if (held && owner->getLeftKey() && owner->getRightKey()) {
                const double third = (owner->getRightKey()->getX() - owner->getLeftKey()->getX()) / 3;
                if (std::fabs(std::fabs(tangent->getX()) - third) > 2e-07) return where + "handle not a third";
            }
        }
    }
    return "";
}

void Drive(unsigned seed, int edits) {
    Random random(seed);
    const auto pick = [&](std::size_t n) { return static_cast<std::size_t>(random.below(static_cast<int>(n))); };
    const auto number = [&](double scale) { return random.between(-scale, scale); };
    const std::shared_ptr<Interpolator> interpolators[] = {Constant::create(), Linear::create(), nullptr};

    auto curve = FCurve::create();
    NaiveCurve naive;
    naive.leading = curve->begin()->getInterpolator().get();
    auto mirror = std::make_unique<Mirror>(*curve);
    curve->subscribe(*mirror);

    for (int step = 0; step < edits; ++step) {
        const std::size_t n = naive.keys.size();
        const std::size_t what = n == 0 ? 0 : pick(100);
        const std::size_t i = n == 0 ? 0 : pick(n);
        const auto key = n == 0 ? nullptr : KeyAt(*curve, static_cast<int>(i));
        if (what < 22) {
            const auto fresh = Keyframe::create(std::round(number(1000)) / 4, number(10));
            fresh->setBreakdown(pick(3) == 0);
            fresh->setTangentsUnified(pick(3) == 0);
            const auto& interpolator = random.oneOf(interpolators);
            curve->insertSegment(*fresh, interpolator);
            const std::size_t at = naive.numberAt(fresh->getX());
            if (at == 0 || naive.keys[at - 1].x != fresh->getX())
                naive.keys.insert(naive.keys.begin() + static_cast<std::ptrdiff_t>(at),
                                  {fresh->getX(), fresh->getY(), fresh->isBreakdown(), interpolator.get(), ""});
        } else if (what < 36) {
            const std::size_t at = naive.numberAt(key->getX());
            ASSERT_EQ(at, i + 1);
            curve->removeSegment(curve->findSegment(key->getX()));
            naive.keys.erase(naive.keys.begin() + static_cast<std::ptrdiff_t>(i));
        } else if (what < 66) {
            const double x = key->getX() + number(pick(2) ? 3 : 300);
            const double y = pick(4) ? number(10) : key->getY();
            FCurve::setChangeType(static_cast<FCurve::ChangeType>(pick(4)));
            key->set(x, y);
            FCurve::setChangeType(FCurve::OrdinaryChange);
            naive.move(i, x, y);
        } else if (what < 80) {
            const auto tangent = pick(2) ? key->getInTangent() : key->getOutTangent();
            random.act({{"handle", [&] { tangent->set(number(5), number(5)); }},
                        {"angle", [&] { tangent->setAngle(number(4)); }},
                        {"weight", [&] { tangent->setWeight(number(5)); }},
                        {"weighted", [&] { tangent->setWeighted(random.coin()); }},
                        {"weight lock", [&] { tangent->setWeightLocked(random.coin()); }},
                        {"type", [&] { tangent->setType(static_cast<std::uint8_t>(pick(8))); }}});
        } else if (what < 86) {
            const bool breakdown = pick(2) == 0;
            key->setBreakdown(breakdown);
            naive.keys[i].breakdown = breakdown;
            key->setTangentsUnified(pick(2) == 0);
        } else if (what < 90) {
            const std::string value = std::to_string(pick(3));
            key->setProperty("p", value.c_str());
            naive.keys[i].property = value;
        } else if (what < 93) {
            const auto& interpolator = random.oneOf(interpolators);
            std::next(curve->begin(), static_cast<std::ptrdiff_t>(i))->setInterpolator(interpolator);
            (i == 0 ? naive.leading : naive.keys[i - 1].interpolator) = interpolator.get();
        } else if (what < 96) {
            // The content goes to another curve, and comes back in part by copying.
            const auto other = FCurve::createCopy(*curve);
            curve->swap(*other);
            *curve = *other;
            *curve = *curve;
            ASSERT_EQ(Fault(*other), "") << "seed " << seed << " step " << step;
        } else if (what < 97) {
            curve->clear();
            naive = NaiveCurve{{}, curve->begin()->getInterpolator().get()};
        } else if (what < 98) {
            auto heir = FCurve::create();
            heir->swap(*curve);
            curve = heir;
            mirror = std::make_unique<Mirror>(*curve);
            curve->subscribe(*mirror);
        } else {
            FCurve::Switch quiet(*curve);
            key->setY(naive.keys[i].y + 1);
            naive.keys[i].y += 1;
            ASSERT_TRUE(quiet.blockedNotification());
            mirror->sync(*curve);
        }
        ASSERT_EQ(Fault(*curve), "") << "seed " << seed << " step " << step << " edit " << what;
        ASSERT_EQ(Difference(*curve, naive, *mirror), "") << "seed " << seed << " step " << step << " edit " << what;
        for (int look = 0; look < 4; ++look) {
            const double x = number(300);
            const auto found = curve->findSegment(x)->getLeftKey();
            const std::size_t expected = naive.numberAt(x);
            ASSERT_EQ(found ? static_cast<std::size_t>(NumberOf(*found)) + 1 : 0, expected);
        }
    }
}

TEST(RandomEdits, AgreeWithANaiveModel) {
    for (unsigned seed = 1; seed <= 12; ++seed) Drive(seed, 1500);
}

// Enough keys that the index has many blocks, splits and joins.
TEST(RandomEdits, LargeCurvesStaySound) {
    for (const int order : {0, 1, 2}) {
        const auto curve = FCurve::create();
        std::vector<double> xs;
        for (int i = 0; i < 5000; ++i) xs.push_back(i * 1.5);
        std::mt19937 random(7);
        if (order == 1) std::reverse(xs.begin(), xs.end());
        if (order == 2) std::shuffle(xs.begin(), xs.end(), random);
        for (const double x : xs) AddKey(*curve, x, x);
        ASSERT_EQ(Fault(*curve), "");
        std::shuffle(xs.begin(), xs.end(), random);
        for (std::size_t i = 0; i < 4900; ++i) {
            curve->removeSegment(curve->findSegment(xs[i]));
            if (i % 700 == 0) {
                ASSERT_EQ(Fault(*curve), "") << i;
            }
        }
        EXPECT_EQ(Fault(*curve), "");
        EXPECT_EQ(curve->size(), 101u);
    }
}

} // namespace
