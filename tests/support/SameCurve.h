#pragma once

// Compares curves to the last bit, through public getters alone.

#include "FCurveLib/FCurveLib.h"

#include <cmath>
#include <cstring>
#include <iterator>
#include <string>

namespace Test {

using namespace VEM_FN::FCurveLib;

/// One NaN is as good as another.
inline bool SameBits(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

namespace SameCurve {

inline bool bits(const Vector2D<double>& a, const Vector2D<double>& b) {
    return SameBits(a.x, b.x) && SameBits(a.y, b.y);
}

template<class Part>
std::string properties(const Part& a, const Part& b) {
    if (a.sizeProperties() != b.sizeProperties()) return "number of properties";
    for (auto i = a.beginProperties(), j = b.beginProperties(); i != a.endProperties(); ++i, ++j) {
        if (*i != *j) return "property " + i->first;
    }
    return "";
}

inline std::string tangentButHandle(const Tangent& a, const Tangent& b) {
    if (a.getType() != b.getType()) return "type";
    if (a.isWeighted() != b.isWeighted()) return "weighted";
    if (a.isWeightLocked() != b.isWeightLocked()) return "weight lock";
    return properties(a, b);
}

inline std::string tangent(const Tangent& a, const Tangent& b) {
    return bits(a.get(), b.get()) ? tangentButHandle(a, b) : "handle";
}

inline std::string keyButPosition(const Keyframe& a, const Keyframe& b) {
    if (a.isBreakdown() != b.isBreakdown()) return "breakdown";
    if (a.isTangentsUnified() != b.isTangentsUnified()) return "unified";
    return properties(a, b);
}

inline std::string key(const Keyframe& a, const Keyframe& b) {
    return bits(a.get(), b.get()) ? keyButPosition(a, b) : "position";
}

// Files say "0" for a segment without interpolator, which evaluates to 0.
inline std::string expression(const Segment& segment) {
    const auto interpolator = segment.getInterpolator();
    return interpolator ? interpolator->getExpression() : "0";
}

inline std::string segment(const Segment& a, const Segment& b) {
    if (expression(a) != expression(b)) return "interpolator " + expression(a) + " and " + expression(b);
    std::string difference = tangent(*a.getOutTangent(), *b.getOutTangent());
    if (!difference.empty()) return "out tangent: " + difference;
    difference = tangent(*a.getInTangent(), *b.getInTangent());
    if (!difference.empty()) return "in tangent: " + difference;
    if (a.getRightKey()) {
        difference = key(*a.getRightKey(), *b.getRightKey());
        if (!difference.empty()) return "right key: " + difference;
    }
    return properties(a, b);
}

} // namespace SameCurve

/// An empty text for equal curves, otherwise the first difference.
inline std::string Difference(const FCurve& a, const FCurve& b) {
    if (std::string(a.getName()) != b.getName()) return "name";
    if (a.size() != b.size()) return "size";
    std::string difference = SameCurve::properties(a, b);
    if (!difference.empty()) return "curve: " + difference;
    for (auto i = a.begin(), j = b.begin(); i != a.end(); ++i, ++j) {
        difference = SameCurve::segment(*i, *j);
        if (!difference.empty()) return "segment " + std::to_string(std::distance(a.begin(), i)) + ": " + difference;
    }
    return "";
}

/// The same for containers, with their curves in the same order.
inline std::string Difference(const FCurveContainer& a, const FCurveContainer& b) {
    if (a.size() != b.size()) return "number of curves";
    std::string difference = SameCurve::properties(a, b);
    for (auto i = a.begin(), j = b.begin(); i != a.end() && difference.empty(); ++i, ++j)
        difference = Difference(*i, *j);
    return difference;
}

} // namespace Test
