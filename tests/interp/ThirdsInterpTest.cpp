// Spline and the ease kinds.

#include "support/Basics.h"
#include "support/Museum.h"

namespace Test {
namespace {

TEST(ThirdsInterp, ControlPoints) {
    const struct {
        const char* kind;
        std::vector<Key> keys;
        double at; // in the segment that is looked at
        std::vector<double> points;
    } rows[] = {
        {"ease()", {{0, 0}, {3, 3}}, 1, {0, 0, 1, 0, 2, 3, 3, 3}},
        {"easein()", {{0, 0}, {3, 3}}, 1, {0, 0, 1, 0, 2, 1, 3, 3}},
        {"easeout()", {{0, 0}, {3, 3}}, 1, {0, 0, 1, 2, 2, 3, 3, 3}},
        {"spline()", {{0, 0}, {3, 3}}, 1, {0, 0, 1, 0, 2, 3, 3, 3}},
        {"spline()", {{0, 0}, {3, 3}, {6, 0}}, 1, {0, 0, 1, 0, 2, 3, 3, 3}},
        {"spline()", {{0, 0}, {3, 3}, {6, 6}, {12, 3}}, 4, {3, 3, 4, 4, 5, 6, 6, 6}},
    };
    for (const auto& row : rows) {
        const auto curve = MakeCurve(row.keys);
        for (Segment& segment : *curve) segment.setInterpolator(InterpolatorFactory::create(row.kind));
        const Segment& segment = *curve->findSegment(row.at);
        const auto& kind = dynamic_cast<const BezierInterpBase&>(*segment.getInterpolator());
        std::vector<double> p(8);
        kind.getBezierArgs(segment, p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]);
        EXPECT_EQ(p, row.points) << row.kind;
        EXPECT_FALSE(kind.usesTangents());
    }
}

TEST(ThirdsInterp, FarFromTheOriginValuesKeepTheirBits) {
    for (const char* kind : {"spline()", "ease()", "easein()", "easeout()", "match()"}) {
        const double shift = 0x1p30;
        const auto near = MakeCurve({{0, 1, {}, {}, kind}, {3, 4, {}, {}, kind}, {8, -2, {}, {}, kind}}, kind);
        const auto far =
            MakeCurve({{shift, 1, {}, {}, kind}, {shift + 3, 4, {}, {}, kind}, {shift + 8, -2, {}, {}, kind}}, kind);
        for (double x = -1.0; x < 9.0; x += 0.125) {
            EXPECT_EQ(far->eval(shift + x), near->eval(x)) << kind;
            EXPECT_EQ(GetFirstDerivative(*far, shift + x), GetFirstDerivative(*near, x)) << kind;
        }
    }
}

TEST(ThirdsInterp, ExtentsHoldTheValueBesideAKeyAsBeziersDo) {
    for (const char* kind : {"bezier()", "easein()", "easeout()"}) {
        for (const double height : {1e3, -1e3}) {
            const auto curve = MakeCurve({{0.3, 7, {}, Vector2D<double>(0.5, height / 3), kind}, {2.3, height}});
            const Segment& segment = *curve->findSegment(1);
            for (double x = 0.3; x < 0.3 + 1e-15; x = std::nextafter(x, 1)) {
                double low = 0;
                double high = 0;
                segment.getInterpolator()->getRangeExtents(segment, x, 1, low, high);
                EXPECT_LE(low, curve->eval(x)) << kind;
                EXPECT_GE(high, curve->eval(x)) << kind;
            }
        }
    }
}

} // namespace
} // namespace Test
