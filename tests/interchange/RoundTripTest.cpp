// Curves there and back through every format of the library, held against the report: whatever became different is
// named there, and where nothing is named, nothing became different.

#include "FCurveInterchange/FCurveInterchange.h"
#include "support/Museum.h"
#include "support/Random.h"
#include "support/SameCurve.h"
#include "support/StreamOf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <set>
#include <string>
#include <vector>

using namespace Test;
using namespace VEM_FN::FCurveLib::Interchange;

namespace {

// All formats that the core does not write itself.
std::vector<std::string> formats() {
    RegisterFormats();
    std::vector<std::string> names;
    for (auto type = FormatFactory::beginWriterTypes(); type != FormatFactory::endWriterTypes(); ++type) {
        const std::string name = (*type).getFormatName();
        if (name != "xml" && name != "binary") names.push_back(name);
    }
    return names;
}

// A curve such as animators make: keys some frames apart, all kinds and types, seldom a flag or a property.
std::shared_ptr<FCurve> ordinaryCurve(Random& random, int number) {
    static const char* const kinds[] = {"bezier()", "bezier()",        "bezier()", "linear()",       "constant()",
                                        "spline()", "constant_next()", "ease()",   "easein()",       "easeout()",
                                        "match()",  "cycle()",         "mirror()", "cycle_offset()", "1.5",
                                        "sin(x/9)", "bezier()",        "linear()", "bezier()",       "what ("};
    const bool isPlain = random.coin(); // one kind, nothing odd
    const char* const only = random.oneOf(kinds);
    const auto kind = [&] { return InterpolatorFactory::create(isPlain ? only : random.oneOf(kinds)); };
    const auto seldom = [&] { return !isPlain && random.below(20) == 0; };

    auto curve = FCurve::create();
    curve->setName(("node" + std::to_string(number) + (random.coin() ? "/translateX" : "/rotateZ")).c_str());
    if (seldom()) curve->setProperty("note", "a");
    if (seldom()) SetLocked(*curve, true);
    double x = random.below(40) - 20;
    const bool wholeFrames = random.coin();
    for (int i = random.below(7); i >= 0; --i) {
        Keyframe key;
        key.set(x, random.coin() ? random.below(21) - 10 : random.between(-10.0, 10.0));
        key.setBreakdown(seldom());
        if (seldom()) key.setProperty("note", "b");
        curve->insertSegment(key, kind());
        x += wholeFrames ? 1 + random.below(12) : random.between(0.5, 12.0);
    }
    if (random.coin()) (*curve->begin()).setInterpolator(kind());
    if (random.coin()) (*std::prev(curve->end())).setInterpolator(Constant::create());
    const bool weighted = random.coin();
    const int type = random.below(9);
    const bool isShaped = !isPlain || std::string(only) == "bezier()";
    for (Segment& segment : *curve) {
        if (!isShaped) break;
        for (const auto& tangent : {segment.getInTangent(), segment.getOutTangent()}) {
            tangent->setWeighted(weighted);
            tangent->setType(static_cast<std::uint8_t>(isPlain ? std::min(type, 6) : random.below(7)));
            if (tangent->getType() == Tangent::Fixed) {
                const double side = tangent->isInTangent() ? -1.0 : 1.0;
                tangent->set(side * random.between(0.0, 8.0), random.between(-6.0, 6.0));
            }
            if (seldom()) tangent->setWeightLocked(true);
        }
        if (const auto key = segment.getLeftKey(); key && seldom()) key->setTangentsUnified(true);
    }
    return curve;
}

struct Trip {
    std::shared_ptr<FCurve> back; // null where no curve came back
    ConversionReport report;
    std::string refusal;
};

// By the number of the curve in the container, as reports are by name.
std::vector<Trip> convert(const std::vector<std::shared_ptr<FCurve>>& curves, const std::string& format) {
    std::vector<Trip> trips;
    for (const auto& curve : curves) {
        Trip trip;
        MemoryStream stream;
        const auto container = FCurveContainer::create();
        container->addCurve(curve);
        try {
            const Conversion conversion(trip.report);
            WriteCurves(*container, stream, format.c_str());
        } catch (const NotWritable& refusal) {
            trip.refusal = refusal.message();
        }
        if (trip.refusal.empty()) {
            stream.setPosition(0);
            const auto read = FCurveContainer::create();
            ContainerInterface target(*read);
            FormatFactory::getReader(format.c_str())->readCurves(stream, target);
            if (!read->empty()) trip.back = read->begin()->getShared();
        }
        trips.push_back(std::move(trip));
    }
    return trips;
}

bool names(const ConversionReport& report, std::initializer_list<Loss::What> any) {
    return std::any_of(report.losses().begin(), report.losses().end(),
                       [&](const Loss& loss) { return std::find(any.begin(), any.end(), loss.what) != any.end(); });
}

std::string all(const ConversionReport& report) {
    std::string text;
    for (const Loss& loss : report.losses()) text += "\n  " + Describe(loss);
    return text.empty() ? " (an empty report)" : text;
}

double heightOf(const FCurve& curve) {
    double low = HUGE_VAL;
    double high = -HUGE_VAL;
    for (const Segment& segment : curve) {
        if (!segment.getLeftKey()) continue;
        low = std::min(low, segment.getLeftKey()->getY());
        high = std::max(high, segment.getLeftKey()->getY());
    }
    const double size = high > low ? high - low : std::fabs(low);
    return size > 0.0 && std::isfinite(size) ? size : 1.0;
}

// What became different and the report does not tell, or tells wrongly; empty for nothing.
std::string untold(const FCurve& original, const Trip& trip, Random& random) {
    const ConversionReport& report = trip.report;
    if (!trip.back) return names(report, {Loss::Curves}) ? "" : "the curve is gone";
    const FCurve& back = *trip.back;
    if (std::string(original.getName()) != back.getName() && !names(report, {Loss::Names})) return "the name";
    for (auto i = original.beginProperties(); i != original.endProperties(); ++i)
        if (i->second != back.getProperty(i->first.c_str()) && !names(report, {Loss::Properties, Loss::Flags}))
            return "a property of the curve";

    const bool isReshaped = names(report, {Loss::Kind, Loss::Formulas, Loss::Time});
    if (original.size() != back.size() && !isReshaped) return "the number of keys";
    for (auto i = original.begin(), j = back.begin(); i != original.end() && !isReshaped; ++i, ++j) {
        const bool isEnd = i == original.begin() || std::next(i) == original.end();
        if (SameCurve::expression(*i) != SameCurve::expression(*j) && !(isEnd && names(report, {Loss::Ends})))
            return "an interpolator";
        for (const auto& [a, b] :
             {std::pair(i->getOutTangent(), j->getOutTangent()), std::pair(i->getInTangent(), j->getInTangent())}) {
            if (a->getType() != b->getType() || a->isWeighted() != b->isWeighted()) return "the type of a tangent";
            const double off = std::max(std::fabs(a->getX() - b->getX()), std::fabs(a->getY() - b->getY()));
            if (off > 1e-7 * std::max({1.0, heightOf(original), std::fabs(a->getX()), std::fabs(a->getY())})
                && !names(report, {Loss::Tangents}))
                return "a handle";
            if (a->isWeightLocked() != b->isWeightLocked() && !names(report, {Loss::Flags})) return "a locked weight";
        }
        const auto key = i->getLeftKey();
        const auto other = j->getLeftKey();
        if (!key || !other) continue;
        if (key->getX() != other->getX() && std::fabs(key->getX() - other->getX()) > 1e-8
            && !names(report, {Loss::Precision}))
            return "the place of a key";
        const std::string difference = SameCurve::keyButPosition(*key, *other);
        if (!difference.empty() && !names(report, {Loss::Flags, Loss::Properties})) return difference + " of a key";
    }

    // Values, at keys and at random.
    const double first = original.size() > 1 ? original.begin()->getRightKey()->getX() : -5.0;
    const double last = original.size() > 1 ? std::prev(original.end())->getLeftKey()->getX() : 5.0;
    std::vector<double> places;
    for (const Segment& segment : original)
        if (segment.getLeftKey()) places.push_back(segment.getLeftKey()->getX());
    for (int i = 0; i < 40; ++i)
        places.push_back(random.between(first - 1.5 * (last - first), 2.5 * last - 1.5 * first));
    const bool tellsInside = isReshaped || names(report, {Loss::Tangents, Loss::Precision});
    for (const double x : places) {
        const bool isInside = x >= first && x < last;
        const double off = std::fabs(original.eval(x) - back.eval(x));
        if (off <= 1e-9 * heightOf(original) || std::isnan(off)) continue;
        if (isInside ? !tellsInside : !names(report, {Loss::Ends, Loss::Kind, Loss::Tangents, Loss::Formulas}))
            return "the value at " + std::to_string(x);
    }
    for (const Loss& loss : report.losses()) {
        const double claimed = std::fabs(original.eval(loss.at) - back.eval(loss.at));
        // At a key the limit from one side may be meant.
        if (loss.difference > 0.0 && std::isfinite(loss.difference) && loss.what != Loss::Ends
            && !(claimed >= loss.difference - 1e-6 * heightOf(original))
            && !(original.findSegment(loss.at)->getLeftKey()
                 && std::fabs(original.findSegment(loss.at)->getLeftKey()->getX() - loss.at) < 1e-6))
            return "not so far off as it says: " + Describe(loss);
    }
    return "";
}

class EveryFormat : public testing::TestWithParam<std::string> {
protected:
    // Returns how many reports are empty.
    int check(const std::vector<std::shared_ptr<FCurve>>& curves, const std::vector<std::string>& labels) {
        Random random(7);
        int empty = 0;
        const std::vector<Trip> trips = convert(curves, GetParam());
        for (std::size_t i = 0; i < curves.size(); ++i) {
            if (!trips[i].refusal.empty()) continue;
            EXPECT_EQ(untold(*curves[i], trips[i], random), "") << labels[i] << ':' << all(trips[i].report);
            empty += trips[i].report.empty();
        }
        return empty;
    }
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(EveryFormat);

} // namespace

TEST_P(EveryFormat, TellsWhatBecomesOfTheMuseum) {
    std::vector<std::shared_ptr<FCurve>> curves;
    std::vector<std::string> labels;
    for (const Exhibit& exhibit : Museum()) {
        // A million frames, a key each, add nothing to what the others tell of sampling.
        if (std::string(exhibit.name) == "LongHold" && (GetParam() == "hchan" || GetParam() == "hClip")) continue;
        curves.push_back(exhibit.make());
        curves.back()->setName(exhibit.name);
        labels.push_back(exhibit.name);
    }
    check(curves, labels);
}

TEST_P(EveryFormat, TellsWhatBecomesOfRandomCurves) {
    Random random(15);
    std::vector<std::shared_ptr<FCurve>> curves;
    std::vector<std::string> labels;
    for (int i = 0; i < 2000; ++i) {
        curves.push_back(ordinaryCurve(random, i));
        labels.push_back("curve " + std::to_string(i));
    }
    const bool isSampled = GetParam() == "hchan" || GetParam() == "hClip"; // keys at every frame
    EXPECT_EQ(check(curves, labels) == 0, isSampled) << "whether a curve comes back whole";
}

// What turns fast, between whole frames, or nowhere a number can go.
TEST_P(EveryFormat, TellsTheLargestDifference) {
    const std::pair<const char*, double> formulas[] = {{"sin(x)", 2000.0},
                                                       {"sin(20*x)", 100.0},
                                                       {"10*exp(-(x-25.3)*(x-25.3))", 100.0},
                                                       {"x-3*floor(x/3)", 100.0},
                                                       {"exp(x*500)", 10.0}};
    std::vector<std::shared_ptr<FCurve>> curves;
    for (const auto& [formula, last] : formulas) {
        curves.push_back(FCurve::create());
        curves.back()->insertSegment(*Keyframe::create(0.0, 0.0), InterpolatorFactory::create(formula));
        curves.back()->insertSegment(*Keyframe::create(last, 1.0), Constant::create());
    }
    const std::vector<Trip> trips = convert(curves, GetParam());
    for (std::size_t i = 0; i < curves.size(); ++i) {
        if (!trips[i].back) continue;
        constexpr int kPlaces = 20000;
        double largest = 0.0;
        for (int j = 0; j < kPlaces; ++j) {
            const double x = formulas[i].second * (j + 0.37) / kPlaces;
            const double off = std::fabs(curves[i]->eval(x) - trips[i].back->eval(x));
            if (std::isfinite(off)) largest = std::max(largest, off);
        }
        double told = 0.0;
        for (const Loss& loss : trips[i].report.losses()) told = std::max(told, loss.difference);
        EXPECT_GE(told, 0.95 * largest) << formulas[i].first << all(trips[i].report);
        if (!names(trips[i].report, {Loss::Formulas})) continue;
        const bool says = all(trips[i].report).find("beyond the tolerance") != std::string::npos;
        EXPECT_TRUE(says || largest < 0.5) << formulas[i].first;
        EXPECT_TRUE(i != 1 || told < 2e-2) << "that fits, up to the jump at its end" << all(trips[i].report);
    }
}

TEST(Easings, HoldHandlesOfAnyLength) {
    RegisterFormats();
    const double handles[][5] = {{10, 5, -10, 5, 0}, {10, -5, -10, 30, 0}, {9, 2, -9, 8, 0},  {10, 4, -10, -4, 0},
                                 {9, 4, -4, 2, 0},   {10, 5, -10, 20, 0},  {13, 0, -3, 4, 5}, {2, 9, -13, 1, 1e-12}};
    ConversionOptions options;
    options.settings["css.pieces"] = "yes";
    const Conversion conversion(options);
    for (const auto& [outX, outY, inX, inY, end] : handles) {
        const auto curve = FCurve::create();
        curve->insertSegment(*Keyframe::create(0.0, 0.0), Bezier::create());
        curve->insertSegment(*Keyframe::create(10.0, end), Constant::create());
        Segment& segment = *std::next(curve->begin());
        for (const auto& tangent : {segment.getOutTangent(), segment.getInTangent()}) tangent->setWeighted(true);
        segment.getOutTangent()->set(outX, outY);
        segment.getInTangent()->set(inX, inY);
        const auto curves = FCurveContainer::create();
        curves->addCurve(curve);
        for (const char* const format : {"css_easings", "lottie"}) {
            MemoryStream bytes;
            WriteCurves(*curves, bytes, format);
            bytes.setPosition(0);
            const auto back = FCurveContainer::create();
            ContainerInterface target(*back);
            FormatFactory::getReader(format)->readCurves(bytes, target);
            for (double x = 0.003; x < 10.0; x += 0.0147) // where it is vertical, digits of x cost many of y
                EXPECT_NEAR(back->begin()->eval(x), curve->eval(x), 1e-5) << format << ' ' << outX << ' ' << outY;
        }
    }
}

TEST(Easings, LeaveHandlesOfFarFramesUnweighted) {
    RegisterFormats();
    const auto curve = FCurve::create();
    for (const int i : {0, 1, 2}) curve->insertSegment(*Keyframe::create(1e6 + 7 * i, 5.0 * i * i), Bezier::create());
    for (Segment& segment : *curve) segment.getOutTangent()->setY(0.3);
    const auto curves = FCurveContainer::create();
    curves->addCurve(curve);
    ConversionOptions options;
    options.settings["css.pieces"] = "yes";
    for (const char* const format : {"css_easings", "lottie"}) {
        ConversionReport report;
        const Conversion conversion(report, options);
        MemoryStream bytes;
        WriteCurves(*curves, bytes, format);
        for (const Loss& loss : report.losses()) EXPECT_NE(loss.detail, "weighted tangents") << format;
    }
}

INSTANTIATE_TEST_SUITE_P(Interchange, EveryFormat, testing::ValuesIn(formats()),
                         [](const auto& format) { return format.param; });
