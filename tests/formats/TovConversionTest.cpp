#include "FCurveLib/FCurveLib.h"
#include "support/Museum.h"
#include "support/RandomCurve.h"
#include "support/SameCurve.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <iomanip>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

using namespace Test;
using TovConversion::TovCurve;
using TovConversion::TovKey;

namespace {

// A kind of its own that is a Bezier curve: starts at the left key's value plus a step and runs to the right key.
class Bow : public BezierInterpBase {
public:
    explicit Bow(double step) : m_step(step) { setExpression("bow()"); }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<Bow>(m_step); }
    void getBezierArgs(const Segment& segment, double& x0, double& y0, double& x1, double& y1, double& x2, double& y2,
                       double& x3, double& y3) const override {
        const Vector2D<double> left = segment.getLeftKey()->get();
        const Vector2D<double> right = segment.getRightKey()->get();
        const double third = (right.x - left.x) / 3.0;
        x0 = left.x;
        y0 = left.y + m_step;
        x1 = x0 + third;
        y1 = y0 + 4.0;
        x3 = right.x;
        y3 = right.y;
        x2 = x3 - third;
        y2 = y3 + 4.0;
    }

private:
    double m_step;
};

// y = scale * (x - offset)^2, but not the number that any key has.
class Parabola : public Interpolator {
public:
    explicit Parabola(double scale, double offset = 0.0) : m_scale(scale), m_offset(offset) {
        setExpression("parabola()");
    }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<Parabola>(m_scale, m_offset); }
    double eval(double x, const Segment&) const override { return m_scale * (x - m_offset) * (x - m_offset); }

private:
    double m_scale;
    double m_offset;
};

struct Place {
    double x, y;
    std::shared_ptr<Interpolator> after;
};

std::shared_ptr<Interpolator> kind(const char* expression) {
    return InterpolatorFactory::create(expression);
}

std::shared_ptr<FCurve> curveOf(const std::vector<Place>& keys) {
    auto curve = FCurve::create();
    for (const Place& key : keys) curve->insertSegment(*Keyframe::create(key.x, key.y), key.after);
    return curve;
}

// Keys at 0 and 10 that rise from 0 to 5, the span between them of the given kind.
std::shared_ptr<FCurve> pair(const std::shared_ptr<Interpolator>& between) {
    return curveOf({{0, 0, between}, {10, 5, kind("constant()")}});
}
std::shared_ptr<FCurve> pair(const char* between) {
    return pair(kind(between));
}

Segment& span(FCurve& curve) {
    return *curve.findSegment(5.0);
}

std::string textOf(const TovCurve& curve) {
    std::ostringstream out;
    out << curve;
    return out.str();
}

} // namespace

TEST(TovCurve, WritesKeysInOrderWithTheWordsOfTheirSpans) {
    TovCurve curve(*FCurve::create());
    curve.setName("ty");
    const auto add = [&](double x, TovKey::InterpType interp, bool locked) {
        TovKey key;
        key.setLocation({x, 1.0 / 3.0});
        key.setLeftTangent({-1, 2});
        key.setRightTangent({1e7, 0.125});
        key.setInterp(interp);
        key.setLocked(locked);
        curve.addKeyframe(key);
    };
    add(12.4, TovKey::Linear, true);
    add(3.0, static_cast<TovKey::InterpType>(4), true);
    add(2.5, TovKey::Bezier, false);
    add(3.0, TovKey::Constant, false); // there is one at 3 already
    add(std::numeric_limits<double>::quiet_NaN(), TovKey::Constant, false);
    EXPECT_EQ(curve.size(), 3U);
    EXPECT_EQ(textOf(curve), "// no conversion loss\n"
                             "fcurve {\n"
                             "    name \"ty\"\n"
                             "    extensions constant constant\n"
                             "    keyframe {\n"
                             "        2.5 0.333333\n"
                             "        interp bezier\n"
                             "        tangents smooth -1 2 UNKNOWNINTERP 1e+07 0.125 bezier\n"
                             "    }\n"
                             "    keyframe {\n"
                             "        3 0.333333\n"
                             "        interp \n"
                             "        tangents smooth -1 2 bezier 1e+07 0.125 \n"
                             "        snapped\n"
                             "        locked\n"
                             "    }\n"
                             "    keyframe {\n"
                             "        12.4 0.333333\n"
                             "        interp linear\n"
                             "        tangents smooth -1 2  1e+07 0.125 UNKNOWNINTERP\n"
                             "        locked\n"
                             "    }\n"
                             "}\n");

    std::ostringstream precise;
    precise << std::setprecision(3) << std::fixed << curve;
    EXPECT_NE(precise.str().find("        2.500 0.333\n"), std::string::npos);
}

