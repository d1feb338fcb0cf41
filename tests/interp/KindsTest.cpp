// The table of kinds, an internal header: what each row says is what the kind does. A new row is tested with the
// others.

#include "support/Ask.h"
#include "support/Basics.h"
#include "support/Museum.h"

#include "interp/BezierMath.h" // internal: mathematics
#include "interp/Kinds.h"      // internal: the rows of the kinds

namespace Test {
namespace {

using namespace Private;

// Six keys; the kind is between the third and the fourth and at both ends, all else is bezier().
std::shared_ptr<FCurve> Around(const std::shared_ptr<Interpolator>& interpolator, double shift = 0.0) {
    auto curve = MakeCurve({{shift + 13, 2, {}, Vector2D<double>(1, 2)},
                            {shift + 15, -1, Vector2D<double>(-0.5, 1), Vector2D<double>(1, -1)},
                            {shift + 19, 4, Vector2D<double>(-1, 2), Vector2D<double>(2, 3)},
                            {shift + 23, 1, Vector2D<double>(-1.5, -2), Vector2D<double>(1, 1)},
                            {shift + 25, 6, Vector2D<double>(-0.5, 1), Vector2D<double>(1, 0.5)},
                            {shift + 28, 3, Vector2D<double>(-1, 1), Vector2D<double>(1, -2)}});
    for (const double x : {0.0, 20.0, 40.0}) curve->findSegment(shift + x)->setInterpolator(interpolator);
    return curve;
}
Keyframe& KeyAt(FCurve& curve, double x) {
    return *curve.findSegment(x)->getLeftKey();
}

Points Sampled(const FCurve& curve, double x0, double x1) {
    Points points;
    for (int i = 1; i < 40; ++i) {
        const double x = x0 + (x1 - x0) * i / 40.1;
        points.emplace_back(x, curve.eval(x));
    }
    return points;
}

class EveryKind : public testing::TestWithParam<KindRow> {
protected:
    const KindRow& row = GetParam();
    const std::shared_ptr<Interpolator> interpolator = row.create();
    const std::shared_ptr<FCurve> curve = Around(interpolator);
};

TEST_P(EveryKind, IsFoundByObjectNameAndSegment) {
    EXPECT_EQ(&KindOf(*interpolator), &RowOf(row.kind));
    EXPECT_EQ(&KindOf(*interpolator->clone()), &RowOf(row.kind));
    EXPECT_EQ(&KindOf(*curve->findSegment(20)), &RowOf(row.kind));
    EXPECT_EQ(FindKind(row.name()), &RowOf(row.kind));
    EXPECT_STREQ(interpolator->getExpression(), row.expression);
}

TEST_P(EveryKind, SharesOneInstanceThatKeepsItsText) {
    const auto shared = InterpolatorFactory::create(row.expression);
    EXPECT_EQ(&KindOf(*shared), &RowOf(row.kind));
    EXPECT_EQ(InterpolatorFactory::create((" " + std::string(row.name()) + "\t( \n)").c_str()), shared);
    curve->findSegment(20)->setInterpolator(shared);
    curve->findSegment(20)->getInterpolator()->setExpression("other");
    EXPECT_STREQ(InterpolatorFactory::create(row.expression)->getExpression(), row.expression);
    const auto clone = shared->clone();
    clone->setExpression("other");
    EXPECT_STREQ(clone->getExpression(), "other");
}

TEST_P(EveryKind, KeepsTheBitsOfItsValuesFarFromTheOrigin) {
    const double shift = 0x1p30;
    const auto far = Around(interpolator, shift);
    for (double x = 3; x < 45; x += 0.125) {
        EXPECT_EQ(far->eval(shift + x), curve->eval(x)) << x;
        EXPECT_EQ(GetFirstDerivative(*far, shift + x), GetFirstDerivative(*curve, x)) << x;
    }
}

TEST_P(EveryKind, HasTheShapeOfItsRow) {
    const Segment& segment = *curve->findSegment(20);
    for (const auto& point : Sampled(*curve, 19, 23)) {
        if (row.shape == Shape::Free) break; // its definition alone tells
        const double expected = row.shape == Shape::LeftValue    ? 4.0
                                : row.shape == Shape::RightValue ? 1.0
                                : row.shape == Shape::Line       ? 4.0 - 0.75 * (point.x - 19)
                                                           : EvalBezierY(point.x, row.args(*interpolator, segment));
        EXPECT_NEAR(point.y, expected, 1e-14);
    }
    for (const int count : {-1, 0, 1, 50}) {
        const auto points = PolylineOf(&Interpolator::computePolyline, *interpolator, segment, 20, 22, count);
        EXPECT_EQ(points.size(),
                  row.isStraight() && !row.repeats() ? 2U : static_cast<std::size_t>(std::max(0, count)));
    }
    EXPECT_EQ(row.isBezier(), dynamic_cast<const BezierInterpBase*>(interpolator.get()) != nullptr);
    const bool flat = curve->eval(29) == curve->eval(38.3) && curve->eval(12) == curve->eval(3.3);
    EXPECT_EQ(row.beyond == Beyond::Flat, flat);
    EXPECT_EQ(row.beyond == Beyond::Handle, !flat && std::abs(GetSecondDerivative(*curve, 30.1)) < 1e-9);
}

// Changes one thing after the other, and looks whether values change.
TEST_P(EveryKind, ReadsWhatItsRowSays) {
    const struct {
        const char* what;
        void (*change)(FCurve& curve);
        Reads between; // any of these says that values between 19 and 23 change
        Reads after;   // the same after the last key
    } rows[] = {
        {"key 19", [](FCurve& c) { KeyAt(c, 19).setY(5); }, kReadsLeftKey, kReadsCurve},
        {"key 23", [](FCurve& c) { KeyAt(c, 23).setY(5); }, kReadsRightKey, kReadsCurve},
        {"tangent", [](FCurve& c) { c.findSegment(20)->getOutTangent()->set(1, 1); }, kReadsTangents, 0},
        {"key 15", [](FCurve& c) { KeyAt(c, 15).setY(7); }, kReadsNextKeys, kReadsCurve},
        {"key 25", [](FCurve& c) { KeyAt(c, 25).setY(7); }, kReadsNextKeys, kReadsCurve},
        {"neighbours",
         [](FCurve& c) {
             c.findSegment(16)->getInTangent()->set(-1, 5);
             c.findSegment(24)->getOutTangent()->set(0.5, 4);
         },
         kReadsNeighbours, kReadsCurve},
        {"key 28", [](FCurve& c) { KeyAt(c, 28).setY(7); }, kReadsCurve, kReadsLeftKey},
        {"last segment", [](FCurve& c) { c.findSegment(27)->setInterpolator(InterpolatorFactory::create("7")); },
         kReadsCurve, kReadsNeighbours | kReadsCurve},
        {"last tangent", [](FCurve& c) { c.findSegment(40)->getOutTangent()->set(1, 1); }, 0, kReadsTangents},
        {"first tangent", [](FCurve& c) { c.findSegment(0)->getInTangent()->set(-1, 1); }, 0, 0},
    };
    const Reads between = ReadsOf(interpolator.get(), *curve->findSegment(20));
    const Reads after = ReadsOf(interpolator.get(), *curve->findSegment(40));
    EXPECT_EQ(between, row.reads & ~kReadsCurve);
    for (const auto& change : rows) {
        SCOPED_TRACE(change.what);
        const auto changed = FCurve::createCopy(*curve);
        change.change(*changed);
        EXPECT_EQ((between & change.between) != 0, Sampled(*changed, 19, 23) != Sampled(*curve, 19, 23));
        EXPECT_EQ((after & change.after) != 0, Sampled(*changed, 28, 47) != Sampled(*curve, 28, 47));
    }
}

const auto named = [] {
    std::vector<KindRow> rows;
    for (const KindRow& row : AllKinds())
        if (row.create) rows.push_back(row);
    return rows;
}();
INSTANTIATE_TEST_SUITE_P(Table, EveryKind, testing::ValuesIn(named),
                         [](const auto& kind) { return std::string(kind.param.name()); });

TEST(Kinds, ControlPoints) {
    using Handle = std::optional<Vector2D<double>>;
    const struct {
        const char* kind;
        double x; // in the segment that is looked at
        std::vector<double> points;
        Handle out = {}, in = {};
    } rows[] = {
        {"ease()", 7, {6, 3, 7, 3, 8, 6, 9, 6}},
        {"easein()", 7, {6, 3, 7, 3, 8, 4, 9, 6}},
        {"easeout()", 7, {6, 3, 7, 5, 8, 6, 9, 6}},
        {"spline()", 4, {3, 0, 4, 0, 5, 2, 6, 3}}, // flat at the curve's ends
        {"spline()", 7, {6, 3, 7, 4, 8, 6, 9, 6}},
        {"spline()", 10, {9, 6, 11, 6, 13, 3, 15, 3}},
        {"match()", 7, {6, 3, 7, 4, 8, 6.5, 9, 6}},
        {"matchin()", 7, {6, 3, 7, 4, 8, 6, 9, 6}},
        {"matchout()", 7, {6, 3, 7, 3, 8, 6.5, 9, 6}},
        {"bezier()", 7, {6, 3, 7.5, 5, 8, 5, 9, 6}, Vector2D<double>(1.5, 2), Vector2D<double>(-1, -1)},
        {"bezier()", 7, {6, 3, 9, 4, 6, 5.5, 9, 6}, Vector2D<double>(6, 2), Vector2D<double>(-9, -1.5)}, // folds
    };
    for (const auto& row : rows) {
        const auto curve =
            MakeCurve({{3, 0, {}, {}, "linear()"}, {6, 3, {}, row.out}, {9, 6, row.in, {}, "linear()"}, {15, 3}});
        Segment& segment = *curve->findSegment(row.x);
        segment.setInterpolator(InterpolatorFactory::create(row.kind));
        std::vector<double> p(8);
        dynamic_cast<const BezierInterpBase&>(*segment.getInterpolator())
            .getBezierArgs(segment, p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]);
        EXPECT_EQ(p, row.points) << row.kind;
        EXPECT_EQ(segment.getInterpolator()->usesTangents(), row.kind == std::string("bezier()"));
    }
}

// A segment that lacks a key: the line along the other's tangent, as if that were at least 0.001 long.
TEST(Kinds, BezierGoesOnAlongTheTangent) {
    const struct {
        Vector2D<double> in, out;
        double before, after; // the slopes
    } rows[] = {{{-1, -2}, {1, 3}, 2, 3},
                {{0, 0}, {0, 0}, 0, 0},
                {{0, -2}, {0, 3}, 2000, 3000},
                {{-1e-5, 1}, {1e-5, 1}, -1000, 1000}};
    for (const auto& row : rows) {
        const auto curve = MakeCurve({{4, 10, row.in, row.out}}, "bezier()");
        EXPECT_DOUBLE_EQ(curve->eval(-3), 10 - 7 * row.before);
        EXPECT_DOUBLE_EQ(curve->eval(6), 10 + 2 * row.after);
        EXPECT_DOUBLE_EQ(GetFirstDerivative(*curve, -3), row.before);
        EXPECT_DOUBLE_EQ(GetFirstDerivative(*curve, 6), row.after);
    }
    const Segment byHand(nullptr, nullptr, nullptr, Keyframe::create(2, 3)); // has no tangents
    EXPECT_EQ(Bezier::create()->eval(5, byHand), 3.0);
}

TEST(Kinds, WithoutNameAreTold) {
    class HostKind : public Interpolator {
        double eval(double x, const Segment&) const override { return x; }
        std::shared_ptr<Interpolator> clone() override { return std::make_shared<HostKind>(); }
    };
    class HostBezier : public BezierInterpBase {
        std::shared_ptr<Interpolator> clone() override { return std::make_shared<HostBezier>(); }
        void getBezierArgs(const Segment&, double& x0, double& y0, double& x1, double& y1, double& x2, double& y2,
                           double& x3, double& y3) const override {
            x0 = 10, y0 = 1, x1 = 11, y1 = 3, x2 = 12, y2 = 4, x3 = 14, y3 = 2;
        }
    };
    const auto bezier = std::make_shared<HostBezier>();
    const auto curve = Around(bezier);
    const Segment& segment = *curve->findSegment(20);
    EXPECT_EQ(KindOf(segment).kind, Kind::HostBezier);
    EXPECT_EQ(EvalBezierY(12, KindOf(segment).args(*bezier, segment)), bezier->BezierInterpBase::eval(12, segment));
    EXPECT_EQ(KindOf(HostKind()).kind, Kind::Host);
    EXPECT_EQ(KindOf(static_cast<const Interpolator*>(nullptr)).kind, Kind::Absent);
    EXPECT_EQ(FindKind(""), nullptr);
    EXPECT_EQ(FindKind("cycle()"), nullptr);

    const struct {
        const char* text;
        Kind kind;
        Reads between, after;
    } rows[] = {
        {"7", Kind::Number, 0, 0},
        {"(((", Kind::Unknown, 0, 0},
        {"x", Kind::Formula, 0, 0},
        {"cycle + x", Kind::Formula, kReadsLeftKey, kReadsLeftKey | kReadsRightKey | kReadsCurve},
    };
    for (const auto& row : rows) {
        const auto made = InterpolatorFactory::create(row.text);
        EXPECT_EQ(KindOf(*made).kind, row.kind) << row.text;
        EXPECT_EQ(ReadsOf(made.get(), segment), row.between) << row.text;
        EXPECT_EQ(ReadsOf(made.get(), *curve->findSegment(40)), row.after) << row.text;
    }
}

} // namespace
} // namespace Test
