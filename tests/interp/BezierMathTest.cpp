// The internal mathematics of Bezier segments, against an oracle in long double that finds t by bisection.
//
// FCURVELIB_ORACLE_SAMPLES sets how many abscissae are compared per row (200000 for a thorough run).

#include "interp/BezierMath.h" // internal: mathematics
#include "support/Basics.h"
#include "support/BezierOracle.h"
#include "support/Random.h"

#include <cfloat>
#include <cstdlib>

using namespace Test;
using namespace VEM_FN::FCurveLib::Private;

namespace {

// Under sanitizers, which slow the oracle down without finding more, a tenth.
#ifdef _GLIBCXX_ASSERTIONS
constexpr int defaultSamples = 100;
#else
constexpr int defaultSamples = 1000;
#endif

int OracleSamples() {
    const char* const text = std::getenv("FCURVELIB_ORACLE_SAMPLES");
    return text ? std::max(1, std::atoi(text)) : defaultSamples;
}

// --- the oracle ------------------------------------------------------------------------------------------------------

// The largest error of EvalBezierY in units of the value range, over samples at equal and at random distances; within
// 1e-07 of a key the value is the key's. The text tells where it is.
double WorstError(const BezierArgs& p, Random& random, std::string& where) {
    const Oracle oracle(p);
    const int samples = OracleSamples();
    Exact worst = 0;
    const double width = p.x3 - p.x0;
    for (int i = 0; i < samples; ++i) {
        double x = p.x0 + width * i / samples;
        if (i % 2 == 1) x = random.between(p.x0, p.x3);
        if (i % 16 == 0) x = p.x0 + width * std::pow(10.0, random.between(-12, -3));
        if (i % 16 == 8) x = p.x3 - width * std::pow(10.0, random.between(-12, -3));
        const double y = EvalBezierY(x, p);
        Exact error = 0;
        if (x - p.x0 <= 1e-7) {
            error = std::abs(y - p.y0) / DBL_MIN;
        } else if (p.x3 - x <= 1e-7) {
            error = std::abs(y - p.y3) / DBL_MIN;
        } else {
            // The value itself is a double: half a unit in its last place is no error.
            error = std::abs(y - oracle.y(x)) - DBL_EPSILON * std::abs(Exact(y)) / 2;
            if (error / oracle.range() > Exact(1e-11)) error -= oracle.doubt(x);
        }
        if (!(error / oracle.range() <= worst)) {
            worst = error / oracle.range();
            where = "x0 " + std::to_string(p.x0) + " width " + std::to_string(width) + " handles "
                    + std::to_string(p.outX / width) + " " + std::to_string(-p.inX / width) + " at "
                    + std::to_string((x - p.x0) / width);
        }
    }
    return static_cast<double>(worst);
}

// --- the parameter ---------------------------------------------------------------------------------------------------

// x(t) = w / 2 (1 + (2 t - 1)^3): the one vertical place whose t is known in closed form.
TEST(BezierMath, ParameterIsExactWhereTheCurveIsVertical) {
    for (const double width : {0.001, 1.0, 3.0, 1e6})
        for (double off = 1e-16; off < 0.4; off *= 1.7)
            for (const double x : {width * (0.5 + off), width * (0.5 - off)}) {
                const Exact t = (1 + std::cbrt((2 * Exact(x) - Exact(width)) / Exact(width))) / 2;
                ASSERT_NEAR(SolveBezierT(x, 0, width, 0, width), static_cast<double>(t), 1e-12)
                    << "width " << width << " x " << x;
            }
}

// --- values ----------------------------------------------------------------------------------------------------------

TEST(BezierMath, ValuesAgreeWithTheOracle) {
    Random random(3);
    ForEachHardSegment(random, [&](const BezierArgs& args) {
        std::string where;
        EXPECT_LE(WorstError(args, random, where), 1e-11) << where;
    });
}

TEST(BezierMath, FiniteInputGivesFiniteValues) {
    const double numbers[] = {0.0, 1e-300, 1e-8, 1.0, 1e8, 1e150, -1.0, -1e-8, -1e150};
    for (const double width : {0.0, 1e-300, 1e-3, 1.0, 1e150, -1.0})
        for (const double out : numbers)
            for (const double in : numbers)
                for (const double part : {0.0, 1e-12, 0.3, 0.5, 0.9, 1.0, 2.0, -1.0}) {
                    const BezierArgs p{1.0, 2.0, 1.0 + width, 3.0, out, 0.5, in, 0.25};
                    BezierArgs monotonic = p;
                    MakeBezierMonotonic(monotonic);
                    for (const BezierArgs& args : {p, monotonic})
                        ASSERT_TRUE(std::isfinite(EvalBezierY(1.0 + part * width, args)))
                            << width << ' ' << out << ' ' << in << ' ' << part;
                }
}

// --- derivatives -----------------------------------------------------------------------------------------------------

TEST(BezierMath, VerticalSlopesAreSentinels) {
    struct Row {
        double rise, outX, outY, inX, inY, t, slope, second;
    };
    const Row rows[] = {
        // width 3
        {1, 0, 2, -1, 0, 0, kVerticalSlope, -kVerticalSlope},
        {1, 0, -2, -1, 0, 0, -kVerticalSlope, kVerticalSlope},
        {1, 1, 0, 0, 2, 1, -kVerticalSlope, -kVerticalSlope},
        {1, 3, 0, -3, 0, 0.5, kVerticalSlope, 0}, // vertical in the middle
        {-1, 3, 0, -3, 0, 0.5, -kVerticalSlope, 0},
        {0, 0, 0, -1, 0, 0, kVerticalSlope, 0}, // a zero handle counts as vertical
        {1, 1, 1e-9, -1, 0, 0, 0, 2.0 / 3.0},   // flat within the tolerance
        {3, 1, 1, -1, -1, 0.3, 1, 0},
    };
    for (const Row& row : rows) {
        const BezierArgs p{0, 5, 3, 5 + row.rise, row.outX, row.outY, row.inX, row.inY};
        SCOPED_TRACE(testing::Message() << "out " << row.outX << ", " << row.outY);
        EXPECT_NEAR(BezierSlope({row.t, 1 - row.t}, p), row.slope, 1e-12);
        EXPECT_NEAR(BezierSecond({row.t, 1 - row.t}, p), row.second, 1e-8);
    }
}

// --- folds -----------------------------------------------------------------------------------------------------------

TEST(BezierMath, MonotonicLeavesNoFoldAtAnySpan) {
    Random random(17);
    for (double width = 1e-3; width < 2e6; width *= 10.0)
        for (int row = 0; row < 400; ++row) {
            const double x0 = row % 4 ? 0.0 : random.between(-1000, 1000);
            const double x3 = x0 + width;
            const double reach = row % 5 ? 3.0 : row % 2 ? 1.001 : 50.0;
            const double givenX1 = x0 + width * random.between(0, reach);
            const double givenX2 = x3 - width * random.between(0, reach);
            const double givenY1 = random.between(-5, 5);
            const double givenY2 = random.between(-5, 5);
            double x1 = givenX1, x2 = givenX2, y1 = givenY1, y2 = givenY2;
            MakeBezierMonotonic(x0, 0, x1, y1, x2, y2, x3, 1);

            // x'(t) >= 0, exactly: its Bernstein coefficients are not negative, or the middle one does not outweigh.
            const Exact first = Exact(x1) - x0;
            const Exact middle = Exact(x2) - x1;
            const Exact last = Exact(x3) - x2;
            const Exact ulp = Exact(DBL_EPSILON) * std::max(std::abs(x0), std::abs(x3)); // of a key's own abscissa
            ASSERT_GE(first, 0);
            ASSERT_GE(last, 0);
            if (first == x3 - Exact(x0) || last == x3 - Exact(x0))
                ASSERT_GE(middle, -std::sqrt(first * last) - ulp) << "width " << width << " row " << row;
            else
                ASSERT_TRUE(middle >= 0 || middle * middle <= first * last) << "width " << width << " row " << row;

            // Each handle keeps its slope, and is only ever shortened.
            ASSERT_LE(x1, givenX1);
            ASSERT_GE(x2, givenX2);
            const double coarse = (1e-11 + 80.0 * static_cast<double>(ulp) / width) * reach;
            if (first > 0) {
                ASSERT_NEAR(static_cast<double>(y1 / first) * (givenX1 - x0), givenY1, coarse);
            }
            if (last > 0) {
                ASSERT_NEAR(static_cast<double>((1 - y2) / last) * (x3 - givenX2), 1 - givenY2, coarse);
            }
        }
}

} // namespace
