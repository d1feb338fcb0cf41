#include "support/Invariants.h"
#include "tools/Outside.h"
#include "tools/RandomShape.h"

using namespace Test;

namespace {

using V = Vector2D<double>;

const Map kMaps[] = {
    {{1, 1}, {0, 0}},        {{2, 3}, {5, -7}},     {{-1, 1}, {10, 0}}, {{1, -1}, {0, 3}},        {{-1, -1}, {0, 0}},
    {{-2.5, 0.3}, {0.7, 1}}, {{0.01, -40}, {1, 0}}, {{3, 0}, {0, 2}},   {{-1e-4, 1e6}, {0, 1e3}},
};

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
        {"sin(x)", {{1, 1}, {0, 0.5}}, "(sin(x))+0.5"},
        // Where it has no value the image has none.
        {"sqrt(x-3)", {{1, 2}, {5, 0}}, "2*(sqrt(x-8))"},
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

// A host's own kind.
class HostKind : public Interpolator {
public:
    using Value = double (*)(double x, const Segment& segment);
    explicit HostKind(Value value) : m_value(value) { setExpression("host's"); }
    double eval(double x, const Segment& segment) const override { return m_value(x, segment); }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<HostKind>(m_value); }

private:
    Value m_value;
};

TEST(Transform, ReportsWhatHasNoImage) {
    const auto byKeys =
        CurveThrough({{0, 1}, {5, 3}}, std::make_shared<HostKind>([](double x, const Segment& segment) {
                         const auto left = segment.getLeftKey(), right = segment.getRightKey();
                         if (!left || !right) return (left ? left : right)->getY();
                         const double part = (x - left->getX()) / (right->getX() - left->getX());
                         return left->getY() + (right->getY() - left->getY()) * part * part * (3 - 2 * part);
                     }));
    EXPECT_TRUE(TransformHonestly(*byKeys, {{-2, 3}, {1, 1}}).kept.empty());

    const auto byFrame = std::make_shared<HostKind>([](double x, const Segment&) { return x * x; });
    const auto ramp = CurveThrough({{0, 1}, {5, 3}, {7, 2}}, byFrame);
    EXPECT_EQ(TransformHonestly(*ramp, {{1, 3}, {0, 0}}).kept, std::vector<std::string>{"host's"});
    EXPECT_EQ(ramp->findSegment(6)->getInterpolator(), byFrame);

    // The left end decides about the joint, so a reversed one would take the other key's value.
    const auto joint = CurveThrough({{0, 1}, {5, 3}}, InterpolatorFactory::create("cycle()"));
    joint->begin()->setInterpolator(InterpolatorFactory::create("cycle()"));
    joint->findSegment(1)->setInterpolator(InterpolatorFactory::create("match()"));
    EXPECT_TRUE(TransformHonestly(*joint, {{2, 3}, {1, 1}}).kept.empty());
    EXPECT_EQ(TransformHonestly(*joint, {{-2, 3}, {1, 1}}).kept, std::vector<std::string>{"match()"});

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