namespace {

struct Loss {
    const char* name;
    std::uint32_t flags;
    std::function<std::shared_ptr<FCurve>()> make;
};

using Change = std::function<void(FCurve&)>;
std::function<std::shared_ptr<FCurve>()> edited(const char* between, const Change& edit) {
    return [=] {
        auto curve = pair(between);
        edit(*curve);
        return curve;
    };
}

std::shared_ptr<FCurve> withExtensions(const char* before, const char* after) {
    auto curve = pair("linear()");
    curve->begin()->setInterpolator(kind(before));
    curve->findSegment(10.0)->setInterpolator(kind(after));
    return curve;
}

const Loss kLosses[] = {
    {"empty", 0, [] { return FCurve::create(); }},
    {"constant", 0, [] { return pair("constant()"); }},
    {"linear", 0, [] { return pair("linear()"); }},
    {"bezier", 0, [] { return pair("bezier()"); }},
    {"weighted", 0,
     edited("bezier()",
            [](FCurve& c) {
                span(c).getOutTangent()->setWeighted(true);
                span(c).getOutTangent()->set(7, -2);
            })},
    {"locked key", 0, edited("linear()", [](FCurve& c) { SetLocked(*span(c).getLeftKey(), true); })},
    {"selected", 0, edited("linear()", [](FCurve& c) { c.setProperty("fc_sel", "1"); })},

    {"formula", 1 | 32, [] { return pair(std::make_shared<Parabola>(0.05)); }},
    {"formula off the keys", 1 | 4 | 8 | 16 | 32, [] { return pair(std::make_shared<Parabola>(0.05, -3)); }},
    {"formula beyond all numbers", 1, [] { return pair(std::make_shared<Parabola>(1e308, -3)); }},
    {"number at its key", 1, [] { return pair("0"); }},
    {"next", 1 | 4 | 16, [] { return pair("constant_next()"); }},
    {"next after a constant span", 1 | 4,
     [] {
         return curveOf({{0, 0, kind("constant()")}, {4, 2, kind("constant_next()")}, {9, 3, kind("constant()")}});
     }},
    {"unknown", 1 | 4 | 16,
     [] {
         return curveOf({{0, 7, kind("no such ((")}, {10, 5, kind("constant()")}});
     }},
    {"no interpolator", 1, [] { return pair(std::shared_ptr<Interpolator>()); }},

    {"extension before", 2, [] { return withExtensions("linear()", "constant()"); }},
    {"extension after", 2, [] { return withExtensions("constant()", "3"); }},

    {"folded handles", 8,
     edited("bezier()",
            [](FCurve& c) {
                span(c).getOutTangent()->setWeighted(true);
                span(c).getOutTangent()->set(30, 3);
            })},
    {"folded flat handle", 8,
     edited("bezier()",
            [](FCurve& c) {
                span(c).getOutTangent()->setWeighted(true);
                span(c).getOutTangent()->set(30, 0);
            })},
    {"folded flat handle of the right key", 8,
     edited("bezier()",
            [](FCurve& c) {
                span(c).getInTangent()->setWeighted(true);
                span(c).getInTangent()->set(-30, 0);
            })},
    {"step between bezier spans", 8 | 16 | 4 | 32,
     [] {
         return curveOf({{0, 0, kind("bezier()")}, {5, 1, std::make_shared<Bow>(2.0)}, {10, 5, kind("constant()")}});
     }},
    {"step after a straight span", 16 | 4 | 32,
     [] {
         return curveOf({{0, 0, kind("linear()")}, {5, 1, std::make_shared<Bow>(2.0)}, {10, 5, kind("constant()")}});
     }},
    {"step at the last key", 16 | 32 | 1 | 8, [] { return pair(std::make_shared<Parabola>(1.0)); }},

    {"another bezier shape", 32, [] { return pair(std::make_shared<Bow>(0.0)); }},

    {"property of the curve", 64, edited("linear()", [](FCurve& c) { c.setProperty("unit", "cm"); })},
    {"display setting", 64, edited("linear()", [](FCurve& c) { SetVisible(c, false); })},
    {"property of a segment", 64, edited("linear()", [](FCurve& c) { span(c).setProperty("a", "b"); })},
    {"property of a key", 64, edited("linear()", [](FCurve& c) { span(c).getLeftKey()->setProperty("a", "b"); })},
    {"property of a tangent", 64, edited("linear()", [](FCurve& c) { span(c).getInTangent()->setProperty("a", "b"); })},
    {"breakdown", 64, edited("linear()", [](FCurve& c) { span(c).getLeftKey()->setBreakdown(true); })},
    {"unified", 64, edited("linear()", [](FCurve& c) { span(c).getLeftKey()->setTangentsUnified(true); })},
    {"automatic tangent", 64, edited("bezier()", [](FCurve& c) { span(c).getInTangent()->setType(Tangent::Smooth); })},
    {"locked weight", 64, edited("bezier()", [](FCurve& c) { span(c).getInTangent()->setWeightLocked(true); })},
    {"weighted to a third", 64, edited("bezier()", [](FCurve& c) { span(c).getInTangent()->setWeighted(true); })},
    {"name", 64, edited("linear()", [](FCurve& c) { c.setName("a\" \n extensions"); })},
};

class EveryLoss : public testing::TestWithParam<Loss> {};

} // namespace

