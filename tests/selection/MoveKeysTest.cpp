#include "support/Allocations.h"
#include "support/Basics.h"
#include "support/Echo.h"
#include "support/Invariants.h"
#include "support/Museum.h"
#include "support/Parts.h"
#include "support/Random.h"
#include "support/Recorder.h"
#include "support/SameCurve.h"

#include <map>

using namespace Test;

namespace {

// --- a naive model: every key of the group against every other key ---------------------------------------------------

struct NaiveKey {
    double x, y;
    bool isOfGroup;
    const Keyframe* key;
};
using NaiveCurves = std::vector<std::vector<NaiveKey>>;

// The way nearest to the wanted one on which no key of the group comes too near to another.
double NaiveWay(const NaiveCurves& curves, double wanted, MoveOptions::Others others) {
    const double sign = wanted < 0 ? -1 : 1;
    const auto isFree = [&](double way) {
        for (const auto& curve : curves) {
            const auto first = std::find_if(curve.begin(), curve.end(), [](const NaiveKey& k) { return k.isOfGroup; });
            for (const NaiveKey& key : curve) {
                for (const NaiveKey& other : curve) {
                    if (!key.isOfGroup || other.isOfGroup) continue;
                    if (others == MoveOptions::Ripple && other.x > first->x) continue;
                    const double before = other.x - key.x, after = before - way;
                    if (std::abs(after) < 0.001 - 1e-10) return false;
                    if (others != MoveOptions::Cross && (before < 0) != (after < 0)) return false;
                }
            }
        }
        return true;
    };
    std::vector<double> candidates{wanted, 0.0};
    for (const auto& curve : curves)
        for (const NaiveKey& key : curve)
            for (const NaiveKey& other : curve)
                for (const double side : {-0.001, 0.001})
                    if (key.isOfGroup && !other.isOfGroup) candidates.push_back(other.x - key.x + side);
    double best = 0.0;
    for (const double way : candidates)
        if (sign * way > sign * best && sign * way <= sign * wanted && isFree(way)) best = way;
    return best;
}

// Hears of each key by itself.
struct KeyByKey : Echo {
    void curveChanged(FCurve&) override { ADD_FAILURE() << "of everything at once"; }
};

TEST(MoveKeys, AgreesWithANaiveModel) {
    for (unsigned seed = 0; seed < 900; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const auto others = static_cast<MoveOptions::Others>(seed % 3);
        const auto container = FCurveContainer::create();
        KeyByKey echo;
        for (int i = 1 + random.below(3); i > 0; --i) {
            const auto curve = container->addCurve(makeCurve("", 0, bent()));
            for (int k = random.below(9); k > 0; --k)
                addKey(*curve, random.coin() ? random.below(20) : random.below(2000) / 100.0, k, bent());
        }
        Selection selection(container);
        NaiveCurves naive;
        for (FCurve& curve : *container) {
            naive.emplace_back();
            for (const KeyView key : Keys(curve)) {
                const bool isOfGroup = random.coin();
                if (isOfGroup) selection.select(key.getKeyframe());
                naive.back().push_back({key.getX(), key.getY(), isOfGroup, &key.getKeyframe()});
            }
            echo.watch(curve);
        }
        KeyGroup group(selection);
        for (int step = 0; step < 3; ++step) {
            const double wanted = random.coin() ? random.below(21) - 10 : random.between(-10, 10);
            const double value = random.between(-3, 3);
            MoveOptions options;
            options.others = others;
            const MoveReport report = MoveKeys(group, {wanted, value}, options);
            const double way = group.empty() ? 0.0 : NaiveWay(naive, wanted, others);
            if (!group.empty()) {
                EXPECT_NEAR(report.offset.x, way, 1e-9) << "of " << wanted;
                EXPECT_NEAR(report.offset.y, value, 1e-12);
                EXPECT_EQ(report.isLimited, std::abs(way - wanted) > 1e-9);
            }
            std::size_t number = 0;
            for (FCurve& curve : *container) {
                auto expected = naive[number++];
                bool isPast = false;
                for (NaiveKey& key : expected) {
                    isPast = isPast || key.isOfGroup;
                    if (key.isOfGroup || (isPast && others == MoveOptions::Ripple)) key.x += way;
                    if (key.isOfGroup) key.y += value;
                }
                std::sort(expected.begin(), expected.end(), [](auto& a, auto& b) { return a.x < b.x; });
                ASSERT_EQ(Keys(curve).size(), expected.size());
                EXPECT_EQ(Fault(curve), "");
                ASSERT_EQ(echo.differenceTo(curve), "");
                for (std::size_t i = 0; i < expected.size(); ++i) {
                    const KeyView key = Keys(curve)[i];
                    EXPECT_EQ(&key.getKeyframe(), expected[i].key) << "the keys stay who they are";
                    EXPECT_NEAR(key.getX(), expected[i].x, 1e-9);
                    EXPECT_NEAR(key.getY(), expected[i].y, 1e-9);
                    EXPECT_EQ(selection.isSelected(key.getKeyframe()), expected[i].isOfGroup);
                }
            }
        }
    }
}

// --- shape -----------------------------------------------------------------------------------------------------------

bool IsShapedByItsKeys(const FCurve& curve) {
    for (const Segment& segment : curve) {
        const std::string kind = SameCurve::expression(segment);
        if (segment.getLeftKey() && segment.getRightKey() && kind != "bezier()" && kind != "linear()"
            && kind != "constant()" && kind != "constant_next()" && kind != "spline()" && kind.substr(0, 4) != "ease")
            return false;
        for (const auto& tangent : {segment.getInTangent(), segment.getOutTangent()})
            if (tangent->getType() == Tangent::Clamped) return false; // looks at absolute values
    }
    return curve.size() > 2;
}

class MovesInEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, MovesInEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST_P(MovesInEveryExhibit, CarryTheShapeAlong) {
    const auto before = GetParam().make();
    if (!IsShapedByItsKeys(*before) || std::string(GetParam().name) == "TinyValues") return; // below the tolerance
    const struct {
        Vector2D<double> scale, offset;
    } rows[] = {{{1, 1}, {16, 5}}, {{1, 1}, {-0.3, 0}}, {{2, 1}, {}}, {{0.5, 4}, {}}, {{1, -1}, {}}, {{3, 0}, {}}};
    for (const auto& row : rows) {
        const auto curve = FCurve::createCopy(*before);
        KeyGroup group(*curve);
        const Vector2D<double> pivot = KeyAt(*curve, 0)->get();
        const bool moves = row.offset != Vector2D<double>();
        const MoveReport report = moves ? MoveKeys(group, row.offset) : ScaleKeys(group, pivot, row.scale);
        if (std::string(GetParam().name) == "MinimumSeparation" && row.scale.x < 1) {
            EXPECT_TRUE(report.isLimited && report.factor.x == 1.0) << "keys this near stay apart";
            continue;
        }
        EXPECT_FALSE(report.isLimited);
        const double first = pivot.x, last = KeysOf(*before).back();
        double size = 1e-300;
        for (const Vector2D<double>& point : PointsOf(*before)) size = std::max(size, std::abs(point.y));
        for (int i = 0; i <= 400; ++i) {
            const double x = first + (last - first) * (i + 0.37) / 401;
            const double slope = std::abs(GetFirstDerivative(*before, x));
            if (slope > 1e5 * size) continue; // nearly vertical: the last bits of x decide
            const double expected = pivot.y + row.scale.y * (before->eval(x) - pivot.y) + row.offset.y;
            const double found = curve->eval(pivot.x + row.scale.x * (x - pivot.x) + row.offset.x);
            const double rounding = 1e-14 * (std::abs(x) + std::abs(row.offset.x) + 1) * slope;
            ASSERT_NEAR(found, expected, 1e-6 * (size + std::abs(row.offset.y)) * std::abs(row.scale.y) + rounding)
                << "scaled by " << row.scale.x << " " << row.scale.y << " at " << x;
        }
    }
}

// --- rules that have rows of their own -------------------------------------------------------------------------------

TEST(MoveKeys, BreakdownKeysKeepTheirProportion) {
    const auto curve = CurveThrough({{0, 0}, {4, 0}, {10, 0}, {14, 0}, {20, 0}}, bent());
    for (const int i : {1, 3}) KeyAt(*curve, i)->setBreakdown(true);
    KeyGroup group({KeyAt(*curve, 2)});
    const MoveReport report = MoveKeys(group, {5, 1});
    EXPECT_EQ(KeysOf(*curve), (std::vector<double>{0, 6, 15, 17, 20}));
    EXPECT_EQ(report.others, 2U);
    MoveKeys(group, {100, 1}); // until the key between, at two fifths of the way, is too near
    EXPECT_NEAR(KeyAt(*curve, 3)->getX() - KeyAt(*curve, 2)->getX(), 0.001, 1e-12);
    EXPECT_NEAR(KeyAt(*curve, 4)->getX() - KeyAt(*curve, 3)->getX(), 0.0015, 1e-12);
    MoveKeys(group, {0, 0});
    const double places[] = {0, 4, 10, 14, 20};
    for (int i = 0; i < 5; ++i) EXPECT_NEAR(KeyAt(*curve, i)->getX(), places[i], 1e-9);

    // Between two keys of a group they are carried along.
    KeyGroup both({KeyAt(*curve, 0), KeyAt(*curve, 2)});
    MoveKeys(both, {-7, 0});
    EXPECT_NEAR(KeyAt(*curve, 1)->getX(), -3, 1e-9);
    EXPECT_NEAR(KeyAt(*curve, 3)->getX(), 3 + 17 * 0.4, 1e-9);
}

TEST(MoveKeys, LandsOnGrids) {
    const struct {
        double step, origin, from, by, expected;
        MoveOptions::Others others;
    } rows[] = {
        {1, 0, 10.25, 0.5, 11, MoveOptions::Stop},
        {1, 0, 10.25, 0.2, 10, MoveOptions::Stop},
        {0.5, 0.25, 10, 3.1, 13.25, MoveOptions::Stop},
        {1, 0, 10.25, 50, 19, MoveOptions::Stop}, // before the key at 20
        {7, 0, 15, 50, 15, MoveOptions::Stop},
        {1, 0, 10, 10, 19, MoveOptions::Cross}, // on the key at 20
        {1, 0, 10, 11, 21, MoveOptions::Cross},
        {0, 0, 10.25, 0.5, 10.75, MoveOptions::Stop},
        {-1, 0, 10.25, 0.5, 10.75, MoveOptions::Stop},
        {kNaN, 0, 10.25, 0.5, 10.75, MoveOptions::Stop},
    };
    for (const auto& row : rows) {
        for (const double detour : {0.0, -8.0, 30.0}) {
            const auto curve = CurveThrough({{0, 0}, {row.from, 3}, {row.from + 0.125, 3}, {20, 0}}, bent());
            KeyGroup group(*curve, 5, 19);
            MoveOptions options;
            options.frameStep = row.step;
            options.frameOrigin = row.origin;
            options.valueStep = 2;
            options.others = row.others;
            MoveKeys(group, {detour, 0}, options);
            MoveKeys(group, {row.by, 0.5}, options);
            const auto keys = group.getKeys();
            EXPECT_EQ(keys[0]->getX(), row.expected) << row.from << " + " << row.by << " after " << detour;
            EXPECT_EQ(keys[0]->getY(), 4);
            EXPECT_EQ(keys[1]->getX(), row.expected + 0.125) << "the group is rigid";
        }
    }
    const auto curve = CurveThrough({{0, 0}, {3, 1}, {10, 0}}, bent());
    KeyGroup group(*curve);
    MoveOptions options;
    options.frameStep = 4;
    EXPECT_EQ(ScaleKeys(group, {0, 0}, {1.1, 1}, options).factor.x, 1.2) << "the key farthest from the pivot lands";
}

TEST(MoveKeys, NothingForWhatIsNotFinite) {
    const auto curve = CurveThrough({{0, 0}, {3, 1}}, bent()), other = CurveThrough({{5, 0}}, bent());
    const auto before = FCurve::createCopy(*curve);
    KeyGroup group({KeyAt(*curve, 0), KeyAt(*curve, 1), KeyAt(*other, 0)});
    for (const double bad : {kNaN, kInfinity}) {
        MoveKeys(group, {bad, 0});
        MoveKeys(group, {0, bad});
        ScaleKeys(group, {bad, 0}, {1, 1});
        ScaleKeys(group, {0, 0}, {bad, 1});
    }
    for (const double factor : {0.0, -1.0}) ScaleKeys(group, {0, 0}, {factor, 1});
    // One key would fit, but not all.
    for (const Vector2D<double>& offset : {Vector2D<double>(1e13, 2), {-1.7e308, 0}, {4, 1.7e308}}) {
        KeyAt(*other, 0)->setY(1e308);
        const MoveReport report = MoveKeys(group = KeyGroup(group.getKeys()), offset);
        EXPECT_TRUE(report.isLimited && report.offset == Vector2D<double>());
    }
    const MoveReport report = ScaleKeys(group, {-1, 0}, {1e308, 1});
    EXPECT_TRUE(report.isLimited && report.factor.x == 1.0);
    EXPECT_EQ(Difference(*before, *curve), "");
    EXPECT_EQ(KeyAt(*other, 0)->getX(), 5);
    KeyGroup none;
    EXPECT_EQ(MoveKeys(none, {1, 1}).keys, 0U);
}

// However often an edit of many keys comes by a handle.
TEST(ScaleKeys, TellsOfEachTangentOnce) {
    const auto curve = FCurve::create();
    for (int x = 0; x < 100; ++x) addKey(*curve, x, 0.0, bent());
    for (Segment& segment : *curve) {
        segment.getOutTangent()->setAngle(0.5);
        if (segment.getLeftKey()) segment.getLeftKey()->setTangentsUnified(true);
    }
    struct : FCurveObserver {
        std::map<const Tangent*, int> calls;
        void tangentIntrinsicChanged(Tangent& tangent, TangentIntrinsicType) override { ++calls[&tangent]; }
    } observer;
    curve->subscribe(observer);
    KeyGroup group(*curve);
    ScaleKeys(group, {0, 0}, {2, 3});
    EXPECT_GE(observer.calls.size(), 99U);
    for (const auto& [tangent, calls] : observer.calls) EXPECT_EQ(calls, 1);
}

TEST(MoveKeys, KeysThatPassOthersTakeEverythingAlong) {
    const auto curve = CurveThrough({{0, 0}, {10, 1}, {20, 2}}, bent());
    (--curve->end())->setInterpolator(InterpolatorFactory::create("cycle()"));
    const auto first = KeyAt(*curve, 0), last = KeyAt(*curve, 2);
    const auto segment = first->getRightSegment();
    segment->setInterpolator(straight());
    segment->setProperty("s", "1");
    KeyAt(*curve, 0)->setProperty("k", "1");
    KeyAt(*curve, 0)->setTangentsUnified(true);
    KeyAt(*curve, 0)->getOutTangent()->setWeighted(true);
    KeyAt(*curve, 0)->getOutTangent()->set(2, 7);
    KeyGroup group(*curve, 0, 0);
    MoveOptions options;
    options.others = MoveOptions::Cross;
    EXPECT_EQ(MoveKeys(group, {25, 5}, options).passed, 1U);
    EXPECT_EQ(KeyAt(*curve, 2), first);
    EXPECT_EQ(first->getRightSegment(), segment);
    EXPECT_EQ(first->get(), Vector2D<double>(25, 5));
    EXPECT_STREQ(first->getProperty("k"), "1");
    EXPECT_TRUE(first->isTangentsUnified());
    EXPECT_EQ(first->getOutTangent()->get(), Vector2D<double>(2, 7));
    EXPECT_STREQ(segment->getProperty("s"), "1");
    EXPECT_EQ(SameCurve::expression(*--curve->end()), "cycle()") << "stays at the end";
    EXPECT_EQ(SameCurve::expression(*KeyAt(*curve, 1)->getRightSegment()), "linear()") << "and gives way there";

    struct : FCurveObserver {
        void segmentRemoved(FCurve&, Segment&) override { throw 1; }
    } thrower;
    curve->subscribe(thrower);
    KeyGroup both(*curve, 20, 25);
    EXPECT_THROW(MoveKeys(both, {-24, 0}, options), int);
    EXPECT_EQ(KeysOf(*curve), (std::vector<double>{10, 20, 25}));
    EXPECT_EQ(KeyAt(*curve, 1), last);
    curve->unsubscribe(thrower);
    for (long others = 0; runsOutOfMemory(
             others,
             [&] {
                 MoveKeys(both, {-24, 0}, options);
             },
             true);
         ++others) {
        ASSERT_EQ(Keys(*curve).size(), 3U) << others;
        MoveKeys(both, {0, 0}, options);
    }
    EXPECT_EQ(KeysOf(*curve), (std::vector<double>{-4, 1, 10}));
}

} // namespace
