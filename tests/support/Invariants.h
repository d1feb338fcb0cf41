#pragma once

// What must hold of every curve at every moment, looked up through the public interface alone.

#include "FCurveLib/FCurveLib.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace Test {

using namespace VEM_FN::FCurveLib;

/// An empty text for a sound curve, otherwise the first thing that is wrong.
inline std::string Fault(FCurve& curve) {
    std::vector<Segment*> chain;
    for (Segment& segment : curve) {
        chain.push_back(&segment);
        if (chain.size() > curve.size()) return "the walk is longer than size()";
    }
    if (chain.size() != curve.size()) return "the walk is shorter than size()";

    auto backwards = curve.end();
    for (std::size_t i = chain.size(); i > 0; --i)
        if (&*--backwards != chain[i - 1]) return "the backward walk differs";
    if (!(backwards == curve.begin())) return "the backward walk does not end at the beginning";

    const auto self = curve.getShared();
    double lastX = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < chain.size(); ++i) {
        Segment& segment = *chain[i];
        const auto fault = [i](const char* what) { return "segment " + std::to_string(i) + ": " + what; };
        const auto left = segment.getLeftKey();
        const auto right = segment.getRightKey();
        if (segment.getOwningCurve() != self) return fault("wrong curve");
        if (segment.getShared().get() != &segment) return fault("cannot share itself");
        if (!left != (i == 0)) return fault("left key present or absent wrongly");
        if (!right != (i + 1 == chain.size())) return fault("right key present or absent wrongly");
        const auto in = segment.getInTangent();
        const auto out = segment.getOutTangent();
        if (!in || !out || in == out) return fault("not two tangents");
        if (!in->isInTangent() || out->isInTangent()) return fault("tangents on the wrong side");
        if (in->getOwningSegment().get() != &segment || out->getOwningSegment().get() != &segment)
            return fault("tangent with another segment");
        if (in->getOwningCurve() != self || out->getOwningCurve() != self) return fault("tangent with another curve");
        if (in->getOwningKeyframe() != right || out->getOwningKeyframe() != left)
            return fault("tangent with another key");
        if (left) {
            if (!(lastX < left->getX())) return fault("keys not strictly increasing");
            lastX = left->getX();
            if (left->getRightSegment().get() != &segment) return fault("key not linked to its right segment");
            if (left->getLeftSegment().get() != chain[i - 1]) return fault("key not linked to its left segment");
            if (left->getOwningCurve() != self) return fault("key with another curve");
            if (left->getOutTangent() != out || left->getInTangent() != chain[i - 1]->getInTangent())
                return fault("key with other tangents");
            if (out->getOppositeTangent() != left->getInTangent()) return fault("wrong opposite tangent");
            if (chain[i - 1]->getRightKey() != left) return fault("neighbours do not share the key");
            if (&*curve.findSegment(lastX) != &segment) return fault("not found at its key");
            if (&*curve.findSegment(std::nextafter(lastX, -HUGE_VAL)) != chain[i - 1])
                return fault("found before its key");
        }
    }
    if (&*curve.findSegment(-HUGE_VAL) != chain.front()) return "not the leading segment at -infinity";
    if (&*curve.findSegment(std::nan("")) != chain.front()) return "not the leading segment at NaN";
    if (&*curve.findSegment(HUGE_VAL) != chain.back()) return "not the trailing segment at infinity";
    return "";
}

} // namespace Test
