// Includes tools/Deviation.h, whose bounds the reduction's promise stands on.

#include "support/Basics.h"
#include "support/BezierOracle.h"
#include "support/Invariants.h"
#include "support/Museum.h"
#include "support/Random.h"
#include "support/Recorder.h"
#include "tools/Deviation.h" // internal: the certificate
#include "tools/Outside.h"
#include "tools/Partitions.h"
#include "tools/RandomShape.h"

using namespace Test;

namespace {

std::vector<FitOptions> AllOptions() {
    std::vector<FitOptions> all;
    for (const auto handles : {FitOptions::Thirds, FitOptions::Weighted})
        for (const auto keys : {FitOptions::Smooth, FitOptions::Broken})
            for (const bool extremes : {false, true}) {
                all.emplace_back();
                all.back().handles = handles;
                all.back().keys = keys;
                all.back().keepExtremes = extremes;
            }
    return all;
}

// Signals as hosts have them: noise, a walk, a wave with noise, a decimated ramp with holds, values of few digits.
Samples RandomSignal(unsigned seed, int count) {
    Random random(seed);
    Samples samples;
    double x = random.between(-1000, 1000), walk = 0.0, hold = 0.0;
    const double spacing = seed % 2 == 0 ? 1.0 : 0.01;
    const double height = std::pow(10.0, random.between(-6, 6));
    for (int i = 0; i < count; ++i) {
        walk += random.between(-1, 1);
        if (random.below(15) == 0) hold = std::round(walk);
        const double wave = std::sin(i / 9.0);
        const double values[] = {random.between(-1, 1), walk, wave + random.between(-0.02, 0.02), hold,
                                 std::round(wave * 50.0) / 50.0};
        samples.emplace_back(x, height * values[seed % 5]);
        x += spacing * (seed % 3 == 0 ? random.between(0.5, 2.0) : 1.0);
    }
    return samples;
}

double RangeOf(const Samples& samples) {
    const auto [low, high] =
        std::minmax_element(samples.begin(), samples.end(), [](const auto& a, const auto& b) { return a.y < b.y; });
    return high->y - low->y;
}

// What keys that were made must be, so that neither evaluation nor a later edit corrects them.
std::string KeyFault(FCurve& curve, const FitOptions& options) {
    std::string fault = Fault(curve);
    if (!fault.empty()) return fault;
    for (Segment& segment : curve) {
        if (!segment.getLeftKey() || !segment.getRightKey()) continue;
        const double span = segment.getRightKey()->getX() - segment.getLeftKey()->getX();
        if (span < Keyframe::getMinSeparation()) return "keys too close";
        for (const auto& tangent : {segment.getOutTangent(), segment.getInTangent()}) {
            const double reach = std::abs(tangent->getX());
            if (tangent->getType() != Tangent::Fixed) return "type";
            if (!(reach >= 0.0 && reach <= span)) return "handle leaves the span";
            if (tangent->isWeighted() != (std::abs(reach - span / 3) > 1e-9 * span)) return "weighted flag";
            if (tangent->isWeighted() && options.handles == FitOptions::Thirds) return "weighted";
        }
        const auto key = segment.getLeftKey();
        const auto in = key->getInTangent(), out = key->getOutTangent();
        if (key->isTangentsUnified() && key->getLeftSegment()->getLeftKey()
            && std::abs(in->getAngle() - out->getAngle()) > 1e-7)
            return "unified, but not on one line";
    }
    return "";
}

TEST(FitCurve, StaysWithinTheToleranceOfEverySample) {
    for (unsigned seed = 0; seed < 30; ++seed)
        for (const FitOptions& options : AllOptions())
            for (const double part : {1e-7, 0.001, 0.03, 2.0}) {
                const Samples samples = RandomSignal(seed, 120);
                const double tolerance = part * RangeOf(samples);
                const FitResult fit = FitCurve(samples, tolerance, options);
                SCOPED_TRACE(testing::Message() << "seed " << seed << ", handles " << options.handles << ", keys "
                                                << options.keys << ", tolerance " << part);
                ASSERT_EQ(KeyFault(*fit.curve, options), "");
                double error = 0.0;
                for (const auto& sample : samples)
                    error = std::max(error, std::abs(fit.curve->eval(sample.x) - sample.y));
                ASSERT_LE(error, tolerance);
                ASSERT_EQ(error, fit.report.error);
                ASSERT_TRUE(fit.report.withinTolerance);
                ASSERT_EQ(fit.report.keysBefore, samples.size());
                ASSERT_EQ(fit.report.keysAfter + 1, fit.curve->size());
                ASSERT_EQ(fit.curve->begin()->getRightKey()->get(), samples.front());
                ASSERT_EQ((--fit.curve->end())->getLeftKey()->get(), samples.back());
                if (options.keepExtremes || seed % 5 == 3) continue;
                for (auto it = std::next(fit.curve->begin(), 2);
                     options.keys == FitOptions::Smooth && it->getRightKey(); ++it)
                    ASSERT_TRUE(it->getLeftKey()->isTangentsUnified() || seed % 5 == 4);
            }
}

TEST(FitCurve, NeedsHardlyMoreKeysThanTheBestPartition) {
    std::size_t smooth = 0, broken = 0, weighted = 0, best = 0;
    for (unsigned seed = 0; seed < 15; ++seed) {
        if (seed % 5 == 3) continue; // holds, whose corners smooth keys only come near
        const Samples samples = RandomSignal(seed, 150);
        for (const double part : {0.001, 0.01, 0.05}) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", tolerance " << part);
            const double tolerance = part * RangeOf(samples);
            const std::size_t fewest = BestPartition(samples, tolerance);
            FitOptions options;
            smooth += FitCurve(samples, tolerance, options).report.keysAfter;
            options.keys = FitOptions::Broken;
            const std::size_t ours = FitCurve(samples, tolerance, options).report.keysAfter;
            EXPECT_LE(static_cast<double>(ours), 1.1 * static_cast<double>(fewest));
            options.handles = FitOptions::Weighted;
            const std::size_t withLengths = FitCurve(samples, tolerance, options).report.keysAfter;
            EXPECT_LE(withLengths, ours);
            weighted += withLengths;
            broken += ours;
            best += fewest;
        }
    }
    // Hardly more than were found when this was written: no change makes a search worse unnoticed. So below.
    EXPECT_LE(static_cast<double>(broken), (kNumbersAreGccs ? 1.005 : 1.02) * static_cast<double>(best));
    EXPECT_LE(static_cast<double>(weighted), (kNumbersAreGccs ? 0.933 : 1.02) * static_cast<double>(best));
    EXPECT_LE(static_cast<double>(smooth), (kNumbersAreGccs ? 1.413 : 1.42) * static_cast<double>(best));
}