TEST_P(EveryLoss, SetsItsFlagsAndNoOthers) {
    EXPECT_EQ(TovCurve(*GetParam().make()).getLossFlags(), GetParam().flags);
}

INSTANTIATE_TEST_SUITE_P(TovCurve, EveryLoss, testing::ValuesIn(kLosses), [](const auto& loss) {
    std::string name = loss.param.name;
    for (char& c : name)
        if (c == ' ') c = '_';
    return name;
});

TEST(TovCurve, AParabolaIsACubicOfItsSlopes) {
    const auto curve = pair(std::make_shared<Parabola>(0.05));
    std::ostringstream text;
    text << std::setprecision(17) << TovCurve(*curve);
    const auto read = FCurve::create();
    ReadFCurveFromString(text.str(), "tov_fcurve", *read);
    for (const double x : {0.5, 3.0, 9.5}) EXPECT_NEAR(read->eval(x), curve->eval(x), 1e-5);
}

TEST(TovCurve, AStepIsBridgedInFrontOfItsKey) {
    const auto curve = curveOf({{0, 0, kind("linear()")}, {0.001, 1, kind("2")}, {5, 3, kind("constant()")}});
    SetLocked(*curve->findSegment(0.001)->getLeftKey(), true);
    const TovCurve converted(*curve);
    std::vector<std::string> keys;
    for (const TovKey& key : converted) {
        std::ostringstream text;
        text << key.getLocation().x << ' ' << key.getLocation().y << ' ' << key.getInterp() << ' ' << key.isLocked();
        keys.push_back(text.str());
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"0 0 2 0", "0.0005 1 2 1", "0.001 2 1 1", "5 3 1 0"}));

    // Where doubles have no place in front of the key, the step goes.
    const auto far = curveOf({{1e18, 0, kind("linear()")}, {1e18 + 128, 1, kind("2")}});
    EXPECT_EQ(TovCurve(*far).size(), 2U);
}

// Of the curves that the older system can hold; names may have quotes.
TEST(TovCurve, WithoutLossReadsBackAsAnEqualCurve) {
    std::vector<std::shared_ptr<FCurve>> curves;
    for (const Exhibit& exhibit : Museum()) curves.push_back(exhibit.make());
    RandomCurve random(11);
    for (int i = 0; i < 100; ++i) {
        std::vector<Key> keys;
        for (int count = 1 + random.below(6); count > 0; --count) {
            const char* const kinds[] = {"constant()", "linear()", "bezier()"};
            const double third = random.below(3) ? 1.0 / 3 : 1.25; // of a handle; keys are a frame apart
            keys.push_back({10.0 - count, random.number(), Vector2D<double>(-third, random.number()),
                            Vector2D<double>(third, random.number()), kinds[random.below(3)]});
        }
        keys.back().interpolator = "constant()";
        curves.push_back(MakeCurve(keys));
        for (Segment& segment : *curves.back()) {
            for (const auto& tangent : {segment.getInTangent(), segment.getOutTangent()})
                tangent->setWeighted(std::abs(tangent->getX()) > 1.0);
            if (segment.getRightKey()) SetLocked(*segment.getRightKey(), random.coin());
        }
    }
    int converted = 0;
    for (const auto& curve : curves) {
        curve->setName("a \"b\" c");
        if (TovConversion::TovCurve(*curve).getLossFlags() != 0) continue;
        ++converted;
        // Handles that stand at no key have no place in the text.
        curve->begin()->getOutTangent()->set(1, 0);
        (--curve->end())->getInTangent()->set(-1, 0);
        std::ostringstream text;
        text << std::setprecision(17) << TovCurve(*curve);
        const auto read = FCurve::create();
        ReadFCurveFromString(text.str(), "tov_fcurve", *read);
        EXPECT_EQ(Difference(*read, *curve), "");
    }
    EXPECT_GE(converted, 25);
}
