#include "support/Invariants.h"
#include "tools/Outside.h"
#include "tools/RandomShape.h"

using namespace Test;

namespace {

using V = Vector2D<double>;

struct Map {
    V scale;
    V offset;
    V operator()(const V& point) const { return {scale.x * point.x + offset.x, scale.y * point.y + offset.y}; }
};

const Map kMaps[] = {
    {{1, 1}, {0, 0}},        {{2, 3}, {5, -7}},     {{-1, 1}, {10, 0}}, {{1, -1}, {0, 3}},        {{-1, -1}, {0, 0}},
    {{-2.5, 0.3}, {0.7, 1}}, {{0.01, -40}, {1, 0}}, {{3, 0}, {0, 2}},   {{-1e-4, 1e6}, {0, 1e3}},
};

// The first place where the image is not the old curve, mapped; empty if there is none. Looks between the keys and
// beside them, never at a key's own x, which reversing time gives to the other side.
std::string Misfit(const FCurve& before, const FCurve& after, const Map& map) {
    for (const Segment& segment : before) {
        const auto [from, to] = SpanOf(segment);
        double size = std::abs(map.offset.y) + std::abs(map.scale.y) * SizeOf(before);
        constexpr int places = 300;
        for (int i = 0; i < places; ++i) {
            const double x = from + (to - from) * (i + 0.5) / places;
            const V expected = map({x, before.eval(x)});
            size = std::max(size, std::isfinite(expected.y) ? std::abs(expected.y) : 0.0);
            const double found = after.eval(expected.x);
            if (found == expected.y || (std::isnan(found) && std::isnan(expected.y))) continue;
            const double slope = std::abs(GetFirstDerivative(before, x));
            if (slope == 9999999.0) continue; // vertical: the last bit of x decides
            const double digits = std::abs(expected.x) + std::abs(map.offset.x) + std::abs(map.scale.x * x);
            const double rounding = std::abs(map.scale.y) * slope * 1e-14 * (digits + 1e-3) / std::abs(map.scale.x);
            if (std::abs(found - expected.y) <= 1e-10 * size + rounding) continue;
            return (testing::Message() << SameCurve::expression(segment) << " at " << x << ": " << expected.y
                                       << " expected, " << found << " found")
                .GetString();
        }
    }
    return "";
}

class TransformOfEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, TransformOfEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

// Transforms; what is reported as kept is what does not fit, and the other way round.
TransformResult TransformHonestly(FCurve& curve, const Map& map) {
    const auto before = FCurve::createCopy(curve);
    Recorder recorder;
    FCurve::subscribeGlobal(recorder);
    const TransformResult result = TransformCurve(curve, map.scale, map.offset);
    FCurve::unsubscribeGlobal(recorder);
    EXPECT_TRUE(result.transformed);
    EXPECT_EQ(recorder.heard, Heard{"curve"});
    EXPECT_EQ(Fault(curve), "");
    const std::string misfit = Misfit(*before, curve, map);
    EXPECT_EQ(result.kept.empty(), misfit.empty()) << misfit;
    return result;
}

TEST_P(TransformOfEveryExhibit, IsTheAffineImage) {
    for (const Map& map : kMaps) {
        SCOPED_TRACE(testing::Message() << "scale " << map.scale.x << ", " << map.scale.y);
        const auto curve = GetParam().make();
        // Without keys, the kinds that are shaped by keys have the value 0 whatever happens.
        if (curve->size() == 1 && map.offset.y != 0.0) continue;
        const bool unknown = std::string(GetParam().name).find("Unknown") != std::string::npos;
        EXPECT_EQ(TransformHonestly(*curve, map).kept.empty(), !unknown || map.offset.y == 0.0);
    }
}

// Kinds beside all others, on all sides of keys.
TEST(Transform, IsTheAffineImageOrSaysSo) {
    const std::vector<const char*> kinds = {
        "bezier()", "spline()",  "ease()",         "easein()",   "linear()",
        "match()",  "matchin()", "matchout()",     "constant()", "constant_next()",
        "sin(x)",   "cycle()",   "cycle_offset()", "mirror()",   "x + cycle_offset()"};
    int exact = 0;
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        RandomShape random(seed);
        const auto curve = random.make(kinds);
        exact += TransformHonestly(*curve, {{random.below(3) ? -1.5 : 1.5, 2}, {3, 1}}).kept.empty();
    }
    EXPECT_GT(exact, 200);
}

TEST_P(TransformOfEveryExhibit, FlippedTwiceHasTheSameBits) {
    for (const FlipType type : {FLIP_X, FLIP_Y, FLIP_XY, static_cast<FlipType>(3), static_cast<FlipType>(-1)}) {
        const auto curve = GetParam().make();
        Decorate(*curve);
        for (Segment& segment : *curve) // a number's image is written in its own way: "-2.5e-1" becomes "-0.25"
            if (const auto number = std::dynamic_pointer_cast<NumberInterp>(segment.getInterpolator()))
                segment.setInterpolator(NumberInterp::create(number->getNumber()));
        const auto before = FCurve::createCopy(*curve);
        FlipCurve(*curve, type, 0, 0);
        if (type == FLIP_X && curve->size() > 1) {
            EXPECT_EQ(KeyAt(*curve, 0)->getX(), -(--before->end())->getLeftKey()->getX());
        }
        FlipCurve(*curve, type, 0, 0);
        EXPECT_EQ(Difference(*before, *curve), "") << type;
    }
}