// Samples of one segment with handles of any length: weighted ones find it again, thirds need more keys.
TEST(FitCurve, FindsWeightedHandles) {
    Random random(5);
    std::size_t weighted = 0, thirds = 0;
    for (int i = 0; i < 50; ++i) {
        const auto curve = CurveThrough({{0, 0}, {10, random.between(-5, 5)}}, Bezier::create());
        Segment& segment = *curve->findSegment(5);
        for (const auto& tangent : {segment.getOutTangent(), segment.getInTangent()}) {
            tangent->setType(Tangent::Fixed);
            tangent->setWeighted(true);
            const double reach = random.between(0.8, 9.0);
            tangent->set({tangent->isInTangent() ? -reach : reach, random.between(-6, 6)});
        }
        Samples samples;
        for (int k = 0; k <= 100; ++k) samples.emplace_back(0.1 * k, curve->eval(0.1 * k));
        FitOptions options;
        const double tolerance = 0.001 * RangeOf(samples);
        thirds += FitCurve(samples, tolerance, options).report.keysAfter;
        options.handles = FitOptions::Weighted;
        weighted += FitCurve(samples, tolerance, options).report.keysAfter;
    }
    EXPECT_LE(weighted, kNumbersAreGccs ? 112u : 115u);
    EXPECT_LE(thirds, kNumbersAreGccs ? 288u : 400u);
    EXPECT_GE(thirds, 250u) << "the samples ask for nothing";
}

