#pragma once

// Curves that use everything a curve can hold, made at random from a seed.

#include "FCurveLib/FCurveLib.h"
#include "support/Random.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace Test {

using namespace VEM_FN::FCurveLib;

class RandomCurve : public Random {
public:
    using Random::Random;

    std::shared_ptr<FCurve> make() {
        auto curve = FCurve::create();
        curve->setName(text().c_str());
        properties(*curve);
        SetVisible(*curve, coin());
        SetLocked(*curve, coin());
        SetVelocityVisible(*curve, coin());
        SetAccelerationVisible(*curve, coin());
        SetDiscontinuityVisible(*curve, coin());
        if (coin()) SetGridSettings(*curve, {-positive(), positive(), positive(), positive()});
        if (coin()) SetTangentScale(*curve, number());

        const int keys = below(12);
        for (int i = 0; i < keys; ++i) {
            Keyframe key;
            key.set(number(), number());
            key.setBreakdown(coin());
            key.setTangentsUnified(coin());
            SetLocked(key, coin());
            properties(key);
            curve->insertSegment(key, InterpolatorFactory::create(expression().c_str()));
        }
        for (Segment& segment : *curve) {
            if (coin()) segment.setInterpolator(InterpolatorFactory::create(expression().c_str()));
            properties(segment);
            shape(*segment.getInTangent());
            shape(*segment.getOutTangent());
        }
        return curve;
    }

    /// Any bytes but zero: ASCII with all that is special in markup, control characters, UTF-8, broken UTF-8.
    std::string text() {
        static const std::string pieces[] = {"plain",        "a b",          "\"'&<>", "]]>",   "\t\n\r",
                                             "\x01\x1f\x7f", "\\x41\\",      "ü€𝄞",    "\xff",  "\xc3",
                                             "\xed\xa0\x80", "\xef\xbf\xbe", " ",      "#{}=;,"};
        std::string result;
        for (int i = below(4); i > 0; --i) result += oneOf(pieces);
        return result;
    }

    double number() {
        const double special[] = {0.0, -0.0, 1.0, 5e-324, -2.2250738585072009e-308, 1.7976931348623157e308, 0.1};
        switch (below(4)) {
        case 0:
            return oneOf(special);
        case 1:
            return below(2000) - 1000;
        default:
            return std::ldexp(between(-1.0, 1.0), below(80) - 40);
        }
    }

private:
    // Within single precision, which grids pass through.
    double positive() { return std::ldexp(between(0.5, 1.0), below(40) - 20); }

    std::string expression() {
        static const char* const expressions[] = {"constant()",     "constant_next()", "linear()",      "bezier()",
                                                  "spline()",       "ease()",          "easein()",      "easeout()",
                                                  "match()",        "matchin()",       "matchout()",    "cycle()",
                                                  "cycle_offset()", "mirror()",        "2.5",           "-1e-300",
                                                  " sin( x ) * 2",  "x ** 2",          "cycle() + 2*x", "((( < & >"};
        return oneOf(expressions);
    }

    template<class Part>
    void properties(Part& part) {
        for (int i = below(3); i > 0; --i) part.setProperty(("k" + text()).c_str(), text().c_str());
    }

    void shape(Tangent& tangent) {
        tangent.setType(static_cast<std::uint8_t>(below(7)));
        tangent.setWeighted(coin());
        tangent.set(number(), number());
        tangent.setWeightLocked(coin());
        properties(tangent);
    }
};

} // namespace Test