TEST(Transform, CarriesEveryPart) {
    for (const bool reversed : {false, true}) {
        for (unsigned seed = 0; seed < 50; ++seed) {
            const auto curve = RandomShape(seed).make({"bezier()", "linear()"});
            Decorate(*curve);
            curve->begin()->setProperty("fc_sel", "1");
            const auto before = FCurve::createCopy(*curve);
            const auto oldKey = KeyAt(*curve, 0);
            const double side = reversed ? -1 : 1;
            TransformCurve(*curve, {side * 2, 4}, {1, 2});
            EXPECT_EQ(oldKey->getOwningCurve(), nullptr);
            EXPECT_STREQ(curve->getName(), "decorated");
            EXPECT_EQ(SameCurve::properties(*before, *curve), "");

            std::vector<const Segment*> old;
            for (const Segment& segment : *before) old.push_back(&segment);
            if (reversed) std::reverse(old.begin(), old.end());
            auto it = curve->begin();
            for (const Segment* from : old) {
                const Segment& to = *it++;
                EXPECT_EQ(SameCurve::properties(*from, to), "");
                EXPECT_EQ(SameCurve::expression(*from), SameCurve::expression(to));
                for (const bool in : {false, true}) {
                    const auto tangent = in != reversed ? from->getInTangent() : from->getOutTangent();
                    const auto image = in ? to.getInTangent() : to.getOutTangent();
                    EXPECT_EQ(SameCurve::tangentButHandle(*tangent, *image), "");
                    EXPECT_EQ(image->get().y * tangent->get().x * side * 2, image->get().x * tangent->get().y * 4);
                }
                const auto key = reversed ? from->getLeftKey() : from->getRightKey();
                const auto image = to.getRightKey();
                ASSERT_EQ(!key, !image);
                if (!key) continue;
                EXPECT_EQ(image->get(), V(side * 2 * key->getX() + 1, 4 * key->getY() + 2));
                EXPECT_EQ(SameCurve::keyButPosition(*key, *image), "");
            }
        }
    }
}

TEST(Transform, RefusesWithoutTouchingAnything) {
    const auto curve = CurveThrough({{0, 0}, {0.001, 1}, {100, 2}}, Bezier::create());
    const auto before = FCurve::createCopy(*curve);
    const auto key = KeyAt(*curve, 1);
    const Map kRefused[] = {
        {{0, 2}, {0, 0}},     {{1e-7, 1}, {0, 0}},  {{-1e-7, 1}, {0, 0}},    {{kNaN, 1}, {0, 0}}, {{1, kNaN}, {0, 0}},
        {{1, 1}, {kNaN, 0}},  {{1, 1}, {0, kNaN}},  {{HUGE_VAL, 1}, {0, 0}}, {{1, 1}, {1e15, 0}}, // keys fall together
        {{1e307, 1}, {0, 0}}, {{1, 1e308}, {0, 0}},
    };
    for (const Map& map : kRefused) {
        EXPECT_FALSE(TransformCurve(*curve, map.scale, map.offset).transformed) << map.scale.x << " " << map.offset.x;
        EXPECT_EQ(Difference(*before, *curve), "");
    }
    EXPECT_EQ(KeyAt(*curve, 1), key);

    // A handle may be longer than any key is far.
    const auto steep = CurveThrough({{0, 0}, {10, 0}}, Bezier::create());
    KeyAt(*steep, 0)->getOutTangent()->set(1, 1e10);
    EXPECT_FALSE(TransformCurve(*steep, {1, 1e300}, {0, 0}).transformed);
}

TEST(Transform, FlipsAboutTheMiddleOfTheKeyedRange) {
    const auto curve = CurveThrough({{2, 1}, {4, 5}, {10, 3}});
    FlipCurveAboutCentroid(*curve, FLIP_XY);
    EXPECT_EQ(PointsOf(*curve), (Points{{2, 3}, {8, 1}, {10, 5}}));
    const auto empty = FCurve::create();
    empty->begin()->setInterpolator(InterpolatorFactory::create("x"));
    FlipCurveAboutCentroid(*empty, FLIP_Y);
    EXPECT_EQ(empty->eval(3), -3);
}