TEST(FitCurve, KeepsConstantAndStraightRuns) {
    Samples samples;
    const auto shape = [](int x) {
        return x < 40 ? 3.0 : x < 60 ? 3.0 + 0.25 * (x - 40) : x < 100 ? 8.0 : 0.1 * x - 2.0;
    };
    for (int x = 0; x <= 140; ++x) samples.emplace_back(x, shape(x));
    for (const FitOptions& options : AllOptions()) {
        const auto curve = FitCurve(samples, 0.01, options).curve;
        EXPECT_EQ(curve->size(), 6u);
        for (int x = 0; x <= 140; ++x)
            EXPECT_NEAR(curve->eval(x), shape(x), x <= 40 || (x >= 60 && x <= 100) ? 0.0 : 1e-12) << x;
        EXPECT_EQ(curve->eval(17.3), 3.0);
    }
    for (auto& sample : samples) sample.y = 5.3;
    const FitResult flat = FitCurve(samples, 0.0);
    EXPECT_EQ(flat.report.keysAfter, 2u);
    EXPECT_EQ(flat.curve->eval(77.7), 5.3);
}

TEST(FitCurve, ObeysItsOptions) {
    Samples samples = RandomSignal(2, 200);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i].x = 0.5 * static_cast<double>(i);
    const double range = RangeOf(samples);
    FitOptions options;
    options.wholeFrames = true;
    FitResult fit = FitCurve(samples, 0.05 * range, options);
    for (const Segment& segment : *fit.curve) {
        const auto key = segment.getLeftKey();
        EXPECT_TRUE(!key || key->getX() == samples.back().x || key->getX() == std::round(key->getX()));
    }
    EXPECT_EQ(fit.report.withinTolerance, fit.report.error <= 0.05 * range);

    options = {};
    for (const std::size_t most : {2u, 5u, 12u, 30u}) {
        options.maxKeys = most;
        fit = FitCurve(samples, 1e-6 * range, options);
        EXPECT_LE(fit.report.keysAfter, most);
        EXPECT_GE(fit.report.keysAfter + most / 4, most);
        EXPECT_FALSE(fit.report.withinTolerance);
        double error = 0.0;
        for (const auto& sample : samples) error = std::max(error, std::abs(fit.curve->eval(sample.x) - sample.y));
        EXPECT_EQ(error, fit.report.error);
    }

    options = {};
    options.keepExtremes = true;
    fit = FitCurve({{0, 0}, {1, 1}, {2, 3}, {3, 3}, {4, 2}, {5, 1}, {6, 4}, {7, 5}, {8, 5}, {9, 6}}, 100.0, options);
    std::vector<double> places;
    for (const Segment& segment : *fit.curve)
        if (segment.getLeftKey()) places.push_back(segment.getLeftKey()->getX());
    EXPECT_THAT(places, ElementsAre(0, 2, 3, 5, 9));
}

TEST(FitCurve, TakesWhateverIsGiven) {
    const auto keysOf = [](const Samples& samples, double tolerance) {
        const FitResult fit = FitCurve(samples, tolerance);
        EXPECT_EQ(fit.report.keysAfter + 1, fit.curve->size());
        EXPECT_EQ(Fault(*fit.curve), "");
        return std::make_pair(fit.report.keysBefore, fit.report.keysAfter);
    };
    using Counts = std::pair<std::size_t, std::size_t>;
    EXPECT_EQ(keysOf({}, 1.0), Counts(0, 0));
    EXPECT_EQ(keysOf({{3, 4}}, 1.0), Counts(1, 1));
    EXPECT_EQ(keysOf({{3, kNaN}, {kInfinity, 1}, {kNaN, 1}}, 1.0), Counts(0, 0));
    EXPECT_EQ(keysOf({{3, 4}, {3, 5}, {2, 9}, {1, 1}, {4, 4}}, 1.0), Counts(2, 2));
    EXPECT_EQ(keysOf({{0, 0}, {1, 5}, {2, 1}}, kInfinity), Counts(3, 2));
    for (const double none : {0.0, -1.0, kNaN, -kInfinity})
        EXPECT_EQ(FitCurve({{0, 0}, {1, 5}, {2, 1}, {3, 7}, {4, 2}}, none).report.error, 0.0);
    EXPECT_EQ(keysOf({{0, 1e300}, {1, -1e300}, {2, 1e300}, {3, 0}}, 1.0).first, 4u);
    EXPECT_EQ(keysOf({{1e15, 0}, {1e15 + 1, 5}, {1e15 + 2, 1}}, 0.1).first, 3u);

    const FitResult close = FitCurve({{0, 0}, {0.0004, 5}, {0.0008, 0}, {0.002, 1}}, 0.1);
    EXPECT_EQ(KeyFault(*close.curve, {}), "");
    EXPECT_FALSE(close.report.withinTolerance);
    EXPECT_GT(close.report.error, 1.0);
}

