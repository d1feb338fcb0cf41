#pragma once

// The museum: named curves, each here because it breaks something that the others do not. A test over all of them tests
// a new exhibit the day it is added.

#include "FCurveLib/FCurveLib.h"

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace Test {

using namespace VEM_FN::FCurveLib;

struct Exhibit {
    const char* name; ///< letters and digits, fit for the name of a test
    std::function<std::shared_ptr<FCurve>()> make;
    double tolerance; ///< of a value, relative to the largest absolute value of the curve's keys and handles
    const char* why;
};

const std::vector<Exhibit>& Museum();

/// One key of a curve to make. Handles are offsets from the key; given ones are fixed and weighted and stand exactly as
/// given, the others are a new key's.
struct Key {
    double x;
    double y;
    std::optional<Vector2D<double>> in = {};
    std::optional<Vector2D<double>> out = {};
    const char* interpolator = "bezier()"; ///< of the segment that starts at the key
};

std::shared_ptr<FCurve> MakeCurve(const std::vector<Key>& keys, const char* leading = "constant()");

/// The span over which tests look at a segment: between its keys, ten frames beside the only one, -5 to 5 without any.
struct Span {
    double x0;
    double x1;
};
Span SpanOf(const Segment& segment);

inline void PrintTo(const Exhibit& exhibit, std::ostream* out) {
    *out << exhibit.name << " (" << exhibit.why << ")";
}

/// For INSTANTIATE_TEST_SUITE_P.
struct ExhibitName {
    template<class Info>
    std::string operator()(const Info& info) const {
        return info.param.name;
    }
};

} // namespace Test