TEST(Transform, RewritesFormulas) {
    const struct {
        const char* text;
        Map map;
        const char* image;
    } kRows[] = {
        {"sin(x)", {{1, 2}, {5, 0}}, "2*(sin((x-5)))"},
        {"sin(x)", {{-1, 1}, {10, 0}}, "sin((10-x))"},
        {"sin(x) * 2 + exp(x)", {{4, -1}, {0, 7}}, "7-(sin((x/4)) * 2 + exp((x/4)))"},
        {"x**2", {{-0.5, 1}, {-1, -3}}, "(((-1-x)/0.5)**2)-3"},
        {"2.50", {{1, 2}, {5, 0.5}}, "5.5"},
        {"cycle() + x", {{1, 2}, {3, 1}}, "2*(((cycle()-1)/2) + (x-3))+1"},
        {"e*pi*1e2", {{2, 1}, {0, 0}}, "e*pi*1e2"},
        // Images of images: the numbers are combined, texts do not grow.
        {"2*(sin((x-5)))", {{1, 2}, {1, 3}}, "4*(sin((x-6)))+3"},
        {"7-(sin((x/4)))", {{-2, -1}, {0, 7}}, "sin(((0-x)/8))"},
        {"(((-1-x)/0.5)**2)-3", {{-2, 1}, {-2, 3}}, "x**2"},
        {"sin((x-5)/10)", {{10, 1}, {-50, 0}}, "sin(x/100)"},
        {"-(x)", {{1, -1}, {0, 0}}, "x"},
        // What only looks like one is wrapped.
        {"2*(x)*(3)", {{1, 2}, {0, 0}}, "2*(2*(x)*(3))"},
        {"(x)+(3)", {{1, 2}, {0, 0}}, "2*((x)+(3))"},
    };
    for (const auto& row : kRows) {
        const auto curve = CurveThrough({{0, 1}, {5, 3}}, InterpolatorFactory::create(row.text));
        EXPECT_TRUE(TransformHonestly(*curve, row.map).kept.empty()) << row.text;
        const double middle = row.map.scale.x * 2.5 + row.map.offset.x;
        EXPECT_EQ(SameCurve::expression(*curve->findSegment(middle)), row.image);
    }
    // Dragged about for a long time, a text stays short.
    const auto curve = CurveThrough({{0, 1}, {5, 3}}, InterpolatorFactory::create("sin(x) + cycle_offset()"));
    const auto before = FCurve::createCopy(*curve);
    for (int i = 0; i < 500; ++i) EXPECT_TRUE(TransformCurve(*curve, {1, -1}, {0.25, 1}).kept.empty());
    EXPECT_LT(SameCurve::expression(*curve->findSegment(127)).size(), 60U);
    EXPECT_EQ(Misfit(*before, *curve, {{1, 1}, {125, 0}}), "");
}

// A host's kinds: one that is shaped by the keys, one that knows about frames.
class Smoothstep : public Interpolator {
public:
    double eval(double x, const Segment& segment) const override {
        const auto left = segment.getLeftKey();
        const auto right = segment.getRightKey();
        if (!left || !right) return left ? left->getY() : right ? right->getY() : 0.0;
        const double t = (x - left->getX()) / (right->getX() - left->getX());
        return left->getY() + (right->getY() - left->getY()) * t * t * (3 - 2 * t);
    }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<Smoothstep>(); }
};
class Ramp : public Interpolator {
public:
    Ramp() { setExpression("ramp"); }
    double eval(double x, const Segment&) const override { return x * x; }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<Ramp>(); }
};

TEST(Transform, ReportsWhatHasNoImage) {
    const auto smooth = CurveThrough({{0, 1}, {5, 3}}, std::make_shared<Smoothstep>());
    EXPECT_TRUE(TransformHonestly(*smooth, {{-2, 3}, {1, 1}}).kept.empty());

    const auto ramp = CurveThrough({{0, 1}, {5, 3}, {7, 2}}, std::make_shared<Ramp>());
    const auto kept = ramp->findSegment(6)->getInterpolator();
    EXPECT_EQ(TransformHonestly(*ramp, {{1, 3}, {0, 0}}).kept, std::vector<std::string>{"ramp"});
    EXPECT_EQ(ramp->findSegment(6)->getInterpolator(), kept);

    const auto unknown = CurveThrough({{0, 1}, {5, 3}}, InterpolatorFactory::create("((("));
    EXPECT_TRUE(TransformCurve(*unknown, {-1, 3}, {2, 0}).kept.empty());
    EXPECT_EQ(TransformCurve(*unknown, {1, 1}, {0, 2}).kept, std::vector<std::string>{"((("});
    EXPECT_EQ(SameCurve::expression(*unknown->findSegment(1)), "(((");

    const auto none = CurveThrough({{0, 1}, {5, 3}}, nullptr);
    EXPECT_TRUE(TransformCurve(*none, {1, 1}, {1, 0}).kept.empty());
    EXPECT_EQ(none->findSegment(2)->getInterpolator(), nullptr);
    EXPECT_TRUE(TransformCurve(*none, {1, 1}, {0, 2}).kept.empty());
    EXPECT_EQ(none->eval(2), 2.0);
}

} // namespace