// --- the bounds ------------------------------------------------------------------------------------------------------

TEST(Deviation, BoundsEveryPlaceAndIsNearlyReached) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        Random random(seed);
        const double scale = std::pow(10.0, random.between(-8, 8)), start = random.below(3) == 0 ? 86400.0 : 0.0;
        const auto make = [&](double from, double to) {
            const double width = to - from;
            const bool thirds = random.below(3) == 0, line = random.below(6) == 0;
            const auto length = [&] {
                return thirds ? width / 3 : random.below(5) == 0 ? 0.0 : random.between(0, width);
            };
            Private::BezierArgs p{from,     scale * random.between(-1, 1), to,        scale * random.between(-1, 1),
                                  length(), scale * random.between(-3, 3), -length(), scale * random.between(-3, 3)};
            return line ? Private::LineArgs(p.x0, p.y0, p.x3, p.y3) : p;
        };
        const Private::BezierArgs a = make(start - random.between(0, 2), start + random.between(3, 5));
        Private::BezierArgs b = make(start - random.between(0, 2), start + random.between(3, 5));
        if (random.below(4) == 0) { // nearly the same
            b = a;
            b.outY += 1e-6 * scale;
        }
        const double from = start, to = start + random.between(0.01, 3);
        const auto bound =
            Private::BoundDeviation(Private::BezierFunction(a), Private::BezierFunction(b), from, to, 1e300);
        const Oracle oracleA(a), oracleB(b);
        const auto distance = [&](double x) { return static_cast<double>(std::abs(oracleA.y(x) - oracleB.y(x))); };
        SCOPED_TRACE(seed);
        for (int i = 0; i <= 500; ++i) ASSERT_LE(distance(from + (to - from) * i / 500), bound.bound);
        EXPECT_GE(distance(bound.at), 0.998 * bound.bound - 4e-5 * scale);
        EXPECT_GE(bound.at, from);
        EXPECT_LE(bound.at, to);
    }
}

// --- reduction -------------------------------------------------------------------------------------------------------

struct Farthest {
    double distance = 0.0;
    double at = 0.0;
};
Farthest FarthestBetween(const FCurve& a, const FCurve& b, double from, double to, int places) {
    Farthest worst;
    for (int i = 0; i < places; ++i) {
        const double x = from + (to - from) * (i + 0.37) / places;
        const double distance = std::abs(a.eval(x) - b.eval(x));
        if (!(distance <= worst.distance)) worst = {distance, x};
    }
    return worst;
}

void CheckReduction(FCurve& curve, double from, double to, double tolerance, const FitOptions& options) {
    SCOPED_TRACE(testing::Message() << from << " to " << to << ", tolerance " << tolerance << ", handles "
                                    << options.handles << ", keys " << options.keys);
    const auto before = FCurve::createCopy(curve);
    const Outside outside(curve, from, to);
    Recorder recorder;
    curve.subscribe(recorder);
    const FitReport report = ReduceCurve(curve, from, to, tolerance, options);
    curve.unsubscribe(recorder);
    ASSERT_EQ(Fault(curve), "");
    ASSERT_EQ(outside.changedPart(), "");
    ASSERT_EQ(outside.changedValue(0.0), "");
    ASSERT_TRUE(report.withinTolerance);
    ASSERT_LE(report.error, tolerance);
    ASSERT_EQ(report.keysBefore - report.keysAfter, before->size() - curve.size());
    ASSERT_EQ(recorder.take(), Difference(*before, curve).empty() ? Heard{} : Heard{"curve"});
    const auto [distance, at] = FarthestBetween(curve, *before, from, to, 4000);
    ASSERT_LE(distance, report.error) << "at " << at;
}

class ReductionOfEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, ReductionOfEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST_P(ReductionOfEveryExhibit, StaysWithinTheTolerance) {
    for (const FitOptions& options : AllOptions())
        for (const double part : {0.0, 0.01, 0.5})
            for (const double cut : {0.0, 0.2}) {
                const auto curve = GetParam().make();
                if (curve->size() < 4) return;
                Decorate(*curve);
                const double first = curve->begin()->getRightKey()->getX();
                const double last = (--curve->end())->getLeftKey()->getX();
                CheckReduction(*curve, first + cut * (last - first), last, part * SizeOf(*curve), options);
            }
}

