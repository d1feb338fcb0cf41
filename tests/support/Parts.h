#pragma once

// Small curves whose parts have names: "a" is a curve, "a.segment0" its leading segment, "a.key0" its first key,
// "a.in0" and "a.out0" that key's tangents.

#include "FCurveLib/FCurveLib.h"

#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Test {

using namespace VEM_FN::FCurveLib;

using Names = std::vector<std::string>;
using Records = std::set<HitRecord, CompareRecord>;

inline std::shared_ptr<Interpolator> bent() {
    return InterpolatorFactory::create("bezier()"); // uses tangents
}
inline std::shared_ptr<Interpolator> straight() {
    return InterpolatorFactory::create("linear()");
}

inline FCurve::iterator addKey(FCurve& curve, double x, double y, const std::shared_ptr<Interpolator>& interpolator) {
    return curve.insertSegment(*Keyframe::create(x, y), interpolator);
}

// Keys at x = 10, 11, 12... with y = 0, 1, 2...; the leading segment gets the interpolator, too.
inline std::shared_ptr<FCurve> makeCurve(const char* name, int keys,
                                         const std::shared_ptr<Interpolator>& interpolator) {
    auto curve = FCurve::create();
    curve->setName(name);
    curve->begin()->setInterpolator(interpolator);
    for (int i = 0; i < keys; ++i) addKey(*curve, 10 + i, i, interpolator);
    return curve;
}

inline std::shared_ptr<FCurveContainer> makeContainer(const std::vector<std::shared_ptr<FCurve>>& curves) {
    auto container = FCurveContainer::create();
    for (const auto& curve : curves) container->addCurve(curve);
    return container;
}

inline Segment& segmentOf(FCurve& curve, int i) {
    return *std::next(curve.begin(), i);
}
inline Keyframe& keyOf(FCurve& curve, int i) {
    return *segmentOf(curve, i).getRightKey();
}

// What the walk over a curve shows, or all its parts in that order, found without an iterator over records.
inline std::vector<HitRecord> partsOf(FCurve& curve, bool all) {
    std::vector<HitRecord> parts{HitRecord(curve.getShared())};
    for (Segment& segment : curve) {
        const auto kind = segment.getInterpolator();
        const bool bends = kind && kind->usesTangents();
        parts.emplace_back(segment.getShared());
        if (all || (bends && segment.getLeftKey())) parts.emplace_back(segment.getOutTangent(), true);
        if (all || (bends && segment.getRightKey())) parts.emplace_back(segment.getInTangent(), true);
        if (segment.getRightKey()) parts.emplace_back(segment.getRightKey());
    }
    return parts;
}
inline std::vector<HitRecord> partsOf(FCurveContainer& container, bool all) {
    std::vector<HitRecord> parts;
    for (FCurve& curve : container)
        for (HitRecord& part : partsOf(curve, all)) parts.push_back(std::move(part));
    return parts;
}

inline std::string nameOf(const ConstHitRecord& record) {
    if (record.getType() == ConstHitRecord::NONE) return "none";
    const std::shared_ptr<const FCurve> curve = record.getCurve();
    if (!curve) return "stray";
    if (record.getType() == ConstHitRecord::CURVE) return curve->getName();
    int i = 0;
    for (const Segment& segment : *curve) {
        const auto name = [&](const char* kind, int number) {
            return curve->getName() + (kind + std::to_string(number));
        };
        if (record.getSegment().get() == &segment) return name(".segment", i);
        if (record.getKeyframe() && record.getKeyframe() == segment.getRightKey()) return name(".key", i);
        if (record.getTangent() && record.getTangent() == segment.getInTangent()) return name(".in", i);
        if (record.getTangent() && record.getTangent() == segment.getOutTangent()) return name(".out", i - 1);
        ++i;
    }
    return "lost";
}

template<class Range>
Names namesOf(Range&& range) {
    Names names;
    for (auto it = range.begin(), end = range.end(); it != end; ++it) names.push_back(nameOf(*it));
    return names;
}

// What an observer hears, as short texts: "+a.key0", "-a.key0", "cleared".
class SelectionRecorder : public SelectionObserver {
public:
    void selected(const HitRecord& part) override { heard.push_back("+" + nameOf(part)); }
    void deselected(const HitRecord& part) override { heard.push_back("-" + nameOf(part)); }
    void selectionCleared() override { heard.push_back("cleared"); }

    Names take() { return std::exchange(heard, {}); }

    Names heard;
};

} // namespace Test