TEST(ReduceCurve, StaysWithinTheToleranceWhateverTheCurve) {
    const std::vector<const char*> kinds = {"bezier()",   "bezier()",        "bezier()", "spline()",
                                            "ease()",     "linear()",        "linear()", "match()",
                                            "constant()", "constant_next()", "sin(x)"};
    const std::vector<const char*> smooth = {"bezier()", "spline()", "ease()", "linear()"};
    std::size_t before = 0, after = 0;
    for (unsigned seed = 0; seed < 150; ++seed) {
        RandomShape random(seed);
        const auto shape = random.make(seed % 2 == 0 ? kinds : smooth);
        if (seed % 3 == 0)
            for (Segment& segment : *shape)
                if (segment.getLeftKey()) segment.getLeftKey()->setBreakdown(false);
        if (seed % 6 == 0) BakeInterior(*shape, 0.25);
        const double first = shape->begin()->getRightKey()->getX(), last = (--shape->end())->getLeftKey()->getX();
        for (FitOptions options : AllOptions()) {
            options.wholeFrames = random.below(3) == 0;
            const auto curve = FCurve::createCopy(*shape);
            Decorate(*curve);
            SCOPED_TRACE(seed);
            const double cut = random.coin() ? 0.0 : random.between(0, 0.3) * (last - first);
            const std::size_t size = curve->size();
            before += size;
            CheckReduction(*curve, first + cut, last, std::pow(10.0, random.between(-4, 0)), options);
            ASSERT_LE(curve->size(), size);
            after += curve->size();
            if (testing::Test::HasFatalFailure()) return;
        }
    }
    EXPECT_LT(static_cast<double>(after), (kNumbersAreGccs ? 0.683 : 0.75) * static_cast<double>(before));
}

// Between the samples much fails at first, and what is found there again has to meet the rest.
TEST(ReduceCurve, JoinsWhatItSearchesAgain) {
    std::size_t left = 0;
    for (const unsigned seed : {0U, 1U, 2U, 5U, 6U, 7U})
        for (const FitOptions& options : AllOptions()) {
            SCOPED_TRACE(testing::Message() << seed << ", handles " << options.handles << ", keys " << options.keys);
            const Samples samples = RandomSignal(seed, 150);
            const auto curve = CurveThrough(samples, Linear::create());
            ReduceCurve(*curve, -kInfinity, kInfinity, 0.02 * RangeOf(samples), options);
            ASSERT_EQ(KeyFault(*curve, options), "");
            left += curve->size();
            if (options.keys == FitOptions::Broken || options.keepExtremes) continue;
            for (auto it = std::next(curve->begin(), 2); it->getRightKey(); ++it) {
                const auto uses = [](const Segment& segment) { return segment.getInterpolator()->usesTangents(); };
                const auto key = it->getLeftKey();
                EXPECT_TRUE(key->isTangentsUnified() || !uses(*it) || !uses(*key->getLeftSegment())) << key->getX();
            }
        }
    EXPECT_LE(left, kNumbersAreGccs ? 3205u : 4000u);
}

TEST(ReduceCurve, KeepsWhatHasToStay) {
    const struct {
        const char* what;
        std::function<void(FCurve&, Keyframe&)> mark;
        bool stays;
    } kRows[] = {
        {"nothing", [](FCurve&, Keyframe&) {}, false},
        {"locked", [](FCurve&, Keyframe& key) { SetLocked(key, true); }, true},
        {"selected", [](FCurve&, Keyframe& key) { key.setProperty("fc_sel", "1"); }, true},
        {"tangent selected", [](FCurve&, Keyframe& key) { key.getInTangent()->setProperty("fc_sel", "1"); }, true},
        {"not quite selected", [](FCurve&, Keyframe& key) { key.setProperty("fc_sel", "2"); }, false},
        {"breakdown", [](FCurve&, Keyframe& key) { key.setBreakdown(true); }, true},
        {"stepped", [](FCurve&, Keyframe& key) { key.getRightSegment()->setInterpolator(Constant::create()); }, true},
        {"stepped before",
         [](FCurve&, Keyframe& key) { key.getLeftSegment()->setInterpolator(ConstantNext::create()); }, true},
        {"formula",
         [](FCurve&, Keyframe& key) { key.getRightSegment()->setInterpolator(InterpolatorFactory::create("x")); },
         true},
        {"other property", [](FCurve&, Keyframe& key) { key.setProperty("mine", "1"); }, false},
    };
    for (const auto& row : kRows)
        for (const FitOptions& options : AllOptions()) {
            const auto curve = FCurve::create();
            for (int x = 0; x <= 20; ++x) curve->insertSegment(*Keyframe::create(x, 0.01 * x * x), Bezier::create());
            const auto key = curve->findSegment(9)->getLeftKey();
            row.mark(*curve, *key);
            ReduceCurve(*curve, 0, 20, 100.0, options);
            EXPECT_EQ(key->getOwningCurve() == curve, row.stays) << row.what;
            EXPECT_LE(curve->size(), row.stays ? 6u : 3u) << row.what;
        }
    const auto huge = CurveThrough({{0, 1e308}, {1, -1e308}, {2, 1e308}}, Linear::create());
    ReduceCurve(*huge, 0, 2, 1e307);
    EXPECT_EQ(huge->size(), 4u) << "differences overflow";
}

TEST(ReduceCurve, LeavesAsManyKeysAsItMay) {
    for (const std::size_t most : {2u, 5u, 12u})
        for (FitOptions options : AllOptions()) {
            if (options.keepExtremes) continue;
            const auto before = FCurve::create();
            for (int x = 0; x <= 60; ++x)
                before->insertSegment(*Keyframe::create(x, std::sin(0.3 * x) + 0.1 * (x % 3)), Linear::create());
            const auto curve = FCurve::createCopy(*before);
            options.maxKeys = most;
            const FitReport report = ReduceCurve(*curve, 0, 60, 1e-6, options);
            EXPECT_LE(report.keysAfter, most);
            EXPECT_GE(report.keysAfter + most / 3, most);
            EXPECT_FALSE(report.withinTolerance);
            EXPECT_LE(FarthestBetween(*curve, *before, 0, 60, 4000).distance, report.error);
            EXPECT_NEAR(std::abs(curve->eval(report.errorAt) - before->eval(report.errorAt)), report.error,
                        0.01 * report.error);
        }
}

TEST(ReduceCurve, KeepsASmoothJointWithTheOutside) {
    const auto curve = FCurve::create();
    for (int x = 0; x <= 30; ++x) curve->insertSegment(*Keyframe::create(x, std::sin(0.2 * x)), Bezier::create());
    for (Segment& segment : *curve) {
        segment.getInTangent()->setType(Tangent::Smooth);
        segment.getOutTangent()->setType(Tangent::Smooth);
        if (segment.getLeftKey()) segment.getLeftKey()->setTangentsUnified(true);
    }
    ReduceCurve(*curve, 5, 25, 0.01);
    EXPECT_LT(curve->size(), 20u);
    for (const double x : {5.0, 25.0}) {
        EXPECT_TRUE(curve->findSegment(x)->getLeftKey()->isTangentsUnified());
        EXPECT_NEAR(GetFirstDerivativeLeft(*curve, x), GetFirstDerivativeRight(*curve, x), 1e-9);
    }
}

TEST(ReduceCurve, ChangesNothingWhereNothingIsToBeDone) {
    const auto curve = CurveThrough({{0, 0}, {1, 9}, {2, -9}, {3, 9}, {4, 0}}, Bezier::create());
    const auto before = FCurve::createCopy(*curve);
    const struct {
        double start, end, tolerance;
        std::size_t keys;
    } kRows[] = {{3, 1, 1, 0},   {kNaN, 4, 1, 0}, {0, kNaN, 1, 0},  {0.5, 0.7, 1, 0},
                 {-9, -5, 1, 0}, {5, 9, 1, 0},    {0.5, 2.5, 1, 2}, {2, 2, 1, 0},
                 {0, 4, 0, 5},   {0, 4, -1, 5},   {0, 4, kNaN, 5},  {-kInfinity, kInfinity, 1e-3, 5}};
    for (const auto& row : kRows) {
        const FitReport report = ReduceCurve(*curve, row.start, row.end, row.tolerance);
        EXPECT_EQ(report.keysBefore, row.keys);
        EXPECT_EQ(report.keysAfter, row.keys);
        EXPECT_EQ(report.error, 0.0);
        EXPECT_EQ(Difference(*before, *curve), "") << row.start << " " << row.end << " " << row.tolerance;
    }
}

} // namespace
